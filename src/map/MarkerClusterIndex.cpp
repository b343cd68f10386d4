#include "MarkerClusterIndex.h"

#include "MapGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace {

// Leaves of the k-d trees hold this many entries, which are searched one by one.
constexpr size_t nodeSize = 64;

using Level = std::vector<MarkerClusterIndex::Entry>;

// Orders the entries as a k-d tree, in place: the middle entry of each range splits it by x or y,
// alternately, down to ranges of nodeSize entries.
void kdSort(Level &level, size_t left, size_t right, int axis)
{
    if (right - left <= nodeSize)
        return;
    const size_t middle = (left + right) / 2;
    std::nth_element(
        level.begin() + qsizetype(left), level.begin() + qsizetype(middle),
        level.begin() + qsizetype(right) + 1,
        [axis](const MarkerClusterIndex::Entry &a, const MarkerClusterIndex::Entry &b) {
            return axis == 0 ? a.x < b.x : a.y < b.y;
        });
    kdSort(level, left, middle - 1, 1 - axis);
    kdSort(level, middle + 1, right, 1 - axis);
}

} // namespace

void MarkerClusterIndex::sortForQueries(Level &level, std::vector<quint32> &permutation)
{
    // Until the leaves are numbered, firstLeaf carries each entry's place before the sort.
    for (quint32 i = 0; i < level.size(); ++i)
        level[i].firstLeaf = i;
    if (!level.empty())
        kdSort(level, 0, level.size() - 1, 0);
    permutation.resize(level.size());
    for (size_t k = 0; k < level.size(); ++k)
        permutation[k] = level[k].firstLeaf;
}

void MarkerClusterIndex::rangeQuery(const Level &level, double minX, double minY, double maxX,
                                    double maxY, std::vector<quint32> &result) const
{
    if (level.empty())
        return;
    struct Range
    {
        size_t left, right;
        int axis;
    };
    // A depth-first walk grows the stack by at most one range per level of the tree.
    std::array<Range, 128> stack;
    size_t depth = 0;
    stack[depth++] = {0, level.size() - 1, 0};
    const auto inside = [&](const Entry &e) {
        return e.x >= minX && e.x <= maxX && e.y >= minY && e.y <= maxY;
    };
    while (depth > 0) {
        const Range range = stack[--depth];
        if (range.right - range.left <= nodeSize) {
            for (size_t i = range.left; i <= range.right; ++i) {
                if (inside(level[i]))
                    result.push_back(quint32(i));
            }
            continue;
        }
        const size_t middle = (range.left + range.right) / 2;
        const Entry &e = level[middle];
        if (inside(e))
            result.push_back(quint32(middle));
        if (range.axis == 0 ? minX <= e.x : minY <= e.y)
            stack[depth++] = {range.left, middle - 1, 1 - range.axis};
        if (range.axis == 0 ? maxX >= e.x : maxY >= e.y)
            stack[depth++] = {middle + 1, range.right, 1 - range.axis};
    }
}

MarkerClusterIndex::MarkerClusterIndex(const std::vector<Point> &points, double radius)
    : m_radius(radius)
{
    const int rawLevel = maximumLevel + 1;
    std::vector<std::shared_ptr<Level>> levels(size_t(rawLevel) + 1);
    // parents[l][i]: the entry of level l - 1 that entry i of level l belongs to; empty when
    // level l - 1 is level l itself.
    std::vector<std::vector<quint32>> parents(size_t(rawLevel) + 1);
    std::vector<quint32> permutation;

    auto raw = std::make_shared<Level>();
    raw->reserve(points.size());
    for (const Point &point : points) {
        const QPointF unit = MapGeometry::unitPoint(point.coordinate);
        raw->push_back({unit.x(), unit.y(), 1, 0});
    }
    sortForQueries(*raw, permutation);
    std::vector<quint32> rawIds(points.size());
    for (size_t i = 0; i < permutation.size(); ++i)
        rawIds[i] = points[permutation[i]].id;
    levels[rawLevel] = raw;

    std::vector<quint32> neighbours;
    std::vector<char> taken;
    for (int z = maximumLevel; z >= 0; --z) {
        const Level &below = *levels[size_t(z) + 1];
        const double reach = radius / MapGeometry::worldSize(z);
        const double reachSquared = reach * reach;
        auto built = std::make_shared<Level>();
        built->reserve(below.size());
        std::vector<quint32> parent(below.size());
        taken.assign(below.size(), 0);
        bool merged = false;
        for (size_t i = 0; i < below.size(); ++i) {
            if (taken[i])
                continue;
            taken[i] = 1;
            const Entry &e = below[i];
            neighbours.clear();
            rangeQuery(below, e.x - reach, e.y - reach, e.x + reach, e.y + reach, neighbours);
            quint32 count = e.count;
            double weightedX = e.x * e.count;
            double weightedY = e.y * e.count;
            const auto newIndex = quint32(built->size());
            for (const quint32 n : neighbours) {
                const Entry &other = below[n];
                const double dx = other.x - e.x;
                const double dy = other.y - e.y;
                if (taken[n] || dx * dx + dy * dy > reachSquared)
                    continue;
                taken[n] = 1;
                parent[n] = newIndex;
                count += other.count;
                weightedX += other.x * other.count;
                weightedY += other.y * other.count;
            }
            parent[i] = newIndex;
            if (count > e.count) {
                merged = true;
                built->push_back({weightedX / count, weightedY / count, count, 0});
            } else {
                built->push_back(e);
            }
        }
        if (!merged) {
            levels[size_t(z)] = levels[size_t(z) + 1];
            continue;
        }
        sortForQueries(*built, permutation);
        std::vector<quint32> newPosition(permutation.size());
        for (size_t k = 0; k < permutation.size(); ++k)
            newPosition[permutation[k]] = quint32(k);
        for (quint32 &p : parent)
            p = newPosition[p];
        parents[size_t(z) + 1] = std::move(parent);
        levels[size_t(z)] = std::move(built);
    }

    // Children of each entry, for the levels where entries merged.
    std::vector<std::vector<quint32>> childStart(size_t(rawLevel) + 1);
    std::vector<std::vector<quint32>> children(size_t(rawLevel) + 1);
    for (int l = 1; l <= rawLevel; ++l) {
        const std::vector<quint32> &parent = parents[size_t(l)];
        if (parent.empty())
            continue;
        std::vector<quint32> &start = childStart[size_t(l) - 1];
        start.assign(levels[size_t(l) - 1]->size() + 1, 0);
        for (const quint32 p : parent)
            ++start[p + 1];
        for (size_t k = 1; k < start.size(); ++k)
            start[k] += start[k - 1];
        std::vector<quint32> fill(start.begin(), start.end() - 1);
        std::vector<quint32> &list = children[size_t(l) - 1];
        list.resize(parent.size());
        for (quint32 c = 0; c < parent.size(); ++c)
            list[fill[parent[c]]++] = c;
    }

    // Leaves in depth-first order, so that every entry's leaves lie side by side. A level equal
    // to the one below shares its entries, which therefore get the same first leaf.
    m_leafIds.reserve(points.size());
    const std::function<void(int, quint32)> assign = [&](int l, quint32 e) {
        (*levels[size_t(l)])[e].firstLeaf = quint32(m_leafIds.size());
        if (l == rawLevel) {
            m_leafIds.push_back(rawIds[e]);
            return;
        }
        if (parents[size_t(l) + 1].empty()) {
            assign(l + 1, e);
            return;
        }
        const std::vector<quint32> &start = childStart[size_t(l)];
        for (quint32 k = start[e]; k < start[e + 1]; ++k)
            assign(l + 1, children[size_t(l)][k]);
    };
    for (quint32 e = 0; e < levels[0]->size(); ++e)
        assign(0, e);

    m_levels.assign(levels.begin(), levels.begin() + maximumLevel + 1);
}

int MarkerClusterIndex::levelForZoom(double zoom)
{
    return std::clamp(int(std::floor(zoom)), 0, maximumLevel);
}

std::vector<MarkerClusterIndex::Found> MarkerClusterIndex::entriesIn(int level,
                                                                     const QRectF &unitRect) const
{
    std::vector<Found> found;
    const Level &entries = *m_levels[size_t(std::clamp(level, 0, maximumLevel))];
    std::vector<quint32> indexes;
    // A view wider than the world shows a few copies of it, no more.
    const int firstTurn = std::max(int(std::floor(unitRect.left())), -2);
    const int lastTurn = std::min(int(std::floor(unitRect.right())), 2);
    for (int turns = firstTurn; turns <= lastTurn; ++turns) {
        indexes.clear();
        rangeQuery(entries, std::max(unitRect.left() - turns, 0.0), unitRect.top(),
                   std::min(unitRect.right() - turns, 1.0), unitRect.bottom(), indexes);
        for (const quint32 index : indexes)
            found.push_back({level, index, turns});
    }
    return found;
}

Coordinate2D MarkerClusterIndex::coordinate(const Entry &entry, int turns)
{
    return MapGeometry::coordinateOfUnitPoint({entry.x + turns, entry.y});
}
