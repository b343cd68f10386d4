#pragma once

#include "GeotagView.h"
#include "Geotagger.h"
#include "platform/SerialQueue.h"
#include "session/Node.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTimeZone>

#include <functional>
#include <memory>
#include <optional>

// The logic of a geotagging session: the tracks chosen, the options, what each file would get
// and the apply. Correlation runs through ExifTool's geotagging on the queue "Geotagger"; the
// apply writes exactly the positions of the preview through the write engine, so what the user
// saw is what the files hold. Main thread, except the queue's own work.
class GeotagController
{
public:
    // One file of the preview.
    struct Item
    {
        NodePtr node;
        std::optional<double> captureTime; // UTC seconds since 1970, before the clock offset
        GeotagPlacement placement;
        QString latitude; // "%+.6f", what the apply writes; empty unless placed
        QString longitude;

        bool placed() const { return captureTime && placement.placed(); }
    };

    GeotagController();
    ~GeotagController();

    GeotagController(const GeotagController &) = delete;
    GeotagController &operator=(const GeotagController &) = delete;

    void setView(GeotagView *view); // not owned; nullptr to detach

    // Inputs. Each change starts a new preview once a track is loaded.
    void setFiles(const QList<NodePtr> &nodes);
    void setTrackFiles(const QStringList &paths);
    // The IANA zone for capture times stored without an offset; empty for the system's.
    void setTimeZone(const QByteArray &zoneId);
    // How far the camera's clock was ahead of the true time (negative: behind).
    void setCameraClockOffsetSeconds(double seconds);
    void setMaximumGapMinutes(int minutes);
    void setMaximumExtrapolationMinutes(int minutes);
    // "This photo was taken here": the clock offset that puts node at the track's fix nearest
    // to coordinate. False (nothing changes) without a track or a capture time.
    bool setCameraClockOffsetFromPlacement(const NodePtr &node, Coordinate2D coordinate);

    const QList<NodePtr> &files() const { return m_files; }
    const QStringList &trackFiles() const { return m_trackFiles; }
    QByteArray timeZone() const { return m_zoneId; }
    double cameraClockOffsetSeconds() const { return m_cameraOffset; }
    int maximumGapMinutes() const { return m_options.maximumGapSeconds / 60; }
    int maximumExtrapolationMinutes() const { return m_options.maximumExtrapolationSeconds / 60; }

    // Results.
    bool hasTrack() const { return !m_track.isEmpty(); }
    const QList<TrackPoint> &trackPoints() const { return m_track; }
    // The track as the map draws it: broken where ExifTool would not interpolate.
    QList<QList<Coordinate2D>> trackSegments() const;
    bool isBusy() const { return m_pending > 0; }
    const QList<Item> &preview() const { return m_preview; }
    QList<Item> outsideItems() const;
    int placedCount() const;
    // Why a file gets no position: "before the track", "in a gap of 42 minutes", ...
    static QString reasonText(const Item &item);

    // Writes the positions of the current preview through the write sink; the number of files
    // sent. Nothing while a preview is being made.
    int apply();

    // Runs block on the main thread once every queued load and preview has been delivered.
    void notifyWhenIdle(std::function<void()> block);

private:
    struct Shared;
    void refreshPreview();
    GeotagOptions workerOptions() const;

    std::shared_ptr<Shared> m_shared;
    GeotagView *m_view = nullptr;
    QList<NodePtr> m_files;
    QStringList m_trackFiles;
    QByteArray m_zoneId;
    double m_cameraOffset = 0.0;
    GeotagOptions m_options;
    QList<TrackPoint> m_track;
    QList<Item> m_preview;
    quint64 m_generation = 0;
    quint64 m_trackGeneration = 0;
    int m_pending = 0;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
