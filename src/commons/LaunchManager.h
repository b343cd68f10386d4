#pragma once

#include "LaunchTrigger.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <functional>

class Clock;
class UserDefaults;

struct LaunchListItem
{
    LaunchTrigger trigger;
    std::function<void()> function;
};

// Keeps count of the application's launches and runs functions when their trigger is due. Its
// bookkeeping lives in the user defaults under defaultsKeyRoot:
//   <root>.launchCount      launches counted so far, this one included
//   <root>.firstLaunchDate  the first launch, as ISO 8601 text in UTC
//   <root>.done.<trigger>   true once a run-once trigger has fired ("afterDays.7")
// A damaged value counts as absent and is written anew. Main thread only.
class LaunchManager
{
public:
    // Without a clock, the one installed at each use (Clock::current()).
    explicit LaunchManager(QString defaultsKeyRoot, UserDefaults &defaultsStorageAPI,
                           const Clock *dateProviderAPI = nullptr);

    void add(LaunchTrigger trigger, std::function<void()> function);

    // Counts this launch, then runs the functions whose trigger is due, in order of adding.
    // Counts once per manager: a second call does nothing.
    void launch();

    int launchCount() const;
    QDateTime firstLaunchDate() const; // invalid before the first launch was counted

    const QString defaultsKeyRoot;
    QList<LaunchListItem> launchList;

private:
    QString key(const QString &name) const;
    QDateTime now() const;
    bool isDue(const LaunchTrigger &trigger, int count, const QDateTime &first,
               const QDateTime &now) const;
    static QString onceKey(const LaunchTrigger &trigger);

    UserDefaults &m_defaultsStorageAPI;
    const Clock *m_dateProviderAPI;
    bool m_launched = false;
};
