#include "location/ItemTableSelection.h"
#include "location/LocationHelper.h"
#include "location/PinAndStepperController.h"
#include "location/PinMapView.h"
#include "metadata/MetadataStorage.h"
#include "session/DataModel.h"
#include "session/PreviewTab.h"

#include "ListTable.h"
#include "TestSupport.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

class RecordingMap : public PinMapView
{
public:
    void setRegion(const CoordinateRegion &region, bool animated) override
    {
        QVERIFY(animated);
        regions << region;
    }
    void selectPinMarker(int index, bool animated) override
    {
        QVERIFY(animated);
        selectedMarkers << index;
    }
    QList<CoordinateRegion> regions;
    QList<int> selectedMarkers;
};

Pin pin(int number, double latitude = 1.5, double longitude = 2.5)
{
    return Pin {u"Pin %1"_s.arg(number),
                latitude,
                longitude,
                u"Sub %1"_s.arg(number),
                u"City %1"_s.arg(number),
                u"Region %1"_s.arg(number),
                u"Country %1"_s.arg(number)};
}

} // namespace

class tst_PinAndStepperController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void pinOperations_data();
    void pinOperations();
    void deletingTheOnlyPinClearsThePanel();
    void droppedPinTakesTheGeocodersAnswer();
    void noAnswerNoPin();
    void pinnedFieldsShowTheFreshAnswerAfterTheDelay();
    void centeringSwitchesToTheMapOnce();
    void stepsThroughItems_data();
    void stepsThroughItems();
    void stepsThroughGroups_data();
    void stepsThroughGroups();
    void stepperLabel();
    void firstSelectedNodeCoordinates();

private:
    // Nodes whose embedded data is in the store: each entry is a city (empty for none) and a
    // latitude and longitude (empty for none).
    QList<NodePtr> storedNodes(const QList<QStringList> &entries);

    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<PinAndStepperController> m_controller;
    RecordingMap m_map;
    int m_nodeCounter = 0;
};

void tst_PinAndStepperController::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
}

void tst_PinAndStepperController::init()
{
    m_model = std::make_unique<DataModel>();
    m_model->waitingForData->setValue(false);
    m_model->previewMode->setValue(int(PreviewTab::items) - 1);
    m_controller = std::make_unique<PinAndStepperController>(*m_model);
    m_controller->setMapView(&m_map);
    m_controller->configureListeners();
    m_map = RecordingMap();
}

void tst_PinAndStepperController::cleanup()
{
    m_controller.reset();
    m_model.reset();
}

QList<NodePtr> tst_PinAndStepperController::storedNodes(const QList<QStringList> &entries)
{
    QList<NodePtr> nodes;
    MetadataStorage &storage = MetadataStorage::shared();
    for (const QStringList &entry : entries) {
        const QString path = u"/stepper/item-%1.jpg"_s.arg(++m_nodeCounter);
        if (!entry.value(0).isEmpty())
            storage.store(path, MetadataSource::ExifToolGeneric, u"City"_s, entry.value(0));
        if (entry.size() == 3) {
            storage.store(path, MetadataSource::ExifToolGeneric, u"GPSLatitude#"_s, entry.at(1));
            storage.store(path, MetadataSource::ExifToolGeneric, u"GPSLongitude#"_s, entry.at(2));
        }
        storage.store(path, MetadataSource::ExifToolGeneric, u"retrieved"_s, true);
        nodes << FileNode::create(path.section(u'/', -1), path, QString());
    }
    return nodes;
}

void tst_PinAndStepperController::pinOperations_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("startIndex");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("expectedIndex");
    QTest::addColumn<QString>("expectedName");

    QTest::newRow("next wraps to the first") << 3 << 2 << u"next"_s << 0 << u"Pin 1"_s;
    QTest::newRow("next") << 3 << 0 << u"next"_s << 1 << u"Pin 2"_s;
    QTest::newRow("previous wraps to the last") << 3 << 0 << u"previous"_s << 2 << u"Pin 3"_s;
    QTest::newRow("previous from no index") << 3 << -1 << u"previous"_s << 2 << u"Pin 3"_s;
    QTest::newRow("delete the last moves back") << 3 << 2 << u"delete"_s << 1 << u"Pin 2"_s;
    QTest::newRow("delete the first shows the second") << 3 << 0 << u"delete"_s << 0 << u"Pin 2"_s;
    QTest::newRow("delete out of range does nothing") << 3 << 5 << u"delete"_s << 5 << u"No Pin"_s;
    QTest::newRow("next without pins") << 0 << -1 << u"next"_s << -1 << u"No Pin"_s;
    QTest::newRow("previous without pins") << 0 << -1 << u"previous"_s << -1 << u"No Pin"_s;
}

void tst_PinAndStepperController::pinOperations()
{
    QFETCH(int, count);
    QFETCH(int, startIndex);
    QFETCH(QString, operation);
    QList<Pin> pins;
    for (int number = 1; number <= count; ++number)
        pins << pin(number);
    m_model->_pins->setValue(pins);
    m_model->setHasPins(count > 0);
    m_model->setCurrentPinIndex(startIndex);

    if (operation == u"next")
        m_model->selectNextPin();
    else if (operation == u"previous")
        m_model->selectPreviousPin();
    else
        m_model->deleteCurrentPin();

    QTEST(m_model->currentPinIndex(), "expectedIndex");
    QTEST(m_model->_currentPinName->value(), "expectedName");
    const std::optional<Pin> current = m_model->currentPin();
    QCOMPARE(m_model->_pinnedLocationCity->value(), current ? current->city : QString());
    QCOMPARE(m_controller->previousNextPinEnabled->value(), m_model->_pins->ref().size() >= 2);
    QCOMPARE(m_controller->centerAndDeletePinEnabled->value(), count > 0);
}

void tst_PinAndStepperController::deletingTheOnlyPinClearsThePanel()
{
    m_model->_pins->setValue({pin(1, -33.5, 151.25)});
    m_model->setHasPins(true);
    m_model->setCurrentPinIndex(0);
    m_model->updateCurrentPinDisplay();
    QCOMPARE(m_model->_pinnedLatitudeString->value(), u"-33.5"_s);
    QCOMPARE(m_model->_pinnedLongitudeString->value(), u"151.25"_s);
    QVERIFY(m_controller->centerAndDeletePinEnabled->value());

    m_model->deleteCurrentPin();
    QCOMPARE(m_model->currentPinIndex(), -1);
    QCOMPARE(m_model->_currentPinName->value(), u"No Pin"_s);
    QVERIFY(!m_model->hasPins());
    for (const auto &variable : {m_model->_pinnedLatitudeString, m_model->_pinnedLongitudeString,
                                 m_model->_pinnedSublocationName, m_model->_pinnedLocationCity,
                                 m_model->_pinnedLocationRegion, m_model->_pinnedLocationCountry})
        QCOMPARE(variable->value(), QString());
    QVERIFY(!m_controller->previousNextPinEnabled->value());
    QVERIFY(!m_controller->centerAndDeletePinEnabled->value());
    // The cleared coordinates hide the copy buttons once the panel has caught up.
    QVERIFY(TestSupport::waitUntil([&] { return !m_controller->pinnedCopyButtonsVisible->value(); },
                                   2000));
    QCOMPARE(m_model->_pinnedCoordinateDMS->value(), QString());
}

void tst_PinAndStepperController::droppedPinTakesTheGeocodersAnswer()
{
    // Two pins exist and one was deleted: the next is named after the count, even if taken.
    m_model->_pins->setValue({pin(1), pin(3)});
    m_model->setHasPins(true);
    m_model->setCurrentPinIndex(0);

    m_controller->addPinUsingCurrentFlagWorkflow({40.7153, -74.0094}, true);
    // The panel shows the clicked point at once, and the map tab is chosen.
    QCOMPARE(m_model->_pinnedLatitudeString->value(), u"+40.715300"_s);
    QCOMPARE(m_model->_pinnedLongitudeString->value(), u"-74.009400"_s);
    QCOMPARE(m_model->previewTabIndex->value(), int(PreviewTab::map));

    QVERIFY(TestSupport::waitUntil([&] { return m_model->_pins->ref().size() == 3; }, 60000));
    const Pin made = m_model->_pins->ref().last();
    QCOMPARE(made.name, u"Pin 3"_s);
    QCOMPARE(made.latitude, 40.7153);
    QCOMPARE(made.longitude, -74.0094);
    QCOMPARE(made.sublocation, u"Tribeca"_s);
    QCOMPARE(made.city, u"New York"_s);
    QCOMPARE(made.region, u"New York"_s);
    QCOMPARE(made.country, u"United States"_s);
    QCOMPARE(m_model->currentPinIndex(), 2);
    QCOMPARE(m_model->_currentPinName->value(), u"Pin 3"_s);
    QCOMPARE(m_model->_pinnedLatitudeString->value(), u"40.7153"_s);

    // Then the map centres on it and selects its marker.
    QVERIFY(TestSupport::waitUntil([&] { return !m_map.selectedMarkers.isEmpty(); }, 5000));
    QCOMPARE(m_map.selectedMarkers, QList<int> {2});
    QCOMPARE(m_map.regions.size(), 1);
    QCOMPARE(m_map.regions.first().center, (Coordinate2D {40.7153, -74.0094}));
    QCOMPARE(m_map.regions.first().latitudeDelta, 0.01);
    QCOMPARE(m_map.regions.first().longitudeDelta, 0.01);
}

void tst_PinAndStepperController::noAnswerNoPin()
{
    m_controller->addPinUsingCurrentFlagWorkflow({0.0, -30.0}, false);
    QCOMPARE(m_model->_pinnedLatitudeString->value(), u"+0.000000"_s);
    QCOMPARE(m_model->_pinnedLongitudeString->value(), u"-30.000000"_s);
    QCOMPARE(m_model->previewTabIndex->value(), int(PreviewTab::items));
    // The pinned fields' own lookup of the same point also answers nothing: both have run
    // once the fields have been cleared and a later request has come back.
    bool answered = false;
    LocationHelper::shared().retrieveLocationDescription({48.8530, 2.3499},
                                                         [&](const auto &) { answered = true; });
    QVERIFY(TestSupport::waitUntil([&] { return answered; }, 60000));
    QVERIFY(m_model->_pins->ref().isEmpty());
    QVERIFY(!m_model->hasPins());
    QCOMPARE(m_model->_currentPinName->value(), u"No Pin"_s);
    QVERIFY(m_map.regions.isEmpty());
}

void tst_PinAndStepperController::pinnedFieldsShowTheFreshAnswerAfterTheDelay()
{
    // The stored texts differ from what the geocoder says here: the panel ends with the answer,
    // and the pin keeps its own.
    Pin stored = pin(1, 47.3717, 8.5450);
    m_model->_pins->setValue({stored});
    m_model->setHasPins(true);
    m_model->setCurrentPinIndex(0);
    m_model->updateCurrentPinDisplay();
    QCOMPARE(m_model->_pinnedLocationCity->value(), u"City 1"_s);

    QVERIFY(TestSupport::waitUntil(
        [&] { return m_model->_pinnedSublocationName->value() == u"Zürich (Kreis 1) / Rathaus"_s; },
        60000));
    QCOMPARE(m_model->_pinnedLocationCity->value(), u"Bezirk Zürich"_s);
    QCOMPARE(m_model->_pinnedLocationRegion->value(), u"Zurich"_s);
    QCOMPARE(m_model->_pinnedLocationCountry->value(), u"Switzerland"_s);
    QCOMPARE(m_model->_pins->ref().first(), stored);

    QVERIFY(m_controller->pinnedCopyButtonsVisible->value());
    QCOMPARE(m_model->_pinnedLatitudeSign->value(), u"+"_s);
    QCOMPARE(m_model->_pinnedLatitudeRef->value(), u"N"_s);
    QCOMPARE(m_model->_pinnedLongitudeRef->value(), u"E"_s);
    QVERIFY(m_model->_pinnedCoordinateDMS->value().contains(u", "_s));
    QVERIFY(m_model->_pinnedCoordinateDMM->value().contains(u", "_s));

    // Text that is no coordinate hides the copy buttons and leaves the place names alone.
    m_model->_pinnedLatitudeString->setValue(u"north"_s);
    QVERIFY(TestSupport::waitUntil([&] { return !m_controller->pinnedCopyButtonsVisible->value(); },
                                   2000));
    QCOMPARE(m_model->_pinnedCoordinateDMS->value(), QString());
    QCOMPARE(m_model->_pinnedLatitudeRef->value(), QString());
    QCOMPARE(m_model->_pinnedLocationCountry->value(), u"Switzerland"_s);
}

void tst_PinAndStepperController::centeringSwitchesToTheMapOnce()
{
    m_controller->centerMapOnCurrentPin(true);
    QCOMPARE(m_model->previewTabIndex->value(), int(PreviewTab::items)); // no pin, nothing

    m_model->_pins->setValue({pin(1, 10, 20), pin(2, -10, -20)});
    m_model->setHasPins(true);
    m_model->setCurrentPinIndex(0);
    m_controller->centerMapOnCurrentPin(false);
    QVERIFY(m_map.regions.isEmpty());

    m_controller->centerMapOnCurrentPin(true);
    QCOMPARE(m_model->previewTabIndex->value(), int(PreviewTab::map));
    QVERIFY(m_map.regions.isEmpty()); // on the next turn of the main queue
    QVERIFY(TestSupport::waitUntil([&] { return m_map.regions.size() == 1; }, 2000));

    m_controller->selectNextPin();
    QCOMPARE(m_map.selectedMarkers, (QList<int> {0, 1}));
    QCOMPARE(m_map.regions.last().center, (Coordinate2D {-10, -20}));

    // The combined tabs show the map too.
    m_model->previewMode->setValue(int(PreviewTab::combinedHorizontal) - 1);
    m_controller->selectPreviousPin();
    QCOMPARE(m_map.selectedMarkers, (QList<int> {0, 1, 0}));
}

void tst_PinAndStepperController::stepsThroughItems_data()
{
    QTest::addColumn<QList<int>>("selected");
    QTest::addColumn<bool>("forwards");
    QTest::addColumn<int>("expected");

    QTest::newRow("nothing selected, forwards") << QList<int> {} << true << 0;
    QTest::newRow("nothing selected, backwards") << QList<int> {} << false << 0;
    QTest::newRow("next") << QList<int> {1} << true << 2;
    QTest::newRow("next wraps") << QList<int> {3} << true << 0;
    QTest::newRow("previous wraps") << QList<int> {0} << false << 3;
    QTest::newRow("several: from the first") << QList<int> {1, 3} << true << 2;
}

void tst_PinAndStepperController::stepsThroughItems()
{
    QFETCH(QList<int>, selected);
    QFETCH(bool, forwards);
    ListTable table(*m_model, storedNodes({{}, {}, {}, {}}));
    m_controller->setItemTable(&table);
    table.selectRowIndexes(selected, false);

    m_controller->selectItem(forwards);
    QFETCH(int, expected);
    QCOMPARE(table.selectedRowIndexes(), QList<int> {expected});
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {table.nodeAtRow(expected)});
}

void tst_PinAndStepperController::stepsThroughGroups_data()
{
    QTest::addColumn<QList<int>>("selected");
    QTest::addColumn<bool>("forwards");
    QTest::addColumn<QList<int>>("expected");

    // Rows: Paris, Paris, Lyon, none, Lyon, none.
    QTest::newRow("Paris to Lyon") << QList<int> {0, 1} << true << QList<int> {2, 4};
    QTest::newRow("Lyon to the unset group") << QList<int> {2} << true << QList<int> {3, 5};
    QTest::newRow("unset wraps to Paris") << QList<int> {3, 5} << true << QList<int> {0, 1};
    QTest::newRow("Paris back wraps to unset") << QList<int> {1} << false << QList<int> {3, 5};
    QTest::newRow("Lyon back to Paris") << QList<int> {4} << false << QList<int> {0, 1};
    QTest::newRow("two cities: the first group") << QList<int> {2, 1} << true << QList<int> {0, 1};
    QTest::newRow("two cities backwards: the first group")
        << QList<int> {2, 1} << false << QList<int> {0, 1};
    QTest::newRow("nothing selected") << QList<int> {} << false << QList<int> {0, 1};
}

void tst_PinAndStepperController::stepsThroughGroups()
{
    QFETCH(QList<int>, selected);
    QFETCH(bool, forwards);
    ListTable table(*m_model,
                    storedNodes({{u"Paris"_s}, {u"Paris"_s}, {u"Lyon"_s}, {}, {u"Lyon"_s}, {}}));
    m_controller->setItemTable(&table);
    m_model->setStepperMode(StepperMode::city);
    table.selectRowIndexes(selected, false);

    m_controller->selectItem(forwards);
    QTEST(table.selectedRowIndexes(), "expected");
}

void tst_PinAndStepperController::stepperLabel()
{
    const QList<NodePtr> nodes = storedNodes({{}, {}, {}});
    m_model->setSelectedNodes({});
    QCOMPARE(m_model->_stepperLabel->value(), u"No selection"_s);
    m_model->setSelectedNodes({nodes.at(1)});
    QCOMPARE(m_model->_stepperLabel->value(), nodes.at(1)->name);
    m_model->setSelectedNodes(nodes);
    QCOMPARE(m_model->_stepperLabel->value(), u"3 items selected"_s);
    m_model->setStepperMode(StepperMode::country);
    QCOMPARE(m_model->_stepperLabel->value(), u"3 selected"_s);
    m_model->setSelectedNodes({nodes.first()});
    QCOMPARE(m_model->_stepperLabel->value(), u"1 selected"_s);
}

void tst_PinAndStepperController::firstSelectedNodeCoordinates()
{
    const QList<NodePtr> nodes
        = storedNodes({{{}, u"-33.8568"_s, u"151.2153"_s}, {{}, u"48.8584"_s, u"2.2945"_s}, {}});
    m_model->setSelectedNodes({nodes.at(0), nodes.at(1)});
    QCOMPARE(m_model->_latitudeString->value(), u"-33.8568"_s);
    QCOMPARE(m_model->_longitudeString->value(), u"151.2153"_s);
    QCOMPARE(m_model->_latitudeSign->value(), u"-"_s);
    QCOMPARE(m_model->_latitudeRef->value(), u"S"_s);
    QCOMPARE(m_model->_longitudeSign->value(), u"+"_s);
    QCOMPARE(m_model->_longitudeRef->value(), u"E"_s);
    QCOMPARE(m_model->_coordinateDMS->value(),
             LocationHelper::shared().formatToDMS(-33.8568, CoordinateAxis::Latitude) + u", "_s
                 + LocationHelper::shared().formatToDMS(151.2153, CoordinateAxis::Longitude));

    // A first node without a position clears them all.
    m_model->setSelectedNodes({nodes.at(2), nodes.at(1)});
    QCOMPARE(m_model->_latitudeString->value(), QString());
    QCOMPARE(m_model->_coordinateDMM->value(), QString());
    QCOMPARE(m_model->_longitudeRef->value(), QString());
}

QTEST_GUILESS_MAIN(tst_PinAndStepperController)
#include "tst_PinAndStepperController.moc"
