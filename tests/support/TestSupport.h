#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

// Helpers shared by the tests: a private preferences file, waiting with the event loop running.
namespace TestSupport {

// Points the standard user defaults at a file inside a temporary folder that lives for the
// whole test run. Call before anything touches the store.
void useTemporaryUserDefaults();

// Spins the event loop until the predicate holds or the timeout passes; returns the predicate.
bool waitUntil(const std::function<bool()> &predicate, int timeoutMs = 10000);

// Lets every block posted to the main queue so far run.
bool drainMainQueue();

// Waits until the write engine has nothing pending, its last batch's end has reached the main
// thread, and the written files have been read anew.
bool waitForWrites(int timeoutMs = 120000);

// Runs this test program again with the environment variable set, for a scenario that must stop
// it with a failure; answers what it wrote to standard error, or a note saying it did not stop.
QByteArray standardErrorOfFailingRun(const QString &variable, const QString &value);

// Sends what the process writes to standard error (the log) into a file while it lives, at the
// descriptor, so that child processes and C libraries are caught too.
class StandardErrorCapture
{
public:
    StandardErrorCapture();
    ~StandardErrorCapture();
    StandardErrorCapture(const StandardErrorCapture &) = delete;
    StandardErrorCapture &operator=(const StandardErrorCapture &) = delete;

    // What was written so far.
    QString text() const;

private:
    std::unique_ptr<QTemporaryFile> m_file;
    int m_saved = -1;
};
// Runs the work and answers what was written to standard error meanwhile.
QByteArray standardErrorOf(const std::function<void()> &work);

} // namespace TestSupport
