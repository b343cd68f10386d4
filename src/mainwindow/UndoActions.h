#pragma once

#include <QObject>

class QAction;
class QMenu;
class UndoManager;

// The Edit menu's Undo and Redo of written changes. Their titles follow the manager ("Undo City
// on 240 Files"), they are disabled while there is nothing to reverse or anything is being
// written, and they carry the standard keys (Ctrl+Z, Ctrl+Shift+Z). A text field with the focus
// takes those keys for its own typing before the menu sees them. Files changed outside Palomet
// are named in the manager's alert, which goes through the installed AlertPresenter, the
// window's alert path. Main thread only.
class UndoActions : public QObject
{
    Q_OBJECT

public:
    explicit UndoActions(QObject *parent = nullptr);
    UndoActions(UndoManager &manager, QObject *parent);

    // Puts both entries at the end of menu; each time it opens they are brought up to date, so
    // that they are off while a write is under way.
    void addTo(QMenu *menu);

    QAction *undoAction() const { return m_undo; }
    QAction *redoAction() const { return m_redo; }

private:
    UndoManager &m_manager;
    QAction *m_undo;
    QAction *m_redo;
};
