#include "SourceListTableViewController.h"

#include "platform/UserDefaults.h"
#include "session/DataModel.h"

#include <QDir>

SourceListTableViewController::SourceListTableViewController(DataModel &dataModel)
    : StoredListTableViewController(dataModel.sourceList, UserDefaults::standard())
    , m_dataModel(dataModel)
{ }

QString SourceListTableViewController::internalPasteboardType() const
{
    return QStringLiteral("application/x-palomet-source-rows");
}

QString SourceListTableViewController::displayName(const QString &value) const
{
    return QDir::toNativeSeparators(value);
}

std::function<void(const QStringList &)> SourceListTableViewController::filesDroppedHandler()
{
    return [this](const QStringList &paths) {
        m_dataModel.sourceList.add(paths, true);
    };
}

QString SourceListTableViewController::deleteToolTip() const
{
    return tr("Remove from the list");
}

QString SourceListTableViewController::accessibleName() const
{
    return tr("Files and folders");
}
