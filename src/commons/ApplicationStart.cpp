#include "ApplicationStart.h"

#include "acquisition/ExifToolHelper.h"
#include "acquisition/ExifToolInformation.h"
#include "acquisition/PlatformReaders.h"
#include "metadata/DataCoordinator.h"

using namespace Qt::StringLiterals;

namespace ApplicationStart {

void installMetadataReaders()
{
    // Appended before the first read: the geolocation tags behind the proposed city and
    // sublocation.
    ExifToolHelper::sharedInstance().appendToWhiteList(
        {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
         u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s});
    DataCoordinator::shared().setExifToolRetrieval(&ExifToolInformation::retrieveInformation);
    PlatformReaders::install(DataCoordinator::shared());
}

} // namespace ApplicationStart
