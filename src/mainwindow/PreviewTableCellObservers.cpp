#include "PreviewTableCellObservers.h"

#include "metadata/TagManager.h"

class PreviewTableCellObservers::CellObserver : public DataIsReadyObserver
{
public:
    CellObserver(int row, const NodePtr &node, MetadataSource source, RowIsReady *rowIsReady)
        : row(row)
        , node(node)
        , source(source)
        , rowIsReady(rowIsReady)
    { }
    void update(MetadataSource) override
    {
        if (rowIsReady)
            (*rowIsReady)(row);
    }

    const int row;
    const std::weak_ptr<Node> node;
    const MetadataSource source;
    // Cleared when the observer is dropped; a notification already posted then does nothing.
    RowIsReady *rowIsReady;
};

PreviewTableCellObservers::PreviewTableCellObservers(RowIsReady rowIsReady)
    : m_rowIsReady(std::move(rowIsReady))
{ }

PreviewTableCellObservers::~PreviewTableCellObservers()
{
    clear();
}

void PreviewTableCellObservers::observe(int row, const NodePtr &node, const QString &key)
{
    const std::optional<MetadataSource> source = TagManager::shared().sourceForKey(key);
    if (!source)
        return;
    std::shared_ptr<CellObserver> &observer = m_observers[Slot(row, int(*source))];
    if (observer)
        return;
    observer = std::make_shared<CellObserver>(row, node, *source, &m_rowIsReady);
    node->addDataObserver(observer, key);
}

void PreviewTableCellObservers::keepOnly(int first, int last)
{
    for (auto it = m_observers.begin(); it != m_observers.end();) {
        if (it.key().first < first || it.key().first > last) {
            drop(it.value());
            it = m_observers.erase(it);
        } else {
            ++it;
        }
    }
}

void PreviewTableCellObservers::clear()
{
    for (const std::shared_ptr<CellObserver> &observer : std::as_const(m_observers))
        drop(observer);
    m_observers.clear();
}

void PreviewTableCellObservers::drop(const std::shared_ptr<CellObserver> &observer)
{
    observer->rowIsReady = nullptr;
    // Leaves the node's list at once, rather than as a dead entry for the node's lifetime.
    if (const NodePtr node = observer->node.lock())
        node->remove(observer.get(), observer->source);
}
