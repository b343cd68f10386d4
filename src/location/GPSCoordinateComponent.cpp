#include "GPSCoordinateComponent.h"

#include "location/LocationHelper.h"
#include "metadata/MultiNodeCombinedValuesRequest.h"
#include "platform/Beeper.h"
#include "platform/ClipboardWriter.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include <QCoreApplication>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QString storedForm(double value)
{
    return QString::asprintf("%+.6f", value);
}

bool latitudeInRange(double value)
{
    return std::fabs(value) <= 90.0;
}

bool longitudeInRange(double value)
{
    return std::fabs(value) <= 180.0;
}

QString placeholderWord(const char *text)
{
    return QCoreApplication::translate("GPSCoordinateComponent", text, "field placeholder");
}

bool sameSelection(const QList<NodePtr> &a, const QList<NodePtr> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const NodePtr &x, const NodePtr &y) { return x == y || *x == *y; });
}

struct FieldValue
{
    QString placeholder;
    QString value;
    bool missing = false;
};

FieldValue classify(const CombinedValuesWrapper &combined)
{
    switch (combined.kind) {
    case CombinedValuesWrapper::Kind::SingleValue:
        if (combined.someValuesMissing)
            return {{}, {}, true};
        return {{}, combined.singleValue(), false};
    case CombinedValuesWrapper::Kind::MultipleValues:
        return {placeholderWord("Multiple Values"), {}, false};
    case CombinedValuesWrapper::Kind::Waiting:
        return {placeholderWord("waiting..."), {}, false};
    case CombinedValuesWrapper::Kind::NoValue:
        break;
    }
    return {placeholderWord("<none>"), {}, true};
}

} // namespace

GPSCoordinateComponent::GPSCoordinateComponent(DataModel &model, QString label,
                                               QString placeholderText)
    : _currentLatitudeInInterface(std::make_shared<StraightReadWriteVariable<QString>>())
    , _currentLongitudeInInterface(std::make_shared<StraightReadWriteVariable<QString>>())
    , _currentLatitudeOnDisk(std::make_shared<StraightReadWriteVariable<QString>>())
    , _currentLongitudeOnDisk(std::make_shared<StraightReadWriteVariable<QString>>())
    , _proposedLatitude(std::make_shared<StraightReadWriteVariable<QString>>())
    , _proposedLongitude(std::make_shared<StraightReadWriteVariable<QString>>())
    , _placeholderText(std::make_shared<StraightReadWriteVariable<QString>>(placeholderText))
    , _coordinateDMS(std::make_shared<StraightReadWriteVariable<QString>>())
    , _coordinateDMM(std::make_shared<StraightReadWriteVariable<QString>>())
    , _latitudeSign(std::make_shared<StraightReadWriteVariable<QString>>())
    , _latitudeRef(std::make_shared<StraightReadWriteVariable<QString>>())
    , _longitudeSign(std::make_shared<StraightReadWriteVariable<QString>>())
    , _longitudeRef(std::make_shared<StraightReadWriteVariable<QString>>())
    , label(std::move(label))
    , stateRevision(std::make_shared<StraightVariable<int>>(0))
    , m_model(model)
    , m_self(std::make_shared<GPSCoordinateComponent *>(this))
{
    m_latitudeField.placeholder = placeholderText;
    m_longitudeField.placeholder = placeholderText;
}

GPSCoordinateComponent::~GPSCoordinateComponent() = default;

QString GPSCoordinateComponent::normalizeCoordinateValue(const QString &text, bool isLatitude)
{
    if (text.isEmpty())
        return text;
    const LocationHelper &helper = LocationHelper::shared();
    if (isLatitude) {
        const auto parsed = helper.parseCoordinateString(text + u", 0"_s);
        if (parsed.latitude && latitudeInRange(*parsed.latitude))
            return storedForm(*parsed.latitude);
    } else {
        const auto parsed = helper.parseCoordinateString(u"0, "_s + text);
        if (parsed.longitude && longitudeInRange(*parsed.longitude))
            return storedForm(*parsed.longitude);
    }
    return text;
}

void GPSCoordinateComponent::configureListeners()
{
    const auto interfaceChanged = [this](const QString &) {
        configureApplyButton();
        updateFieldAppearance();
    };
    _currentLatitudeInInterface->addColdListener(interfaceChanged);
    _currentLongitudeInInterface->addColdListener(interfaceChanged);
    const auto diskChanged = [this](const QString &) {
        updateFieldAppearance();
    };
    _currentLatitudeOnDisk->addColdListener(diskChanged);
    _currentLongitudeOnDisk->addColdListener(diskChanged);
    m_model._selectedNodes->addHotListener(
        [this](const QList<NodePtr> &selection) { selectionDidChange(selection); });
}

void GPSCoordinateComponent::selectionDidChange(const QList<NodePtr> &selection)
{
    const bool selectionChanged
        = !previousSelection || !sameSelection(*previousSelection, selection);
    previousSelection = selection;

    const bool usable = !selection.isEmpty();
    m_latitudeField.editable = m_latitudeField.selectable = usable;
    m_longitudeField.editable = m_longitudeField.selectable = usable;
    updateFieldAppearance();

    // Latitude first, then longitude; a later selection replaces the fields, so a stale chain
    // reads the newest requests.
    const std::weak_ptr<GPSCoordinateComponent *> self = m_self;
    ++*m_updatesOnTheirWay;
    const std::shared_ptr<void> token(nullptr, [count = m_updatesOnTheirWay](void *) { --*count; });
    latitudeValuesRequest = MultiNodeCombinedValuesRequest::create(
        selection, latitudeExifKey, MetadataSource::ExifToolGeneric,
        [self, selectionChanged, token] {
            const auto alive = self.lock();
            if (!alive)
                return;
            GPSCoordinateComponent *component = *alive;
            component->longitudeValuesRequest = MultiNodeCombinedValuesRequest::create(
                component->m_model.selectedNodes(), component->longitudeExifKey,
                MetadataSource::ExifToolGeneric, [self, selectionChanged, token] {
                    // The pause lets the request finish delivering before it is asked.
                    MainQueue::postAfter(10, [self, selectionChanged, token] {
                        if (const auto alive = self.lock())
                            (*alive)->triggerInterfaceUpdate(selectionChanged);
                    });
                });
        });
}

void GPSCoordinateComponent::triggerInterfaceUpdate(bool updateInterfaceValue)
{
    if (!latitudeValuesRequest || !longitudeValuesRequest)
        return;
    const FieldValue latitude
        = classify(latitudeValuesRequest->combinedDisplayStringWrapper(latitudeExifKey));
    const CombinedValuesWrapper longitudeCombined
        = longitudeValuesRequest->combinedDisplayStringWrapper(longitudeExifKey);
    const FieldValue longitude = classify(longitudeCombined);

    m_shownSelection = longitudeValuesRequest->nodes;
    m_latitudeField.placeholder = latitude.placeholder;
    m_longitudeField.placeholder = longitude.placeholder;
    stateChanged();

    // A half-blank selection shows nothing at all.
    if (longitude.missing || latitude.missing)
        setCurrentValueOnDiskTakingIntoAccountStickiness({}, {}, updateInterfaceValue);
    else
        setCurrentValueOnDiskTakingIntoAccountStickiness(latitude.value, longitude.value,
                                                         updateInterfaceValue);
    configureApplyButton();
}

bool GPSCoordinateComponent::showsCurrentSelection() const
{
    return *m_updatesOnTheirWay == 0 && m_shownSelection
        && sameSelection(*m_shownSelection, m_model.selectedNodes());
}

void GPSCoordinateComponent::setInterfaceCoordinates(const QString &latitude,
                                                     const QString &longitude)
{
    const QString normalizedLatitude = normalizeCoordinateValue(latitude, true);
    const QString normalizedLongitude = normalizeCoordinateValue(longitude, false);
    _currentLatitudeInInterface->setValue(normalizedLatitude);
    _currentLongitudeInInterface->setValue(normalizedLongitude);
    setFieldTexts(normalizedLatitude, normalizedLongitude);
    updateDisplayLabels();
}

void GPSCoordinateComponent::setCurrentValueOnDiskTakingIntoAccountStickiness(
    const QString &latitude, const QString &longitude, bool updateInterfaceValue)
{
    const QString normalizedLatitude = normalizeCoordinateValue(latitude, true);
    const QString normalizedLongitude = normalizeCoordinateValue(longitude, false);
    _currentLatitudeOnDisk->setValue(normalizedLatitude);
    _currentLongitudeOnDisk->setValue(normalizedLongitude);
    // Data for an unchanged selection moves the disk pair under what the user has typed.
    if (!updateInterfaceValue)
        return;
    _currentLatitudeInInterface->setValue(normalizedLatitude);
    _currentLongitudeInInterface->setValue(normalizedLongitude);
    setFieldTexts(normalizedLatitude, normalizedLongitude);
    updateDisplayLabels();
}

void GPSCoordinateComponent::setFieldTexts(const QString &latitude, const QString &longitude)
{
    m_latitudeField.text = latitude;
    m_longitudeField.text = longitude;
    stateChanged();
}

bool GPSCoordinateComponent::applyParsedCoordinatePairIfPresent(const QString &text)
{
    const auto parsed = LocationHelper::shared().parseCoordinateString(text);
    if (!parsed.latitude || !parsed.longitude || !latitudeInRange(*parsed.latitude)
        || !longitudeInRange(*parsed.longitude))
        return false;
    const QString latitude = storedForm(*parsed.latitude);
    const QString longitude = storedForm(*parsed.longitude);
    _currentLatitudeInInterface->setValue(latitude);
    _currentLongitudeInInterface->setValue(longitude);
    setFieldTexts(latitude, longitude);
    updateDisplayLabels();
    return true;
}

void GPSCoordinateComponent::typeInLatitudeField(const QString &text)
{
    typeInField(true, text);
}

void GPSCoordinateComponent::typeInLongitudeField(const QString &text)
{
    typeInField(false, text);
}

void GPSCoordinateComponent::typeInField(bool isLatitude, const QString &text)
{
    (isLatitude ? m_latitudeField : m_longitudeField).text = text;
    stateChanged();
    if (applyParsedCoordinatePairIfPresent(text))
        return;
    (isLatitude ? _currentLatitudeInInterface : _currentLongitudeInInterface)->setValue(text);
    updateDisplayLabels();
}

void GPSCoordinateComponent::reformatField(bool isLatitude)
{
    FieldState &field = isLatitude ? m_latitudeField : m_longitudeField;
    const Text &variable = isLatitude ? _currentLatitudeInInterface : _currentLongitudeInInterface;
    variable->setValue(field.text);
    if (!applyParsedCoordinatePairIfPresent(field.text)) {
        const auto parsed = LocationHelper::shared().parseCoordinateFields(
            _currentLatitudeInInterface->value(), _currentLongitudeInInterface->value());
        if (isLatitude && parsed.latitude && latitudeInRange(*parsed.latitude))
            variable->setValue(storedForm(*parsed.latitude));
        if (!isLatitude && parsed.longitude && longitudeInRange(*parsed.longitude))
            variable->setValue(storedForm(*parsed.longitude));
    }
    field.text = variable->value();
    stateChanged();
    updateDisplayLabels();
}

void GPSCoordinateComponent::handleLatitudeReturn()
{
    reformatField(true);
    if (m_applyEnabled)
        ChangeManager::applyGPSToCurrentSelection();
}

void GPSCoordinateComponent::handleLongitudeReturn()
{
    reformatField(false);
    // Unlike the latitude, the longitude goes through the Apply button, which writes two
    // emptied fields as 0, 0 where the latitude's path writes nothing.
    if (m_applyEnabled)
        executeApplyButton();
}

std::optional<GPSCoordinateComponent::ValidPair> GPSCoordinateComponent::parsedInterfacePair() const
{
    const auto parsed = LocationHelper::shared().parseCoordinateFields(
        _currentLatitudeInInterface->value(), _currentLongitudeInInterface->value());
    if (!parsed.latitude || !parsed.longitude || !latitudeInRange(*parsed.latitude)
        || !longitudeInRange(*parsed.longitude))
        return std::nullopt;
    return ValidPair {*parsed.latitude, *parsed.longitude};
}

void GPSCoordinateComponent::clearDisplayLabels()
{
    for (const Text &variable : {_latitudeSign, _latitudeRef, _longitudeSign, _longitudeRef})
        variable->setValue(QString());
}

void GPSCoordinateComponent::updateDisplayLabels()
{
    if (_currentLatitudeInInterface->value().isEmpty()
        && _currentLongitudeInInterface->value().isEmpty()) {
        _coordinateDMS->setValue(QString());
        _coordinateDMM->setValue(QString());
        clearDisplayLabels();
        m_copyButtonsVisible = false;
        stateChanged();
        return;
    }
    if (const auto pair = parsedInterfacePair()) {
        const LocationHelper &helper = LocationHelper::shared();
        const Coordinate2D coordinate {pair->latitude, pair->longitude};
        _coordinateDMS->setValue(helper.formatPairToDMS(coordinate));
        _coordinateDMM->setValue(helper.formatPairToDMM(coordinate));
        m_copyButtonsVisible = true;
        _latitudeSign->setValue(pair->latitude >= 0.0 ? u"+"_s : u"-"_s);
        _latitudeRef->setValue(pair->latitude >= 0.0 ? u"N"_s : u"S"_s);
        _longitudeSign->setValue(pair->longitude >= 0.0 ? u"+"_s : u"-"_s);
        _longitudeRef->setValue(pair->longitude >= 0.0 ? u"E"_s : u"W"_s);
    } else {
        _coordinateDMS->setValue(u"<Invalid>"_s);
        _coordinateDMM->setValue(u"<Invalid>"_s);
        m_copyButtonsVisible = false;
        clearDisplayLabels();
    }
    stateChanged();
}

bool GPSCoordinateComponent::isInputValid() const
{
    if (_currentLatitudeInInterface->value().isEmpty()
        && _currentLongitudeInInterface->value().isEmpty())
        return true;
    return parsedInterfacePair().has_value();
}

void GPSCoordinateComponent::configureApplyButton()
{
    const bool valid = isInputValid();
    const bool differs = _currentLatitudeInInterface->value() != _currentLatitudeOnDisk->value()
        || _currentLongitudeInInterface->value() != _currentLongitudeOnDisk->value();
    m_applyEnabled = differs && valid;
    m_addFlagEnabled = valid;
    stateChanged();
}

void GPSCoordinateComponent::updateFieldAppearance()
{
    const bool hasPendingEdit
        = _currentLatitudeInInterface->value() != _currentLatitudeOnDisk->value()
        || _currentLongitudeInInterface->value() != _currentLongitudeOnDisk->value();
    m_indicatorBackgroundColor = ColorRole::IndicatorGray;
    m_textColor = ColorRole::LabelColor;
    if (m_model.selectedNodes().isEmpty()) {
        m_borderColor = ColorRole::SystemGray;
    } else if (!hasPendingEdit) {
        m_borderColor = ColorRole::BorderBlue;
    } else if (isInputValid()) {
        m_borderColor = ColorRole::UncommittedTextColor;
        m_textColor = ColorRole::UncommittedTextColor;
    } else {
        m_borderColor = m_indicatorBackgroundColor = m_textColor = ColorRole::SystemRed;
    }
    stateChanged();
}

void GPSCoordinateComponent::executeApplyButton()
{
    const auto pair = parsedInterfacePair();
    if (!pair) {
        Beeper::beep();
        return;
    }
    // Two empty fields parse as 0, 0, so emptying them writes that position rather than
    // removing the old one. The write goes through the write engine like every other edit, so
    // a large selection neither blocks the window nor fails without a word.
    ChangeManager::applyGPSCoordinates(storedForm(pair->latitude), storedForm(pair->longitude));
}

void GPSCoordinateComponent::executeAddFlagButton()
{
    const auto pair = parsedInterfacePair();
    if (pair && m_pinWorkflow)
        m_pinWorkflow->addPinUsingCurrentFlagWorkflow({pair->latitude, pair->longitude}, true);
    else
        Beeper::beep();
}

void GPSCoordinateComponent::executeResetButton()
{
    _currentLatitudeInInterface->setValue(_currentLatitudeOnDisk->value());
    _currentLongitudeInInterface->setValue(_currentLongitudeOnDisk->value());
    // The fields and the lines under them show the restored pair, not the discarded text.
    setFieldTexts(_currentLatitudeOnDisk->value(), _currentLongitudeOnDisk->value());
    updateDisplayLabels();
}

void GPSCoordinateComponent::copyDMS()
{
    ClipboardWriter::setText(_coordinateDMS->value());
}

void GPSCoordinateComponent::copyDMM()
{
    ClipboardWriter::setText(_coordinateDMM->value());
}

void GPSCoordinateComponent::stateChanged()
{
    stateRevision->setValue(stateRevision->value() + 1);
}
