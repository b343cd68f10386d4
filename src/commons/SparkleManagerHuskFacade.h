#pragma once

#include "Appcast.h"
#include "HuskInitializationAPI.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

class QAction;
class QNetworkAccessManager;
class QNetworkReply;
class SmartTimerWrapper;
class UpdateOfferDialog;

// Update checks. The feed (an appcast: an RSS channel whose items carry versions) is read over
// HTTP when the user chooses "Check for Update…" and, with automatic checks on, once per check
// interval. A newer release than the running one is offered in a dialog; an automatic check keeps
// everything else to one line in the log. Without a feed address the application is updated with
// the system's packages: the menu entry says so and nothing is checked.
// Settings, in the user defaults:
//   "SUFeedURL"                 the feed's address (registered from the AppDescription)
//   "SUEnableAutomaticChecks"   true
//   "SUScheduledCheckInterval"  86400 seconds (never less than an hour)
//   "SULastCheckTime"           when the last check started, ISO 8601 in UTC
//   "SUSkippedVersion"          a version the user asked not to be offered automatically
// Main thread only.
class SparkleManagerHuskFacade
    : public QObject
    , public HuskInitializationAPI
{
    Q_OBJECT

public:
    enum class CheckOutcome { updateAvailable, updateSkipped, upToDate, noAnswer, badFeed, noFeed };
    Q_ENUM(CheckOutcome)

    explicit SparkleManagerHuskFacade(QObject *parent = nullptr);
    ~SparkleManagerHuskFacade() override;

    // Registers the update defaults, adds the menu entry at willFinishLaunching in a group of its
    // own after "Preferences", and starts the automatic checks at didFinishLaunching.
    void finishInitialization(SmartAppDelegate &delegate) override;

    // The "Check for Update…" command: a check whose every outcome is shown to the user.
    void checkForUpdate();

    // The menu entry, once willFinishLaunching has made it.
    QAction *checkForUpdateAction() const;
    bool isChecking() const;
    // The open offer, if any.
    UpdateOfferDialog *offerDialog() const;
    // How long a check waits for the feed; 30 seconds unless set.
    void setTransferTimeout(int milliseconds) { m_transferTimeout = milliseconds; }

    static inline const QString groupName = QStringLiteral("Updates");

    // Called when the user takes an offered update, before its page opens.
    std::function<void()> updaterWillInstallUpdateFunc;
    SmartAppDelegate *delegate = nullptr;

signals:
    void checkFinished(SparkleManagerHuskFacade::CheckOutcome outcome, const QString &detail);

private:
    enum class CheckKind { onCommand, scheduled };

    void addMenuEntry();
    void scheduleNextCheck();
    void scheduledTick();
    double secondsUntilNextCheck() const;
    void startCheck(CheckKind kind);
    void replyFinished(QNetworkReply *reply);
    void finish(CheckOutcome outcome, const QString &detail, const AppcastItem *item = nullptr);
    void offer(const AppcastItem &item);

    QString productName() const;
    QString currentVersion() const;
    QString feedURL() const;

    QNetworkAccessManager *m_network;
    QPointer<QNetworkReply> m_reply;
    CheckKind m_kind = CheckKind::scheduled;
    bool m_tooLarge = false;
    int m_transferTimeout = 30000;
    std::shared_ptr<SmartTimerWrapper> m_timer;
    QPointer<QAction> m_action;
    QPointer<UpdateOfferDialog> m_offer;
};
