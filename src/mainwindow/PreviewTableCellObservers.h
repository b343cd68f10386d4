#pragma once

#include "metadata/MetadataSource.h"
#include "session/Node.h"

#include <QHash>

#include <functional>
#include <memory>

// The cells of the preview table that are on screen and show a value of a metadata source: one
// observer per row and source, registered with the row's node while the row is visible, so that
// a value read later (or read again after a write) repaints the row without a reload.
class PreviewTableCellObservers
{
public:
    using RowIsReady = std::function<void(int row)>;
    explicit PreviewTableCellObservers(RowIsReady rowIsReady);
    ~PreviewTableCellObservers();
    PreviewTableCellObservers(const PreviewTableCellObservers &) = delete;
    PreviewTableCellObservers &operator=(const PreviewTableCellObservers &) = delete;

    // Registers the row's observer for the key's source unless there is one.
    void observe(int row, const NodePtr &node, const QString &key);
    // Drops the observers of rows outside first..last, the rows on screen.
    void keepOnly(int first, int last);
    // Drops every observer: the list or the columns have changed.
    void clear();
    qsizetype count() const { return m_observers.size(); }

private:
    class CellObserver;
    using Slot = QPair<int, int>; // row, source
    void drop(const std::shared_ptr<CellObserver> &observer);

    RowIsReady m_rowIsReady;
    QHash<Slot, std::shared_ptr<CellObserver>> m_observers;
};
