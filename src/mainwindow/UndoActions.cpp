#include "UndoActions.h"

#include "writing/UndoManager.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QPointer>

UndoActions::UndoActions(QObject *parent)
    : UndoActions(UndoManager::shared(), parent)
{ }

void UndoActions::addTo(QMenu *menu)
{
    menu->addAction(m_undo);
    menu->addAction(m_redo);
    connect(menu, &QMenu::aboutToShow, this, [this] { m_manager.refresh(); });
}

UndoActions::UndoActions(UndoManager &manager, QObject *parent)
    : QObject(parent)
    , m_manager(manager)
    , m_undo(new QAction(tr("Undo"), this))
    , m_redo(new QAction(tr("Redo"), this))
{
    const auto bind = [](QAction *action, const QString &name, QList<QKeySequence> keys,
                         StraightVariable<QString> &title, StraightVariable<bool> &enabled,
                         std::function<void()> command) {
        action->setObjectName(name);
        action->setShortcuts(keys);
        // The manager outlives the window; its listeners cannot be removed, so they hold the
        // action weakly.
        QPointer<QAction> weak(action);
        title.addHotListener([weak](const QString &text) {
            // The first letter is the menu's mnemonic; the tool tip shows the text without it.
            if (weak)
                weak->setText(u'&' + text);
        });
        enabled.addHotListener([weak](const bool &on) {
            if (weak)
                weak->setEnabled(on);
        });
        QObject::connect(action, &QAction::triggered, action,
                         [command = std::move(command)] { command(); });
    };
    // Ctrl+Shift+Z redoes on every desktop, beside whatever else the platform's theme binds.
    QList<QKeySequence> redoKeys = QKeySequence::keyBindings(QKeySequence::Redo);
    const QKeySequence shiftZ(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    // First, so that the menu shows it.
    redoKeys.removeAll(shiftZ);
    redoKeys.prepend(shiftZ);
    bind(m_undo, QStringLiteral("undo"), QKeySequence::keyBindings(QKeySequence::Undo),
         manager.undoTitle(), manager.canUndo(), [&manager] { manager.undo(); });
    bind(m_redo, QStringLiteral("redo"), redoKeys, manager.redoTitle(), manager.canRedo(),
         [&manager] { manager.redo(); });
}
