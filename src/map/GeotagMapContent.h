#pragma once

#include "MapGeometry.h"
#include "location/GeotagController.h"

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

#include <optional>

// What the geotag dialog's map draws: the track, broken where ExifTool would not interpolate,
// and the point where each placed file would land, tied to its entry of the preview. It is
// taken from GeotagController after each change; the page only draws it, and clicks on it are
// resolved here. Main thread.
class GeotagMapContent
{
public:
    struct Landing
    {
        int previewIndex = 0; // the file's entry in GeotagController::preview()
        Coordinate2D coordinate;
        QString name; // the file's name
        QString taken; // when it was taken, as the list shows it
    };

    GeotagMapContent() = default;
    // Longitudes are made continuous: a track across the 180th meridian runs on past ±180
    // instead of jumping round the world, and each landing point joins the track's side, so
    // that the page draws the line short and the bounds frame it narrow.
    GeotagMapContent(QList<QList<Coordinate2D>> segments, QList<Landing> landings);
    static GeotagMapContent of(const GeotagController &controller);

    const QList<QList<Coordinate2D>> &segments() const { return m_segments; }
    const QList<Landing> &landings() const { return m_landings; }
    // The landing point of an entry of the preview; -1 when that file lands nowhere.
    int landingOfPreviewIndex(int previewIndex) const;
    // The region that shows the whole track and every landing point with a margin around them;
    // nothing when there is nothing to show.
    std::optional<CoordinateRegion> bounds() const;
    // The landing point nearest to a point of the view, not further than within points; -1 for
    // none.
    int landingAt(const MapViewState &state, QPointF point, double within) const;

    // A file as the dialog names it: its name in the list, else its file name.
    static QString displayName(const Node &node);
    // When an item was taken, in the zone given by its IANA id (empty: the system's).
    static QString takenText(const GeotagController::Item &item, const QByteArray &zoneId);

    // A region is never drawn closer than this: a track of one fix would fill the world's
    // last zoom level otherwise.
    static constexpr double smallestSpanDegrees = 0.005;

private:
    QList<QList<Coordinate2D>> m_segments;
    QList<Landing> m_landings;
};
