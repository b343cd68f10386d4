#include "SmartAppDelegate.h"

#include <QEvent>
#include <QGuiApplication>
#include <QtGui/qevent.h>

namespace {

// Live delegates, oldest first. Main thread only.
QList<SmartAppDelegate *> &liveDelegates()
{
    static QList<SmartAppDelegate *> delegates;
    return delegates;
}

} // namespace

SmartAppDelegate::SmartAppDelegate(AppDescription appDescription, QObject *parent)
    : QObject(parent)
    , appDescription(std::move(appDescription))
{
    if (!qGuiApp)
        qFatal("SmartAppDelegate: there is no application object");
    liveDelegates().append(this);
    qGuiApp->installEventFilter(this);
    connect(qGuiApp, &QCoreApplication::aboutToQuit, this,
            &SmartAppDelegate::applicationWillTerminate);
    QMetaObject::invokeMethod(this, &SmartAppDelegate::applicationWillFinishLaunching,
                              Qt::QueuedConnection);
}

SmartAppDelegate::~SmartAppDelegate()
{
    liveDelegates().removeOne(this);
}

SmartAppDelegate &SmartAppDelegate::shared()
{
    if (liveDelegates().isEmpty())
        qFatal("SmartAppDelegate::shared: the application has no delegate");
    return *liveDelegates().constLast();
}

bool SmartAppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qGuiApp && event->type() == QEvent::ApplicationStateChange)
        applicationStateChanged(
            static_cast<QApplicationStateChangeEvent *>(event)->applicationState());
    return QObject::eventFilter(watched, event);
}

void SmartAppDelegate::applicationWillFinishLaunching()
{
    if (m_stage != Stage::created)
        return;
    m_stage = Stage::finishingLaunch;
    run(willFinishLaunchingCallbackList, AppNotification::Phase::willFinishLaunching,
        QGuiApplication::applicationState());
    QMetaObject::invokeMethod(this, &SmartAppDelegate::applicationDidFinishLaunching,
                              Qt::QueuedConnection);
}

void SmartAppDelegate::applicationDidFinishLaunching()
{
    if (m_stage != Stage::finishingLaunch)
        return;
    m_stage = Stage::launched;
    run(didFinishLaunchingCallbackList, AppNotification::Phase::didFinishLaunching,
        QGuiApplication::applicationState());
    applicationStateChanged(QGuiApplication::applicationState());
}

void SmartAppDelegate::applicationStateChanged(Qt::ApplicationState state)
{
    if (m_stage != Stage::launched)
        return;
    const bool active = state == Qt::ApplicationActive;
    if (active == m_active)
        return;
    m_active = active;
    if (active) {
        run(willBecomeActiveCallbackList, AppNotification::Phase::willBecomeActive, state);
        run(didBecomeActiveCallbackList, AppNotification::Phase::didBecomeActive, state);
    } else {
        run(willResignActiveCallbackList, AppNotification::Phase::willResignActive, state);
        run(didResignActiveCallbackList, AppNotification::Phase::didResignActive, state);
    }
}

void SmartAppDelegate::applicationWillTerminate()
{
    if (m_stage == Stage::terminated)
        return;
    m_stage = Stage::terminated;
    run(willTerminateCallbackList, AppNotification::Phase::willTerminate,
        QGuiApplication::applicationState());
}

void SmartAppDelegate::run(const AppCallbackList &list, AppNotification::Phase phase,
                           Qt::ApplicationState state)
{
    list.run(*this, AppNotification {phase, state});
}
