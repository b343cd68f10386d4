#include "OutputSettingsFragment.h"

#include "ContainerBound.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"
#include "platform/AlertPresenter.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QFileDialog>
#include <QLabel>
#include <QStandardPaths>
#include <QTimer>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;
using Format = OutputFormatIndexEnum;
using namespace Qt::StringLiterals;

namespace {

// The formats by raw value, which is the position in the popup.
QList<std::pair<QString, Format>> formatTitles()
{
    return {
        {OutputSettingsFragment::tr("Map only, no text"), Format::CSV},
        {OutputSettingsFragment::tr("Tab-separated text"), Format::TSV},
        {OutputSettingsFragment::tr("HTML page"), Format::HTML},
        {OutputSettingsFragment::tr("HTML for an editor (copy)"), Format::CopyToHTML},
        {OutputSettingsFragment::tr("Tab-separated for a spreadsheet (copy)"), Format::CopyToExcel},
        {OutputSettingsFragment::tr("JSON"), Format::JSON},
    };
}

QString formatTitle(Format format)
{
    for (const auto &[title, value] : formatTitles())
        if (value == format)
            return title;
    return {};
}

// One setting of the text formats: an integer chosen from a popup, or quoting as a check box.
struct Setting
{
    QString name;
    QString caption;
    std::shared_ptr<UserDefaultsVariable<int>> mode;
    QStringList items;
    QList<Format> formats;
};

QStringList indentations()
{
    QStringList items = {OutputSettingsFragment::tr("None"), OutputSettingsFragment::tr("Tab")};
    items << OutputSettingsFragment::tr("1 space");
    for (int blanks = 2; blanks <= 6; ++blanks)
        items << OutputSettingsFragment::tr("%1 spaces").arg(blanks);
    return items;
}

QStringList dateFormats()
{
    return {u"yyyy-MM-dd"_s, u"yyyy-MM-dd HH:mm:ss"_s, u"yyyy-MM-dd hh:mm:ss a"_s,
            OutputSettingsFragment::tr("The system's medium date and short time")};
}

QList<Setting> settings(DataModel &m)
{
    using T = OutputSettingsFragment;
    const QList<Format> tsv = {Format::TSV, Format::CopyToExcel};
    const QList<Format> formatted
        = {Format::TSV, Format::CopyToExcel, Format::HTML, Format::CopyToHTML};
    const QList<Format> html = {Format::HTML, Format::CopyToHTML};
    return {
        {u"includeColumnTitlesMode"_s,
         T::tr("Title row:"),
         m.includeColumnTitlesMode,
         {T::tr("None"), T::tr("Column titles"), T::tr("Column titles with their tag space")},
         tsv},
        {u"boolValuesMode"_s,
         T::tr("Booleans:"),
         m.boolValuesMode,
         {u"true / false"_s, u"yes / no"_s, u"TRUE / FALSE"_s, u"YES / NO"_s, u"1 / 0"_s},
         formatted},
        {u"nullValuesMode"_s,
         T::tr("Missing values:"),
         m.nullValuesMode,
         {T::tr("Empty"), u"Null"_s, u"nil"_s, u"nul"_s, u"none"_s},
         formatted},
        {u"dateFormatMode"_s, T::tr("Dates:"), m.dateFormatMode, dateFormats(), formatted},
        {u"jsonDateFormatMode"_s,
         T::tr("Dates:"),
         m.jsonDateFormatMode,
         dateFormats(),
         {Format::JSON}},
        {u"multiLineMode"_s,
         T::tr("Breaks and tabs:"),
         m.multiLineMode,
         {T::tr("Kept in values"), T::tr("Written as \\n, \\r and \\t")},
         {Format::TSV, Format::CopyToExcel, Format::JSON}},
        {u"linebreaksMode"_s,
         T::tr("Line ends:"),
         m.linebreaksMode,
         {T::tr("LF"), T::tr("CR"), T::tr("CR LF")},
         {Format::TSV, Format::JSON, Format::HTML, Format::CopyToHTML}},
        {u"htmlIndentationMode"_s, T::tr("Indentation:"), m.htmlIndentationMode, indentations(),
         html},
        {u"jsonIndentationMode"_s,
         T::tr("Indentation:"),
         m.jsonIndentationMode,
         indentations(),
         {Format::JSON}},
        {u"htmlColumnIdHeaderMode"_s,
         T::tr("Header row:"),
         m.htmlColumnIdHeaderMode,
         {T::tr("None"), T::tr("Column titles"), T::tr("Titles with numbered ids"),
          T::tr("Titles with column key ids")},
         html},
        {u"htmlColumnClassMode"_s,
         T::tr("Cell classes:"),
         m.htmlColumnClassMode,
         {T::tr("None"), T::tr("By column number"), T::tr("By column key")},
         html},
        {u"encodingMode"_s,
         T::tr("Encoding:"),
         m.encodingMode,
         {u"UTF-8"_s, u"UTF-16"_s, T::tr("ISO Latin 1")},
         {Format::TSV, Format::CopyToExcel, Format::JSON, Format::HTML, Format::CopyToHTML}},
    };
}

// A row of the settings' stack, there only while the chosen format uses it.
B::DynamicFragmentWall<Format> settingRow(DataModel &model, const QString &name,
                                          const QList<Format> &formats, const QString &caption,
                                          const BuildDirectiveList &control,
                                          const LayoutTag &controlTag)
{
    const LayoutTag row(name + QStringLiteral("Row")), label(name + QStringLiteral("Caption"));
    return B::DynamicFragmentWall<Format>::showWhen(
               AnyReadOnlyVariable<Format>(model.outputFormat),
               [formats](const Format &format) { return formats.contains(format); },
               {B::Wall {
                   B::StaticLabel(caption).tag(label).style<QLabel>(&EditorStyle::makeCaption),
                   control}
                    .tag(row)
                    .layout({pin(label, D::left, EditorStyle::horizontalMargin),
                             after(controlTag, label, EditorStyle::columnSpacing),
                             ContainerBound::atLeast(controlTag, D::right,
                                                     EditorStyle::horizontalMargin),
                             rowWithin({controlTag, label}, EditorStyle::rowSpacing / 2)})})
        .layout(pinEdges(row));
}

} // namespace

B::FragmentWall OutputSettingsFragment::directive(DataModel &model,
                                                  std::shared_ptr<OutputEngine> engine)
{
    using namespace EditorStyle;
    const LayoutTag caption("outputFormatCaption"), format("outputFormatPopUp"),
        rows("outputSettingsRows"), status("outputStatusLabel"), copy("copyOutputButton"),
        save("saveOutputButton");

    BuildDirectiveList settingRows;
    for (const Setting &setting : settings(model)) {
        const LayoutTag control(setting.name);
        const QString accessible = setting.caption.chopped(1);
        settingRows.append(settingRow(
            model, setting.name, setting.formats, setting.caption,
            B::PopupButton(setting.items, setting.mode)
                .tag(control)
                .style<QWidget>([accessible](QWidget *w) { w->setAccessibleName(accessible); }),
            control));
    }
    const LayoutTag quote(u"quoteStrings"_s);
    settingRows.append(settingRow(
        model, u"quoteStrings"_s, {Format::TSV, Format::CopyToExcel, Format::JSON}, QString(),
        B::CheckBox(tr("Quote strings"), model.quoteStrings)
            .tag(quote)
            .style<QWidget>([](QWidget *w) {
                w->setToolTip(tr("Text values (JSON: member names) in double quotes"));
                w->setAccessibleName(tr("Quote strings"));
            }),
        quote));

    DataModel *m = &model;
    const auto statusText = std::make_shared<StraightVariable<QString>>();
    return B::FragmentWall {
        B::StaticLabel(tr("Output:")).tag(caption).style<QLabel>(&makeCaption),
        B::PopupButtonWithEnum<Format>(formatTitles(), model.outputFormat)
            .tag(format)
            .style<QWidget>([](QWidget *w) {
                w->setToolTip(tr("What the list becomes: markers on the map, or a text to copy "
                                 "or save"));
                w->setAccessibleName(tr("Output format"));
            }),
        B::FragmentStack {settingRows}.tag(rows),
        B::DynamicSingleLineLabel(AnyReadOnlyVariable<QString>(statusText))
            .tag(status)
            .horizontalContentHuggingPriority(LayoutPriority::defaultLow),
        B::PushButton(tr("Copy Output"), nullptr)
            .tag(copy)
            .style<QAbstractButton>([](QAbstractButton *b) {
                makeTextButton(b, tr("Put the list's text on the clipboard"), tr("Copy Output"));
            }),
        B::PushButton(tr("Save Output…"), nullptr)
            .tag(save)
            .style<QAbstractButton>([](QAbstractButton *b) {
                makeTextButton(b, tr("Save the list's text to a file"), tr("Save Output"));
            })}
        .layout({pin(caption, D::left, horizontalMargin), pin(format, D::top, verticalMargin),
                 after(format, caption, columnSpacing),
                 ContainerBound::atLeast(format, D::right, horizontalMargin),
                 sameCenterY({format, caption}), below(rows, format, rowSpacing),
                 pin(rows, D::left), pin(rows, D::right), below(status, rows, rowSpacing),
                 sameFlushLeft({format, status, copy}), pin(status, D::right, horizontalMargin),
                 below(copy, status, rowSpacing), after(save, copy, columnSpacing),
                 sameCenterY({copy, save}),
                 ContainerBound::atLeast(save, D::right, horizontalMargin),
                 pin(copy, D::bottom, verticalMargin)})
        .code(CodeExecutionPhase::prepare,
              [m, engine, statusText](QWidget *view, Binding *, Assembly *) {
                  view->setObjectName(QStringLiteral("outputFragment"));
                  new OutputSettingsFragment(*m, engine, statusText, view);
              });
}

OutputSettingsFragment::OutputSettingsFragment(
    DataModel &model, std::shared_ptr<OutputEngine> engine,
    std::shared_ptr<StraightVariable<QString>> statusText, QWidget *fragment)
    : QObject(fragment)
    , m_model(model)
    , m_commands(std::move(engine), model)
    , m_statusText(std::move(statusText))
    , m_fragment(fragment)
    , m_timer(new QTimer(this))
{
    auto *copy = fragment->findChild<PushButtonBrick *>(QStringLiteral("copyOutputButton"));
    auto *save = fragment->findChild<PushButtonBrick *>(QStringLiteral("saveOutputButton"));
    if (!copy || !save)
        qFatal("OutputSettingsFragment: the fragment lacks its status line or buttons");
    m_copyButton = copy;
    m_saveButton = save;
    const QPointer<OutputSettingsFragment> self = this;
    copy->actionFunc = [self] {
        if (self)
            self->copyOutput();
    };
    save->actionFunc = [self] {
        if (self)
            self->saveOutput();
    };
    model.outputFormat->addColdListener([self](const Format &) {
        if (self)
            self->refresh();
    });
    // The engine tells nobody when a stage starts, so its state is read as the status line
    // reads it.
    connect(m_timer, &QTimer::timeout, this, &OutputSettingsFragment::refresh);
    m_timer->start(refreshIntervalMs);
    refresh();
}

void OutputSettingsFragment::refresh()
{
    m_commands.requestTextIfStale();
    const bool ready = m_commands.availability() == OutputCommands::Availability::ready;
    const QString status = m_commands.availabilityDescription();
    if (m_statusText->value() != status)
        m_statusText->setValue(status);
    if (m_copyButton)
        m_copyButton->setEnabled(ready);
    if (m_saveButton)
        m_saveButton->setEnabled(ready);
}

void OutputSettingsFragment::copyOutput()
{
    const CommitResult result = m_commands.copyOutput();
    if (!result.success)
        AlertPresenter::show({tr("The list could not be copied"), result.message, {tr("OK")}, {}});
    refresh();
}

void OutputSettingsFragment::saveOutput()
{
    refresh();
    if (m_commands.availability() != OutputCommands::Availability::ready)
        return;
    // The folder of the last save, for the rest of the run.
    static QString lastFolder;
    if (lastFolder.isEmpty())
        lastFolder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QStringList types = m_commands.allowedFileTypes();
    QStringList patterns;
    for (const QString &type : types)
        patterns << u"*."_s + type;

    QFileDialog dialog(m_fragment ? m_fragment->window() : nullptr, tr("Save Output"));
    dialog.setObjectName(QStringLiteral("saveOutputDialog"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilter(
        u"%1 (%2)"_s.arg(formatTitle(m_model.outputFormat->value()), patterns.join(u' ')));
    if (!types.isEmpty())
        dialog.setDefaultSuffix(types.first());
    dialog.setDirectory(lastFolder);
    dialog.selectFile(m_commands.proposedFileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString path = dialog.selectedFiles().first();
    lastFolder = QFileInfo(path).absolutePath();

    const CommitResult result = m_commands.saveOutput(path);
    if (!result.success)
        AlertPresenter::show({tr("The list could not be saved"), result.message, {tr("OK")}, {}});
    else if (!result.message.isEmpty())
        AlertPresenter::show({tr("The list was saved"), result.message, {tr("OK")}, {}});
    refresh();
}
