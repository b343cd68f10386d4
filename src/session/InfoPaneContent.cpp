#include "InfoPaneContent.h"

#include "StringHelpers.h"
#include "metadata/MetadataStorage.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

bool flagIsSet(const Node &node, const QString &key)
{
    return MetadataStorage::shared().getStringValue(node.absolutePath, key,
                                                    MetadataSource::ExifToolGeneric)
        == u"1"_s;
}

} // namespace

std::optional<TagManager::DescriptiveTagSpace> InfoPaneContent::descriptiveTagSpace(int category)
{
    const QStringList &entries = TagManager::shared().localizedTagCategories();
    if (category < 0 || category >= entries.size() || entries.at(category) == u"-"_s)
        return std::nullopt;
    int space = 0;
    for (int i = 0; i < category; ++i) {
        if (entries.at(i) != u"-"_s)
            ++space;
    }
    if (space >= int(TagManager::allDescriptiveTagSpaces.size()))
        return std::nullopt;
    return TagManager::allDescriptiveTagSpaces.at(space);
}

QStringList InfoPaneContent::effectiveColumnIDs(int category, bool xmpBlockVisible,
                                                bool sidecarRowsVisible)
{
    const std::optional<TagManager::DescriptiveTagSpace> space = descriptiveTagSpace(category);
    if (!space)
        return {};
    QStringList ids = TagManager::shared().columnIDArrayForDescriptiveTag(*space);
    if (!xmpBlockVisible)
        ids.removeIf(isXMPColumn);
    if (!sidecarRowsVisible)
        ids.removeIf(isSidecarColumn);
    return ids;
}

bool InfoPaneContent::isSidecarColumn(const QString &columnID)
{
    return columnID.startsWith(u"Sidecar"_s);
}

bool InfoPaneContent::computeSidecarRowsVisible(const QList<NodePtr> &nodes)
{
    for (const NodePtr &node : nodes) {
        if (MetadataStorage::shared()
                .getStringValue(node->absolutePath, u"SidecarName"_s,
                                MetadataSource::ExifToolGeneric)
                .has_value())
            return true;
    }
    return false;
}

bool InfoPaneContent::isXMPColumn(const QString &columnID)
{
    // Every column of the XMP block has a legacy counterpart it can disagree with.
    return TagManager::divergenceFlagKey(columnID).has_value();
}

bool InfoPaneContent::computeXMPBlockVisible(const QList<NodePtr> &nodes)
{
    // The sidecar's values are XMP too; they show with the embedded ones.
    for (const NodePtr &node : nodes) {
        if (flagIsSet(*node, u"XMPPresent"_s))
            return true;
    }
    return computeSidecarRowsVisible(nodes);
}

std::optional<QString> InfoPaneContent::labelText(const CombinedValuesWrapper &combined)
{
    switch (combined.kind) {
    case CombinedValuesWrapper::Kind::Waiting:
        return std::nullopt;
    case CombinedValuesWrapper::Kind::NoValue:
        return noValuePlaceholder();
    case CombinedValuesWrapper::Kind::SingleValue:
        return combined.singleValue();
    case CombinedValuesWrapper::Kind::MultipleValues:
        // The closing bracket stays outside the translated text.
        return QCoreApplication::translate("InfoPane", "Multiple Values: ( ")
            + StringHelpers::asCommaSeparatedString(combined.values) + " )"_L1;
    }
    return u"<misc>"_s;
}

QString InfoPaneContent::noValuePlaceholder()
{
    return QCoreApplication::translate("InfoPane", "no value");
}

bool InfoPaneContent::isDivergentXMPValue(const QList<NodePtr> &nodes, const QString &columnID)
{
    const std::optional<QString> flag = TagManager::divergenceFlagKey(columnID);
    if (!flag)
        return false;
    for (const NodePtr &node : nodes) {
        if (flagIsSet(*node, *flag))
            return true;
    }
    return false;
}
