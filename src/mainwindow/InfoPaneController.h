#pragma once

#include "commons/NiblessViewController.h"
#include "metadata/MetadataSource.h"
#include "session/Node.h"

#include <QFont>
#include <QStringList>

#include <memory>

class DataModel;
class InfoPaneDataSource;
class QTableView;
class Wall;

// The two-column pane under the main view: every tag of the chosen category for the selected
// files, the name at the left and the selection's combined value at the right. The XMP rows
// show only while a selected file has an XMP packet. Made with NiblessViewController::make();
// main thread only.
class InfoPaneController : public NiblessViewController
{
    Q_OBJECT

public:
    explicit InfoPaneController(DataModel &dataModel, DelayedBuild delayedBuild = DelayedBuild::No);
    ~InfoPaneController() override;

    // The rows: the category's tags, without the XMP block while no selected file has XMP.
    QStringList effectiveColumnIDs() const;
    bool computeXMPBlockVisible() const;
    void handleSelectionChanged();
    // A watched file's "XMPPresent" has been read: the XMP block may come or go.
    void update(MetadataSource source);
    void reloadData();

    Wall *mainWall = nullptr;
    // The table scrolls by itself: it is the pane's scroll view too.
    QTableView *tableView = nullptr;
    const QFont miniFont;
    bool xmpBlockVisible = false;
    QList<NodePtr> xmpObservedNodes;

protected:
    QWidget *build() override;

private:
    class XMPObserver;
    void applyTheme();
    bool eventFilter(QObject *watched, QEvent *event) override;

    DataModel &dataModel;
    InfoPaneDataSource *m_dataSource = nullptr;
    std::shared_ptr<XMPObserver> m_xmpObserver;
};
