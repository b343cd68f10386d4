#include "ColumnListTableViewController.h"

#include "metadata/TagManager.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"

ColumnListTableViewController::ColumnListTableViewController(DataModel &dataModel)
    : StoredListTableViewController(dataModel.columnList, UserDefaults::standard())
{ }

QString ColumnListTableViewController::internalPasteboardType() const
{
    return QStringLiteral("application/x-palomet-column-rows");
}

QString ColumnListTableViewController::displayName(const QString &value) const
{
    return TagManager::shared().displayName(value);
}

QString ColumnListTableViewController::abbreviation(const QString &value) const
{
    const auto &spaces = TagManager::shared().columnIDsToDescriptiveTagSpaceMapping();
    const auto space = spaces.constFind(value);
    if (space == spaces.cend())
        return {};
    return TagManager::localizedAbbreviation(*space).value_or(QString());
}

QString ColumnListTableViewController::deleteToolTip() const
{
    return tr("Remove this column");
}

QString ColumnListTableViewController::accessibleName() const
{
    return tr("Output columns");
}
