#include "SparkleManagerHuskFacade.h"

#include "Clock.h"
#include "Log.h"
#include "SmartAppDelegate.h"
#include "SmartTimerWrapper.h"
#include "UpdateOfferDialog.h"
#include "VersionComparator.h"
#include "platform/AlertPresenter.h"
#include "platform/UserDefaults.h"

#include <QAction>
#include <QApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>
#include <cmath>

namespace {

const QString feedURLKey = QStringLiteral("SUFeedURL");
const QString intervalKey = QStringLiteral("SUScheduledCheckInterval");
const QString automaticChecksKey = QStringLiteral("SUEnableAutomaticChecks");
const QString lastCheckTimeKey = QStringLiteral("SULastCheckTime");
const QString skippedVersionKey = QStringLiteral("SUSkippedVersion");

constexpr double defaultInterval = 86400.0;
constexpr double shortestInterval = 3600.0;
// A feed lists a few releases; anything this large is not one.
constexpr qint64 largestFeed = 4 * 1024 * 1024;

// A stored value of the wrong type reads as the registered one: a damaged preferences file must
// not stop the checks or the program.
QVariant objectOfType(const QString &key, QMetaType::Type type, const QVariant &registered)
{
    const QVariant object = UserDefaults::standard().objectForKey(key);
    if (type == QMetaType::Double)
        return object.typeId() == QMetaType::Double || object.typeId() == QMetaType::LongLong
                || object.typeId() == QMetaType::Int
            ? object
            : registered;
    return object.typeId() == type ? object : registered;
}

bool automaticChecksEnabled()
{
    return objectOfType(automaticChecksKey, QMetaType::Bool, true).toBool();
}

double checkInterval()
{
    const double seconds = objectOfType(intervalKey, QMetaType::Double, defaultInterval).toDouble();
    return std::isfinite(seconds) ? std::max(seconds, shortestInterval) : defaultInterval;
}

} // namespace

SparkleManagerHuskFacade::SparkleManagerHuskFacade(QObject *parent)
    : QObject(parent)
    , m_network(new QNetworkAccessManager(this))
{ }

SparkleManagerHuskFacade::~SparkleManagerHuskFacade()
{
    if (m_offer)
        m_offer->close();
}

void SparkleManagerHuskFacade::finishInitialization(SmartAppDelegate &delegate)
{
    this->delegate = &delegate;
    UserDefaults::standard().registerDefaults({
        {feedURLKey, delegate.appDescription.sparkleFeedURL},
        {intervalKey, qint64(defaultInterval)},
        {automaticChecksKey, true},
    });
    QPointer<SparkleManagerHuskFacade> self(this);
    delegate.willFinishLaunchingCallbackList.append(
        [self](SmartAppDelegate &, const AppNotification &) {
            if (self)
                self->addMenuEntry();
        });
    delegate.didFinishLaunchingCallbackList.append(
        [self](SmartAppDelegate &, const AppNotification &) {
            if (self)
                self->scheduleNextCheck();
        });
}

QAction *SparkleManagerHuskFacade::checkForUpdateAction() const
{
    return m_action;
}

bool SparkleManagerHuskFacade::isChecking() const
{
    return m_reply;
}

UpdateOfferDialog *SparkleManagerHuskFacade::offerDialog() const
{
    return m_offer;
}

void SparkleManagerHuskFacade::addMenuEntry()
{
    MenuItemManager &menus = delegate->menuItemManager;
    menus.addGroup(groupName, MenuItemManager::preferencesGroup);
    QPointer<SparkleManagerHuskFacade> self(this);
    m_action = menus.addItem(groupName, tr("Check for Update…"), [self] {
        if (self)
            self->checkForUpdate();
    });
    m_action->setObjectName(QStringLiteral("checkForUpdate"));
    m_action->setMenuRole(QAction::ApplicationSpecificRole);
    const QString tip = feedURL().isEmpty()
        ? tr("Updates to %1 come with your system's packages.").arg(productName())
        : tr("Looks for a newer version of %1.").arg(productName());
    m_action->setStatusTip(tip);
    m_action->setToolTip(tip);
}

void SparkleManagerHuskFacade::checkForUpdate()
{
    if (!feedURL().isEmpty()) {
        startCheck(CheckKind::onCommand);
        return;
    }
    emit checkFinished(CheckOutcome::noFeed, QString());
    AlertPresenter::show(
        Alert {tr("Updates come with your system's packages"),
               tr("%1 is updated together with the other packages of your system. Use your "
                  "system's software manager to look for a newer version.")
                   .arg(productName()),
               {tr("OK")},
               {}});
}

void SparkleManagerHuskFacade::scheduleNextCheck()
{
    m_timer.reset();
    if (!automaticChecksEnabled() || feedURL().isEmpty())
        return;
    QPointer<SparkleManagerHuskFacade> self(this);
    m_timer = SmartTimerWrapper::wrapTimer(secondsUntilNextCheck(), SmartTimerWrapper::Repeats::No,
                                           [self](SmartTimerWrapper &) {
                                               if (self)
                                                   self->scheduledTick();
                                           });
}

void SparkleManagerHuskFacade::scheduledTick()
{
    if (m_reply)
        return;
    // A system timer may tick a little early over long intervals; it then waits for the rest.
    if (secondsUntilNextCheck() > 1.0) {
        scheduleNextCheck();
        return;
    }
    if (automaticChecksEnabled())
        startCheck(CheckKind::scheduled);
}

double SparkleManagerHuskFacade::secondsUntilNextCheck() const
{
    const QDateTime last = QDateTime::fromString(
        UserDefaults::standard().stringForKey(lastCheckTimeKey), Qt::ISODateWithMs);
    if (!last.isValid())
        return 0.0;
    const double now = Clock::current().currentTimeIntervalSinceReferenceDate();
    const double lastTime = Clock::timeIntervalSinceReferenceDate(last);
    // A last check in the future means the clock was set back: check now.
    if (lastTime > now)
        return 0.0;
    return std::max(0.0, lastTime + checkInterval() - now);
}

void SparkleManagerHuskFacade::startCheck(CheckKind kind)
{
    if (m_reply) {
        // A command during an automatic check shows that check's outcome.
        if (kind == CheckKind::onCommand)
            m_kind = kind;
        return;
    }
    m_kind = kind;
    const QString address = feedURL();
    const QUrl url(address, QUrl::StrictMode);
    if (!url.isValid() || (url.scheme() != u"https" && url.scheme() != u"http")
        || url.host().isEmpty()) {
        finish(CheckOutcome::badFeed, QStringLiteral("\"%1\" is not a web address").arg(address));
        return;
    }
    UserDefaults::standard().setObject(Clock::current().currentDate().toString(Qt::ISODateWithMs),
                                       lastCheckTimeKey);
    scheduleNextCheck();

    QNetworkRequest request(url);
    request.setTransferTimeout(m_transferTimeout);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("%1/%2").arg(productName(), currentVersion()));
    request.setRawHeader("Accept",
                         "application/rss+xml, application/xml;q=0.9, text/xml;q=0.8, "
                         "*/*;q=0.1");
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    m_tooLarge = false;
    QNetworkReply *reply = m_network->get(request);
    m_reply = reply;
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64) {
        if (received > largestFeed) {
            m_tooLarge = true;
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { replyFinished(reply); });
}

void SparkleManagerHuskFacade::replyFinished(QNetworkReply *reply)
{
    reply->deleteLater();
    m_reply = nullptr;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_tooLarge) {
        finish(CheckOutcome::badFeed, QStringLiteral("more than %1 bytes").arg(largestFeed));
        return;
    }
    if (reply->error() != QNetworkReply::NoError) {
        if (status != 0) {
            const QString reason
                = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
            finish(CheckOutcome::badFeed,
                   QStringLiteral("the server answered %1 %2").arg(status).arg(reason).trimmed());
        } else if (reply->error() == QNetworkReply::OperationCanceledError
                   || reply->error() == QNetworkReply::TimeoutError) {
            finish(CheckOutcome::noAnswer,
                   QStringLiteral("nothing within %1 s").arg(m_transferTimeout / 1000.0));
        } else {
            finish(CheckOutcome::noAnswer, reply->errorString());
        }
        return;
    }
    const Appcast appcast = Appcast::parse(reply->readAll());
    if (!appcast.isValid()) {
        finish(CheckOutcome::badFeed, appcast.errorString());
        return;
    }
    const AppcastItem newest = *appcast.newestItem();
    if (VersionComparator::compareVersions(newest.version, currentVersion()) <= 0) {
        finish(CheckOutcome::upToDate, newest.version);
    } else if (m_kind == CheckKind::scheduled
               && newest.version == UserDefaults::standard().stringForKey(skippedVersionKey)) {
        finish(CheckOutcome::updateSkipped, newest.version);
    } else {
        finish(CheckOutcome::updateAvailable, newest.version, &newest);
    }
}

void SparkleManagerHuskFacade::finish(CheckOutcome outcome, const QString &detail,
                                      const AppcastItem *item)
{
    const QString name = productName();
    const QString feed = feedURL();
    switch (outcome) {
    case CheckOutcome::updateAvailable:
        Log::line(QStringLiteral("Update check: %1 %2 is available (running %3)")
                      .arg(name, detail, currentVersion()));
        break;
    case CheckOutcome::updateSkipped:
        Log::line(QStringLiteral("Update check: %1 %2 is available, but the user skipped it")
                      .arg(name, detail));
        break;
    case CheckOutcome::upToDate:
        Log::line(QStringLiteral("Update check: %1 %2 is up to date (the feed's newest is %3)")
                      .arg(name, currentVersion(), detail));
        break;
    case CheckOutcome::noAnswer:
        Log::line(QStringLiteral("Update check: no answer from %1 (%2)").arg(feed, detail));
        break;
    case CheckOutcome::badFeed:
        Log::line(QStringLiteral("Update check: cannot use the feed at %1 (%2)").arg(feed, detail));
        break;
    case CheckOutcome::noFeed:
        break;
    }
    const bool onCommand = m_kind == CheckKind::onCommand;
    m_kind = CheckKind::scheduled;
    emit checkFinished(outcome, detail);

    if (outcome == CheckOutcome::updateAvailable && item) {
        offer(*item);
    } else if (onCommand && outcome == CheckOutcome::upToDate) {
        AlertPresenter::show(
            Alert {tr("You're up to date!"),
                   tr("%1 %2 is the newest version available.").arg(name, currentVersion()),
                   {tr("OK")},
                   {}});
    } else if (onCommand
               && (outcome == CheckOutcome::noAnswer || outcome == CheckOutcome::badFeed)) {
        AlertPresenter::show(Alert {tr("%1 could not look for updates").arg(name),
                                    outcome == CheckOutcome::noAnswer
                                        ? tr("The update server did not answer. Please try again "
                                             "later.")
                                        : tr("The update server's answer could not be read."),
                                    {tr("OK")},
                                    QStringLiteral("%1\n%2").arg(feed, detail)});
    }
}

void SparkleManagerHuskFacade::offer(const AppcastItem &item)
{
    if (m_offer) {
        if (m_offer->item().version == item.version) {
            m_offer->raise();
            m_offer->activateWindow();
            return;
        }
        m_offer->close();
    }
    auto *dialog = new UpdateOfferDialog(productName(), currentVersion(), item,
                                         QApplication::activeWindow());
    m_offer = dialog;
    connect(dialog, &UpdateOfferDialog::chosen, this, [this, version = item.version](auto choice) {
        if (choice == UpdateOfferDialog::Choice::skip)
            UserDefaults::standard().setObject(version, skippedVersionKey);
        else if (choice == UpdateOfferDialog::Choice::download && updaterWillInstallUpdateFunc)
            updaterWillInstallUpdateFunc();
    });
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

QString SparkleManagerHuskFacade::productName() const
{
    return delegate ? delegate->appDescription.productName : QCoreApplication::applicationName();
}

QString SparkleManagerHuskFacade::currentVersion() const
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? AppDescription::buildVersion() : version;
}

QString SparkleManagerHuskFacade::feedURL() const
{
    return objectOfType(feedURLKey, QMetaType::QString,
                        delegate ? delegate->appDescription.sparkleFeedURL : QString())
        .toString()
        .trimmed();
}
