#pragma once

#include "Node.h"
#include "OutputTypes.h"
#include "Pin.h"
#include "SourceListData.h"
#include "StepperMode.h"
#include "bricks/Variables.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

class GPSCoordinateComponent;
class IPTCLocationComponent;

// The live state of the one session: what the user has set, selected and typed. Persisted
// settings live in the user defaults; everything else lasts for the run. Main thread only.
class DataModel
{
public:
    explicit DataModel(UserDefaults &defaults = UserDefaults::standard());
    ~DataModel();
    DataModel(const DataModel &) = delete;
    DataModel &operator=(const DataModel &) = delete;

    template<typename T>
    using Straight = std::shared_ptr<StraightReadWriteVariable<T>>;
    template<typename T>
    using Persisted = std::shared_ptr<UserDefaultsVariable<T>>;

    // Stepper and selection.
    Straight<StepperMode> _stepperMode;
    Straight<QString> _stepperLabel;
    Straight<QList<NodePtr>> _selectedNodes;
    Straight<QStringList> _previewFilePaths;

    // Current coordinate display.
    Straight<QString> _longitudeString, _latitudeString, _coordinateDMS, _coordinateDMM;
    Straight<QString> _latitudeSign, _latitudeRef, _longitudeSign, _longitudeRef;

    // The editors of the selection's location.
    std::unique_ptr<GPSCoordinateComponent> gpsCoordinateComponent;
    std::unique_ptr<IPTCLocationComponent> sublocationComponent;
    std::unique_ptr<IPTCLocationComponent> cityComponent;
    std::unique_ptr<IPTCLocationComponent> regionComponent;
    std::unique_ptr<IPTCLocationComponent> countryComponent;

    // Pinned location display.
    Straight<QString> _pinnedLongitudeString, _pinnedLatitudeString, _pinnedCoordinateDMS,
        _pinnedCoordinateDMM;
    Straight<QString> _pinnedLatitudeSign, _pinnedLatitudeRef, _pinnedLongitudeSign,
        _pinnedLongitudeRef;
    Straight<QString> _pinnedSublocationName, _pinnedLocationCity, _pinnedLocationRegion,
        _pinnedLocationCountry;

    // Pins.
    Straight<QList<Pin>> _pins;
    Straight<int> _currentPinIndex;
    Straight<QString> _currentPinName;
    Straight<bool> _hasPins;

    // Settings, in the order the program keeps them.
    Persisted<bool> processFiles;
    Persisted<bool> processFolders;
    Persisted<bool> processSubFolders;
    std::shared_ptr<RawRepresentableUserDefaultsVariable<OutputFormatIndexEnum>> outputFormat;
    Straight<SortMode> _firstSortMode;
    Straight<SortMode> _secondSortMode;
    Persisted<int> includeColumnTitlesMode;
    Persisted<bool> quoteStrings;
    Persisted<int> boolValuesMode;
    Persisted<int> nullValuesMode;
    Persisted<int> dateFormatMode;
    Persisted<int> multiLineMode;
    Persisted<int> linebreaksMode;
    Persisted<int> encodingMode;
    Persisted<int> htmlIndentationMode;
    Persisted<int> htmlColumnIdHeaderMode;
    Persisted<int> htmlColumnClassMode;
    Persisted<int> jsonIndentationMode;
    Persisted<int> jsonDateFormatMode;
    Persisted<int> infoPaneCategory;
    Persisted<double> infoPaneHeight;
    Persisted<bool> infoPaneIsCollapsed;

    // Display state.
    std::shared_ptr<StraightVariable<bool>> showTagTableView;
    SourceListData sourceList;
    ColumnListData columnList;
    Persisted<int> previewMode;
    std::shared_ptr<StraightVariable<bool>> waitingForData;
    // 0 (the waiting screen) while waiting for data, otherwise previewMode + 1.
    std::shared_ptr<CombinedVariable<int, UserDefaultsVariable<int>, StraightVariable<bool>>>
        previewTabIndex;

    // Plain accessors for the underscore variables; setting notifies.
    StepperMode stepperMode() const { return _stepperMode->value(); }
    void setStepperMode(StepperMode mode) { _stepperMode->setValue(mode); }
    const QList<NodePtr> &selectedNodes() const { return _selectedNodes->ref(); }
    void setSelectedNodes(const QList<NodePtr> &nodes) { _selectedNodes->setValue(nodes); }
    SortMode firstSortMode() const { return _firstSortMode->value(); }
    void setFirstSortMode(SortMode mode) { _firstSortMode->setValue(mode); }
    SortMode secondSortMode() const { return _secondSortMode->value(); }
    void setSecondSortMode(SortMode mode) { _secondSortMode->setValue(mode); }
    int currentPinIndex() const { return _currentPinIndex->value(); }
    void setCurrentPinIndex(int index) { _currentPinIndex->setValue(index); }
    bool hasPins() const { return _hasPins->value(); }
    void setHasPins(bool hasPins) { _hasPins->setValue(hasPins); }

    // The pins wrap around at both ends; none of these does anything without pins.
    void selectNextPin();
    void selectPreviousPin();
    // The next pin takes the deleted one's place, or the previous one at the end.
    void deleteCurrentPin();
    // Shows the current pin's stored values in the pinned variables, or clears them.
    void updateCurrentPinDisplay();
    std::optional<Pin> currentPin() const;

    // Reads every setting at this moment, on the calling thread.
    DataModelSnapshot createSnapshot() const;

    static constexpr int previewTabWait = 0;
};
