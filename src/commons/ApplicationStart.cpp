#include "ApplicationStart.h"

#include "acquisition/AVKitHelper.h"
#include "acquisition/ExifToolHelper.h"
#include "acquisition/ExifToolInformation.h"
#include "acquisition/ImageIOHelper.h"
#include "acquisition/SpotlightHelper.h"
#include "metadata/DataCoordinator.h"
#include "writing/UndoJournal.h"
#include "writing/WriteEngine.h"
#include "writing/WriteJournal.h"

using namespace Qt::StringLiterals;

namespace ApplicationStart {

namespace {

// A shared reader helper as the reader of its source.
template<typename Helper>
class HelperReader : public MetadataSourceReader
{
public:
    void retrieveAndStoreAllTagsFor(const QString &path) override
    {
        Helper::shared().retrieveAndStoreAllTagsFor(path);
    }
};

} // namespace

void installMetadataReaders()
{
    // Appended before the first read: the geolocation tags behind the proposed city and
    // sublocation.
    ExifToolHelper::sharedInstance().appendToWhiteList(
        {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
         u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s});
    DataCoordinator &coordinator = DataCoordinator::shared();
    coordinator.setExifToolRetrieval(&ExifToolInformation::retrieveInformation);
    coordinator.setReader(MetadataSource::ImageIO, std::make_shared<HelperReader<ImageIOHelper>>());
    coordinator.setReader(MetadataSource::AVKit, std::make_shared<HelperReader<AVKitHelper>>());
    coordinator.setReader(MetadataSource::Spotlight,
                          std::make_shared<HelperReader<SpotlightHelper>>());
}

void installWritePath()
{
    // A write that the end of the last run cut off is finished first: its file gets its
    // recovery copy back before anything reads or writes it.
    WriteJournal::recoverUnfinishedWrites();
    // Before the first write, so that every write the engine runs can be undone.
    UndoJournal::shared().enable();
    PendingWriteSink::install(&WriteEngine::shared());
}

} // namespace ApplicationStart
