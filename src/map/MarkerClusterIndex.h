#pragma once

#include "location/Coordinate2D.h"

#include <QRectF>

#include <memory>

#include <span>
#include <vector>

// The clusters of a set of points at every zoom level, built once and then read from any
// thread. Points that would lie closer than the radius (in points of the view at that level)
// are drawn as one cluster, greedily, level after level from the closest zoom outwards, so that
// a cluster at one level is made of whole clusters of the level below. Each level is a k-d
// tree for rectangle queries, and the leaves of every cluster lie side by side in one order,
// so a cluster's members, or how many of them are selected, cost no search.
class MarkerClusterIndex
{
public:
    struct Point
    {
        Coordinate2D coordinate;
        quint32 id = 0;
    };

    // A cluster, or a single point when count is 1. x and y are on the unit square of the
    // projection; a cluster lies at the mean of its points.
    struct Entry
    {
        double x = 0.0;
        double y = 0.0;
        quint32 count = 0;
        quint32 firstLeaf = 0;
    };

    struct Found
    {
        int level = 0;
        quint32 index = 0;
        // Whole turns of the world to the east (negative: west) of the copy it was found in.
        int turns = 0;
    };

    static constexpr int maximumLevel = 19;

    MarkerClusterIndex(const std::vector<Point> &points, double radius);

    qsizetype pointCount() const { return qsizetype(m_leafIds.size()); }
    double radius() const { return m_radius; }
    static int levelForZoom(double zoom);

    // The entries of a level that lie in the rectangle of the unit square, which may reach into
    // the copies of the world on either side.
    std::vector<Found> entriesIn(int level, const QRectF &unitRect) const;
    const Entry &entry(int level, quint32 index) const { return (*m_levels[level])[index]; }
    quint32 entryCount(int level) const { return quint32(m_levels[level]->size()); }
    // The ids of the points the entry stands for.
    std::span<const quint32> leaves(const Entry &entry) const
    {
        return std::span<const quint32>(m_leafIds).subspan(entry.firstLeaf, entry.count);
    }
    // Every point id once, members of a cluster side by side.
    const std::vector<quint32> &leafOrder() const { return m_leafIds; }
    static Coordinate2D coordinate(const Entry &entry, int turns = 0);

private:
    using Level = std::vector<Entry>;

    void rangeQuery(const Level &level, double minX, double minY, double maxX, double maxY,
                    std::vector<quint32> &result) const;
    static void sortForQueries(Level &level, std::vector<quint32> &permutation);

    double m_radius;
    // Levels 0 to maximumLevel; a level in which nothing merged shares the one below it.
    std::vector<std::shared_ptr<const Level>> m_levels;
    std::vector<quint32> m_leafIds;
};
