#include "FlatFileList.h"

#include "TextHash.h"

#include <QHash>

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <vector>

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

// Stable order by a text key for the modes that need no reads. Equal texts share one rank:
// names repeat across folders (every folder has its IMG_0001), so only the distinct texts are
// compared, and the items then fall into place by rank in a single pass that keeps their order.
QList<NodePtr> sortedByText(QList<NodePtr> files, SortMode firstSortMode, SortMode secondSortMode,
                            bool secondReads)
{
    const auto count = size_t(files.size());
    // Nodes of the same name share its strings, so for the name modes most items are told apart
    // by the address of their text alone; only the distinct addresses are hashed by content.
    const SortMode key = SortMode(int(firstSortMode) & ~1);
    const bool namesShared = key != SortMode::absolutePathAscending;
    QHash<const QChar *, quint32> idOfAddress;
    std::unordered_map<QStringView, quint32, TextHash> idOfText;
    std::vector<const QString *> texts;
    std::vector<quint32> idOfItem(count);
    const auto idOfContent = [&](const QString *text) {
        const auto [found, added] = idOfText.try_emplace(QStringView(*text), quint32(texts.size()));
        if (added)
            texts.push_back(text);
        return found->second;
    };
    for (size_t i = 0; i < count; ++i) {
        const QString *text = textKeyOf(*files.at(qsizetype(i)), firstSortMode);
        if (!namesShared) {
            idOfItem[i] = idOfContent(text);
            continue;
        }
        auto found = idOfAddress.find(text->constData());
        if (found == idOfAddress.end())
            found = idOfAddress.insert(text->constData(), idOfContent(text));
        idOfItem[i] = *found;
    }

    // Case-folded texts compared code unit by code unit order as a case-insensitive comparison
    // does; texts that differ only in case get the same rank.
    const size_t distinct = texts.size();
    std::vector<QString> folded(distinct);
    for (size_t id = 0; id < distinct; ++id)
        folded[id] = texts[id]->toCaseFolded();
    std::vector<quint32> byText(distinct);
    std::iota(byText.begin(), byText.end(), 0);
    std::sort(byText.begin(), byText.end(), [&](quint32 a, quint32 b) {
        return QString::compare(folded[a], folded[b], Qt::CaseSensitive) < 0;
    });
    std::vector<quint32> rankOfId(distinct);
    quint32 rank = 0;
    for (size_t i = 0; i < distinct; ++i) {
        if (i > 0 && folded[byText[i - 1]] != folded[byText[i]])
            ++rank;
        rankOfId[byText[i]] = rank;
    }
    const bool descending = int(firstSortMode) & 1;
    const quint32 ranks = distinct ? rank + 1 : 0;

    // Counting sort by rank: stable, so ties keep the previous order.
    std::vector<size_t> start(size_t(ranks) + 1, 0);
    for (size_t i = 0; i < count; ++i) {
        quint32 &r = idOfItem[i];
        r = rankOfId[r];
        if (descending)
            r = ranks - 1 - r;
        ++start[r + 1];
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    QList<NodePtr> sorted(files.size());
    for (size_t i = 0; i < count; ++i)
        sorted[qsizetype(start[idOfItem[i]]++)] = std::move(files[qsizetype(i)]);

    // A comparison sort compares every pair of neighbours that tie, and calls the second mode
    // for each; its reads happen for the same items here.
    if (secondReads) {
        // After the placement each start[r] is the end of rank r's run.
        for (quint32 r = 0; r < ranks; ++r) {
            for (size_t i = (r ? start[r - 1] : 0) + 1; i < start[r]; ++i)
                Node::compare(*sorted.at(qsizetype(i - 1)), *sorted.at(qsizetype(i)),
                              secondSortMode);
        }
    }
    return sorted;
}

} // namespace

void FlatFileList::sort(SortMode firstSortMode, SortMode secondSortMode)
{
    if (files.size() < 2)
        return;
    const bool secondReads = !textKeyOf(*files.first(), secondSortMode);
    if (textKeyOf(*files.first(), firstSortMode)) {
        files = sortedByText(std::move(files), firstSortMode, secondSortMode, secondReads);
        return;
    }
    std::vector<NodePtr> sorted(files.cbegin(), files.cend());
    std::stable_sort(sorted.begin(), sorted.end(), [&](const NodePtr &a, const NodePtr &b) {
        const NodeComparisonResult r = Node::compare(*a, *b, firstSortMode);
        if (r == NodeComparisonResult::tie) {
            if (secondReads)
                Node::compare(*a, *b, secondSortMode);
            return false;
        }
        return r == NodeComparisonResult::aBeforeB;
    });
    files = QList<NodePtr>(sorted.begin(), sorted.end());
}
