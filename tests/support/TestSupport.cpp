#include "TestSupport.h"

#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTest>

namespace TestSupport {

void useTemporaryUserDefaults()
{
    static QTemporaryDir directory;
    UserDefaults::setStandardFilePath(directory.filePath(QStringLiteral("preferences.json")));
}

bool waitUntil(const std::function<bool()> &predicate, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!predicate()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QTest::qSleep(1);
    }
    return true;
}

} // namespace TestSupport
