#include "GeotagMapContent.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

GeotagMapContent::GeotagMapContent(QList<QList<Coordinate2D>> segments, QList<Landing> landings)
    : m_segments(std::move(segments))
    , m_landings(std::move(landings))
{
    std::optional<double> previous;
    double west = std::numeric_limits<double>::infinity(), east = -west;
    for (QList<Coordinate2D> &segment : m_segments) {
        for (Coordinate2D &coordinate : segment) {
            if (previous)
                coordinate.longitude = MapGeometry::longitudeNear(coordinate.longitude, *previous);
            previous = coordinate.longitude;
            west = std::min(west, coordinate.longitude);
            east = std::max(east, coordinate.longitude);
        }
    }
    if (m_landings.isEmpty())
        return;
    const double reference
        = previous ? (west + east) / 2.0 : m_landings.first().coordinate.longitude;
    for (Landing &landing : m_landings)
        landing.coordinate.longitude
            = MapGeometry::longitudeNear(landing.coordinate.longitude, reference);
}

GeotagMapContent GeotagMapContent::of(const GeotagController &controller)
{
    QList<Landing> landings;
    const QList<GeotagController::Item> &preview = controller.preview();
    for (qsizetype i = 0; i < preview.size(); ++i) {
        const GeotagController::Item &item = preview[i];
        if (!item.placed())
            continue;
        landings.append({int(i), item.placement.coordinate, displayName(*item.node),
                         takenText(item, controller.timeZone())});
    }
    return GeotagMapContent(controller.trackSegments(), std::move(landings));
}

int GeotagMapContent::landingOfPreviewIndex(int previewIndex) const
{
    const auto found
        = std::find_if(m_landings.cbegin(), m_landings.cend(),
                       [previewIndex](const Landing &l) { return l.previewIndex == previewIndex; });
    return found == m_landings.cend() ? -1 : int(found - m_landings.cbegin());
}

std::optional<CoordinateRegion> GeotagMapContent::bounds() const
{
    double south = std::numeric_limits<double>::infinity(), north = -south, west = south,
           east = -south;
    const auto include = [&](Coordinate2D c) {
        south = std::min(south, c.latitude);
        north = std::max(north, c.latitude);
        west = std::min(west, c.longitude);
        east = std::max(east, c.longitude);
    };
    for (const QList<Coordinate2D> &segment : m_segments)
        std::for_each(segment.cbegin(), segment.cend(), include);
    for (const Landing &landing : m_landings)
        include(landing.coordinate);
    if (south > north)
        return std::nullopt;
    // A tenth of the span on every side keeps the ends of the track off the view's edges.
    const double latitudeSpan = std::max(north - south, smallestSpanDegrees) * 1.2;
    const double longitudeSpan = std::max(east - west, smallestSpanDegrees) * 1.2;
    return CoordinateRegion {
        {(south + north) / 2.0, (west + east) / 2.0}, latitudeSpan, longitudeSpan};
}

int GeotagMapContent::landingAt(const MapViewState &state, QPointF point, double within) const
{
    int best = -1;
    double bestDistance = within;
    for (qsizetype i = 0; i < m_landings.size(); ++i) {
        const QPointF at = MapGeometry::pointForCoordinate(state, m_landings[i].coordinate);
        const double distance = std::hypot(at.x() - point.x(), at.y() - point.y());
        if (distance <= bestDistance) {
            best = int(i);
            bestDistance = distance;
        }
    }
    return best;
}

QString GeotagMapContent::displayName(const Node &node)
{
    return node.name.isEmpty() ? QFileInfo(node.absolutePath).fileName() : node.name;
}

QString GeotagMapContent::takenText(const GeotagController::Item &item, const QByteArray &zoneId)
{
    if (!item.captureTime)
        return QString();
    const QTimeZone zone = zoneId.isEmpty() ? QTimeZone::systemTimeZone() : QTimeZone(zoneId);
    return QDateTime::fromMSecsSinceEpoch(qint64(*item.captureTime * 1000.0), zone)
        .toString(u"yyyy-MM-dd HH:mm:ss"_s);
}
