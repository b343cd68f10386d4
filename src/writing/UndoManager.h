#pragma once

#include "UndoJournal.h"
#include "bricks/Variables.h"
#include "session/Node.h"

#include <QString>
#include <QStringList>

#include <functional>

// Undo and Redo of Palomet's writes, for the Edit menu: what the two entries say and do. Undo
// writes back, through the write engine, what the journal recorded for the last command still
// standing, removing the tags that were absent; Redo writes the undone values again. A file
// changed outside Palomet since Palomet's last write to it (its change time or size differ from
// the journal's) is left alone, and all such files are named in one alert. Main thread only.
class UndoManager
{
public:
    static UndoManager &shared();

    UndoManager(const UndoManager &) = delete;
    UndoManager &operator=(const UndoManager &) = delete;

    // "Undo City on 240 Files" or plain "Undo" when there is nothing to undo; likewise "Redo".
    StraightVariable<QString> &undoTitle() { return m_undoTitle; }
    StraightVariable<QString> &redoTitle() { return m_redoTitle; }
    // Whether the entries are enabled: something to reverse and no write under way.
    StraightVariable<bool> &canUndo() { return m_canUndo; }
    StraightVariable<bool> &canRedo() { return m_canRedo; }

    // Start reversing; false (nothing happens) when the entry is disabled. The files that are
    // left alone are returned as well as shown.
    bool undo(QStringList *skippedFiles = nullptr);
    bool redo(QStringList *skippedFiles = nullptr);

    // Reads the journal and the write engine again; done after every batch by itself.
    void refresh();

    // Finds the list's node of a path, so that its views hear of the re-read; without one (or
    // when it finds none) a node is made for the re-read alone.
    void setNodeLookup(std::function<NodePtr(const QString &path)> lookup);

    // "Undo City on 240 Files"
    static QString title(const QString &verb, const UndoJournal::Command &command);

private:
    UndoManager();

    bool reverse(const std::optional<UndoJournal::Command> &command, UndoJournal::Kind kind,
                 QStringList *skippedFiles);

    StraightVariable<QString> m_undoTitle {QStringLiteral("Undo")};
    StraightVariable<QString> m_redoTitle {QStringLiteral("Redo")};
    StraightVariable<bool> m_canUndo {false};
    StraightVariable<bool> m_canRedo {false};
    std::function<NodePtr(const QString &)> m_nodeLookup;
    int m_outstandingWrites = 0;
};
