#include "mainwindow/SingleInstance.h"

#include "TestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

// A second start hands its paths to the first over a local socket; the first keeps listening
// after a run that crashed left its socket behind. Last, the real program, twice.
class tst_SingleInstance : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void secondStartHandsItsPathsOver();
    void withoutARunningInstanceNothingIsHandedOver();
    void socketLeftByACrashedRunIsTakenOver();
    void secondProgramHandsItsPathsToTheFirst();

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

void tst_SingleInstance::secondProgramHandsItsPathsToTheFirst()
{
    QTemporaryDir home;
    const QString first = home.filePath(u"first"_qs), second = home.filePath(u"second"_qs);
    QVERIFY(QDir().mkpath(first) && QDir().mkpath(second));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_qs, home.filePath(u"config"_qs));
    environment.insert(u"QT_QPA_PLATFORM"_qs, u"offscreen"_qs);
    const QString preferences = home.filePath(u"config/palomet/preferences.json"_qs);
    const auto storedSources = [&] {
        QFile file(preferences);
        if (!file.open(QIODevice::ReadOnly))
            return QStringList();
        return QJsonDocument::fromJson(file.readAll())
            .object()
            .value(u"brisk_sources"_qs)
            .toVariant()
            .toStringList();
    };

    QProcess running;
    running.setProcessEnvironment(environment);
    running.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    running.start(QStringLiteral(PALOMET_EXECUTABLE), {first});
    QVERIFY(running.waitForStarted());
    QVERIFY(TestSupport::waitUntil([&] { return storedSources() == QStringList {first}; }, 30000));

    QProcess later;
    later.setProcessEnvironment(environment);
    later.start(QStringLiteral(PALOMET_EXECUTABLE), {second});
    QVERIFY(later.waitForFinished(15000));
    QCOMPARE(later.exitStatus(), QProcess::NormalExit);
    QCOMPARE(later.exitCode(), 0);
    QVERIFY(TestSupport::waitUntil(
        [&] {
            return storedSources() == QStringList {first, second};
        },
        15000));
    QCOMPARE(running.state(), QProcess::Running);

    // SIGTERM quits as the Quit command does: the list of sources does not outlive the run.
    running.terminate();
    QVERIFY(running.waitForFinished(15000));
    QCOMPARE(running.exitStatus(), QProcess::NormalExit);
    QCOMPARE(running.exitCode(), 0);
    QCOMPARE(storedSources(), QStringList());
}

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
