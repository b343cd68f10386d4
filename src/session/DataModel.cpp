#include "DataModel.h"

#include "location/GPSCoordinateComponent.h"
#include "location/IPTCLocationComponent.h"

#include <QCoreApplication>
#include <QLocale>

namespace {

template<typename T>
std::shared_ptr<StraightReadWriteVariable<T>> straight(T value = T())
{
    return std::make_shared<StraightReadWriteVariable<T>>(std::move(value));
}

std::shared_ptr<UserDefaultsVariable<bool>> persistedBool(const char *key, bool initial,
                                                          UserDefaults &defaults)
{
    return std::make_shared<UserDefaultsVariable<bool>>(QString::fromLatin1(key), initial,
                                                        DefaultsConverters::toBool(), defaults);
}

std::shared_ptr<UserDefaultsVariable<int>> persistedInt(const char *key, int initial,
                                                        UserDefaults &defaults)
{
    return std::make_shared<UserDefaultsVariable<int>>(QString::fromLatin1(key), initial,
                                                       DefaultsConverters::toInt(), defaults);
}

} // namespace

DataModel::DataModel(UserDefaults &defaults)
    : _stepperMode(straight(StepperMode::inactive))
    , _stepperLabel(straight(QStringLiteral("Whatever")))
    , _selectedNodes(straight<QList<NodePtr>>())
    , _previewFilePaths(straight<QStringList>())
    , _longitudeString(straight<QString>())
    , _latitudeString(straight<QString>())
    , _coordinateDMS(straight<QString>())
    , _coordinateDMM(straight<QString>())
    , _latitudeSign(straight<QString>())
    , _latitudeRef(straight<QString>())
    , _longitudeSign(straight<QString>())
    , _longitudeRef(straight<QString>())
    , _pinnedLongitudeString(straight<QString>())
    , _pinnedLatitudeString(straight<QString>())
    , _pinnedCoordinateDMS(straight<QString>())
    , _pinnedCoordinateDMM(straight<QString>())
    , _pinnedLatitudeSign(straight<QString>())
    , _pinnedLatitudeRef(straight<QString>())
    , _pinnedLongitudeSign(straight<QString>())
    , _pinnedLongitudeRef(straight<QString>())
    , _pinnedSublocationName(straight<QString>())
    , _pinnedLocationCity(straight<QString>())
    , _pinnedLocationRegion(straight<QString>())
    , _pinnedLocationCountry(straight<QString>())
    , _pins(straight<QList<Pin>>())
    , _currentPinIndex(straight(-1))
    , _currentPinName(straight(QStringLiteral("No Pin")))
    , _hasPins(straight(false))
    , processFiles(persistedBool("processFiles", true, defaults))
    , processFolders(persistedBool("processFolders", true, defaults))
    // The stored key keeps its historical spelling so that existing preferences still apply.
    , processSubFolders(persistedBool("prodcessSubfolders", false, defaults))
    , outputFormat(std::make_shared<RawRepresentableUserDefaultsVariable<OutputFormatIndexEnum>>(
          QStringLiteral("outputFormat"), OutputFormatIndexEnum::CSV,
          &OutputFormatIndex::isValidRawValue, defaults))
    , _firstSortMode(straight(SortMode::nameAndSequenceAscending))
    , _secondSortMode(straight(SortMode::nameAndSequenceAscending))
    , includeColumnTitlesMode(persistedInt("includeColumnTitlesMode", 0, defaults))
    , quoteStrings(persistedBool("quoteStrings", true, defaults))
    , boolValuesMode(persistedInt("boolValuesMode", 0, defaults))
    , nullValuesMode(persistedInt("nullValuesMode", 0, defaults))
    , dateFormatMode(persistedInt("dateFormatMode", 0, defaults))
    , multiLineMode(persistedInt("multiLineMode", 0, defaults))
    , linebreaksMode(persistedInt("linebreaksMode", 0, defaults))
    , encodingMode(persistedInt("encodingMode", 0, defaults))
    , htmlIndentationMode(persistedInt("htmlIndentationMode", 1, defaults))
    , htmlColumnIdHeaderMode(persistedInt("htmlColumnIdHeaderMode", 0, defaults))
    , htmlColumnClassMode(persistedInt("htmlColumnClassMode", 0, defaults))
    , jsonIndentationMode(persistedInt("jsonIndentationMode", 1, defaults))
    , jsonDateFormatMode(persistedInt("jsonDateFormatMode", 1, defaults))
    , infoPaneCategory(persistedInt("infoPaneCategory", 0, defaults))
    , infoPaneHeight(std::make_shared<UserDefaultsVariable<double>>(
          QStringLiteral("infoPaneHeight"), 200.0, DefaultsConverters::toDouble(), defaults))
    , infoPaneIsCollapsed(persistedBool("infoPaneIsCollapsed", false, defaults))
    , showTagTableView(std::make_shared<StraightVariable<bool>>(false))
    , sourceList(defaults, [this] { waitingForData->setValue(true); })
    , columnList(defaults)
    , previewMode(persistedInt("previewMode", 0, defaults))
    , waitingForData(std::make_shared<StraightVariable<bool>>(true))
    , previewTabIndex(std::make_shared<
                      CombinedVariable<int, UserDefaultsVariable<int>, StraightVariable<bool>>>(
          previewMode, waitingForData,
          [](const UserDefaultsVariable<int> &mode, const StraightVariable<bool> &waiting) {
              return waiting.value() ? previewTabWait : mode.value() + 1;
          }))
{
    defaults.registerDefaults(
        {{columnList.storageKey,
          QStringList {QStringLiteral("name"), QStringLiteral("absolute_path")}}});

    gpsCoordinateComponent = std::make_unique<GPSCoordinateComponent>(
        *this, QCoreApplication::translate("DataModel", "GPS Location:"),
        QCoreApplication::translate("DataModel", "nothing selected"));
    gpsCoordinateComponent->configureListeners();

    // The sample values show until the first selection has been read.
    const auto location = [this](const char *label, const QString &key, const QString &proposedKey,
                                 const QString &sample) {
        auto component = std::make_unique<IPTCLocationComponent>(
            *this, QCoreApplication::translate("DataModel", label, "label"), key, proposedKey,
            sample);
        component->configureListeners();
        return component;
    };
    sublocationComponent
        = location("Sub-Location:", QStringLiteral("Sub-location"),
                   QStringLiteral("computedSublocation"), QStringLiteral("Arc de Triomphe"));
    cityComponent = location("City:", QStringLiteral("City"), QStringLiteral("computedCity"),
                             QStringLiteral("Paris"));
    regionComponent
        = location("Province:", QStringLiteral("Province-State"),
                   QStringLiteral("GeolocationRegion"), QString::fromUtf8("Île de France"));
    countryComponent = location("Country:", QStringLiteral("Country"),
                                QStringLiteral("GeolocationCountry"), QStringLiteral("France"));
}

DataModel::~DataModel() = default;

DataModelSnapshot DataModel::createSnapshot() const
{
    DataModelSnapshot snapshot;
    snapshot.outputFormat = outputFormat->value();
    snapshot.firstSortMode = firstSortMode();
    snapshot.secondSortMode = secondSortMode();
    snapshot.quoteStrings = quoteStrings->value();
    snapshot.includeColumnTitlesMode = includeColumnTitlesMode->value();
    snapshot.boolValuesMode = boolValuesMode->value();
    snapshot.nullValuesMode = nullValuesMode->value();
    snapshot.dateFormatMode = dateFormatMode->value();
    snapshot.multiLineMode = multiLineMode->value();
    snapshot.linebreaksMode = linebreaksMode->value();
    snapshot.encodingMode = encodingMode->value();
    snapshot.htmlIndentationMode = htmlIndentationMode->value();
    snapshot.htmlColumnIdHeaderMode = htmlColumnIdHeaderMode->value();
    snapshot.htmlColumnClassMode = htmlColumnClassMode->value();
    snapshot.jsonIndentationMode = jsonIndentationMode->value();
    snapshot.jsonDateFormatMode = jsonDateFormatMode->value();
    snapshot.sourceList = sourceList.value();
    snapshot.columnList = columnList.value();
    return snapshot;
}

std::optional<Pin> DataModel::currentPin() const
{
    const QList<Pin> &pins = _pins->ref();
    const int index = currentPinIndex();
    if (index < 0 || index >= pins.size())
        return std::nullopt;
    return pins.at(index);
}

void DataModel::selectNextPin()
{
    const qsizetype count = _pins->ref().size();
    if (count == 0)
        return;
    setCurrentPinIndex(int((currentPinIndex() + 1) % count));
    updateCurrentPinDisplay();
}

void DataModel::selectPreviousPin()
{
    const qsizetype count = _pins->ref().size();
    if (count == 0)
        return;
    const int index = currentPinIndex();
    setCurrentPinIndex(index <= 0 ? int(count - 1) : index - 1);
    updateCurrentPinDisplay();
}

void DataModel::deleteCurrentPin()
{
    QList<Pin> pins = _pins->value();
    const int index = currentPinIndex();
    if (index < 0 || index >= pins.size())
        return;
    pins.removeAt(index);
    _pins->setValue(pins);
    setHasPins(!pins.isEmpty());
    if (pins.isEmpty())
        setCurrentPinIndex(-1);
    else if (index >= pins.size())
        setCurrentPinIndex(int(pins.size() - 1));
    updateCurrentPinDisplay();
}

void DataModel::updateCurrentPinDisplay()
{
    const std::optional<Pin> pin = currentPin();
    if (!pin) {
        _currentPinName->setValue(QStringLiteral("No Pin"));
        for (const auto &variable :
             {_pinnedLatitudeString, _pinnedLongitudeString, _pinnedSublocationName,
              _pinnedLocationCity, _pinnedLocationRegion, _pinnedLocationCountry})
            variable->setValue(QString());
        return;
    }
    _currentPinName->setValue(pin->name);
    _pinnedLatitudeString->setValue(
        QString::number(pin->latitude, 'g', QLocale::FloatingPointShortest));
    _pinnedLongitudeString->setValue(
        QString::number(pin->longitude, 'g', QLocale::FloatingPointShortest));
    _pinnedSublocationName->setValue(pin->sublocation);
    _pinnedLocationCity->setValue(pin->city);
    _pinnedLocationRegion->setValue(pin->region);
    _pinnedLocationCountry->setValue(pin->country);
}
