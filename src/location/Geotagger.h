#pragma once

#include "Coordinate2D.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

// One fix of a loaded track, in time order.
struct TrackPoint
{
    double time = 0.0; // seconds since 1970, UTC
    Coordinate2D coordinate;
    bool firstOfFile = false; // the first fix of a track file, never interpolated across
};

// How capture times meet the track.
struct GeotagOptions
{
    int maximumGapSeconds = 30 * 60; // largest gap between fixes to interpolate across
    int maximumExtrapolationSeconds = 0; // how far past a track's ends a fix still counts
    double clockCorrectionSeconds = 0.0; // added to every capture time (GPS time - camera time)

    friend bool operator==(const GeotagOptions &, const GeotagOptions &) = default;
};

// Where one capture time lands, or why it doesn't.
struct GeotagPlacement
{
    enum class Miss { none, beforeTrack, afterTrack, inGap, other };

    Miss miss = Miss::other;
    Coordinate2D coordinate;
    std::optional<double> altitude;
    double gapSeconds = 0.0; // for inGap: the length of the gap
    QString message; // ExifTool's words for a miss

    bool placed() const { return miss == Miss::none; }
};

// The client of the geotagging worker (geotag.pl), which correlates through ExifTool's own
// geotagging. Calls block until the worker has answered, so they belong on a background queue;
// one caller at a time. The worker starts on first use and keeps the loaded track.
class Geotagger
{
public:
    Geotagger();
    ~Geotagger();

    Geotagger(const Geotagger &) = delete;
    Geotagger &operator=(const Geotagger &) = delete;

    // Loads the track files (any log ExifTool reads) in place of the earlier ones. On failure
    // the message names the file and the cause, and no track is loaded.
    bool loadTracks(const QStringList &paths, QList<TrackPoint> *points, QString *errorMessage);

    // Places each capture time, given as a UTC instant in seconds since 1970, with the options.
    // The answer has one entry per time, in order.
    QList<GeotagPlacement> place(const QList<double> &utcTimes, const GeotagOptions &options);

    // The Geotime text ExifTool is given for an instant ("2024:05:01 10:00:00.250Z").
    static QString geotimeText(double utcTime);

private:
    struct Worker;
    std::unique_ptr<Worker> m_worker;
    std::optional<GeotagOptions> m_sentOptions;
};
