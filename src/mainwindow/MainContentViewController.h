#pragma once

#include "commons/NiblessViewController.h"
#include "location/ItemTableSelection.h"
#include "session/MainContentViewing.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class BriskSplitView;
class ColumnListTableViewController;
class DataModel;
class FragmentStackView;
class InfoPaneController;
class MapDelegate;
class MapWidget;
class MinimalPreviewTableViewController;
class OutputEngine;
class PinAndStepperController;
class PreviewTableViewController;
class BuildDirectiveList;
class QAbstractButton;
class QComboBox;
class QSplitter;
class SegmentedControlBrick;
class SingleLineLabel;
class SmartTimerWrapper;
class SourceListTableViewController;
class TabWall;
class TagListTableViewController;
template<typename T>
class StraightVariable;

// The one big controller of the window: the parameter side (the source list, the editors, the
// output columns and the image preview) beside the overview side (the preview's tabs over the
// info pane, the status line under them). It owns the panes' controllers, runs the status line,
// and carries the selection between the tables, the map and the editors. The table and the map
// exist once each and move between the tabs' walls. Main thread only.
class MainContentViewController
    : public NiblessViewController
    , public MainContentViewing
    , public ItemTableSelection
{
    Q_OBJECT

public:
    // With a map delegate the window makes the one map view itself; without one (tests of the
    // walls) a stand-in may be given with setMapView.
    MainContentViewController(DataModel &dataModel, std::shared_ptr<OutputEngine> outputEngine,
                              MapDelegate *mapDelegate = nullptr);
    ~MainContentViewController() override;

    // The map view with its toolbars; it moves between the map's walls with the tab. Not owned:
    // the wall holding it does.
    void setMapView(QWidget *mapView);
    QWidget *mapView() const { return m_mapView; }
    // The map made over the map delegate; null without one.
    MapWidget *mapWidget() const;
    // Makes the map's page; the window calls it once it has been painted.
    void createMapPage();

    // The open panel: files and folders, several of each; the choice is an interactive add.
    void addSource();
    void clearSources();
    // The stepper's commands: one row, or one group of equal values, forward or back.
    void selectItem(bool forwards);
    // Collapses the info pane, or brings it back 150 high.
    void toggleInfoPane();
    bool isInfoPaneCollapsed() const;

    // One tick of the status line's timer: the engines' states and the counts.
    void updateStatusLine();
    QString statusText() const;

    // Moves the table and the map into the walls of the tab.
    void reparentViews(PreviewTab tab);

    // MainContentViewing.
    bool selectionChangedFromTable() const override { return m_selectionChangedFromTable; }
    void setSelectionChangedFromTable(bool fromTable) override;
    void selectRowsAccordingToCurrentSelectionVariables() override;
    void scrollToFirstSelectedItemIfNeeded() override;
    PreviewTab shownPreviewTab() const override;

    // ItemTableSelection, on whichever table is shown.
    int numberOfRows() const override;
    NodePtr nodeAtRow(int row) const override;
    QList<int> selectedRowIndexes() const override;
    void selectRowIndexes(const QList<int> &rows, bool byExtendingSelection) override;

    std::unique_ptr<PreviewTableViewController> previewTableViewController;
    std::unique_ptr<MinimalPreviewTableViewController> minimalPreviewTableViewController;
    std::unique_ptr<SourceListTableViewController> sourceListTableViewController;
    std::unique_ptr<ColumnListTableViewController> columnListTableViewController;
    std::unique_ptr<TagListTableViewController> tagListTableViewController;
    std::unique_ptr<InfoPaneController> infoPaneViewController;
    std::unique_ptr<PinAndStepperController> pinAndStepperController;

    std::shared_ptr<SmartTimerWrapper> windowUITimer;
    std::optional<PreviewTab> previousTabIndex;
    // The index of the image preview within the selection's files.
    std::shared_ptr<StraightVariable<int>> previewSelectedIndex;

    QPointer<SingleLineLabel> statusLine;
    QPointer<QAbstractButton> addButton;
    QPointer<QAbstractButton> clearButton;
    QPointer<QComboBox> infoPaneCategoryPopup;
    QPointer<FragmentStackView> parameterStackView;
    QPointer<FragmentStackView> bottomParameterStackView;
    QPointer<BriskSplitView> splitView;
    QPointer<QWidget> infoPaneView;
    QPointer<TabWall> tabWall;
    // Items, map, both above each other or beside each other: the stored preview mode.
    QPointer<SegmentedControlBrick> previewModeControl;
    QPointer<QSplitter> sideSplitter;

    // The hosts of the table and the map on each tab.
    QPointer<QWidget> itemsTableHost, mapHost, combinedTableHost, combinedMapHost,
        horizontalTableHost, horizontalMapHost;

protected:
    QWidget *build() override;
    void viewDidAppear() override;

private:
    QWidget *buildParameterStack();
    BuildDirectiveList editorFragments();
    QWidget *buildOverviewPanel();
    void setupSidebarListeners();
    void setupMapListeners();
    void placeInfoPaneAtLaunch();
    PreviewTableViewController &shownTable() const;

    DataModel &m_dataModel;
    std::shared_ptr<OutputEngine> m_outputEngine;
    MapDelegate *m_mapDelegate;
    QPointer<QWidget> m_mapView;
    bool m_selectionChangedFromTable = false;
    bool m_infoPanePlaced = false;
    int m_parameterSideWidth = 360;
    // Keeps the assemblies' bindings alive as long as the views.
    std::vector<std::shared_ptr<void>> m_assemblies;
};
