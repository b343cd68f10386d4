#include "mainwindow/SingleInstance.h"

#include "TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <atomic>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

// A second start hands its paths to the first over a local socket; the first keeps listening
// after a run that crashed left its socket behind.
class tst_SingleInstance : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void secondStartHandsItsPathsOver();
    void withoutARunningInstanceNothingIsHandedOver();
    void socketLeftByACrashedRunIsTakenOver();

private:
    static QString uniqueName(const char *suffix)
    {
        return QStringLiteral("palomet-test-%1-%2").arg(::getpid()).arg(QLatin1String(suffix));
    }
    // The second start runs on another thread, as it would in its own process: it blocks.
    static bool handOverFromAnotherThread(const QString &name, const QStringList &paths)
    {
        std::atomic<bool> done = false;
        bool handed = false;
        std::thread client([&] {
            handed = SingleInstance(name).handOverToRunningInstance(paths);
            done = true;
        });
        TestSupport::waitUntil([&] { return done.load(); });
        client.join();
        return handed;
    }
};

void tst_SingleInstance::secondStartHandsItsPathsOver()
{
    SingleInstance first(uniqueName("handover"));
    QList<QStringList> received;
    QVERIFY(first.listen([&](const QStringList &paths) { received << paths; }));
    const QStringList paths {u"/photos/été 2024"_qs, u"/music/a\nb.mp3"_qs};
    QVERIFY(handOverFromAnotherThread(first.serverName, paths));
    QVERIFY(TestSupport::waitUntil([&] { return !received.isEmpty(); }));
    QCOMPARE(received, QList<QStringList> {paths});
    // Another instance cannot take the name while the first runs.
    SingleInstance second(first.serverName);
    QVERIFY(!second.listen([](const QStringList &) {}));
}

void tst_SingleInstance::withoutARunningInstanceNothingIsHandedOver()
{
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!SingleInstance(uniqueName("nobody")).handOverToRunningInstance({u"/a"_qs}));
    QVERIFY(timer.elapsed() < 2000);
    // The default name is the user's and the settings file's.
    QVERIFY(SingleInstance::defaultServerName().startsWith(
        QStringLiteral("palomet-%1-").arg(::getuid())));
}

void tst_SingleInstance::socketLeftByACrashedRunIsTakenOver()
{
    const QString name = uniqueName("stale");
    const QByteArray path = QDir::temp().filePath(name).toLocal8Bit();
    // A bound socket whose process is gone: the file stays, nobody answers.
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, path.constData(), sizeof(address.sun_path));
    QCOMPARE(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    ::close(fd);
    QVERIFY(QFile::exists(QString::fromLocal8Bit(path)));

    SingleInstance instance(name);
    QStringList received;
    QVERIFY(instance.listen([&](const QStringList &paths) { received = paths; }));
    QVERIFY(handOverFromAnotherThread(name, {u"/x"_qs}));
    QVERIFY(TestSupport::waitUntil([&] { return received == QStringList {u"/x"_qs}; }));
}

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
