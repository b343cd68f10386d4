#pragma once

#include "CombinedValuesWrapper.h"
#include "MetadataSource.h"
#include "session/DataIsReadyObserver.h"
#include "session/Node.h"

#include <QList>
#include <QSet>

#include <functional>
#include <memory>
#include <optional>

// Waits until one key's value has arrived for every node of a selection, then calls readyClosure
// once. Main thread only. A selection whose data is all there calls it inside create(); an empty
// one calls it on the next turn of the main queue.
class MultiNodeCombinedValuesRequest
    : public DataIsReadyObserver
    , public std::enable_shared_from_this<MultiNodeCombinedValuesRequest>
{
public:
    static std::shared_ptr<MultiNodeCombinedValuesRequest> create(
        QList<NodePtr> nodes, const QString &key, MetadataSource source,
        std::function<void()> readyClosure);

    // The selection's values of the key. For the request's own key, when every value was there
    // at the start, they are those of that moment.
    CombinedValuesWrapper combinedDisplayStringWrapper(const QString &key) const;
    void update(MetadataSource source) override;
    void terminate();
    // The nodes whose value was still being read when the request started, while it waits.
    const QList<NodePtr> &observedNodes() const { return m_observedNodes; }

    const QList<NodePtr> nodes;
    const QString key;
    const MetadataSource source;

private:
    MultiNodeCombinedValuesRequest(QList<NodePtr> nodes, QString key, MetadataSource source,
                                   std::function<void()> readyClosure);
    void start();
    // Moves past the nodes whose value has arrived; true once none is left waiting.
    bool advancePastArrivedNodes();

    // Gathers the distinct present values in order, and whether some are missing.
    class Combiner
    {
    public:
        void add(const DisplayStringWrapper &value);
        CombinedValuesWrapper result() const;

    private:
        CombinedValuesWrapper m_result;
        QSet<QString> m_seen;
    };

    std::function<void()> readyClosure;
    // The values combined in the first pass, when none was waiting.
    std::optional<CombinedValuesWrapper> m_combinedAtStart;
    // The nodes before this index had their value when last looked at, so an arrival is
    // checked from here on rather than over the whole selection again.
    qsizetype m_firstWaiting = 0;
    // The nodes this request observes, and only those, are let go at the end.
    QList<NodePtr> m_observedNodes;
};
