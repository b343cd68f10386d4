#pragma once

#include "StoredListTableViewController.h"

class DataModel;

// The columns of the output, in order, by their display names with the tag space's
// abbreviation in grey.
class ColumnListTableViewController : public StoredListTableViewController
{
    Q_OBJECT

public:
    explicit ColumnListTableViewController(DataModel &dataModel);

protected:
    QString internalPasteboardType() const override;
    QString displayName(const QString &value) const override;
    QString abbreviation(const QString &value) const override;
    QString deleteToolTip() const override;
    QString accessibleName() const override;
};
