#include "MediaFileMarkers.h"

#include <atomic>

namespace {
std::atomic<MediaFileMarkers *> s_markers = nullptr;
}

MediaFileMarkers *MediaFileMarkers::installed()
{
    return s_markers.load();
}

void MediaFileMarkers::install(MediaFileMarkers *markers)
{
    s_markers.store(markers);
}
