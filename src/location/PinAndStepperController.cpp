#include "PinAndStepperController.h"

#include "location/ItemTableSelection.h"
#include "location/LocationHelper.h"
#include "location/PinMapView.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"
#include "session/PreviewTab.h"

#include <QCoreApplication>
#include <QSet>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QString signedSixDecimals(double value)
{
    return (value >= 0.0 ? u"+"_s : u"-"_s) + QString::asprintf("%.6f", std::fabs(value));
}

// The derived texts of a pair of decimal texts: both DMS and DMM lines, and the signs and
// references taken from each text's first character.
struct CoordinateTexts
{
    QString dms, dmm, latitudeSign, latitudeRef, longitudeSign, longitudeRef;
};

std::optional<CoordinateTexts> coordinateTexts(const QString &latitude, const QString &longitude)
{
    // No pin or no position: nothing to parse, and nothing wrong to say in the log.
    if (latitude.isEmpty() || longitude.isEmpty())
        return std::nullopt;
    const LocationHelper &helper = LocationHelper::shared();
    const std::optional<Coordinate2D> coordinate = helper.coordinateFromDD(latitude, longitude);
    if (!coordinate)
        return std::nullopt;
    const bool south = latitude.startsWith(u'-');
    const bool west = longitude.startsWith(u'-');
    return CoordinateTexts {
        helper.formatPairToDMS(*coordinate),
        helper.formatPairToDMM(*coordinate),
        south ? u"-"_s : u"+"_s,
        south ? u"S"_s : u"N"_s,
        west ? u"-"_s : u"+"_s,
        west ? u"W"_s : u"E"_s,
    };
}

using TextVariable = std::shared_ptr<StraightReadWriteVariable<QString>>;

void assignCoordinateTexts(const std::optional<CoordinateTexts> &texts, const TextVariable &dms,
                           const TextVariable &dmm, const TextVariable &latitudeSign,
                           const TextVariable &latitudeRef, const TextVariable &longitudeSign,
                           const TextVariable &longitudeRef)
{
    const CoordinateTexts values = texts.value_or(CoordinateTexts {});
    dms->setValue(values.dms);
    dmm->setValue(values.dmm);
    latitudeSign->setValue(values.latitudeSign);
    latitudeRef->setValue(values.latitudeRef);
    longitudeSign->setValue(values.longitudeSign);
    longitudeRef->setValue(values.longitudeRef);
}

bool isMapTab(int tabIndex)
{
    return tabIndex > int(PreviewTab::items);
}

} // namespace

PinAndStepperController::PinAndStepperController(DataModel &model)
    : previousNextPinEnabled(std::make_shared<StraightVariable<bool>>(false))
    , centerAndDeletePinEnabled(std::make_shared<StraightVariable<bool>>(false))
    , pinnedCopyButtonsVisible(std::make_shared<StraightVariable<bool>>(false))
    , m_model(model)
    , m_self(std::make_shared<PinAndStepperController *>(this))
{ }

PinAndStepperController::~PinAndStepperController()
{
    // Adding a pin beeps again rather than reaching a controller that is gone.
    GPSCoordinateComponent *gps = m_model.gpsCoordinateComponent.get();
    if (gps && gps->pinWorkflow() == this)
        gps->setPinWorkflow(nullptr);
}

std::unique_ptr<PinAndStepperController> PinAndStepperController::create(DataModel &model,
                                                                         ItemTableSelection *table,
                                                                         PinMapView *map)
{
    auto controller = std::make_unique<PinAndStepperController>(model);
    controller->setItemTable(table);
    controller->setMapView(map);
    if (model.gpsCoordinateComponent)
        model.gpsCoordinateComponent->setPinWorkflow(controller.get());
    controller->configureListeners();
    // The label follows changes only; the stepper shows the present selection from the start.
    controller->computeStepperLabel();
    return controller;
}

std::function<void()> PinAndStepperController::guarded(
    std::function<void(PinAndStepperController &)> block)
{
    return [weak = std::weak_ptr<PinAndStepperController *>(m_self), block = std::move(block)] {
        if (const auto self = weak.lock())
            block(**self);
    };
}

void PinAndStepperController::configureListeners()
{
    const auto onChange = [this](std::function<void(PinAndStepperController &)> block) {
        return [run = guarded(std::move(block))](const auto &) {
            run();
        };
    };
    m_model._selectedNodes->addColdListener(
        onChange([](PinAndStepperController &self) { self.computeStepperLabel(); }));
    m_model._stepperMode->addColdListener(
        onChange([](PinAndStepperController &self) { self.computeStepperLabel(); }));
    m_model._selectedNodes->addHotListener(
        onChange([](PinAndStepperController &self) { self.updateFirstSelectedNodeCoordinates(); }));

    m_model._pins->addColdListener(
        onChange([](PinAndStepperController &self) { self.updatePinButtons(); }));
    m_model._currentPinIndex->addColdListener(
        onChange([](PinAndStepperController &self) { self.updatePinButtons(); }));
    updatePinButtons();

    const auto debounce = onChange([](PinAndStepperController &self) {
        self.pinnedLocationDebouncer.run(self.guarded(
            [](PinAndStepperController &self) { self.updatePinnedLocationInputFields(); }));
    });
    m_model._pinnedLatitudeString->addColdListener(debounce);
    m_model._pinnedLongitudeString->addColdListener(debounce);
    debounce(QString());
}

void PinAndStepperController::addPinUsingCurrentFlagWorkflow(Coordinate2D coordinate,
                                                             bool switchToMapIfItems)
{
    if (switchToMapIfItems && m_model.previewTabIndex->value() == int(PreviewTab::items))
        m_model.previewMode->setValue(int(PreviewTab::map) - 1);
    m_model._pinnedLatitudeString->setValue(signedSixDecimals(coordinate.latitude));
    m_model._pinnedLongitudeString->setValue(signedSixDecimals(coordinate.longitude));
    dropNewPin(coordinate, guarded([](PinAndStepperController &self) {
                   MainQueue::post(self.guarded(
                       [](PinAndStepperController &self) { self.centerMapOnCurrentPin(false); }));
               }));
}

void PinAndStepperController::dropNewPin(Coordinate2D coordinate, std::function<void()> completion)
{
    // The model outlives the window's controller, so the pin is made even if this one is gone.
    DataModel *model = &m_model;
    LocationHelper::shared().retrieveLocationDescription(
        coordinate, [model, coordinate, completion](const QList<Placemark> &placemarks) {
            if (placemarks.isEmpty())
                return;
            const Placemark &placemark = placemarks.first();
            QList<Pin> pins = model->_pins->value();
            pins.append(Pin {u"Pin "_s + QString::number(pins.size() + 1), coordinate.latitude,
                             coordinate.longitude, placemark.subLocality, placemark.locality,
                             placemark.administrativeArea, placemark.country});
            model->_pins->setValue(pins);
            model->setHasPins(true);
            model->setCurrentPinIndex(int(pins.size() - 1));
            model->updateCurrentPinDisplay();
            if (completion)
                completion();
        });
}

void PinAndStepperController::centerMapOnCurrentPin(bool switchToMapIfNeeded)
{
    const std::optional<Pin> pin = m_model.currentPin();
    if (!pin)
        return;
    if (isMapTab(m_model.previewTabIndex->value())) {
        if (m_map) {
            m_map->setRegion({{pin->latitude, pin->longitude}, pinRegionSpan, pinRegionSpan}, true);
            m_map->selectPinMarker(m_model.currentPinIndex(), true);
        }
    } else if (switchToMapIfNeeded) {
        m_model.previewMode->setValue(int(PreviewTab::map) - 1);
        MainQueue::post(
            guarded([](PinAndStepperController &self) { self.centerMapOnCurrentPin(false); }));
    }
}

void PinAndStepperController::selectPreviousPin()
{
    m_model.selectPreviousPin();
    centerMapOnCurrentPin(false);
}

void PinAndStepperController::selectNextPin()
{
    m_model.selectNextPin();
    centerMapOnCurrentPin(false);
}

void PinAndStepperController::updatePinButtons()
{
    previousNextPinEnabled->setValue(m_model._pins->ref().size() >= 2);
    centerAndDeletePinEnabled->setValue(m_model.hasPins());
}

void PinAndStepperController::selectItem(bool forwards)
{
    if (!m_table || m_table->numberOfRows() == 0)
        return;
    const StepperMode mode = m_model.stepperMode();
    if (mode == StepperMode::inactive)
        selectItemInactive(forwards);
    else
        selectGroup(forwards, stepperModeKey(mode));
}

void PinAndStepperController::selectItemInactive(bool forwards)
{
    const int rows = m_table->numberOfRows();
    const QList<int> selected = m_table->selectedRowIndexes();
    int target = 0;
    if (!selected.isEmpty()) {
        const int first = selected.first();
        if (forwards)
            target = first + 1 >= rows ? 0 : first + 1;
        else
            target = first <= 0 ? rows - 1 : first - 1;
    }
    m_table->selectRowIndexes({target}, false);
}

void PinAndStepperController::selectGroup(bool forwards, const QString &key)
{
    // Distinct values in first-seen order; not read and not available count as values.
    const auto appendDistinct
        = [](QList<DisplayStringWrapper> &values, QSet<DisplayStringWrapper> &seen,
             const DisplayStringWrapper &value) {
              if (!seen.contains(value)) {
                  seen.insert(value);
                  values.append(value);
              }
          };
    QList<DisplayStringWrapper> selectedValues;
    QSet<DisplayStringWrapper> seenSelected;
    for (const NodePtr &node : m_model.selectedNodes())
        appendDistinct(selectedValues, seenSelected, node->getDisplayString(key));

    const int rows = m_table->numberOfRows();
    QList<DisplayStringWrapper> rowValues;
    rowValues.reserve(rows);
    QList<DisplayStringWrapper> allValues;
    QSet<DisplayStringWrapper> seenAll;
    for (int row = 0; row < rows; ++row) {
        const NodePtr node = m_table->nodeAtRow(row);
        rowValues.append(node ? node->getDisplayString(key) : DisplayStringWrapper::notPresent());
        appendDistinct(allValues, seenAll, rowValues.last());
    }
    if (allValues.isEmpty())
        return;

    DisplayStringWrapper target = allValues.first();
    if (selectedValues.size() == 1) {
        const qsizetype found = allValues.indexOf(selectedValues.first());
        if (forwards) {
            if (found >= 0 && found + 1 < allValues.size())
                target = allValues.at(found + 1);
        } else {
            target = allValues.last();
            if (found > 0)
                target = allValues.at(found - 1);
        }
    }

    QList<int> targetRows;
    for (int row = 0; row < rows; ++row) {
        if (rowValues.at(row) == target)
            targetRows.append(row);
    }
    m_table->selectRowIndexes(targetRows, false);
}

void PinAndStepperController::computeStepperLabel()
{
    const QList<NodePtr> &selection = m_model.selectedNodes();
    QString label;
    if (selection.isEmpty())
        label = QCoreApplication::translate("PinAndStepperController", "No selection");
    else if (m_model.stepperMode() != StepperMode::inactive)
        label = QString::number(selection.size())
            + QCoreApplication::translate("PinAndStepperController", " selected");
    else if (selection.size() == 1)
        label = selection.first()->name;
    else
        label = QString::number(selection.size())
            + QCoreApplication::translate("PinAndStepperController", " items selected");
    m_model._stepperLabel->setValue(label);
}

void PinAndStepperController::updateFirstSelectedNodeCoordinates()
{
    const QList<NodePtr> &selection = m_model.selectedNodes();
    std::optional<QString> latitude, longitude;
    if (!selection.isEmpty()) {
        // The first node's position is read at once, from the store or from the file.
        const NodePtr &first = selection.first();
        const WrappedMetaDataValue latitudeValue = first->getWrappedValueSync(u"GPSLatitude#"_s);
        const WrappedMetaDataValue longitudeValue = first->getWrappedValueSync(u"GPSLongitude#"_s);
        if (latitudeValue.kind() == WrappedMetaDataValue::Kind::StringValue
            && longitudeValue.kind() == WrappedMetaDataValue::Kind::StringValue) {
            latitude = latitudeValue.stringValue();
            longitude = longitudeValue.stringValue();
        }
    }
    m_model._latitudeString->setValue(latitude.value_or(QString()));
    m_model._longitudeString->setValue(longitude.value_or(QString()));
    assignCoordinateTexts(latitude ? coordinateTexts(*latitude, *longitude) : std::nullopt,
                          m_model._coordinateDMS, m_model._coordinateDMM, m_model._latitudeSign,
                          m_model._latitudeRef, m_model._longitudeSign, m_model._longitudeRef);
}

void PinAndStepperController::updatePinnedCoordinateFormats()
{
    const std::optional<CoordinateTexts> texts = coordinateTexts(
        m_model._pinnedLatitudeString->value(), m_model._pinnedLongitudeString->value());
    assignCoordinateTexts(texts, m_model._pinnedCoordinateDMS, m_model._pinnedCoordinateDMM,
                          m_model._pinnedLatitudeSign, m_model._pinnedLatitudeRef,
                          m_model._pinnedLongitudeSign, m_model._pinnedLongitudeRef);
    pinnedCopyButtonsVisible->setValue(texts.has_value());
}

void PinAndStepperController::updatePinnedLocationInputFields()
{
    updatePinnedCoordinateFormats();
    const QString latitude = m_model._pinnedLatitudeString->value();
    const QString longitude = m_model._pinnedLongitudeString->value();
    if (latitude.isEmpty() || longitude.isEmpty())
        return;
    const std::optional<Coordinate2D> coordinate
        = LocationHelper::shared().coordinateFromDD(latitude, longitude);
    if (!coordinate)
        return;
    const auto assign = [model = &m_model](const Placemark &placemark) {
        model->_pinnedSublocationName->setValue(placemark.name);
        model->_pinnedLocationRegion->setValue(placemark.administrativeArea);
        model->_pinnedLocationCity->setValue(placemark.locality);
        model->_pinnedLocationCountry->setValue(placemark.country);
    };
    assign(Placemark {});
    // An older request may answer after a newer one; nothing cancels it.
    LocationHelper::shared().retrieveLocationDescription(
        *coordinate, [assign](const QList<Placemark> &placemarks) {
            assign(placemarks.isEmpty() ? Placemark {} : placemarks.first());
        });
}
