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

// What the list pipeline needs of a map: somewhere to put plain markers. The map installs
// itself; a headless stand-in does for tests. Without a map, the markers go nowhere. Used on the
// main thread only.
class MapAnnotationSink
{
public:
    virtual ~MapAnnotationSink() = default;
    virtual void addPointAnnotation(const PointAnnotation &annotation) = 0;
    // Each output pass starts with this, so that its markers replace those of the pass before
    // instead of piling up at every re-sort.
    virtual void removeAllPointAnnotations() = 0;

    static MapAnnotationSink *installed();
    static void install(MapAnnotationSink *sink);
};
