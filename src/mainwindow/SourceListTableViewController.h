#pragma once

#include "StoredListTableViewController.h"

class DataModel;

// The files and folders to process. Files dropped on the list from outside are added as an
// interactive add.
class SourceListTableViewController : public StoredListTableViewController
{
    Q_OBJECT

public:
    explicit SourceListTableViewController(DataModel &dataModel);

protected:
    QString internalPasteboardType() const override;
    QString displayName(const QString &value) const override;
    std::function<void(const QStringList &)> filesDroppedHandler() override;
    QString deleteToolTip() const override;
    QString accessibleName() const override;

private:
    DataModel &m_dataModel;
};
