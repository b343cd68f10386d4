#include "MenuItemManager.h"

#include <QAction>
#include <QMenu>

MenuItemManager::MenuItemManager(QObject *parent)
    : QObject(parent)
{
    m_groups.append(Group {preferencesGroup, {}});
    m_groups.append(Group {helpGroup, {}});
}

QStringList MenuItemManager::groupNames() const
{
    QStringList names;
    for (const Group &group : m_groups)
        names.append(group.name);
    return names;
}

void MenuItemManager::addGroup(const QString &group, const QString &afterGroup)
{
    if (groupNames().contains(group))
        return;
    const qsizetype after = groupNames().indexOf(afterGroup);
    m_groups.insert(after < 0 ? m_groups.size() : after + 1, Group {group, {}});
}

QAction *MenuItemManager::addItem(const QString &group, const QString &title,
                                  std::function<void()> function)
{
    auto *action = new QAction(title, this);
    if (function)
        connect(action, &QAction::triggered, this,
                [function = std::move(function)] { function(); });
    addAction(group, action);
    return action;
}

void MenuItemManager::addAction(const QString &group, QAction *action)
{
    if (!action->parent())
        action->setParent(this);
    this->group(group).actions.append(action);
}

void MenuItemManager::addSeparator(const QString &group)
{
    auto *separator = new QAction(this);
    separator->setSeparator(true);
    addAction(group, separator);
}

QList<QAction *> MenuItemManager::actions(const QString &group) const
{
    for (const Group &g : m_groups) {
        if (g.name == group)
            return g.actions;
    }
    return {};
}

QAction *MenuItemManager::action(const QString &objectName) const
{
    for (const Group &g : m_groups) {
        for (QAction *action : g.actions) {
            if (action->objectName() == objectName)
                return action;
        }
    }
    return nullptr;
}

void MenuItemManager::fillMenu(QMenu *menu, const QStringList &groups) const
{
    bool needsSeparator = !menu->actions().isEmpty();
    for (const QString &name : groups) {
        const QList<QAction *> entries = actions(name);
        if (entries.isEmpty())
            continue;
        if (needsSeparator)
            menu->addSeparator();
        menu->addActions(entries);
        needsSeparator = true;
    }
}

MenuItemManager::Group &MenuItemManager::group(const QString &name)
{
    for (Group &g : m_groups) {
        if (g.name == name)
            return g;
    }
    m_groups.append(Group {name, {}});
    return m_groups.last();
}
