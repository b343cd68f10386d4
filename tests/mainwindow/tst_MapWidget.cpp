#include "MapModeToolbar.h"
#include "MapOverlayView.h"
#include "MapSearchField.h"
#include "MapSearchResultsPopup.h"
#include "MapWebView.h"
#include "MapWidget.h"
#include "commons/ApplicationStart.h"
#include "location/Geocoder.h"
#include "map/MapDelegate.h"
#include "map/MapOverlay.h"
#include "session/DataModel.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QApplication>
#include <QImage>
#include <QListWidget>
#include <QScrollBar>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;

// The real map: QtWebEngine showing the page from the resource folder, offline, with the
// markers of files that ExifTool has read.
class tst_MapWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void pageLoadsOfflineWithTheFilesMarkers();
    void aClickOnAMarkerSelectsItsFile();
    void theRubberBandSelects();
    void theOfflineMapIsDrawn();
    void typingSuggestsPlacesAndReturnGoesThere();

private:
    // Waits until the page has shown the delegate's latest scene.
    bool waitForPaint(int timeoutMs = 30000);
    QPoint markerPoint(const NodePtr &node) const;

    QTemporaryDir m_dir;
    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<MapDelegate> m_delegate;
    std::unique_ptr<MapWidget> m_widget;
    NodePtr m_zurichA, m_zurichB, m_bern;
};

void tst_MapWidget::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    m_model = std::make_unique<DataModel>();
    m_delegate = std::make_unique<MapDelegate>(*m_model);
    m_delegate->setupMapListeners();
    m_delegate->install();
    const QStringList zurich {u"-GPSLatitude=47.3769"_s, u"-GPSLatitudeRef=N"_s,
                              u"-GPSLongitude=8.5417"_s, u"-GPSLongitudeRef=E"_s};
    m_zurichA = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"zurich-a.jpg"_s, zurich));
    m_zurichB = Fixtures::readNode(Fixtures::makeJpeg(m_dir.path(), u"zurich-b.jpg"_s, zurich));
    m_bern = Fixtures::readNode(
        Fixtures::makeJpeg(m_dir.path(), u"bern.jpg"_s,
                           {u"-GPSLatitude=46.948"_s, u"-GPSLatitudeRef=N"_s,
                            u"-GPSLongitude=7.4474"_s, u"-GPSLongitudeRef=E"_s}));
    QVERIFY(m_zurichA && m_zurichB && m_bern);

    MapWebView::Options options;
    // Tests never reach a tile server: offline, the page makes no request at all.
    options.online = false;
    options.cacheDirectory = m_dir.filePath(u"cache"_s);
    m_widget = std::make_unique<MapWidget>(*m_model, *m_delegate, options, Geocoder::shared());
    m_widget->resize(900, 600);
    m_widget->show();
    QSignalSpy ready(m_widget->mapView(), &MapWebView::pageReady);
    QVERIFY(ready.wait(60000));
}

void tst_MapWidget::cleanupTestCase()
{
    m_widget.reset();
    m_delegate->uninstall();
}

bool tst_MapWidget::waitForPaint(int timeoutMs)
{
    return TestSupport::waitUntil(
        [&] { return m_widget->mapView()->paintedSequence() == m_delegate->scene().sequence; },
        timeoutMs);
}

QPoint tst_MapWidget::markerPoint(const NodePtr &node) const
{
    for (const MapDelegate::Marker &marker : m_delegate->markers()) {
        if (marker.node == node)
            return MapGeometry::pointForCoordinate(m_delegate->viewState(), *marker.coordinate)
                .toPoint();
    }
    return {};
}

void tst_MapWidget::pageLoadsOfflineWithTheFilesMarkers()
{
    QCOMPARE(m_delegate->markerCount(), 3);
    m_delegate->setRegion({{47.15, 8.0}, 1.2, 2.4}, false);
    QVERIFY(waitForPaint());
    QCOMPARE(m_widget->mapView()->baseLayer(), u"offline"_s);
    // The page reports the camera it took, the size of the view included.
    const MapViewState state = m_delegate->viewState();
    QCOMPARE(state.width, 900.0);
    QVERIFY(std::fabs(state.center.latitude - 47.15) < 0.01);
    QList<AnnotationKind> kinds;
    for (const MapSceneItem &item : m_delegate->scene().items)
        kinds << item.ref.kind;
    std::sort(kinds.begin(), kinds.end());
    QCOMPARE(kinds, (QList<AnnotationKind> {AnnotationKind::mediaFile, AnnotationKind::cluster}));
}

void tst_MapWidget::aClickOnAMarkerSelectsItsFile()
{
    m_widget->modeToolbar()->button(int(MapOverlayMode::fileSelector))->click();
    QVERIFY(!m_widget->overlayView()->isVisible());
    QVERIFY(waitForPaint());
    QWidget *page = m_widget->mapView()->focusProxy();
    QVERIFY(page);
    // Into the balloon, above its tip.
    QTest::mouseClick(page, Qt::LeftButton, {}, markerPoint(m_bern) - QPoint(0, 18));
    QVERIFY(TestSupport::waitUntil(
        [&] { return m_model->selectedNodes() == QList<NodePtr> {m_bern}; }, 20000));
    QVERIFY(waitForPaint());
    bool blue = false;
    for (const MapSceneItem &item : m_delegate->scene().items)
        blue |= item.ref.kind == AnnotationKind::mediaFile && item.tint == MarkerTint::selectedBlue;
    QVERIFY(blue);
}

void tst_MapWidget::theRubberBandSelects()
{
    m_widget->modeToolbar()->button(int(MapOverlayMode::areaFileSelector))->click();
    MapOverlayView *overlay = m_widget->overlayView();
    QVERIFY(overlay->isVisible());
    const QPoint zurich = markerPoint(m_zurichA);
    QTest::mousePress(overlay, Qt::LeftButton, {}, zurich - QPoint(30, 30));
    QTest::mouseMove(overlay, zurich);
    QTest::mouseMove(overlay, zurich + QPoint(30, 30));
    m_widget->grab().save(u"/tmp/palomet-map-band.png"_s);
    QTest::mouseRelease(overlay, Qt::LeftButton, {}, zurich + QPoint(30, 30));
    QCOMPARE(m_model->selectedNodes(), (QList<NodePtr> {m_zurichA, m_zurichB}));
    QVERIFY(waitForPaint());
    for (const MapSceneItem &item : m_delegate->scene().items) {
        if (item.ref.kind == AnnotationKind::cluster)
            QCOMPARE(item.tint, MarkerTint::selectedBlue);
    }
}

void tst_MapWidget::theOfflineMapIsDrawn()
{
    // Central Europe with the sea to the south; the three files form one cluster there, partly
    // selected, beside two pins, the current one blue.
    m_model->_pins->setValue({{u"Milan"_s, 45.4642, 9.19}, {u"Vienna"_s, 48.2082, 16.3738}});
    m_model->setCurrentPinIndex(1);
    m_delegate->setRegion({{45.0, 9.0}, 14.0, 26.0}, false);
    QVERIFY(TestSupport::waitUntil([&] { return m_delegate->pinMarkers().size() == 2; }));
    QVERIFY(waitForPaint());
    // A frame or two for the compositor.
    QTest::qWait(300);
    const QImage image = m_widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    image.save(u"/tmp/palomet-map-offline.png"_s);
    QSet<QRgb> colours;
    int land = 0, water = 0, orangeMarker = 0, blueMarker = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            colours.insert(pixel);
            land += pixel == qRgb(0xf2, 0xef, 0xe9);
            water += pixel == qRgb(0xaa, 0xd3, 0xdf);
            orangeMarker += pixel == qRgb(0xff, 0x95, 0x00);
            blueMarker += pixel == qRgb(0x00, 0x7a, 0xff);
        }
    }
    // Country shapes and sea, a marker over them, and no empty grey.
    QVERIFY2(colours.size() > 50, qPrintable(QString::number(colours.size())));
    QVERIFY(land > 20000);
    QVERIFY(water > 20000);
    QVERIFY(orangeMarker > 100);
    QVERIFY(blueMarker > 50);
}

void tst_MapWidget::typingSuggestsPlacesAndReturnGoesThere()
{
    MapSearchField *field = m_widget->searchField();
    auto *popup = field->findChild<MapSearchResultsPopup *>();
    QVERIFY(popup);
    field->activateWindow();
    field->setFocus();
    QTest::keyClicks(field, u"Lausa"_s);
    QVERIFY(TestSupport::waitUntil([&] { return popup->isVisible(); }, 120000));
    QCOMPARE(popup->list()->item(0)->text(), u"Lausanne"_s);
    // The rows fit without a scroll bar.
    QVERIFY(!popup->list()->verticalScrollBar()->isVisible());
    popup->grab().save(u"/tmp/palomet-map-suggestions.png"_s);
    // The list never takes the keys: the field keeps the focus and moves the list's row.
    QTest::keyClick(field, Qt::Key_Down);
    QVERIFY(field->hasFocus());
    QCOMPARE(popup->list()->currentRow(), 0);
    QTest::keyClick(field, Qt::Key_Return);
    QVERIFY(TestSupport::waitUntil([&] { return !popup->isVisible(); }, 20000));
    QVERIFY(field->text().isEmpty());
    const MapViewState state = m_delegate->viewState();
    QVERIFY(std::fabs(state.center.latitude - 46.52) < 0.05);
    QVERIFY(std::fabs(state.center.longitude - 6.63) < 0.05);
    QVERIFY(waitForPaint());
    QTest::qWait(1000);
    m_widget->grab().save(u"/tmp/palomet-map-lausanne.png"_s);
}

// The web engine wants its settings before the application object exists.
static void prepareWebEngine()
{
    MapWebView::prepareProcess();
}
Q_CONSTRUCTOR_FUNCTION(prepareWebEngine)

QTEST_MAIN(tst_MapWidget)
#include "tst_MapWidget.moc"
