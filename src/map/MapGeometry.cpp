#include "MapGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace MapGeometry {

namespace {

constexpr double pi = std::numbers::pi;

double clampedLatitude(double latitude)
{
    return std::clamp(latitude, -maximumLatitude, maximumLatitude);
}

} // namespace

double worldSize(double zoom)
{
    return tileSize * std::exp2(zoom);
}

double clampedZoom(double zoom)
{
    return std::clamp(zoom, minimumZoom, maximumZoom);
}

QPointF unitPoint(Coordinate2D coordinate)
{
    const double sinLatitude = std::sin(clampedLatitude(coordinate.latitude) * pi / 180.0);
    const double x = (coordinate.longitude + 180.0) / 360.0;
    const double y = 0.5 - std::log((1.0 + sinLatitude) / (1.0 - sinLatitude)) / (4.0 * pi);
    return {x, y};
}

Coordinate2D coordinateOfUnitPoint(QPointF point)
{
    const double latitude
        = (2.0 * std::atan(std::exp((0.5 - point.y()) * 2.0 * pi)) - pi / 2.0) * 180.0 / pi;
    return {latitude, point.x() * 360.0 - 180.0};
}

double longitudeNear(double longitude, double reference)
{
    return longitude - 360.0 * std::floor((longitude - reference + 180.0) / 360.0);
}

QPointF pointForCoordinate(const MapViewState &state, Coordinate2D coordinate)
{
    const double size = worldSize(state.zoom);
    coordinate.longitude = longitudeNear(coordinate.longitude, state.center.longitude);
    const QPointF offset = (unitPoint(coordinate) - unitPoint(state.center)) * size;
    return offset + QPointF(state.width / 2.0, state.height / 2.0);
}

Coordinate2D coordinateForPoint(const MapViewState &state, QPointF point)
{
    const double size = worldSize(state.zoom);
    const QPointF offset = point - QPointF(state.width / 2.0, state.height / 2.0);
    return coordinateOfUnitPoint(unitPoint(state.center) + offset / size);
}

QRectF unitRect(const MapViewState &state, double margin)
{
    const double size = worldSize(state.zoom);
    const QPointF center = unitPoint(state.center);
    const double halfWidth = (state.width / 2.0 + margin) / size;
    const double halfHeight = (state.height / 2.0 + margin) / size;
    return QRectF(center.x() - halfWidth, center.y() - halfHeight, 2.0 * halfWidth,
                  2.0 * halfHeight);
}

CoordinateRegion region(const MapViewState &state)
{
    const Coordinate2D topLeft = coordinateForPoint(state, {0.0, 0.0});
    const Coordinate2D bottomRight = coordinateForPoint(state, {state.width, state.height});
    return {state.center, topLeft.latitude - bottomRight.latitude,
            bottomRight.longitude - topLeft.longitude};
}

MapViewState stateShowing(const MapViewState &state, const CoordinateRegion &region)
{
    MapViewState result = state;
    result.center = region.center;
    const double halfLatitude = std::max(region.latitudeDelta, 0.0) / 2.0;
    const QPointF north = unitPoint({region.center.latitude + halfLatitude, 0.0});
    const QPointF south = unitPoint({region.center.latitude - halfLatitude, 0.0});
    const double unitWidth = std::max(region.longitudeDelta, 0.0) / 360.0;
    const double unitHeight = south.y() - north.y();
    double zoom = maximumZoom;
    if (unitWidth > 0.0 && state.width > 0.0)
        zoom = std::min(zoom, std::log2(state.width / (tileSize * unitWidth)));
    if (unitHeight > 0.0 && state.height > 0.0)
        zoom = std::min(zoom, std::log2(state.height / (tileSize * unitHeight)));
    result.zoom = clampedZoom(zoom);
    return result;
}

MapViewState zoomedAround(const MapViewState &state, QPointF point, double zoom)
{
    MapViewState result = state;
    result.zoom = clampedZoom(zoom);
    const QPointF unit = unitPoint(coordinateForPoint(state, point));
    const QPointF offset
        = (point - QPointF(state.width / 2.0, state.height / 2.0)) / worldSize(result.zoom);
    result.center = coordinateOfUnitPoint(unit - offset);
    return result;
}

} // namespace MapGeometry
