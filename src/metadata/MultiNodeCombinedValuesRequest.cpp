#include "MultiNodeCombinedValuesRequest.h"

#include "platform/MainQueue.h"

#include <QSet>

MultiNodeCombinedValuesRequest::MultiNodeCombinedValuesRequest(QList<NodePtr> nodes, QString key,
                                                               MetadataSource source,
                                                               std::function<void()> readyClosure)
    : nodes(std::move(nodes))
    , key(std::move(key))
    , source(source)
    , readyClosure(std::move(readyClosure))
{ }

std::shared_ptr<MultiNodeCombinedValuesRequest> MultiNodeCombinedValuesRequest::create(
    QList<NodePtr> nodes, const QString &key, MetadataSource source,
    std::function<void()> readyClosure)
{
    std::shared_ptr<MultiNodeCombinedValuesRequest> request(
        new MultiNodeCombinedValuesRequest(std::move(nodes), key, source, std::move(readyClosure)));
    request->start();
    return request;
}

void MultiNodeCombinedValuesRequest::start()
{
    if (nodes.isEmpty()) {
        // Deferred, so that the caller has its request before the callback runs.
        auto self = shared_from_this();
        MainQueue::post([self] {
            if (self->readyClosure)
                self->readyClosure();
            self->terminate();
        });
        return;
    }
    const std::shared_ptr<MultiNodeCombinedValuesRequest> self = shared_from_this();
    m_firstWaiting = -1;
    // The same pass combines the values, so that a selection whose values are all there is not
    // gone through a second time when its owner asks for them.
    Combiner combiner;
    Node::visitDisplayStrings(nodes, 0, key,
                              [&](qsizetype index, const DisplayStringWrapper &value) {
                                  if (value.kind() == DisplayStringWrapper::Kind::Waiting) {
                                      if (m_firstWaiting < 0)
                                          m_firstWaiting = index;
                                      nodes.at(index)->addDataObserver(self, key);
                                      m_observedNodes.append(nodes.at(index));
                                  } else if (m_firstWaiting < 0) {
                                      combiner.add(value);
                                  }
                                  return true;
                              });
    // Only this thread turns a value back into waiting, so a second pass would find the same.
    if (m_firstWaiting >= 0)
        return;
    m_firstWaiting = nodes.size();
    m_combinedAtStart = combiner.result();
    if (readyClosure)
        readyClosure();
    terminate();
}

bool MultiNodeCombinedValuesRequest::advancePastArrivedNodes()
{
    qsizetype waiting = nodes.size();
    Node::visitDisplayStrings(nodes, m_firstWaiting, key,
                              [&](qsizetype index, const DisplayStringWrapper &value) {
                                  if (value.kind() != DisplayStringWrapper::Kind::Waiting)
                                      return true;
                                  waiting = index;
                                  return false;
                              });
    m_firstWaiting = waiting;
    return waiting == nodes.size();
}

void MultiNodeCombinedValuesRequest::update(MetadataSource)
{
    if (!advancePastArrivedNodes())
        return;
    if (readyClosure)
        readyClosure();
    terminate();
}

void MultiNodeCombinedValuesRequest::terminate()
{
    readyClosure = nullptr;
    for (const NodePtr &node : std::as_const(m_observedNodes))
        node->remove(this, source);
    m_observedNodes.clear();
}

void MultiNodeCombinedValuesRequest::Combiner::add(const DisplayStringWrapper &value)
{
    if (value.kind() == DisplayStringWrapper::Kind::NotPresent) {
        m_result.someValuesMissing = true;
        return;
    }
    // A set, so that a selection of many different values is not compared value by value.
    if (!m_seen.contains(value.text())) {
        m_seen.insert(value.text());
        m_result.values.append(value.text());
    }
}

CombinedValuesWrapper MultiNodeCombinedValuesRequest::Combiner::result() const
{
    if (m_result.values.isEmpty())
        return CombinedValuesWrapper {CombinedValuesWrapper::Kind::NoValue, {}, false};
    CombinedValuesWrapper result = m_result;
    result.kind = result.values.size() == 1 ? CombinedValuesWrapper::Kind::SingleValue
                                            : CombinedValuesWrapper::Kind::MultipleValues;
    return result;
}

CombinedValuesWrapper MultiNodeCombinedValuesRequest::combinedDisplayStringWrapper(
    const QString &forKey) const
{
    if (m_combinedAtStart && forKey == key)
        return *m_combinedAtStart;
    Combiner combiner;
    bool waiting = false;
    Node::visitDisplayStrings(nodes, 0, forKey, [&](qsizetype, const DisplayStringWrapper &value) {
        if (value.kind() == DisplayStringWrapper::Kind::Waiting) {
            waiting = true;
            return false;
        }
        combiner.add(value);
        return true;
    });
    if (waiting)
        return CombinedValuesWrapper {CombinedValuesWrapper::Kind::Waiting, {}, false};
    return combiner.result();
}
