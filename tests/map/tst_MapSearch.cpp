#include "location/Geocoder.h"
#include "map/HeadlessMapView.h"
#include "map/MapDelegate.h"
#include "map/MapSearch.h"
#include "session/DataModel.h"

#include "TestSupport.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const MapViewState startState {{46.8, 8.2}, 7.0, 800.0, 600.0};

Placemark place(const QString &name, double latitude, double longitude)
{
    return {name, {}, name, {}, u"Switzerland"_s, u"CH"_s, {latitude, longitude}};
}

} // namespace

class tst_MapSearch : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { TestSupport::useTemporaryUserDefaults(); }
    void init();
    void coordinatesWinOverSuggestions_data();
    void coordinatesWinOverSuggestions();
    void keysMoveInTheOpenList();
    void suggestionsFromTheGeocoderNearestFirst();

private:
    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<MapDelegate> m_delegate;
    std::unique_ptr<HeadlessMapView> m_view;
    std::unique_ptr<MapSearch> m_search;
};

void tst_MapSearch::init()
{
    m_search.reset();
    m_delegate.reset();
    m_model = std::make_unique<DataModel>();
    m_delegate = std::make_unique<MapDelegate>(*m_model);
    m_view = std::make_unique<HeadlessMapView>(startState);
    m_delegate->setMapView(m_view.get());
    m_search = std::make_unique<MapSearch>(*m_delegate, Geocoder::shared());
}

void tst_MapSearch::coordinatesWinOverSuggestions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("chosen");
    QTest::addColumn<std::optional<Coordinate2D>>("destination");
    const QList<Placemark> suggestions {place(u"Bern"_s, 46.948, 7.4474),
                                        place(u"Basel"_s, 47.5584, 7.5733)};
    QTest::newRow("a coordinate goes there, suggestions or not")
        << u" 48.8584, 2.2945\n"_s << 1 << std::optional(Coordinate2D {48.8584, 2.2945});
    QTest::newRow("a latitude alone is search text")
        << u"48.8584"_s << -1 << std::optional(Coordinate2D {46.948, 7.4474});
    QTest::newRow("out of range is search text")
        << u"95, 10"_s << -1 << std::optional(Coordinate2D {46.948, 7.4474});
    QTest::newRow("the chosen suggestion")
        << u"Ba"_s << 1 << std::optional(Coordinate2D {47.5584, 7.5733});
    QTest::newRow("nothing typed, nothing found: nothing happens")
        << QString() << -1 << std::optional<Coordinate2D>();
}

void tst_MapSearch::coordinatesWinOverSuggestions()
{
    QFETCH(QString, text);
    QFETCH(int, chosen);
    QFETCH(std::optional<Coordinate2D>, destination);
    m_search->fieldText->setValue(text);
    if (!text.isEmpty())
        m_search->completerDidUpdateResults(
            {place(u"Bern"_s, 46.948, 7.4474), place(u"Basel"_s, 47.5584, 7.5733)});
    QCOMPARE(m_search->popoverShown->value(), !text.isEmpty());
    m_search->selectedSearchResultIndex->setValue(chosen);

    QVERIFY(m_search->doCommandBySelector(MapSearch::Command::insertNewline));
    if (!destination) {
        QCOMPARE(m_view->cameraChanges(), 0);
        return;
    }
    QCOMPARE(m_view->viewState().center, *destination);
    QVERIFY(m_view->lastChangeAnimated());
    // A span of 0.01 degrees: at most that much of the map's narrower side.
    const CoordinateRegion region = MapGeometry::region(m_view->viewState());
    QVERIFY(std::min(region.latitudeDelta, region.longitudeDelta) >= 0.0099);
    QVERIFY(m_search->fieldText->value().isEmpty());
    QVERIFY(!m_search->popoverShown->value());
}

void tst_MapSearch::keysMoveInTheOpenList()
{
    using Command = MapSearch::Command;
    // Closed: the arrows belong to the field.
    QVERIFY(!m_search->doCommandBySelector(Command::moveDown));
    m_search->fieldText->setValue(u"B"_s);
    m_search->completerDidUpdateResults(
        {place(u"Bern"_s, 46.948, 7.4474), place(u"Basel"_s, 47.5584, 7.5733)});
    QCOMPARE(m_search->selectedSearchResultIndex->value(), -1);
    QVERIFY(m_search->doCommandBySelector(Command::moveDown));
    QVERIFY(m_search->doCommandBySelector(Command::moveDown));
    QVERIFY(m_search->doCommandBySelector(Command::moveDown));
    QCOMPARE(m_search->selectedSearchResultIndex->value(), 1);
    QVERIFY(m_search->doCommandBySelector(Command::moveUp));
    QCOMPARE(m_search->selectedSearchResultIndex->value(), 0);
    QVERIFY(m_search->doCommandBySelector(Command::complete));
    QVERIFY(m_search->doCommandBySelector(Command::cancelOperation));
    QVERIFY(!m_search->popoverShown->value());
    QCOMPARE(m_search->selectedSearchResultIndex->value(), -1);
    // No suggestions close the list; the field is not asked to give up its text.
    m_search->completerDidUpdateResults({});
    QVERIFY(!m_search->popoverShown->value());
    QCOMPARE(m_search->fieldText->value(), u"B"_s);
}

void tst_MapSearch::suggestionsFromTheGeocoderNearestFirst()
{
    // The offline geocoder's worker: loading its database takes a while on a busy machine.
    m_search->controlTextDidChange(u"Lausa"_s);
    QVERIFY(
        TestSupport::waitUntil([&] { return !m_search->searchResults->ref().isEmpty(); }, 120000));
    const Placemark first = m_search->searchResults->ref().first();
    QCOMPARE(first.name, u"Lausanne"_s);
    QVERIFY(m_search->popoverShown->value());
    QVERIFY(m_search->doCommandBySelector(MapSearch::Command::insertNewline));
    QCOMPARE(m_view->viewState().center, first.coordinate);

    // An emptied field closes the list, and a late answer to an older text is dropped.
    m_search->controlTextDidChange(u"Gen"_s);
    m_search->controlTextDidChange(QString());
    bool idle = false;
    Geocoder::shared().notifyWhenIdle([&idle] { idle = true; });
    QVERIFY(TestSupport::waitUntil([&] { return idle; }, 30000));
    QVERIFY(m_search->searchResults->ref().isEmpty());
    QVERIFY(!m_search->popoverShown->value());
}

QTEST_GUILESS_MAIN(tst_MapSearch)
#include "tst_MapSearch.moc"
