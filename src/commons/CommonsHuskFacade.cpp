#include "CommonsHuskFacade.h"

#include "SmartAppDelegate.h"
#include "platform/UserDefaults.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

CommonsHuskFacade::CommonsHuskFacade()
    : launchManager(QStringLiteral("LaunchManager"), UserDefaults::standard())
{ }

void CommonsHuskFacade::finishInitialization(SmartAppDelegate &delegate)
{
    // The application runs this first of all in willFinishLaunching, so these entries come
    // before any that its own callbacks add to the Help group.
    if (delegate.appDescription.hasStandardMenus)
        addHelpEntries(delegate);
    delegate.didFinishLaunchingCallbackList.append(
        [this](SmartAppDelegate &, const AppNotification &) { launchManager.launch(); });
}

void CommonsHuskFacade::addHelpEntries(SmartAppDelegate &delegate)
{
    const AppDescription &description = delegate.appDescription;
    MenuItemManager &menus = delegate.menuItemManager;
    const QUrl website(description.websiteURL, QUrl::StrictMode);
    if (website.isValid() && (website.scheme() == u"https" || website.scheme() == u"http")) {
        QAction *action
            = menus.addItem(MenuItemManager::helpGroup,
                            QCoreApplication::translate("CommonsHuskFacade", "%1 Website")
                                .arg(description.productName),
                            [website] { QDesktopServices::openUrl(website); });
        action->setObjectName(QStringLiteral("showWebsite"));
        action->setStatusTip(website.toDisplayString());
    }
    QAction *about = menus.addItem(
        MenuItemManager::helpGroup,
        QCoreApplication::translate("CommonsHuskFacade", "About %1").arg(description.productName),
        [&delegate] { showAbout(delegate, QApplication::activeWindow()); });
    about->setObjectName(QStringLiteral("showAbout"));
    about->setMenuRole(QAction::AboutRole);
}

QWidget *CommonsHuskFacade::showAbout(const SmartAppDelegate &delegate, QWidget *parent)
{
    const AppDescription &description = delegate.appDescription;
    QString text = QStringLiteral("<h3>%1 %2</h3>")
                       .arg(description.productName.toHtmlEscaped(),
                            QCoreApplication::applicationVersion().toHtmlEscaped());
    text += QCoreApplication::translate(
                "CommonsHuskFacade",
                "<p>Shows and corrects where photos, videos and audio recordings were made.</p>"
                "<p>Built with Qt %1, running on Qt %2.</p>")
                .arg(QStringLiteral(QT_VERSION_STR), QString::fromLatin1(qVersion()));
    const QUrl website(description.websiteURL, QUrl::StrictMode);
    if (website.isValid() && !website.isRelative())
        text += QStringLiteral("<p><a href=\"%1\">%2</a></p>")
                    .arg(website.toString(QUrl::FullyEncoded).toHtmlEscaped(),
                         website.toDisplayString().toHtmlEscaped());

    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("aboutBox"));
    box->setWindowTitle(
        QCoreApplication::translate("CommonsHuskFacade", "About %1").arg(description.productName));
    box->setTextFormat(Qt::RichText);
    box->setText(text);
    box->setTextInteractionFlags(Qt::TextBrowserInteraction);
    box->setIconPixmap(QApplication::windowIcon().pixmap(64, 64));
    box->setStandardButtons(QMessageBox::Ok);
    box->open();
    return box;
}
