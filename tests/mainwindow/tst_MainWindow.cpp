#include "bricks/walls/TabWall.h"
#include "commons/ApplicationStart.h"
#include "location/GPSCoordinateComponent.h"
#include "mainwindow/AppDelegate.h"
#include "mainwindow/ColumnListTableViewController.h"
#include "mainwindow/DragAndDropTableView.h"
#include "mainwindow/ListTableCellView.h"
#include "mainwindow/MainContentViewController.h"
#include "mainwindow/MainWindow.h"
#include "mainwindow/MapOverlayView.h"
#include "mainwindow/MapWebView.h"
#include "mainwindow/MapWidget.h"
#include "mainwindow/MinimalPreviewTableViewController.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "mainwindow/WritingProgressWindow.h"
#include "map/MapDelegate.h"
#include "map/MapGeometry.h"
#include "metadata/MetadataStorage.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"
#include "writing/WriteEngine.h"

#include "Fixtures.h"
#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QAction>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

// The application as a user meets it, on the offscreen platform: the real delegate, window,
// pipeline, readers and write worker on JPEGs made for the test.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void firstLaunchWaitsWithTheDefaultColumns();
    void givenFolderIsListedAndReady();
    void editOfTwoSelectedRowsReachesBothFiles();
    void undoAndRedoFromTheEditMenu();
    void rubberBandOnTheMapSelectsRows();
    void quitWaitsForAWriteStillInThePool();

private:
    QString statusText() const { return content().statusText(); }
    MainContentViewController &content() const
    {
        return *m_delegate->mainWindow->mainContentViewController;
    }
    // ExifTool's own reading of the file's position, numeric.
    static QString position(const QString &path);
    void clickRow(int row, Qt::KeyboardModifiers modifiers = {});
    // Waits until the map has a marker with a position for each of the two files.
    bool bothFilesStandOnTheMap() const;

    QTemporaryDir m_folder;
    QStringList m_files;
    RecordingPresenter m_alerts;
    std::unique_ptr<AppDelegate> m_delegate;
};

void tst_MainWindow::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();
    AlertPresenter::install(&m_alerts);
    // Tests never reach a tile server: offline, the map's page makes no request at all.
    UserDefaults::standard().setObject(false, MapWebView::onlineSettingKey());
    m_files << Fixtures::makeJpeg(m_folder.path(), u"IMG_0002.jpg"_qs)
            << Fixtures::makeJpeg(m_folder.path(), u"IMG_0001.jpg"_qs);
    QVERIFY(!m_files.contains(QString()));
    m_delegate = std::make_unique<AppDelegate>();
    m_delegate->finishInitialization();
    ChangeManager::setDataModel(m_delegate->dataModel.get());
    m_delegate->openFilesOnceWindowIsPainted({m_folder.path()});
}

void tst_MainWindow::cleanupTestCase()
{
    ChangeManager::setDataModel(nullptr);
    m_delegate.reset();
    AlertPresenter::install(nullptr);
}

QString tst_MainWindow::position(const QString &path)
{
    QByteArray output;
    if (!Fixtures::run(Fixtures::exifToolPath(),
                       {u"-j"_qs, u"-n"_qs, u"-GPSLatitude"_qs, u"-GPSLongitude"_qs, path},
                       &output))
        return u"<exiftool failed>"_qs;
    const QJsonObject tags = QJsonDocument::fromJson(output).array().first().toObject();
    if (!tags.contains(u"GPSLatitude"_qs))
        return u"none"_qs;
    return QStringLiteral("%1, %2")
        .arg(tags.value(u"GPSLatitude"_qs).toDouble(), 0, 'f', 4)
        .arg(tags.value(u"GPSLongitude"_qs).toDouble(), 0, 'f', 4);
}

bool tst_MainWindow::bothFilesStandOnTheMap() const
{
    const MapDelegate &map = *m_delegate->mapDelegate;
    return TestSupport::waitUntil([&] {
        const QList<MapDelegate::Marker> markers = map.markers();
        return markers.size() == 2
            && std::all_of(markers.cbegin(), markers.cend(),
                           [](const MapDelegate::Marker &m) { return m.coordinate.has_value(); });
    });
}

void tst_MainWindow::clickRow(int row, Qt::KeyboardModifiers modifiers)
{
    QTableView *table = content().previewTableViewController->tableView;
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, modifiers, cell.center());
}

void tst_MainWindow::firstLaunchWaitsWithTheDefaultColumns()
{
    QVERIFY(TestSupport::waitUntil([&] { return m_delegate->mainWindow != nullptr; }));
    MainWindow &window = *m_delegate->mainWindow;
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    // The files wait until the window has been painted: until then the waiting tab shows.
    QCOMPARE(content().tabWall->currentIndex(), int(PreviewTab::wait));
    QCOMPARE(m_delegate->dataModel->columnList.value(),
             (QStringList {u"name"_qs, u"absolute_path"_qs}));
    ColumnListTableViewController &columns = *content().columnListTableViewController;
    QCOMPARE(columns.tableView->model()->rowCount(), 2);
    QVERIFY(columns.cellAt(0) && columns.cellAt(1));
    // The menus a user looks for, with their keys.
    const QStringList titles = [&] {
        QStringList list;
        for (QAction *menu : window.menuBar()->actions())
            list << menu->text();
        return list;
    }();
    QCOMPARE(titles, (QStringList {u"&File"_qs, u"&Edit"_qs, u"&View"_qs, u"&Go"_qs, u"&Help"_qs}));
    QCOMPARE(window.findChild<QAction *>(u"open"_qs)->shortcut(), QKeySequence(QKeySequence::Open));
    QCOMPARE(window.findChild<QAction *>(u"reload"_qs)->shortcut(), QKeySequence(u"Ctrl+R"_qs));
    QVERIFY(m_delegate->menuItemManager.action(u"showTroubleshooting"_qs));
    QVERIFY(window.findChild<QAction *>(u"copyOutput"_qs));
    QCOMPARE(window.findChild<QAction *>(u"saveOutput"_qs)->shortcut(),
             QKeySequence(QKeySequence::Save));
    // The map's tools are in the View menu as well as on the map.
    QVERIFY(window.findChild<QAction *>(u"switchToDropPinMode"_qs));
}

void tst_MainWindow::givenFolderIsListedAndReady()
{
    QVERIFY(TestSupport::waitUntil(
        [&] { return statusText().startsWith(u"Ready. (2 items | 0 selected"_qs); }, 30000));
    QCOMPARE(m_delegate->dataModel->sourceList.value(), QStringList {m_folder.path()});
    // The wait ends on the main queue's next turns after the engine is ready.
    QVERIFY(TestSupport::waitUntil(
        [&] { return content().tabWall->currentIndex() == int(PreviewTab::items); }));
    QCOMPARE(m_delegate->dataModel->previewTabIndex->value(), int(PreviewTab::items));
    PreviewTableDataSource &rows
        = *content().previewTableViewController->previewTableViewDataSource;
    QCOMPARE(rows.rowCount(), 2);
    QCOMPARE(rows.index(0, 0).data().toString(), u"IMG_0001.jpg"_qs);
    QVERIFY(content().previewTableViewController->view()->isVisible());
}

void tst_MainWindow::editOfTwoSelectedRowsReachesBothFiles()
{
    clickRow(0);
    clickRow(1, Qt::ShiftModifier);
    QCOMPARE(m_delegate->dataModel->selectedNodes().size(), 2);
    QVERIFY(TestSupport::waitUntil([&] { return statusText().contains(u"| 2 selected |"_qs); }));

    // Typed into the GPS editor's two fields on the parameter side, then applied with its button.
    QWidget *editor = content().view()->findChild<QWidget *>(u"gpsLocationFragment"_qs);
    QVERIFY(editor);
    auto *latitude = editor->findChild<QLineEdit *>(u"latitudeFieldInner"_qs);
    auto *longitude = editor->findChild<QLineEdit *>(u"longitudeFieldInner"_qs);
    auto *apply = editor->findChild<QAbstractButton *>(u"applyButton"_qs);
    QVERIFY(latitude && longitude && apply);
    // As a user does, type once the editor shows what the two files hold (no position yet):
    // the selection's values land a moment after the selection itself.
    GPSCoordinateComponent &gps = *m_delegate->dataModel->gpsCoordinateComponent;
    QVERIFY(TestSupport::waitUntil(
        [&] { return latitude->isEnabled() && gps.showsCurrentSelection(); }));
    latitude->setFocus();
    QTest::keyClicks(latitude, u"48.8584"_qs);
    QTest::keyClick(latitude, Qt::Key_Tab);
    QVERIFY(longitude->hasFocus());
    QTest::keyClicks(longitude, u"2.2945"_qs);
    QVERIFY(apply->isEnabled());
    QTest::mouseClick(apply, Qt::LeftButton);
    // The click left the edit as it was: Apply wrote once, and the field still has the focus.
    QVERIFY(longitude->hasFocus());
    // The status line shows the batch while it runs; its ticks come every tenth of a second.
    QVERIFY(TestSupport::waitUntil(
        [&] { return statusText().startsWith(u"Writing 1 of 2... (2 items | 2 selected"_qs); },
        30000));
    QVERIFY(
        TestSupport::waitUntil([&] { return !WriteEngine::shared().hasPendingWrites(); }, 60000));
    for (const QString &file : std::as_const(m_files))
        QCOMPARE(position(file), u"48.8584, 2.2945"_qs);
    // The files are read again and their GPS status is complete.
    QVERIFY(TestSupport::waitUntil(
        [&] {
            for (const QString &file : std::as_const(m_files)) {
                if (MetadataStorage::shared().getObjCIntegerValue(file, u"GPSDataAvailable"_qs,
                                                                  MetadataSource::ExifToolGeneric)
                    != 1)
                    return false;
            }
            return true;
        },
        30000));
    QVERIFY(TestSupport::waitUntil([&] { return statusText().startsWith(u"Ready."_qs); }));
    QVERIFY(m_alerts.alerts.isEmpty());
    // The re-read files stand on the map.
    QVERIFY(bothFilesStandOnTheMap());
}

void tst_MainWindow::undoAndRedoFromTheEditMenu()
{
    MainWindow &window = *m_delegate->mainWindow;
    auto *undo = window.findChild<QAction *>(u"undo"_qs);
    auto *redo = window.findChild<QAction *>(u"redo"_qs);
    QVERIFY(undo && redo);
    // Undo takes both files back to no position, redo puts the written one back.
    const struct
    {
        QAction *action;
        QString text, position;
    } steps[] = {{undo, u"&Undo GPS on 2 Files"_qs, u"none"_qs},
                 {redo, u"&Redo GPS on 2 Files"_qs, u"48.8584, 2.2945"_qs}};
    for (const auto &step : steps) {
        QVERIFY(TestSupport::waitUntil([&] { return step.action->isEnabled(); }));
        QCOMPARE(step.action->text(), step.text);
        step.action->trigger();
        QVERIFY(TestSupport::waitUntil([] { return !WriteEngine::shared().hasPendingWrites(); },
                                       60000));
        for (const QString &file : std::as_const(m_files))
            QCOMPARE(position(file), step.position);
    }
    QVERIFY(m_alerts.alerts.isEmpty());
    // The window follows: the files are read again and stand on the map once more.
    QVERIFY(bothFilesStandOnTheMap());
}

void tst_MainWindow::rubberBandOnTheMapSelectsRows()
{
    // The map beside the names: a band drawn over the two markers selects both rows.
    clickRow(0);
    QCOMPARE(m_delegate->dataModel->selectedNodes().size(), 1);
    m_delegate->dataModel->previewMode->setValue(3);
    MapWidget *widget = content().mapWidget();
    QVERIFY(widget);
    QCOMPARE(widget->parentWidget(), content().horizontalMapHost.data());
    MapDelegate &map = *m_delegate->mapDelegate;
    QVERIFY(TestSupport::waitUntil([&] { return map.viewState().width > 0; }, 60000));
    map.setRegion({{48.8584, 2.2945}, 0.5, 0.5}, false);
    QVERIFY(TestSupport::waitUntil(
        [&] { return widget->mapView()->paintedSequence() == map.scene().sequence; }, 30000));
    widget->switchToRubberBandMode();
    MapOverlayView *overlay = widget->overlayView();
    const QPoint place
        = MapGeometry::pointForCoordinate(map.viewState(), {48.8584, 2.2945}).toPoint();
    QTest::mousePress(overlay, Qt::LeftButton, {}, place - QPoint(30, 30));
    QTest::mouseMove(overlay, place);
    QTest::mouseMove(overlay, place + QPoint(30, 30));
    QTest::mouseRelease(overlay, Qt::LeftButton, {}, place + QPoint(30, 30));
    QCOMPARE(m_delegate->dataModel->selectedNodes().size(), 2);
    // The table beside the map shows the map's selection.
    auto &names = *content().minimalPreviewTableViewController;
    QVERIFY(TestSupport::waitUntil(
        [&] { return names.tableView->selectionModel()->selectedRows().size() == 2; }));
    m_delegate->dataModel->previewMode->setValue(0);
}

void tst_MainWindow::quitWaitsForAWriteStillInThePool()
{
    GPSCoordinateComponent &gps = *m_delegate->dataModel->gpsCoordinateComponent;
    gps.typeInLatitudeField(u"-33.856800, 151.215300"_qs);
    gps.handleLatitudeReturn();
    QVERIFY(WriteEngine::shared().hasPendingWrites());
    // The window's close button asks to quit: the quit waits and says how far the writes are.
    m_delegate->mainWindow->close();
    QVERIFY(m_delegate->isWaitingForWrites());
    QVERIFY(m_delegate->mainWindow->isVisible());
    QVERIFY(m_delegate->writingProgressWindow());
    QVERIFY(m_delegate->writingProgressWindow()->text().startsWith(u"Writing"_qs));
    QVERIFY(TestSupport::waitUntil([&] { return m_delegate->isTerminating(); }, 60000));
    QVERIFY(!WriteEngine::shared().hasPendingWrites());
    for (const QString &file : std::as_const(m_files))
        QCOMPARE(position(file), u"-33.8568, 151.2153"_qs);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
