#include "OutputCommands.h"

#include "OutputFileWriter.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("OutputCommands", text);
}

} // namespace

OutputCommands::OutputCommands(std::shared_ptr<OutputEngine> engine, DataModel &model)
    : m_engine(std::move(engine))
    , m_model(model)
{ }

OutputCommands::Availability OutputCommands::availability() const
{
    const OutputFormatIndexEnum format = m_model.outputFormat->value();
    if (format == OutputFormatIndexEnum::CSV)
        return Availability::noText;
    if (m_engine->createOutputEngineViewModel().activeStage != OutputOperationTypeEnum::ready)
        return Availability::computing;
    // Right after a change of format the old format's text is still the current one.
    const std::optional<OutputEngine::OutputText> output = m_engine->currentOutput();
    if (!output || output->format != format)
        return Availability::computing;
    return Availability::ready;
}

void OutputCommands::requestTextIfStale()
{
    const OutputFormatIndexEnum format = m_model.outputFormat->value();
    if (format == OutputFormatIndexEnum::CSV
        || m_engine->createOutputEngineViewModel().activeStage != OutputOperationTypeEnum::ready)
        return;
    const std::optional<OutputEngine::OutputText> output = m_engine->currentOutput();
    const FlatFileListPtr list = m_engine->flatFileList();
    if (!list || (output && output->format == format))
        return;
    if (m_requestedList == list.get() && m_requestedFormat == format)
        return;
    m_requestedList = list.get();
    m_requestedFormat = format;
    m_engine->launchOutputOperation(m_model.createSnapshot(), list);
}

QString OutputCommands::availabilityDescription() const
{
    switch (availability()) {
    case Availability::noText:
        return tr("The map format places the items on the map and makes no text.");
    case Availability::computing:
        return tr("The text is being computed…");
    case Availability::ready:
        break;
    }
    const int count = m_engine->currentFileCount().value_or(0);
    return count == 1 ? tr("The text of 1 item is ready.")
                      : tr("The text of %1 items is ready.").arg(count);
}

QStringList OutputCommands::allowedFileTypes() const
{
    const OutputFormatType *format = m_engine->currentOutputFormat();
    return format ? format->allowedFileTypes() : QStringList();
}

QString OutputCommands::proposedFileName() const
{
    const QStringList types = allowedFileTypes();
    const QString name = tr("File List");
    return types.isEmpty() ? name : name + u'.' + types.first();
}

std::optional<OutputCommands::ReadyText> OutputCommands::readyText() const
{
    if (availability() != Availability::ready)
        return std::nullopt;
    const std::optional<OutputEngine::OutputText> output = m_engine->currentOutput();
    OutputFormatType *format = output ? m_engine->outputFormatObject(output->format) : nullptr;
    if (!format)
        return std::nullopt;
    return ReadyText {output->text, format};
}

CommitResult OutputCommands::notAvailable(const QString &filePath) const
{
    return {false, availabilityDescription(), filePath};
}

CommitResult OutputCommands::copyOutput() const
{
    const std::optional<ReadyText> ready = readyText();
    if (!ready)
        return notAvailable();
    // The copying formats know their clipboard form (the HTML editor's takes HTML as well).
    if (ready->format->commitKind() == CommitKind::CopyToClipboard)
        return m_engine->performCommitAction();
    CommitResult result;
    result.success = ClipboardWriter::put({ready->text, std::nullopt});
    if (!result.success)
        result.message = tr("Could not put the list on the clipboard.");
    return result;
}

CommitResult OutputCommands::saveOutput(const QString &filePath) const
{
    const std::optional<ReadyText> ready = readyText();
    if (!ready)
        return notAvailable(filePath);
    // Also for the copying formats, which have no file of their own: the user asked for one.
    return OutputFileWriter::save(
        ready->text, ready->format->fileEncoding(m_model.createSnapshot()),
        OutputFileWriter::withAllowedFileType(filePath, ready->format->allowedFileTypes()));
}
