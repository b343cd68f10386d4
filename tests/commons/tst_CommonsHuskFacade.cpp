#include "commons/CommonsHuskFacade.h"
#include "commons/SmartAppDelegate.h"
#include "platform/UserDefaults.h"

#include "TestSupport.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QMessageBox>
#include <QTest>

// The standard Help entries, and one counted launch per run of the delegate.
class tst_CommonsHuskFacade : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { openedUrls.append(url); }

private slots:
    void initTestCase();
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    void helpEntriesAndLaunchCount();
    void withoutWebsiteOrStandardMenusThereIsLess();

private:
    QList<QUrl> openedUrls;
};

namespace {

QMessageBox *findAboutBox()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == u"aboutBox" && widget->isVisible())
            return qobject_cast<QMessageBox *>(widget);
    }
    return nullptr;
}

} // namespace

void tst_CommonsHuskFacade::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    QCoreApplication::setApplicationVersion(QStringLiteral("3.1"));
}

void tst_CommonsHuskFacade::helpEntriesAndLaunchCount()
{
    AppDescription description;
    description.productName = QStringLiteral("Palomet");
    description.websiteURL = QStringLiteral("https://palomet.invalid/");
    SmartAppDelegate delegate(description);
    CommonsHuskFacade commons;
    int launchFunctions = 0;
    commons.launchManager.add(LaunchTriggers::EveryTime {}, [&] { ++launchFunctions; });
    // The application adds the facade's initialisation first of all, and its own entries after.
    delegate.willFinishLaunchingCallbackList.append(
        [&](SmartAppDelegate &d, const AppNotification &) { commons.finishInitialization(d); });
    delegate.willFinishLaunchingCallbackList.append(
        [](SmartAppDelegate &d, const AppNotification &) {
            d.menuItemManager.addSeparator(MenuItemManager::helpGroup);
            d.menuItemManager.addItem(MenuItemManager::helpGroup,
                                      QStringLiteral("Troubleshooting…"), {});
        });
    QVERIFY(TestSupport::waitUntil([&] { return delegate.hasFinishedLaunching(); }));
    QCOMPARE(commons.launchManager.launchCount(), 1);
    QCOMPARE(launchFunctions, 1);

    QMenu help;
    delegate.menuItemManager.fillMenu(
        &help, {MenuItemManager::preferencesGroup, MenuItemManager::helpGroup});
    QStringList titles;
    for (QAction *action : help.actions())
        titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
    QCOMPARE(titles, QStringList({"Palomet Website", "About Palomet", "-", "Troubleshooting…"}));

    delegate.menuItemManager.action(QStringLiteral("showWebsite"))->trigger();
    QCOMPARE(openedUrls, QList<QUrl>({QUrl(QStringLiteral("https://palomet.invalid/"))}));
    delegate.menuItemManager.action(QStringLiteral("showAbout"))->trigger();
    QMessageBox *about = nullptr;
    QTRY_VERIFY((about = findAboutBox()));
    QVERIFY(about->text().contains(u"Palomet 3.1"));
    about->close();
}

void tst_CommonsHuskFacade::withoutWebsiteOrStandardMenusThereIsLess()
{
    AppDescription description;
    description.productName = QStringLiteral("Palomet");
    description.websiteURL = QStringLiteral("not a web address");
    SmartAppDelegate plain(description);
    description.hasStandardMenus = false;
    SmartAppDelegate bare(description);
    CommonsHuskFacade commons;
    commons.finishInitialization(plain);
    CommonsHuskFacade other;
    other.finishInitialization(bare);
    QVERIFY(TestSupport::waitUntil([&] { return bare.hasFinishedLaunching(); }));
    QCOMPARE(plain.menuItemManager.actions(MenuItemManager::helpGroup).size(), 1);
    QVERIFY(plain.menuItemManager.action(QStringLiteral("showAbout")));
    QVERIFY(bare.menuItemManager.actions(MenuItemManager::helpGroup).isEmpty());
}

QTEST_MAIN(tst_CommonsHuskFacade)
#include "tst_CommonsHuskFacade.moc"
