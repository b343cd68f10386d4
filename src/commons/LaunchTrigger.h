#pragma once

#include <QString>

#include <variant>

// When a launch function runs. The ones that run once remember it under the launch manager's
// defaults key root.
namespace LaunchTriggers {

// Once, at the first launch at least this many days after the first launch ever.
struct AfterDays
{
    int days = 0;
};
// Once, at the launch that brings the count of launches to this number (or the first launch
// after it, for a function added once the count had passed it).
struct AfterLaunches
{
    int launches = 0;
};
// At every launch while the key holds nothing (or false) in the user defaults.
struct UntilDefaultsKeyIsSet
{
    QString key;
};
// At the very first launch only.
struct FirstLaunch
{ };
// At every launch.
struct EveryTime
{ };

} // namespace LaunchTriggers

using LaunchTrigger = std::variant<LaunchTriggers::AfterDays, LaunchTriggers::AfterLaunches,
                                   LaunchTriggers::UntilDefaultsKeyIsSet,
                                   LaunchTriggers::FirstLaunch, LaunchTriggers::EveryTime>;
