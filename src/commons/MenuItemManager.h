#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class QAction;
class QMenu;

// The application's menu entries, kept in named groups in menu order, so that each part adds its
// own entries and the window that owns the menu bar decides which groups go into which menu.
// Group names are keys, never shown. The actions belong to the manager.
class MenuItemManager : public QObject
{
    Q_OBJECT

public:
    static inline const QString preferencesGroup = QStringLiteral("Preferences");
    static inline const QString helpGroup = QStringLiteral("Help");

    // Starts with the standard groups: Preferences, then Help.
    explicit MenuItemManager(QObject *parent = nullptr);

    QStringList groupNames() const;
    // Adds an empty group right after another (at the end when that one is unknown); a group
    // that exists already stays where it is.
    void addGroup(const QString &group, const QString &afterGroup = {});

    // Appends an entry to the group (made if needed) that calls the function when chosen.
    QAction *addItem(const QString &group, const QString &title, std::function<void()> function);
    void addAction(const QString &group, QAction *action);
    void addSeparator(const QString &group);
    QList<QAction *> actions(const QString &group) const;
    // The entry with this object name in any group; null when there is none.
    QAction *action(const QString &objectName) const;

    // Appends the entries of the groups to the menu in the order given, with a separator between
    // groups that have entries.
    void fillMenu(QMenu *menu, const QStringList &groups) const;

private:
    struct Group
    {
        QString name;
        QList<QAction *> actions;
    };

    Group &group(const QString &name);

    QList<Group> m_groups;
};
