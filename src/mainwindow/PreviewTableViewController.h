#pragma once

#include "commons/NiblessViewController.h"
#include "session/Node.h"

#include <QStringList>

#include <memory>

class DataModel;
class DragAndDropTableView;
class PreviewTableDataSource;
class PreviewTableUpdating;
class QWidget;

// The list of processed files: one row per node of the current list, with its name, its four
// location fields over the values worked out for them, and the GPS and IPTC status symbols.
// The owner of the table and of its data source; where a selection made by the user starts.
// Made with NiblessViewController::make(); the table is its own scroll view. Main thread only.
class PreviewTableViewController : public NiblessViewController
{
    Q_OBJECT

public:
    explicit PreviewTableViewController(DataModel &dataModel,
                                        DelayedBuild delayedBuild = DelayedBuild::No);
    ~PreviewTableViewController() override;

    // Rebuilds the columns in their fixed order; a column the user moved goes back.
    virtual void updateColumns();
    // After a new list: the wait is over, every row is drawn again, the columns are reset.
    void updateAll();
    void setNodes(const QList<NodePtr> &nodes);

    // What the owner wires to the output engine, which hands it each new list.
    std::shared_ptr<PreviewTableUpdating> engineConnection();

    // Selects the rows whose node is in the list (the selection made elsewhere) without telling
    // the data model, and scrolls the first of them into view.
    void selectRows(const QList<NodePtr> &nodes);
    void scrollToFirstSelectedRow();

    DragAndDropTableView *tableView = nullptr;
    PreviewTableDataSource *previewTableViewDataSource = nullptr;

protected:
    QWidget *build() override;
    // One column per key, in order: the status columns 40 wide, the name and the location
    // fields sharing what is left.
    void setColumns(const QStringList &keys);

    DataModel &dataModel;

private:
    void tableViewSelectionDidChange();
    void tableViewDidDrag();
    void restoreFixedColumnOrder();
    void sizeToFit();

    bool m_changingRowsItself = false;
    std::shared_ptr<PreviewTableUpdating> m_engineConnection;
};
