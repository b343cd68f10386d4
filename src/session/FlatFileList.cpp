#include "FlatFileList.h"

#include <algorithm>
#include <numeric>

namespace {

// The modes that compare a node's own text; they read nothing, so their order can be computed
// once per node instead of once per comparison.
const QString *textKeyOf(const Node &node, SortMode mode)
{
    switch (SortMode(int(mode) & ~1)) {
    case SortMode::nameAndSequenceAscending:
    case SortMode::pathAndSequenceAscending:
        return &node.smartName;
    case SortMode::nameAscending:
        return &node.name;
    case SortMode::absolutePathAscending:
        return &node.absolutePath;
    default:
        return nullptr;
    }
}

} // namespace

void FlatFileList::sort(SortMode firstSortMode, SortMode secondSortMode)
{
    const qsizetype count = files.size();
    if (count < 2)
        return;
    const bool secondReads = !textKeyOf(*files.first(), secondSortMode);

    std::vector<NodePtr> sorted(files.cbegin(), files.cend());
    if (textKeyOf(*files.first(), firstSortMode)) {
        // Case-folded keys compared code unit by code unit order as a case-insensitive
        // comparison does.
        const bool descending = int(firstSortMode) & 1;
        std::vector<QString> keys(static_cast<size_t>(count));
        for (qsizetype i = 0; i < count; ++i)
            keys[size_t(i)] = textKeyOf(*files.at(i), firstSortMode)->toCaseFolded();
        std::vector<qsizetype> order(static_cast<size_t>(count));
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) {
            const int c = QString::compare(keys[size_t(a)], keys[size_t(b)], Qt::CaseSensitive);
            if (c == 0) {
                // Evaluated for its reads only: the second mode never changes the order.
                if (secondReads)
                    Node::compare(*files.at(a), *files.at(b), secondSortMode);
                return false;
            }
            return descending ? c > 0 : c < 0;
        });
        for (qsizetype i = 0; i < count; ++i)
            sorted[size_t(i)] = files.at(order[size_t(i)]);
    } else {
        std::stable_sort(sorted.begin(), sorted.end(), [&](const NodePtr &a, const NodePtr &b) {
            const NodeComparisonResult r = Node::compare(*a, *b, firstSortMode);
            if (r == NodeComparisonResult::tie) {
                if (secondReads)
                    Node::compare(*a, *b, secondSortMode);
                return false;
            }
            return r == NodeComparisonResult::aBeforeB;
        });
    }
    files = QList<NodePtr>(sorted.begin(), sorted.end());
}
