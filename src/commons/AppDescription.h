#pragma once

#include <QSet>
#include <QString>

// Moments at which news for the user may be shown.
enum class NewsTrigger { launch, postUpdate, finishedProcessing };

// What the application's shared parts need to know about it.
struct AppDescription
{
    QString productName;
    QString sparkleFeedURL; // the update feed; empty when updates come with the system's packages
    QString websiteURL; // empty when the build names no web site
    QSet<NewsTrigger> supportedNewsTriggers;
    bool hasStandardMenus = true;

    // Palomet as this build was configured (the PALOMET_UPDATE_FEED_URL and PALOMET_WEBSITE_URL
    // CMake options).
    static AppDescription ofThisBuild();
    // The version this build carries, for QCoreApplication::applicationVersion().
    static QString buildVersion();
};
