#include "GeotagController.h"

#include "CaptureTime.h"
#include "metadata/SidecarFiles.h"
#include "platform/MainQueue.h"
#include "writing/ChangeManager.h"
#include "writing/PendingWriteSink.h"

#include <QFileInfo>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

// The worker's client and its queue, shared with the queued work so that a controller may go
// while a preview runs.
struct GeotagController::Shared
{
    Geotagger geotagger;
    SerialQueue queue {u"Geotagger"_s};
};

namespace {

QString coordinateText(double value)
{
    return QString::asprintf("%+.6f", value);
}

} // namespace

GeotagController::GeotagController()
    : m_shared(std::make_shared<Shared>())
{ }

GeotagController::~GeotagController() = default;

void GeotagController::setView(GeotagView *view)
{
    m_view = view;
}

GeotagOptions GeotagController::workerOptions() const
{
    GeotagOptions options = m_options;
    options.clockCorrectionSeconds = -m_cameraOffset;
    return options;
}

void GeotagController::setFiles(const QList<NodePtr> &nodes)
{
    m_files = nodes;
    refreshPreview();
}

void GeotagController::setTimeZone(const QByteArray &zoneId)
{
    m_zoneId = zoneId;
    refreshPreview();
}

void GeotagController::setCameraClockOffsetSeconds(double seconds)
{
    m_cameraOffset = seconds;
    refreshPreview();
}

void GeotagController::setMaximumGapMinutes(int minutes)
{
    m_options.maximumGapSeconds = std::max(0, minutes) * 60;
    refreshPreview();
}

void GeotagController::setMaximumExtrapolationMinutes(int minutes)
{
    m_options.maximumExtrapolationSeconds = std::max(0, minutes) * 60;
    refreshPreview();
}

void GeotagController::setTrackFiles(const QStringList &paths)
{
    m_trackFiles = paths;
    const quint64 generation = ++m_trackGeneration;
    ++m_pending;
    std::weak_ptr<bool> alive = m_alive;
    m_shared->queue.async([this, shared = m_shared, paths, generation, alive] {
        QList<TrackPoint> points;
        QString error;
        const bool loaded = shared->geotagger.loadTracks(paths, &points, &error);
        MainQueue::post([this, points = std::move(points), error, loaded, generation, alive] {
            if (alive.expired())
                return;
            --m_pending;
            if (generation != m_trackGeneration)
                return; // another choice of tracks is on its way
            m_track = points;
            m_preview.clear();
            if (m_view)
                m_view->geotagTrackChanged();
            if (!loaded && m_view)
                m_view->geotagFailed(u"The track could not be read. "_s + error);
            refreshPreview();
        });
    });
}

void GeotagController::refreshPreview()
{
    if (m_track.isEmpty()) {
        if (!m_preview.isEmpty()) {
            m_preview.clear();
            if (m_view)
                m_view->geotagPreviewChanged();
        }
        return;
    }
    const quint64 generation = ++m_generation;
    ++m_pending;
    std::weak_ptr<bool> alive = m_alive;
    const QTimeZone zone = m_zoneId.isEmpty() ? QTimeZone::systemTimeZone() : QTimeZone(m_zoneId);
    m_shared->queue.async([this, shared = m_shared, files = m_files, zone,
                           options = workerOptions(), generation, alive] {
        QList<Item> items;
        QList<double> times;
        QList<qsizetype> timed;
        items.reserve(files.size());
        for (const NodePtr &node : files) {
            Item item;
            item.node = node;
            item.captureTime = CaptureTime::of(*node, zone);
            if (item.captureTime) {
                timed.append(items.size());
                times.append(*item.captureTime);
            }
            items.append(std::move(item));
        }
        const QList<GeotagPlacement> placements = shared->geotagger.place(times, options);
        for (qsizetype i = 0; i < timed.size(); ++i) {
            Item &item = items[timed[i]];
            item.placement = placements.value(i);
            if (item.placement.placed()) {
                item.latitude = coordinateText(item.placement.coordinate.latitude);
                item.longitude = coordinateText(item.placement.coordinate.longitude);
            }
        }
        MainQueue::post([this, items = std::move(items), generation, alive] {
            if (alive.expired())
                return;
            --m_pending;
            if (generation != m_generation)
                return; // a newer preview is on its way
            m_preview = items;
            if (m_view)
                m_view->geotagPreviewChanged();
        });
    });
}

QList<QList<Coordinate2D>> GeotagController::trackSegments() const
{
    QList<QList<Coordinate2D>> segments;
    const double gap = m_options.maximumGapSeconds;
    for (qsizetype i = 0; i < m_track.size(); ++i) {
        const TrackPoint &point = m_track[i];
        const bool breaks = i == 0 || point.firstOfFile || point.time - m_track[i - 1].time > gap;
        if (breaks)
            segments.append(QList<Coordinate2D>());
        segments.last().append(point.coordinate);
    }
    return segments;
}

QList<GeotagController::Item> GeotagController::outsideItems() const
{
    QList<Item> outside;
    for (const Item &item : m_preview) {
        if (!item.placed())
            outside.append(item);
    }
    return outside;
}

int GeotagController::placedCount() const
{
    return int(std::count_if(m_preview.cbegin(), m_preview.cend(),
                             [](const Item &item) { return item.placed(); }));
}

QString GeotagController::reasonText(const Item &item)
{
    if (!item.captureTime)
        return u"no capture time"_s;
    switch (item.placement.miss) {
    case GeotagPlacement::Miss::none:
        return QString();
    case GeotagPlacement::Miss::beforeTrack:
        return u"before the track"_s;
    case GeotagPlacement::Miss::afterTrack:
        return u"after the track"_s;
    case GeotagPlacement::Miss::inGap: {
        const int minutes = int(std::lround(item.placement.gapSeconds / 60.0));
        return minutes == 1 ? u"in a gap of 1 minute"_s : u"in a gap of %1 minutes"_s.arg(minutes);
    }
    case GeotagPlacement::Miss::other:
        break;
    }
    return item.placement.message.isEmpty() ? u"no position"_s : item.placement.message;
}

bool GeotagController::setCameraClockOffsetFromPlacement(const NodePtr &node,
                                                         Coordinate2D coordinate)
{
    if (m_track.isEmpty() || !node)
        return false;
    const QTimeZone zone = m_zoneId.isEmpty() ? QTimeZone::systemTimeZone() : QTimeZone(m_zoneId);
    const std::optional<double> taken = CaptureTime::of(*node, zone);
    if (!taken)
        return false;
    // The nearest fix on an equirectangular projection: exact enough at the scale of a click.
    const double scale = std::cos(coordinate.latitude * M_PI / 180.0);
    double best = std::numeric_limits<double>::infinity();
    double bestTime = 0.0;
    for (const TrackPoint &point : m_track) {
        const double dLat = point.coordinate.latitude - coordinate.latitude;
        double dLon = std::fabs(point.coordinate.longitude - coordinate.longitude);
        dLon = std::min(dLon, 360.0 - dLon) * scale;
        const double distance = dLat * dLat + dLon * dLon;
        if (distance < best) {
            best = distance;
            bestTime = point.time;
        }
    }
    setCameraClockOffsetSeconds(*taken - bestTime);
    return true;
}

int GeotagController::apply()
{
    if (isBusy())
        return 0;
    PendingWriteSink &sink = PendingWriteSink::shared();
    sink.clearErrors();
    struct Tally
    {
        int outstanding = 0;
        int written = 0;
        int failed = 0;
    };
    auto tally = std::make_shared<Tally>();
    std::weak_ptr<bool> alive = m_alive;
    for (const Item &item : m_preview) {
        if (!item.placed())
            continue;
        // The file, its XMP sidecar or both, as the settings and the file's type say; an item
        // counts as written once all of its targets are.
        const QStringList targets = SidecarFiles::writeTargets(item.node->absolutePath);
        if (targets.isEmpty())
            continue;
        auto targetsLeft = std::make_shared<std::pair<qsizetype, bool>>(targets.size(), true);
        ++tally->outstanding;
        for (const QString &path : targets) {
            sink.addPendingWrite(
                {path, ChangeManager::positionTagValuePairs(path, item.latitude, item.longitude),
                 item.node, [this, tally, targetsLeft, alive](bool success) {
                     targetsLeft->second = targetsLeft->second && success;
                     if (--targetsLeft->first > 0)
                         return;
                     ++(targetsLeft->second ? tally->written : tally->failed);
                     if (--tally->outstanding == 0 && !alive.expired() && m_view)
                         m_view->geotagApplyFinished(tally->written, tally->failed);
                 }});
        }
    }
    const int sent = tally->outstanding;
    if (sent > 0)
        sink.flushImmediately();
    return sent;
}

void GeotagController::notifyWhenIdle(std::function<void()> block)
{
    m_shared->queue.async([block = std::move(block)] { MainQueue::post(block); });
}
