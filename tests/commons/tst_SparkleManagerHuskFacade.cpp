#include "commons/SmartAppDelegate.h"
#include "commons/SparkleManagerHuskFacade.h"
#include "commons/TestClock.h"
#include "commons/UpdateOfferDialog.h"
#include "platform/UserDefaults.h"

#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QAction>
#include <QDesktopServices>
#include <QNetworkProxy>
#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using Outcome = SparkleManagerHuskFacade::CheckOutcome;

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
    void checkOnCommandAnswersEachFeed_data();
    void checkOnCommandAnswersEachFeed();
    void anOfferCanBeTakenOrSkipped();
    void automaticChecksRunDailyAndStayQuiet();
    void withoutAFeedTheEntrySaysUpdatesComeWithThePackages();

private:
    QList<QUrl> openedUrls;
    RecordingPresenter alerts;
};

namespace {

// Answers every request with the same bytes: nothing at all for a null response.
class FeedServer : public QTcpServer
{
public:
    explicit FeedServer(QByteArray response)
        : m_response(std::move(response))
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
        if (m_response.isNull())
            return;
        socket->write(m_response);
        socket->disconnectFromHost();
    }

    QByteArray m_response;
};

QByteArray http(const QByteArray &body, const QByteArray &status = "200 OK")
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n" + body;
}

QByteArray feed(const QStringList &versions)
{
    QByteArray items;
    for (const QString &v : versions)
        items += QStringLiteral("<item><link>http://127.0.0.1/get/%1</link><description>"
                                "<![CDATA[<p>Changes in %1</p>]]></description>"
                                "<enclosure url=\"x\" sparkle:version=\"%1\"/></item>")
                     .arg(v)
                     .toUtf8();
    return R"(<rss version="2.0" xmlns:sparkle="urn:test"><channel>)" + items + "</channel></rss>";
}

void click(UpdateOfferDialog *offer, const char *button)
{
    QTest::mouseClick(offer->findChild<QPushButton *>(QLatin1String(button)), Qt::LeftButton);
}

// A launched application with its update checks.
struct Launched
{
    explicit Launched(const QString &feed)
        : delegate(AppDescription {QStringLiteral("Palomet"), feed, {}, {}, true})
    {
        updates.setTransferTimeout(500);
        updates.finishInitialization(delegate);
        TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); });
    }
    // Waits for the next check to end and answers its outcome.
    Outcome nextOutcome()
    {
        const qsizetype before = finished.size();
        if (!TestSupport::waitUntil([&] { return finished.size() > before; }, 15000))
            return Outcome::noFeed;
        return finished.last().at(0).value<Outcome>();
    }

    SmartAppDelegate delegate;
    SparkleManagerHuskFacade updates;
    QSignalSpy finished {&updates, &SparkleManagerHuskFacade::checkFinished};
};

} // namespace

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
    for (const char *key : {"SULastCheckTime", "SUSkippedVersion", "SUScheduledCheckInterval"})
        defaults.removeObjectForKey(QLatin1String(key));
    // Automatic checks stay off unless a test turns them on.
    defaults.setObject(false, QStringLiteral("SUEnableAutomaticChecks"));
    alerts.alerts.clear();
    openedUrls.clear();
}

void tst_SparkleManagerHuskFacade::checkOnCommandAnswersEachFeed_data()
{
    QTest::addColumn<QByteArray>("response");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<int>("requests");
    QTest::addColumn<QString>("alert");
    const QString upToDate = QStringLiteral("You're up to date!");
    const QString failed = QStringLiteral("Palomet could not look for updates");
    QTest::newRow("newer: 1.10 after 1.9")
        << http(feed({"1.8", "1.10", "1.9.1"})) << Outcome::updateAvailable << 1 << QString();
    QTest::newRow("same") << http(feed({"1.9", "1.2"})) << Outcome::upToDate << 1 << upToDate;
    QTest::newRow("older") << http(feed({"1.8"})) << Outcome::upToDate << 1 << upToDate;
    QTest::newRow("malformed") << http(feed({"2.0"}).left(90)) << Outcome::badFeed << 1 << failed;
    QTest::newRow("not found") << http("gone", "404 Not Found") << Outcome::badFeed << 1 << failed;
    // Qt's HTTP client asks once more when the connection closes before any answer.
    QTest::newRow("none: closed") << QByteArray("") << Outcome::noAnswer << 2 << failed;
    QTest::newRow("none: silence") << QByteArray() << Outcome::noAnswer << 1 << failed;
}

void tst_SparkleManagerHuskFacade::checkOnCommandAnswersEachFeed()
{
    QFETCH(QByteArray, response);
    QFETCH(Outcome, outcome);
    QFETCH(int, requests);
    QFETCH(QString, alert);

    FeedServer server(response);
    Launched app(server.url());
    QAction *entry = app.updates.checkForUpdateAction();
    QCOMPARE(entry->text(), QStringLiteral("Check for Update…"));
    QString printed;
    {
        const TestSupport::StandardErrorCapture capture;
        entry->trigger();
        QCOMPARE(app.nextOutcome(), outcome);
        printed = capture.text();
    }
    QCOMPARE(server.requests, requests);
    // Whatever the answer, the log gets one quiet line.
    QCOMPARE(printed.count(u'\n'), 1);
    QVERIFY2(printed.startsWith(u"Update check: "), qPrintable(printed));

    if (outcome == Outcome::updateAvailable) {
        QVERIFY(alerts.alerts.isEmpty());
        UpdateOfferDialog *offer = app.updates.offerDialog();
        QVERIFY(offer && offer->isVisible());
        QCOMPARE(offer->item().version, QStringLiteral("1.10"));
        QCOMPARE(offer->releaseNotesText(), QStringLiteral("Changes in 1.10"));
    } else {
        QVERIFY(!app.updates.offerDialog());
        QCOMPARE(alerts.alerts.size(), 1);
        QCOMPARE(alerts.alerts.first().title, alert);
    }
}

void tst_SparkleManagerHuskFacade::anOfferCanBeTakenOrSkipped()
{
    FeedServer server(http(feed({"2.0"})));
    Launched app(server.url());
    bool willInstall = false;
    app.updates.updaterWillInstallUpdateFunc = [&] {
        willInstall = true;
    };

    app.updates.checkForUpdate();
    QCOMPARE(app.nextOutcome(), Outcome::updateAvailable);
    click(app.updates.offerDialog(), "downloadButton");
    QVERIFY(willInstall);
    QCOMPARE(openedUrls, QList<QUrl>({QUrl(QStringLiteral("http://127.0.0.1/get/2.0"))}));
    QTRY_VERIFY(!app.updates.offerDialog());

    app.updates.checkForUpdate();
    QCOMPARE(app.nextOutcome(), Outcome::updateAvailable);
    click(app.updates.offerDialog(), "skipButton");
    QCOMPARE(UserDefaults::standard().stringForKey(QStringLiteral("SUSkippedVersion")),
             QStringLiteral("2.0"));
    QTRY_VERIFY(!app.updates.offerDialog());
    // The command still offers a skipped version; only automatic checks keep quiet about it.
    app.updates.checkForUpdate();
    QCOMPARE(app.nextOutcome(), Outcome::updateAvailable);
    QVERIFY(app.updates.offerDialog());
}

void tst_SparkleManagerHuskFacade::automaticChecksRunDailyAndStayQuiet()
{
    TestClock clock(800'000'000.0);
    Clock::setCurrent(&clock);
    UserDefaults &defaults = UserDefaults::standard();
    defaults.removeObjectForKey(QStringLiteral("SUEnableAutomaticChecks")); // on by default
    // A damaged interval reads as the registered day.
    defaults.setObject(QStringLiteral("often"), QStringLiteral("SUScheduledCheckInterval"));
    FeedServer server(http(feed({"1.9"})));
    {
        Launched app(server.url());
        clock.advance(0); // the first launch checks at once
        QCOMPARE(app.nextOutcome(), Outcome::upToDate);
        clock.advance(86399);
        QTest::qWait(50);
        QCOMPARE(server.requests, 1);
        clock.advance(1);
        QCOMPARE(app.nextOutcome(), Outcome::upToDate);
    }
    // A later launch waits for the rest of the day since the last check.
    clock.advance(3600);
    {
        Launched app(server.url());
        clock.advance(86400 - 3600 - 1);
        QTest::qWait(50);
        QCOMPARE(server.requests, 2);
        clock.advance(1);
        QCOMPARE(app.nextOutcome(), Outcome::upToDate);
    }
    // A skipped version is not offered by the daily check; switched off, nothing is checked.
    defaults.setObject(QStringLiteral("1.10"), QStringLiteral("SUSkippedVersion"));
    FeedServer newer(http(feed({"1.10"})));
    {
        Launched app(newer.url());
        clock.advance(86400);
        QCOMPARE(app.nextOutcome(), Outcome::updateSkipped);
        QVERIFY(!app.updates.offerDialog());
        defaults.setObject(false, QStringLiteral("SUEnableAutomaticChecks"));
        clock.advance(2 * 86400);
        QTest::qWait(50);
        QCOMPARE(newer.requests, 1);
    }
    QVERIFY(alerts.alerts.isEmpty());
    Clock::setCurrent(nullptr);
}

void tst_SparkleManagerHuskFacade::withoutAFeedTheEntrySaysUpdatesComeWithThePackages()
{
    TestClock clock;
    Clock::setCurrent(&clock);
    UserDefaults::standard().removeObjectForKey(QStringLiteral("SUEnableAutomaticChecks"));
    Launched app {QString()};
    QCOMPARE(clock.pendingTimerCount(), 0); // no automatic check
    QAction *entry = app.updates.checkForUpdateAction();
    QVERIFY(entry->statusTip().contains(u"come with your system's packages"));
    entry->trigger();
    QCOMPARE(alerts.alerts.size(), 1);
    QCOMPARE(alerts.alerts.first().title,
             QStringLiteral("Updates come with your system's packages"));
    // The entry has a group of its own, right after the preferences.
    const MenuItemManager &menus = app.delegate.menuItemManager;
    QCOMPARE(menus.groupNames(),
             QStringList({MenuItemManager::preferencesGroup, SparkleManagerHuskFacade::groupName,
                          MenuItemManager::helpGroup}));
    QCOMPARE(menus.actions(SparkleManagerHuskFacade::groupName), QList<QAction *>({entry}));
    Clock::setCurrent(nullptr);
}

QTEST_MAIN(tst_SparkleManagerHuskFacade)
#include "tst_SparkleManagerHuskFacade.moc"
