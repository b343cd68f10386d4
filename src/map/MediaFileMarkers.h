#pragma once

#include "session/Node.h"

// Where the readers put and clear the map markers of media files with a complete position. The
// map installs itself; without a map, markers go nowhere.
class MediaFileMarkers
{
public:
    virtual ~MediaFileMarkers() = default;
    virtual void addMarker(const NodePtr &node) = 0;
    virtual void removeAllMediaFileMarkers() = 0;
    // Drops the marker of one file, if it has one; the re-read adds it again when the file
    // still has a complete position.
    virtual void removeMediaFileMarker(const QString &path) = 0;

    static MediaFileMarkers *installed();
    static void install(MediaFileMarkers *markers);
};
