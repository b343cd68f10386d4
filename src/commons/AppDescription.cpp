#include "AppDescription.h"

// The build sets these on this file alone (src/commons/CMakeLists.txt).
#ifndef PALOMET_UPDATE_FEED_URL
#define PALOMET_UPDATE_FEED_URL ""
#endif
#ifndef PALOMET_WEBSITE_URL
#define PALOMET_WEBSITE_URL ""
#endif
#ifndef PALOMET_VERSION
#define PALOMET_VERSION "0"
#endif

AppDescription AppDescription::ofThisBuild()
{
    AppDescription description;
    description.productName = QStringLiteral("Palomet");
    description.sparkleFeedURL = QStringLiteral(PALOMET_UPDATE_FEED_URL);
    description.websiteURL = QStringLiteral(PALOMET_WEBSITE_URL);
    description.hasStandardMenus = true;
    return description;
}

QString AppDescription::buildVersion()
{
    return QStringLiteral(PALOMET_VERSION);
}
