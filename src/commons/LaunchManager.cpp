#include "LaunchManager.h"

#include "Clock.h"
#include "platform/UserDefaults.h"

#include <QStringList>

#include <limits>

namespace {

template<class... Ts>
struct Overloaded : Ts...
{
    using Ts::operator()...;
};

// A stored object counts as set unless it is false (a check box that was never ticked).
bool isSet(const QVariant &object)
{
    if (!object.isValid() || object.isNull())
        return false;
    if (object.typeId() == QMetaType::Bool)
        return object.toBool();
    return true;
}

} // namespace

LaunchManager::LaunchManager(QString defaultsKeyRoot, UserDefaults &defaultsStorageAPI,
                             const Clock *dateProviderAPI)
    : defaultsKeyRoot(std::move(defaultsKeyRoot))
    , m_defaultsStorageAPI(defaultsStorageAPI)
    , m_dateProviderAPI(dateProviderAPI)
{ }

void LaunchManager::add(LaunchTrigger trigger, std::function<void()> function)
{
    launchList.append(LaunchListItem {std::move(trigger), std::move(function)});
}

void LaunchManager::launch()
{
    if (m_launched)
        return;
    m_launched = true;

    const QDateTime date = now();
    const int count
        = launchCount() < std::numeric_limits<int>::max() ? launchCount() + 1 : launchCount();
    m_defaultsStorageAPI.setObject(count, key(QStringLiteral("launchCount")));
    QDateTime first = firstLaunchDate();
    if (!first.isValid()) {
        first = date;
        m_defaultsStorageAPI.setObject(first.toString(Qt::ISODateWithMs),
                                       key(QStringLiteral("firstLaunchDate")));
    }

    // Decide first, then mark and run: two functions with the same run-once trigger fire
    // together, and a function cannot change whether the ones after it are due.
    QList<std::function<void()>> dueFunctions;
    QStringList fired;
    for (const LaunchListItem &item : std::as_const(launchList)) {
        if (!isDue(item.trigger, count, first, date))
            continue;
        dueFunctions.append(item.function);
        fired.append(onceKey(item.trigger));
    }
    for (const QString &once : std::as_const(fired)) {
        if (!once.isEmpty())
            m_defaultsStorageAPI.setObject(true, key(QStringLiteral("done.") + once));
    }
    m_defaultsStorageAPI.synchronize();
    for (const auto &function : std::as_const(dueFunctions)) {
        if (function)
            function();
    }
}

int LaunchManager::launchCount() const
{
    const QVariant stored = m_defaultsStorageAPI.objectForKey(key(QStringLiteral("launchCount")));
    const int type = stored.typeId();
    if (type != QMetaType::LongLong && type != QMetaType::Int && type != QMetaType::Double)
        return 0;
    const qlonglong count = stored.toLongLong();
    if (count < 0)
        return 0;
    return int(std::min<qlonglong>(count, std::numeric_limits<int>::max()));
}

QDateTime LaunchManager::firstLaunchDate() const
{
    const QString text = m_defaultsStorageAPI.stringForKey(key(QStringLiteral("firstLaunchDate")));
    return QDateTime::fromString(text, Qt::ISODateWithMs);
}

QString LaunchManager::key(const QString &name) const
{
    return defaultsKeyRoot + QLatin1Char('.') + name;
}

QDateTime LaunchManager::now() const
{
    return (m_dateProviderAPI ? *m_dateProviderAPI : Clock::current()).currentDate();
}

bool LaunchManager::isDue(const LaunchTrigger &trigger, int count, const QDateTime &first,
                          const QDateTime &now) const
{
    const QString once = onceKey(trigger);
    if (!once.isEmpty()
        && isSet(m_defaultsStorageAPI.objectForKey(key(QStringLiteral("done.") + once))))
        return false;
    return std::visit(
        Overloaded {
            [&](const LaunchTriggers::AfterDays &t) {
                return first.msecsTo(now) >= qint64(t.days) * 24 * 3600 * 1000;
            },
            [&](const LaunchTriggers::AfterLaunches &t) { return count >= t.launches; },
            [&](const LaunchTriggers::UntilDefaultsKeyIsSet &t) {
                return !isSet(m_defaultsStorageAPI.objectForKey(t.key));
            },
            [&](const LaunchTriggers::FirstLaunch &) { return count == 1; },
            [&](const LaunchTriggers::EveryTime &) { return true; },
        },
        trigger);
}

QString LaunchManager::onceKey(const LaunchTrigger &trigger)
{
    if (const auto *t = std::get_if<LaunchTriggers::AfterDays>(&trigger))
        return QStringLiteral("afterDays.%1").arg(t->days);
    if (const auto *t = std::get_if<LaunchTriggers::AfterLaunches>(&trigger))
        return QStringLiteral("afterLaunches.%1").arg(t->launches);
    return {};
}
