#include "InfoPaneValueCell.h"

#include "metadata/TagManager.h"
#include "session/InfoPaneContent.h"

std::shared_ptr<InfoPaneValueCell> InfoPaneValueCell::create(QList<NodePtr> nodes, QString valueKey,
                                                             std::function<void()> changed)
{
    std::shared_ptr<InfoPaneValueCell> cell(
        new InfoPaneValueCell(std::move(nodes), std::move(valueKey), std::move(changed)));
    cell->createInitialValueRequest();
    return cell;
}

InfoPaneValueCell::InfoPaneValueCell(QList<NodePtr> nodes, QString valueKey,
                                     std::function<void()> changed)
    : nodes(std::move(nodes))
    , valueKey(std::move(valueKey))
    , m_changed(std::move(changed))
{ }

InfoPaneValueCell::~InfoPaneValueCell()
{
    terminate();
}

void InfoPaneValueCell::createInitialValueRequest()
{
    if (!TagManager::shared().sourceForKey(valueKey)) {
        // A key no source delivers has no value in any file.
        m_text = InfoPaneContent::noValuePlaceholder();
        m_isNoValue = true;
        return;
    }
    startRequest();
    if (m_newestIsReady)
        return;
    // Stays told of the nodes still being read, so that a value read again later (after a
    // write) is shown too. The request has just found them: a second look at every node would
    // cost a selection of thousands as much again.
    const std::shared_ptr<InfoPaneValueCell> self = shared_from_this();
    m_observedNodes = requests.last().request->observedNodes();
    for (const NodePtr &node : std::as_const(m_observedNodes))
        node->addDataObserver(self, valueKey);
}

void InfoPaneValueCell::startRequest()
{
    const int id = ++m_lastRequestId;
    m_newestIsReady = false;
    std::weak_ptr<InfoPaneValueCell> weakSelf = weak_from_this();
    const MetadataSource source = *TagManager::shared().sourceForKey(valueKey);
    auto request = MultiNodeCombinedValuesRequest::create(nodes, valueKey, source, [weakSelf, id] {
        if (const auto self = weakSelf.lock())
            self->requestIsReady(id);
    });
    requests.append({id, request});
    // A selection whose values are all there answers inside create(), before it is listed.
    if (m_readyBeforeListed == id)
        requestIsReady(id);
}

void InfoPaneValueCell::requestIsReady(int id)
{
    const auto found = std::find_if(requests.cbegin(), requests.cend(),
                                    [id](const PendingRequest &r) { return r.id == id; });
    if (found == requests.cend()) {
        m_readyBeforeListed = id;
        return;
    }
    if (id != requests.last().id) {
        // Overtaken by a newer request: its answer may be older.
        requests.erase(found);
        return;
    }
    const std::shared_ptr<MultiNodeCombinedValuesRequest> newest = requests.last().request;
    while (requests.size() > 1) {
        requests.first().request->terminate();
        requests.removeFirst();
    }
    m_newestIsReady = true;
    configureLabel(*newest);
}

void InfoPaneValueCell::update(MetadataSource)
{
    // The pending request answers for itself; once it has, a further value asks anew.
    if (m_newestIsReady)
        startRequest();
}

void InfoPaneValueCell::configureLabel(const MultiNodeCombinedValuesRequest &request)
{
    const CombinedValuesWrapper combined = request.combinedDisplayStringWrapper(valueKey);
    const std::optional<QString> text = InfoPaneContent::labelText(combined);
    if (!text)
        return;
    m_text = text;
    m_isNoValue = combined.kind == CombinedValuesWrapper::Kind::NoValue;
    m_isDivergent = InfoPaneContent::isDivergentXMPValue(nodes, valueKey);
    if (m_changed)
        m_changed();
}

void InfoPaneValueCell::terminate()
{
    for (const PendingRequest &pending : std::as_const(requests))
        pending.request->terminate();
    requests.clear();
    const std::optional<MetadataSource> source = TagManager::shared().sourceForKey(valueKey);
    for (const NodePtr &node : std::as_const(m_observedNodes))
        node->remove(this, *source);
    m_observedNodes.clear();
    m_changed = nullptr;
}
