#include "PlatformReaders.h"

#include "AVKitHelper.h"
#include "ImageIOHelper.h"
#include "SpotlightHelper.h"
#include "metadata/DataCoordinator.h"

#include <memory>

namespace {

// Forwards to a helper's shared instance, which is read-only and safe on any thread.
template<typename Helper>
class SharedHelperReader final : public MetadataSourceReader
{
public:
    void retrieveAndStoreAllTagsFor(const QString &path) override
    {
        Helper::shared().retrieveAndStoreAllTagsFor(path);
    }
};

} // namespace

namespace PlatformReaders {

void install(DataCoordinator &coordinator)
{
    coordinator.setReader(MetadataSource::ImageIO,
                          std::make_shared<SharedHelperReader<ImageIOHelper>>());
    coordinator.setReader(MetadataSource::AVKit,
                          std::make_shared<SharedHelperReader<AVKitHelper>>());
    coordinator.setReader(MetadataSource::Spotlight,
                          std::make_shared<SharedHelperReader<SpotlightHelper>>());
}

} // namespace PlatformReaders
