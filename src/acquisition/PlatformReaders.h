#pragma once

class DataCoordinator;

// Puts the image, media and search-index readers (sources 3, 4 and 31) behind the retrieval
// operations. Called once at start-up, before the first node asks for those sources.
namespace PlatformReaders {

void install(DataCoordinator &coordinator);

} // namespace PlatformReaders
