#pragma once

#include "commons/NiblessViewController.h"

#include <QStringList>

class DataModel;
class QTableWidget;

// The tags that can be added as output columns: each row has the tag's name with an add button,
// and its key in grey. Adding appends the tag to the column list.
class TagListTableViewController : public NiblessViewController
{
    Q_OBJECT

public:
    explicit TagListTableViewController(DataModel &dataModel);

    QTableWidget *tableView = nullptr;
    // The catalogue's ids that the list offers, in order.
    const QStringList listData;

protected:
    QWidget *build() override;

private:
    DataModel &m_dataModel;
};
