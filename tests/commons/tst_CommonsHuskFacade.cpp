#include "commons/CommonsHuskFacade.h"
#include "commons/SmartAppDelegate.h"

#include "TestSupport.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QMessageBox>
#include <QTest>

// The standard Help entries come before the application's own, and each run counts a launch.
class tst_CommonsHuskFacade : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { openedUrls.append(url); }

private slots:
    void initTestCase();
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    void helpEntriesAndLaunchCount_data();
    void helpEntriesAndLaunchCount();

private:
    QList<QUrl> openedUrls;
};

void tst_CommonsHuskFacade::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    QCoreApplication::setApplicationVersion(QStringLiteral("3.1"));
}

void tst_CommonsHuskFacade::helpEntriesAndLaunchCount_data()
{
    QTest::addColumn<QString>("website");
    QTest::addColumn<bool>("standardMenus");
    QTest::addColumn<QStringList>("help");
    QTest::newRow("with a web site")
        << "https://palomet.invalid/" << true
        << QStringList({"Palomet Website", "About Palomet", "-", "Troubleshooting…"});
    QTest::newRow("bad web address")
        << "not a web address" << true << QStringList({"About Palomet", "-", "Troubleshooting…"});
    QTest::newRow("no standard menus")
        << "https://palomet.invalid/" << false << QStringList({"-", "Troubleshooting…"});
}

void tst_CommonsHuskFacade::helpEntriesAndLaunchCount()
{
    QFETCH(QString, website);
    QFETCH(bool, standardMenus);
    QFETCH(QStringList, help);

    SmartAppDelegate delegate(
        AppDescription {QStringLiteral("Palomet"), {}, website, {}, standardMenus});
    CommonsHuskFacade commons;
    const int launchesBefore = commons.launchManager.launchCount();
    // The application initialises the facade first of all, and adds its own entries after.
    delegate.willFinishLaunchingCallbackList.append(
        [&](SmartAppDelegate &d, const AppNotification &) { commons.finishInitialization(d); });
    delegate.willFinishLaunchingCallbackList.append(
        [](SmartAppDelegate &d, const AppNotification &) {
            d.menuItemManager.addSeparator(MenuItemManager::helpGroup);
            d.menuItemManager.addItem(MenuItemManager::helpGroup,
                                      QStringLiteral("Troubleshooting…"), {});
        });
    QVERIFY(TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); }));
    QCOMPARE(commons.launchManager.launchCount(), launchesBefore + 1);

    QMenu menu;
    delegate.menuItemManager.fillMenu(
        &menu, {MenuItemManager::preferencesGroup, MenuItemManager::helpGroup});
    QStringList titles;
    for (QAction *action : menu.actions())
        titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
    QCOMPARE(titles, help);

    if (QAction *site = delegate.menuItemManager.action(QStringLiteral("showWebsite"))) {
        site->trigger();
        QCOMPARE(openedUrls.takeLast(), QUrl(website));
    }
    if (QAction *about = delegate.menuItemManager.action(QStringLiteral("showAbout"))) {
        about->trigger();
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        QVERIFY(box->text().contains(u"Palomet 3.1"));
        box->close();
    }
}

QTEST_MAIN(tst_CommonsHuskFacade)
#include "tst_CommonsHuskFacade.moc"
