#pragma once

#include "bricks/Debouncer.h"
#include "bricks/Variables.h"
#include "location/GPSCoordinateComponent.h"

#include <functional>
#include <memory>

class DataModel;
class ItemTableSelection;
class PinMapView;

// The main content's pins and stepper: making pins from a clicked or typed coordinate through
// the geocoder, showing the current pin in the pinned panel, centring the map on it, stepping the
// table's selection by item or by group of equal location values, and the stepper's label. The
// window's view controller owns it and forwards to it; the table and the map come in through
// small interfaces. Main thread only.
class PinAndStepperController : public PinWorkflow
{
public:
    explicit PinAndStepperController(DataModel &model);
    // The controller as the window uses it: the GPS editor adds its pins through it, it selects
    // in the given table and centres the given map (either may be absent), and it listens to
    // the model; the stepper's label is set at once. The model must outlive it.
    static std::unique_ptr<PinAndStepperController> create(DataModel &model,
                                                           ItemTableSelection *table,
                                                           PinMapView *map);
    ~PinAndStepperController() override;
    PinAndStepperController(const PinAndStepperController &) = delete;
    PinAndStepperController &operator=(const PinAndStepperController &) = delete;

    // Not owned; either may be absent, and then what needs it does nothing.
    void setItemTable(ItemTableSelection *table) { m_table = table; }
    void setMapView(PinMapView *map) { m_map = map; }

    // Listens to the selection, the stepper mode, the pins and the pinned coordinate; brings
    // the button states and the pinned fields up to date once. Called once.
    void configureListeners();

    void addPinUsingCurrentFlagWorkflow(Coordinate2D coordinate, bool switchToMapIfItems) override;
    // Makes a pin from the geocoder's first answer; no answer, no pin.
    void dropNewPin(Coordinate2D coordinate, std::function<void()> completion);
    void centerMapOnCurrentPin(bool switchToMapIfNeeded);
    // The pin panel's and the map toolbar's previous and next buttons.
    void selectPreviousPin();
    void selectNextPin();
    void selectItem(bool forwards);

    void computeStepperLabel();
    void updatePinnedCoordinateFormats();
    void updatePinnedLocationInputFields();

    // What the pin panel draws besides the model's pinned variables.
    std::shared_ptr<StraightVariable<bool>> previousNextPinEnabled;
    std::shared_ptr<StraightVariable<bool>> centerAndDeletePinEnabled;
    std::shared_ptr<StraightVariable<bool>> pinnedCopyButtonsVisible;

    static constexpr double pinnedLocationDelay = 0.1;
    static constexpr double pinRegionSpan = 0.01;

private:
    void updatePinButtons();
    void updateFirstSelectedNodeCoordinates();
    void selectItemInactive(bool forwards);
    void selectGroup(bool forwards, const QString &key);
    // Runs the block only while this controller still exists.
    std::function<void()> guarded(std::function<void(PinAndStepperController &)> block);

    DataModel &m_model;
    ItemTableSelection *m_table = nullptr;
    PinMapView *m_map = nullptr;
    Debouncer pinnedLocationDebouncer {pinnedLocationDelay};
    // Listeners on the model outlive this controller; they check this before acting.
    std::shared_ptr<PinAndStepperController *> m_self;
};
