#pragma once

#include "location/Coordinate2D.h"
#include "location/Geocoder.h"

#include <QPointF>
#include <QRectF>

// What the map shows: its centre, its zoom level (fractional, as the page allows) and its size
// in points. The view reports it; the logic keeps a copy.
struct MapViewState
{
    Coordinate2D center;
    double zoom = 2.0;
    double width = 0.0;
    double height = 0.0;

    friend bool operator==(const MapViewState &, const MapViewState &) = default;
};

// Web Mercator as the page's map library draws it: the world is a square of 256 * 2^zoom
// points, latitudes are clamped to the square, and points of the view grow right and down. All
// conversions between coordinates and points of the view are made here, so that the mouse modes
// and the rubber band work without asking the page and stay exact in tests.
namespace MapGeometry {

constexpr double tileSize = 256.0;
constexpr double maximumLatitude = 85.0511287798;
constexpr double minimumZoom = 1.0;
constexpr double maximumZoom = 19.0;

// A position on the unit square: x from 0 at 180 degrees west, y from 0 at the top.
QPointF unitPoint(Coordinate2D coordinate);
Coordinate2D coordinateOfUnitPoint(QPointF point);
double worldSize(double zoom);

// The longitude moved by whole turns into [reference - 180, reference + 180), so that a place
// across the antimeridian is drawn and found next to the view's centre.
double longitudeNear(double longitude, double reference);

QPointF pointForCoordinate(const MapViewState &state, Coordinate2D coordinate);
Coordinate2D coordinateForPoint(const MapViewState &state, QPointF point);
// The part of the unit square the view covers, widened by margin points on every side; x may
// run below 0 or beyond 1 where the view shows the next copy of the world.
QRectF unitRect(const MapViewState &state, double margin = 0.0);

// The view's region: its centre and the spans from edge to edge.
CoordinateRegion region(const MapViewState &state);
// The state that shows the whole region in a view of the same size, as large as it fits.
MapViewState stateShowing(const MapViewState &state, const CoordinateRegion &region);
// The state whose centre has moved so that the point of the view shows the coordinate it
// showed before at another zoom: what zooming around the mouse pointer does.
MapViewState zoomedAround(const MapViewState &state, QPointF point, double zoom);

double clampedZoom(double zoom);

} // namespace MapGeometry
