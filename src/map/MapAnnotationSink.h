#pragma once

#include <QString>

#include <optional>

// A plain marker: a place with a title and a subtitle, and nothing the map's own markers carry.
struct PointAnnotation
{
    double latitude = 0;
    double longitude = 0;
    // Absent rather than empty when the item has no city to show.
    std::optional<QString> title;
    QString subtitle;

    bool operator==(const PointAnnotation &) const = default;
};

// What the list pipeline needs of a map: somewhere to put plain markers. The map view installs
// itself; a headless stand-in does for tests. Without a map, the markers go nowhere. Used on the
// main thread only.
class MapAnnotationSink
{
public:
    virtual ~MapAnnotationSink() = default;
    virtual void addPointAnnotation(const PointAnnotation &annotation) = 0;

    static MapAnnotationSink *installed();
    static void install(MapAnnotationSink *sink);
};
