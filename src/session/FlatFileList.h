#pragma once

#include "Node.h"

#include <QList>

#include <memory>

// The sorted list of items that every consumer works on. Not changed once published: a re-sort
// builds a new list that shares the nodes.
class FlatFileList
{
public:
    FlatFileList() = default;
    explicit FlatFileList(QList<NodePtr> files)
        : files(std::move(files))
    { }

    // Stable: ties keep the previous order. The second mode is evaluated for a tie, so that its
    // reads happen, but it does not change the order.
    void sort(SortMode firstSortMode, SortMode secondSortMode);

    QList<NodePtr> files;
};

using FlatFileListPtr = std::shared_ptr<const FlatFileList>;

// Made once per scan and not used further.
class HierarchicalFileList
{ };
