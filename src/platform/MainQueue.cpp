#include "MainQueue.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

namespace MainQueue {

void post(std::function<void()> block)
{
    // Without an application the program is ending, and nobody is left to be told.
    QCoreApplication *app = QCoreApplication::instance();
    if (!app)
        return;
    QMetaObject::invokeMethod(app, std::move(block), Qt::QueuedConnection);
}

void postAfter(int delayMs, std::function<void()> block)
{
    post([delayMs, block = std::move(block)]() mutable {
        QTimer::singleShot(delayMs, QCoreApplication::instance(), std::move(block));
    });
}

bool isMainThread()
{
    QCoreApplication *app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

void runOrPost(std::function<void()> block)
{
    if (isMainThread())
        block();
    else
        post(std::move(block));
}

} // namespace MainQueue
