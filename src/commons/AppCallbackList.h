#pragma once

#include <QList>
#include <Qt>

#include <functional>

class SmartAppDelegate;

// What a phase callback is told besides the delegate: the moment, and the application's state.
struct AppNotification
{
    enum class Phase {
        willFinishLaunching,
        didFinishLaunching,
        willBecomeActive,
        didBecomeActive,
        willResignActive,
        didResignActive,
        willTerminate,
    };
    Phase phase;
    Qt::ApplicationState applicationState;
};

using AppCallback = std::function<void(SmartAppDelegate &delegate, const AppNotification &)>;

// The callbacks of one phase, run in order of adding. A callback added while its own list runs
// runs in the same pass, after those added before it.
class AppCallbackList
{
public:
    void append(AppCallback callback) { m_callbacks.append(std::move(callback)); }
    qsizetype size() const { return m_callbacks.size(); }
    void run(SmartAppDelegate &delegate, const AppNotification &notification) const;

private:
    QList<AppCallback> m_callbacks;
};
