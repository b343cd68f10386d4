#pragma once

#include <QString>

// What the geotag dialog and the map are told by GeotagController, on the main thread.
class GeotagView
{
public:
    virtual ~GeotagView() = default;

    // The track was loaded anew (or dropped): redraw it and the landing points.
    virtual void geotagTrackChanged() = 0;
    // New preview results: redraw the landing points and the list of files outside the track.
    virtual void geotagPreviewChanged() = 0;
    // A track could not be loaded, or the worker failed: a short message for the user.
    virtual void geotagFailed(const QString &message) = 0;
    // Every write of an apply has ended; failures were shown in the write engine's one alert.
    virtual void geotagApplyFinished(int written, int failed) = 0;
};
