#pragma once

#include "location/ItemTableSelection.h"
#include "location/PinMapView.h"

#include <QMainWindow>

#include <memory>

class Assembly;
class DataModel;
class OutputEngine;
class PinAndStepperController;
class PreviewTableViewController;
class QLabel;

// The parameter side beside the list's table, with the status line under both. The table is
// what the stepper steps through; a stand-in map reports in the status bar where it would go.
class ExampleWindow
    : public QMainWindow
    , public ItemTableSelection
    , public PinMapView
{
    Q_OBJECT

public:
    ExampleWindow(DataModel &model, std::shared_ptr<OutputEngine> engine);
    ~ExampleWindow() override;

    // ItemTableSelection
    int numberOfRows() const override;
    NodePtr nodeAtRow(int row) const override;
    QList<int> selectedRowIndexes() const override;
    void selectRowIndexes(const QList<int> &rows, bool byExtendingSelection) override;

    // PinMapView
    void setRegion(const CoordinateRegion &region, bool animated) override;
    void selectPinMarker(int pinIndex, bool animated) override;

    QWidget *parameterSide() const;

private:
    void refreshStatus();

    DataModel &m_model;
    std::shared_ptr<OutputEngine> m_engine;
    std::shared_ptr<PreviewTableViewController> m_table;
    std::unique_ptr<PinAndStepperController> m_controller;
    std::shared_ptr<Assembly> m_assembly;
    QLabel *m_status;
    QLabel *m_map;
};
