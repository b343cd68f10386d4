#include "UndoManager.h"

#include "ChangeManager.h"
#include "FileStamp.h"
#include "WriteEngine.h"
#include "platform/AlertPresenter.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

UndoManager &UndoManager::shared()
{
    static UndoManager &manager = *new UndoManager;
    return manager;
}

UndoManager::UndoManager()
{
    WriteEngine::shared().writeCompletePublisher().addColdListener([this](bool) { refresh(); });
    refresh();
}

void UndoManager::setNodeLookup(std::function<NodePtr(const QString &)> lookup)
{
    m_nodeLookup = std::move(lookup);
}

QString UndoManager::title(const QString &verb, const UndoJournal::Command &command)
{
    const qsizetype count = command.writtenFiles().size();
    const QString files = count == 1 ? u"1 File"_s : QString::number(count) + u" Files"_s;
    return verb + u' ' + command.what + u" on "_s + files;
}

void UndoManager::refresh()
{
    const UndoJournal &journal = UndoJournal::shared();
    const std::optional<UndoJournal::Command> undoable = journal.undoable();
    const std::optional<UndoJournal::Command> redoable = journal.redoable();
    // While anything is being written, the last command may still grow or be reversed already.
    const bool idle = m_outstandingWrites == 0 && !WriteEngine::shared().hasPendingWrites();
    m_undoTitle.setValue(undoable ? title(u"Undo"_s, *undoable) : u"Undo"_s);
    m_redoTitle.setValue(redoable ? title(u"Redo"_s, *redoable) : u"Redo"_s);
    m_canUndo.setValue(idle && undoable.has_value());
    m_canRedo.setValue(idle && redoable.has_value());
}

bool UndoManager::undo(QStringList *skippedFiles)
{
    refresh();
    if (!m_canUndo.value())
        return false;
    return reverse(UndoJournal::shared().undoable(), UndoJournal::Kind::undo, skippedFiles);
}

bool UndoManager::redo(QStringList *skippedFiles)
{
    refresh();
    if (!m_canRedo.value())
        return false;
    return reverse(UndoJournal::shared().redoable(), UndoJournal::Kind::redo, skippedFiles);
}

bool UndoManager::reverse(const std::optional<UndoJournal::Command> &command,
                          UndoJournal::Kind kind, QStringList *skippedFiles)
{
    if (!command)
        return false;
    UndoJournal &journal = UndoJournal::shared();
    const quint64 reversal = journal.beginCommand(kind, command->id, command->what);
    if (reversal == 0)
        return false;

    QStringList skipped;
    // Always the engine: it records the reversal in the journal, so that it can be reversed too.
    WriteEngine &sink = WriteEngine::shared();
    sink.clearErrors();
    for (const UndoJournal::FileRecord &file : command->writtenFiles()) {
        // Only a file exactly as Palomet left it may be written back.
        if (FileStamp::of(file.path) != journal.lastWritten(file.path)) {
            skipped << file.path;
            continue;
        }
        NodePtr node = m_nodeLookup ? m_nodeLookup(file.path) : nullptr;
        ++m_outstandingWrites;
        std::function<void(bool)> reannounce
            = ChangeManager::hasDataModel() ? ChangeManager::reannounceSelectionHandler() : nullptr;
        sink.addPendingWrite({file.path, file.reversing, node,
                              [this, reannounce](bool success) {
                                  --m_outstandingWrites;
                                  if (reannounce)
                                      reannounce(success);
                                  if (m_outstandingWrites == 0)
                                      refresh();
                              },
                              reversal, file.written});
    }
    sink.flushImmediately();
    refresh();

    if (!skipped.isEmpty()) {
        // The alert names the first few; its details list every path.
        constexpr qsizetype namedFiles = 10;
        QStringList names;
        for (const QString &path : skipped.first(std::min(skipped.size(), namedFiles)))
            names << QFileInfo(path).fileName();
        if (skipped.size() > namedFiles)
            names << u"and %1 more"_s.arg(skipped.size() - namedFiles);
        Alert alert;
        alert.title = skipped.size() == 1 ? u"A file was changed outside Palomet"_s
                                          : u"Some files were changed outside Palomet"_s;
        alert.text = (skipped.size() == 1 ? u"It was left as it is: "_s
                                          : u"They were left as they are: "_s)
            + names.join(u", "_s);
        alert.buttons = {u"OK"_s};
        alert.details = skipped.join(u'\n');
        AlertPresenter::show(alert);
    }
    if (skippedFiles)
        *skippedFiles = skipped;
    return true;
}
