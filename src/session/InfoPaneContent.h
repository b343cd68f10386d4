#pragma once

#include "Node.h"
#include "metadata/CombinedValuesWrapper.h"
#include "metadata/TagManager.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// What the info pane shows, apart from drawing it: its rows for a category, whether the XMP
// block is shown, and the words for a combined value.
namespace InfoPaneContent {

// The category is the index in TagManager's category menu, whose separators count as entries.
std::optional<TagManager::DescriptiveTagSpace> descriptiveTagSpace(int category);

// The category's ids, without those of the XMP block unless it is visible, and without the
// sidecar's rows unless those are; empty for an unknown category.
QStringList effectiveColumnIDs(int category, bool xmpBlockVisible, bool sidecarRowsVisible = false);
bool isXMPColumn(const QString &columnID);
bool isSidecarColumn(const QString &columnID);
// True when a node of the selection has an XMP sidecar.
bool computeSidecarRowsVisible(const QList<NodePtr> &nodes);

// True when a node of the selection has an XMP packet or an XMP sidecar.
bool computeXMPBlockVisible(const QList<NodePtr> &nodes);

// Absent while a node is still waiting: the cell keeps its placeholder.
std::optional<QString> labelText(const CombinedValuesWrapper &combined);
QString noValuePlaceholder();

// An XMP value that disagrees with its legacy counterpart in one of the nodes.
bool isDivergentXMPValue(const QList<NodePtr> &nodes, const QString &columnID);

} // namespace InfoPaneContent
