#pragma once

#include "metadata/MultiNodeCombinedValuesRequest.h"
#include "session/DataIsReadyObserver.h"
#include "session/Node.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

// The value side of one info pane row: the combined value of one key over the selection. It
// asks for the value when the row is first shown and words it once every node has answered;
// while a node is being read the placeholder stays. Main thread only.
class InfoPaneValueCell
    : public DataIsReadyObserver
    , public std::enable_shared_from_this<InfoPaneValueCell>
{
public:
    // changed is called whenever the label's text or colour changes.
    static std::shared_ptr<InfoPaneValueCell> create(QList<NodePtr> nodes, QString valueKey,
                                                     std::function<void()> changed);
    ~InfoPaneValueCell() override;

    void update(MetadataSource source) override;
    // Ends the cell's requests; a value arriving later changes nothing.
    void terminate();

    // Absent while waiting: the placeholder shows.
    const std::optional<QString> &text() const { return m_text; }
    bool isNoValue() const { return m_isNoValue; }
    // An XMP value that disagrees with its legacy counterpart.
    bool isDivergent() const { return m_isDivergent; }

    const QList<NodePtr> nodes;
    const QString valueKey;

private:
    struct PendingRequest
    {
        int id;
        std::shared_ptr<MultiNodeCombinedValuesRequest> request;
    };

    InfoPaneValueCell(QList<NodePtr> nodes, QString valueKey, std::function<void()> changed);
    void createInitialValueRequest();
    void startRequest();
    void requestIsReady(int id);
    void configureLabel(const MultiNodeCombinedValuesRequest &request);

    std::function<void()> m_changed;
    // Newest last: the newest request is the one shown; one that finishes after a newer one
    // was started is dropped.
    QList<PendingRequest> requests;
    int m_lastRequestId = 0;
    int m_readyBeforeListed = 0;
    bool m_newestIsReady = false;
    QList<NodePtr> m_observedNodes;
    std::optional<QString> m_text;
    bool m_isNoValue = false;
    bool m_isDivergent = false;
};
