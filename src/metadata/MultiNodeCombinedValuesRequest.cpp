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
    bool someWaiting = false;
    for (const NodePtr &node : nodes) {
        if (node->getDisplayString(key).kind() == DisplayStringWrapper::Kind::Waiting) {
            someWaiting = true;
            node->addDataObserver(shared_from_this(), key);
        }
    }
    // Only this thread turns a value back into waiting, so a second pass would find the same.
    if (someWaiting)
        return;
    if (readyClosure)
        readyClosure();
    terminate();
}

bool MultiNodeCombinedValuesRequest::anyNodeWaiting() const
{
    for (const NodePtr &node : nodes) {
        if (node->getDisplayString(key).kind() == DisplayStringWrapper::Kind::Waiting)
            return true;
    }
    return false;
}

void MultiNodeCombinedValuesRequest::update(MetadataSource)
{
    if (anyNodeWaiting())
        return;
    if (readyClosure)
        readyClosure();
    terminate();
}

void MultiNodeCombinedValuesRequest::terminate()
{
    readyClosure = nullptr;
    for (const NodePtr &node : nodes)
        node->remove(this, source);
}

CombinedValuesWrapper MultiNodeCombinedValuesRequest::combinedDisplayStringWrapper(
    const QString &forKey) const
{
    CombinedValuesWrapper result;
    // A set beside the list: a selection of many files with as many different values would
    // otherwise compare every value with every other.
    QSet<QString> seen;
    for (const NodePtr &node : nodes) {
        const DisplayStringWrapper value = node->getDisplayString(forKey);
        switch (value.kind()) {
        case DisplayStringWrapper::Kind::Waiting:
            return CombinedValuesWrapper {CombinedValuesWrapper::Kind::Waiting, {}, false};
        case DisplayStringWrapper::Kind::NotPresent:
            result.someValuesMissing = true;
            break;
        case DisplayStringWrapper::Kind::Present:
            if (!seen.contains(value.text())) {
                seen.insert(value.text());
                result.values.append(value.text());
            }
            break;
        }
    }
    if (result.values.isEmpty())
        return CombinedValuesWrapper {CombinedValuesWrapper::Kind::NoValue, {}, false};
    result.kind = result.values.size() == 1 ? CombinedValuesWrapper::Kind::SingleValue
                                            : CombinedValuesWrapper::Kind::MultipleValues;
    return result;
}
