#pragma once

#include "location/Coordinate2D.h"
#include "location/Placemark.h"

#include <QList>
#include <QString>
#include <QStringView>

#include <functional>
#include <optional>
#include <utility>

enum class CoordinateAxis { Latitude, Longitude };

// Where a coordinate changes form: typed or pasted text into decimal degrees, decimal degrees into
// the degrees-minutes-seconds and degrees-decimal-minutes texts, and a coordinate into places
// through the geocoder. Stateless; everything but the geocoding runs on the calling thread. The
// parsers are lenient about notation and never check a range: that is the caller's job.
class LocationHelper
{
public:
    struct ParsedCoordinates
    {
        std::optional<double> latitude;
        std::optional<double> longitude;
    };

    static const LocationHelper &shared();

    // Either field may hold a whole pair; an empty field counts as 0 next to a filled one.
    ParsedCoordinates parseCoordinateFields(const QString &latitudeInput,
                                            const QString &longitudeInput) const;
    // "lat, lon" or a single value (the latitude). A decimal comma is never understood.
    ParsedCoordinates parseCoordinateString(const QString &text) const;

    // Plain signed decimals, as the metadata stores them.
    std::optional<Coordinate2D> coordinateFromDD(const QString &latitudeString,
                                                 const QString &longitudeString) const;
    // Unsigned decimals with their reference words ("N", "north", "W", ...).
    std::optional<Coordinate2D> createCLLocationCoordinate2DFrom(const QString &latitude,
                                                                 const QString &longitude,
                                                                 const QString &latitudeRef,
                                                                 const QString &longitudeRef) const;

    QString formatToDMS(double coordinate, CoordinateAxis axis) const;
    QString formatToDMM(double coordinate, CoordinateAxis axis) const;
    // Both axes of a position, latitude first, joined by ", ".
    QString formatPairToDMS(Coordinate2D coordinate) const;
    QString formatPairToDMM(Coordinate2D coordinate) const;
    QString truncateDecimalString(const QString &text, int after) const;
    std::optional<std::pair<QString, QString>> addPlusOrMinusToValues(
        const QString &latitude, const QString &longitude) const;

    // Asks the geocoder what lies at the coordinate. The closure runs later on the main thread,
    // or never when the geocoder fails.
    void retrieveLocationDescription(Coordinate2D coordinate,
                                     std::function<void(const QList<Placemark> &)> closure) const;

    // The C-locale strtod over the whole text: everything strtod reads ("1e1", "inf", "nan",
    // "0x1p4"), but no leading white space, no trailing rest and no NUL inside.
    static std::optional<double> wholeTextDouble(QStringView text);

private:
    std::optional<double> parseSingleCoordinate(const QString &text) const;
    std::optional<double> parseDMS(const QString &text) const;
    std::optional<double> parseDMM(const QString &text) const;
    std::optional<double> parseDecimalDegreesWithDirection(const QString &text) const;
};
