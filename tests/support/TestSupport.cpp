#include "TestSupport.h"

#include "metadata/DataCoordinator.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"
#include "writing/WriteEngine.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>

#include <unistd.h>

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

bool drainMainQueue()
{
    auto reached = std::make_shared<bool>(false);
    MainQueue::post([reached] { *reached = true; });
    return waitUntil([reached] { return *reached; });
}

bool waitForWrites(int timeoutMs)
{
    const bool idle
        = waitUntil([] { return !WriteEngine::shared().hasPendingWrites(); }, timeoutMs);
    QTest::qWait(50);
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    return idle;
}

QByteArray standardErrorOf(const std::function<void()> &work)
{
    QTemporaryFile capture;
    if (!capture.open())
        return "(no file to capture standard error in)";
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(capture.handle(), STDERR_FILENO);
    work();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    capture.seek(0);
    return capture.readAll();
}

QByteArray standardErrorOfFailingRun(const QString &variable, const QString &value)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(variable, value);
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), {});
    if (!process.waitForFinished(20000))
        return "(the run did not finish)";
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return "(the run ended without a failure)";
    return process.readAllStandardError();
}

StandardErrorCapture::StandardErrorCapture()
    : m_file(std::make_unique<QTemporaryFile>())
{
    std::fflush(stderr);
    if (!m_file->open())
        return;
    m_saved = ::dup(STDERR_FILENO);
    ::dup2(m_file->handle(), STDERR_FILENO);
}

StandardErrorCapture::~StandardErrorCapture()
{
    if (m_saved < 0)
        return;
    std::fflush(stderr);
    ::dup2(m_saved, STDERR_FILENO);
    ::close(m_saved);
}

QString StandardErrorCapture::text() const
{
    if (m_saved < 0)
        return QStringLiteral("(could not capture standard error)");
    std::fflush(stderr);
    QFile file(m_file->fileName());
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

} // namespace TestSupport
