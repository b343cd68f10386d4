#include "commons/SmartAppDelegate.h"
#include "commons/SparkleManagerHuskFacade.h"
#include "commons/TestClock.h"
#include "commons/UpdateOfferDialog.h"
#include "platform/UserDefaults.h"

#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QNetworkProxy>
#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

// The update check against a feed served on 127.0.0.1 by the test itself.
class tst_SparkleManagerHuskFacade : public QObject
{
    Q_OBJECT

public slots:
    // QDesktopServices hands the test the links the application opens.
    void openUrl(const QUrl &url) { openedUrls.append(url); }

private slots:
    void initTestCase();
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("http")); }
    void init();
    void cleanup();
    void checkOnCommandShowsEachAnswer_data();
    void checkOnCommandShowsEachAnswer();
    void anOfferCanBeTakenOrSkipped();
    void automaticChecksRunDailyAndStayQuiet();
    void withoutAFeedTheEntrySaysUpdatesComeWithThePackages();

private:
    struct Launched;
    std::unique_ptr<Launched> launch(const QString &feed);

    QList<QUrl> openedUrls;
    RecordingPresenter alerts;
};

namespace {

// A one-file HTTP server: answers every GET with the same response, or never answers.
class FeedServer : public QTcpServer
{
public:
    enum class Mode { serve, closeAtOnce, stayQuiet };

    explicit FeedServer(Mode mode = Mode::serve, QByteArray body = {}, int status = 200)
        : m_mode(mode)
        , m_body(std::move(body))
        , m_status(status)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
    }
    QString url() const
    {
        return QStringLiteral("http://127.0.0.1:%1/appcast.xml").arg(serverPort());
    }
    int requests = 0;

private:
    void answer(QTcpSocket *socket)
    {
        if (!socket->peek(socket->bytesAvailable()).contains("\r\n\r\n"))
            return;
        socket->readAll();
        ++requests;
        if (m_mode == Mode::stayQuiet)
            return;
        if (m_mode == Mode::serve) {
            socket->write(QByteArray("HTTP/1.1 ") + QByteArray::number(m_status)
                          + (m_status == 200 ? " OK" : " Not Found")
                          + "\r\nContent-Type: application/rss+xml\r\nContent-Length: "
                          + QByteArray::number(m_body.size()) + "\r\nConnection: close\r\n\r\n"
                          + m_body);
        }
        socket->disconnectFromHost();
    }

    Mode m_mode;
    QByteArray m_body;
    int m_status;
};

QByteArray feed(const QStringList &versions)
{
    QByteArray items;
    for (const QString &version : versions) {
        items += QStringLiteral(
                     "<item><title>Palomet %1</title>"
                     "<link>http://127.0.0.1/download/%1</link>"
                     "<description><![CDATA[<ul><li>Changes in %1</li></ul>]]></description>"
                     "<enclosure url=\"http://127.0.0.1/palomet-%1.tar.xz\" "
                     "sparkle:version=\"%1\"/></item>")
                     .arg(version)
                     .toUtf8();
    }
    return "<?xml version=\"1.0\"?><rss version=\"2.0\" xmlns:sparkle=\"urn:test:appcast\">"
           "<channel><title>Palomet</title>"
        + items + "</channel></rss>";
}

UpdateOfferDialog *openOffer()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<UpdateOfferDialog *>(widget); dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

using Outcome = SparkleManagerHuskFacade::CheckOutcome;

} // namespace

struct tst_SparkleManagerHuskFacade::Launched
{
    SmartAppDelegate delegate;
    SparkleManagerHuskFacade updates;
    QSignalSpy finished {&updates, &SparkleManagerHuskFacade::checkFinished};

    explicit Launched(AppDescription description)
        : delegate(std::move(description))
    { }
    // Waits for the next check's end and answers its outcome.
    Outcome nextOutcome()
    {
        const qsizetype before = finished.size();
        if (!TestSupport::waitUntil([&] { return finished.size() > before; }, 15000))
            return Outcome::noFeed;
        return finished.last().at(0).value<Outcome>();
    }
};

std::unique_ptr<tst_SparkleManagerHuskFacade::Launched> tst_SparkleManagerHuskFacade::launch(
    const QString &feed)
{
    AppDescription description;
    description.productName = QStringLiteral("Palomet");
    description.sparkleFeedURL = feed;
    auto launched = std::make_unique<Launched>(description);
    launched->updates.setTransferTimeout(500);
    launched->updates.finishInitialization(launched->delegate);
    TestSupport::waitUntil([&] { return launched->delegate.hasFinishedLaunching(); });
    return launched;
}

void tst_SparkleManagerHuskFacade::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    // No proxy from the environment may carry a request off this machine.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "openUrl");
    QCoreApplication::setApplicationVersion(QStringLiteral("1.9"));
    AlertPresenter::install(&alerts);
}

void tst_SparkleManagerHuskFacade::init()
{
    UserDefaults &defaults = UserDefaults::standard();
    for (const char *key : {"SULastCheckTime", "SUSkippedVersion", "SUEnableAutomaticChecks",
                            "SUFeedURL", "SUScheduledCheckInterval"})
        defaults.removeObjectForKey(QString::fromLatin1(key));
    // Automatic checks stay off unless a test turns them on.
    defaults.setObject(false, QStringLiteral("SUEnableAutomaticChecks"));
    alerts.alerts.clear();
    openedUrls.clear();
}

void tst_SparkleManagerHuskFacade::cleanup()
{
    while (UpdateOfferDialog *dialog = openOffer())
        dialog->close();
}

void tst_SparkleManagerHuskFacade::checkOnCommandShowsEachAnswer_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("alertTitle");
    QTest::addColumn<int>("requests");

    const int serve = int(FeedServer::Mode::serve);
    QTest::newRow("newer: 1.10 after 1.9")
        << serve << feed({QStringLiteral("1.8"), QStringLiteral("1.10"), QStringLiteral("1.9.1")})
        << 200 << Outcome::updateAvailable << QString() << 1;
    QTest::newRow("same") << serve << feed({QStringLiteral("1.9"), QStringLiteral("1.2")}) << 200
                          << Outcome::upToDate << QStringLiteral("You're up to date!") << 1;
    QTest::newRow("older") << serve << feed({QStringLiteral("1.8")}) << 200 << Outcome::upToDate
                           << QStringLiteral("You're up to date!") << 1;
    const QString couldNot = QStringLiteral("Palomet could not look for updates");
    QTest::newRow("malformed: cut off") << serve << feed({QStringLiteral("2.0")}).left(150) << 200
                                        << Outcome::badFeed << couldNot << 1;
    QTest::newRow("malformed: a web page") << serve << QByteArray("<html><body>Hi</body></html>")
                                           << 200 << Outcome::badFeed << couldNot << 1;
    QTest::newRow("malformed: no version")
        << serve << feed({}) << 200 << Outcome::badFeed << couldNot << 1;
    QTest::newRow("not found") << serve << QByteArray("gone") << 404 << Outcome::badFeed << couldNot
                               << 1;
    // Qt's HTTP client asks once more when the connection closes before any answer.
    QTest::newRow("none: connection closed") << int(FeedServer::Mode::closeAtOnce) << QByteArray()
                                             << 0 << Outcome::noAnswer << couldNot << 2;
    QTest::newRow("none: silence") << int(FeedServer::Mode::stayQuiet) << QByteArray() << 0
                                   << Outcome::noAnswer << couldNot << 1;
}

void tst_SparkleManagerHuskFacade::checkOnCommandShowsEachAnswer()
{
    QFETCH(int, mode);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QFETCH(Outcome, outcome);
    QFETCH(QString, alertTitle);
    QFETCH(int, requests);

    FeedServer server(FeedServer::Mode(mode), body, status);
    auto launched = launch(server.url());
    QAction *entry = launched->updates.checkForUpdateAction();
    QVERIFY(entry);
    QCOMPARE(entry->text(), QStringLiteral("Check for Update…"));

    QString printed;
    {
        TestSupport::StandardErrorCapture capture;
        entry->trigger();
        QCOMPARE(launched->nextOutcome(), outcome);
        printed = capture.text();
    }
    QCOMPARE(server.requests, requests);
    // Whatever the answer, the log gets one line.
    QCOMPARE(printed.count(u'\n'), 1);
    QVERIFY2(printed.startsWith(u"Update check: "), qPrintable(printed));

    if (outcome == Outcome::updateAvailable) {
        QVERIFY(alerts.alerts.isEmpty());
        UpdateOfferDialog *offer = openOffer();
        QVERIFY(offer);
        QCOMPARE(offer->item().version, QStringLiteral("1.10"));
        QCOMPARE(offer->releaseNotesText(), QStringLiteral("Changes in 1.10"));
    } else {
        QVERIFY(!openOffer());
        QCOMPARE(alerts.alerts.size(), 1);
        QCOMPARE(alerts.alerts.first().title, alertTitle);
    }
}

void tst_SparkleManagerHuskFacade::anOfferCanBeTakenOrSkipped()
{
    FeedServer server(FeedServer::Mode::serve, feed({QStringLiteral("2.0")}));
    auto launched = launch(server.url());
    bool willInstall = false;
    launched->updates.updaterWillInstallUpdateFunc = [&] {
        willInstall = true;
    };

    launched->updates.checkForUpdate();
    QCOMPARE(launched->nextOutcome(), Outcome::updateAvailable);
    QTRY_VERIFY(openOffer());
    QTest::mouseClick(openOffer()->findChild<QPushButton *>(QStringLiteral("downloadButton")),
                      Qt::LeftButton);
    QVERIFY(willInstall);
    QCOMPARE(openedUrls, QList<QUrl>({QUrl(QStringLiteral("http://127.0.0.1/download/2.0"))}));
    QTRY_VERIFY(!openOffer());

    launched->updates.checkForUpdate();
    QCOMPARE(launched->nextOutcome(), Outcome::updateAvailable);
    QTRY_VERIFY(openOffer());
    QTest::mouseClick(openOffer()->findChild<QPushButton *>(QStringLiteral("skipButton")),
                      Qt::LeftButton);
    QCOMPARE(UserDefaults::standard().stringForKey(QStringLiteral("SUSkippedVersion")),
             QStringLiteral("2.0"));
    QTRY_VERIFY(!openOffer());
    // The command still offers a skipped version; only automatic checks keep quiet about it.
    launched->updates.checkForUpdate();
    QCOMPARE(launched->nextOutcome(), Outcome::updateAvailable);
    QTRY_VERIFY(openOffer());
}

void tst_SparkleManagerHuskFacade::automaticChecksRunDailyAndStayQuiet()
{
    TestClock clock(800'000'000.0);
    Clock::setCurrent(&clock);
    UserDefaults &defaults = UserDefaults::standard();
    defaults.removeObjectForKey(QStringLiteral("SUEnableAutomaticChecks")); // on by default
    // A damaged interval reads as the registered day.
    defaults.setObject(QStringLiteral("often"), QStringLiteral("SUScheduledCheckInterval"));
    FeedServer server(FeedServer::Mode::serve, feed({QStringLiteral("1.9")}));
    {
        auto launched = launch(server.url());
        clock.advance(0); // the first launch checks at once
        QCOMPARE(launched->nextOutcome(), Outcome::upToDate);
        QVERIFY(alerts.alerts.isEmpty());
        clock.advance(86399);
        QTest::qWait(50);
        QCOMPARE(server.requests, 1);
        clock.advance(1);
        QCOMPARE(launched->nextOutcome(), Outcome::upToDate);
        QCOMPARE(server.requests, 2);
    }
    // A later launch waits for the rest of the day since the last check.
    clock.advance(3600);
    {
        auto launched = launch(server.url());
        clock.advance(86400 - 3600 - 1);
        QTest::qWait(50);
        QCOMPARE(server.requests, 2);
        clock.advance(1);
        QCOMPARE(launched->nextOutcome(), Outcome::upToDate);
    }
    // A skipped version is not offered by the daily check; switched off, nothing is checked.
    defaults.setObject(QStringLiteral("1.10"), QStringLiteral("SUSkippedVersion"));
    FeedServer newer(FeedServer::Mode::serve, feed({QStringLiteral("1.10")}));
    {
        auto launched = launch(newer.url());
        clock.advance(86400);
        QCOMPARE(launched->nextOutcome(), Outcome::updateSkipped);
        QVERIFY(!openOffer());
        defaults.setObject(false, QStringLiteral("SUEnableAutomaticChecks"));
        clock.advance(2 * 86400);
        QTest::qWait(50);
        QCOMPARE(newer.requests, 1);
        QVERIFY(alerts.alerts.isEmpty());
    }
    Clock::setCurrent(nullptr);
}

void tst_SparkleManagerHuskFacade::withoutAFeedTheEntrySaysUpdatesComeWithThePackages()
{
    TestClock clock(800'000'000.0);
    Clock::setCurrent(&clock);
    UserDefaults::standard().removeObjectForKey(QStringLiteral("SUEnableAutomaticChecks"));
    auto launched = launch(QString());
    QCOMPARE(clock.pendingTimerCount(), 0); // no automatic check
    QAction *entry = launched->updates.checkForUpdateAction();
    QVERIFY(entry->statusTip().contains(u"come with your system's packages"));
    entry->trigger();
    QCOMPARE(alerts.alerts.size(), 1);
    QCOMPARE(alerts.alerts.first().title,
             QStringLiteral("Updates come with your system's packages"));

    // The entry has a group of its own, right after the preferences.
    const MenuItemManager &menus = launched->delegate.menuItemManager;
    QCOMPARE(menus.groupNames(),
             QStringList({MenuItemManager::preferencesGroup, SparkleManagerHuskFacade::groupName,
                          MenuItemManager::helpGroup}));
    QCOMPARE(menus.actions(SparkleManagerHuskFacade::groupName), QList<QAction *>({entry}));
    Clock::setCurrent(nullptr);
}

QTEST_MAIN(tst_SparkleManagerHuskFacade)
#include "tst_SparkleManagerHuskFacade.moc"
