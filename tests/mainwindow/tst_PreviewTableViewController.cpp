#include "commons/ApplicationStart.h"
#include "mainwindow/DragAndDropTableView.h"
#include "mainwindow/MinimalPreviewTableViewController.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "metadata/DataCoordinator.h"
#include "session/DataModel.h"

#include "Fixtures.h"
#include "RecordingDoubles.h"
#include "TestSupport.h"

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QMimeData>
#include <QSemaphore>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>
#include <QUrl>

using namespace Qt::StringLiterals;

// The table as a user meets it, on real files read by the real ExifTool: rows, status symbols
// that settle by themselves, tooltips, drops, column moves and selection.
class tst_PreviewTableViewController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void statusCellsSettleWithoutReload();
    void divergentTooltipNamesTheFields();
    void emptyTableInvitesADrop();
    void droppedPathsJoinTheSourceList();
    void movedColumnIsSavedButNotKept();
    void minimalTableHasNameAndStatusColumns();
    void clickedRowsBecomeTheSelection();
    void screenshots();
    void cleanupTestCase();

private:
    QList<NodePtr> makeNodes();
    QModelIndex cell(int row, const QString &key) const;
    QString tooltipAt(const QModelIndex &index) const;

    QTemporaryDir m_dir;
    QStringList m_paths;
    std::unique_ptr<DataModel> m_model;
    std::unique_ptr<PreviewTableViewController> m_controller;
};

void tst_PreviewTableViewController::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const QStringList gps {u"-GPSLatitude=48.8584"_s, u"-GPSLatitudeRef=N"_s,
                           u"-GPSLongitude=2.2945"_s, u"-GPSLongitudeRef=E"_s};
    const QStringList place {u"-IPTC:Sub-location=Champ de Mars"_s, u"-IPTC:City=Paris"_s,
                             u"-IPTC:Province-State=Île-de-France"_s,
                             u"-IPTC:Country-PrimaryLocationName=France"_s};
    // Rows in this order: every status of both columns.
    m_paths = {
        Fixtures::makeJpeg(m_dir.path(), u"1 complete.jpg"_s, gps + place),
        Fixtures::makeJpeg(m_dir.path(), u"2 nothing.jpg"_s),
        Fixtures::makeJpeg(
            m_dir.path(), u"3 incomplete.jpg"_s,
            {u"-GPSLatitude=48.8584"_s, u"-GPSLatitudeRef=N"_s, u"-IPTC:City=Lyon"_s}),
        Fixtures::makeJpeg(m_dir.path(), u"4 divergent.jpg"_s,
                           gps
                               + QStringList {u"-XMP:GPSLatitude=40.0"_s,
                                              u"-XMP:GPSLongitude=3.0"_s, u"-IPTC:City=Basel"_s,
                                              u"-XMP-photoshop:City=Bern"_s,
                                              u"-IPTC:Country-PrimaryLocationName=Schweiz"_s,
                                              u"-XMP-photoshop:Country=Suisse"_s}),
        Fixtures::makeFile(m_dir.path(), u"5 notes.txt"_s, "not a picture"),
    };
    for (const QString &path : std::as_const(m_paths))
        QVERIFY(!path.isEmpty());
    m_model = std::make_unique<DataModel>();
    m_controller = NiblessViewController::make<PreviewTableViewController>(*m_model);
    m_controller->view()->resize(1000, 300);
    m_controller->view()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->view()));
}

void tst_PreviewTableViewController::cleanupTestCase()
{
    m_controller.reset();
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
}

QList<NodePtr> tst_PreviewTableViewController::makeNodes()
{
    QList<NodePtr> nodes;
    for (const QString &path : std::as_const(m_paths))
        nodes << FileNode::create(path.section(u'/', -1), path, QString());
    return nodes;
}

QModelIndex tst_PreviewTableViewController::cell(int row, const QString &key) const
{
    PreviewTableDataSource *source = m_controller->previewTableViewDataSource;
    return source->index(row, int(source->columnKeys().indexOf(key)));
}

QString tst_PreviewTableViewController::tooltipAt(const QModelIndex &index) const
{
    QTableView *table = m_controller->tableView;
    const QPoint at = table->visualRect(index).center();
    QHelpEvent event(QEvent::ToolTip, at, table->viewport()->mapToGlobal(at));
    QApplication::sendEvent(table->viewport(), &event);
    const QString text = QToolTip::text();
    QToolTip::hideText();
    return text;
}

void tst_PreviewTableViewController::statusCellsSettleWithoutReload()
{
    // The reads wait behind this gate, so the first paint surely shows the waiting state.
    QSemaphore gate;
    DataCoordinator::shared().queue().addOperation([&gate] { gate.acquire(); });
    m_controller->setNodes(makeNodes());
    m_controller->updateAll();
    QCOMPARE(m_controller->previewTableViewDataSource->rowCount(), m_paths.size());
    QCOMPARE(cell(0, u"name"_s).data().toString(), u"1 complete.jpg"_s);
    QCOMPARE(cell(0, u"City"_s).data().toString(), u"waiting…"_s);
    QCOMPARE(tooltipAt(cell(0, u"GPSDataAvailable"_s)), u"Loading GPS location data…"_s);
    QVERIFY(TestSupport::waitUntil(
        [&] { return m_controller->tableView->cellObservers().count() == m_paths.size(); }));

    int paints = 0;
    QSignalSpy resets(m_controller->previewTableViewDataSource, &QAbstractItemModel::modelReset);
    struct PaintCounter : QObject
    {
        int *count;
        bool eventFilter(QObject *, QEvent *event) override
        {
            *count += event->type() == QEvent::Paint;
            return false;
        }
    } counter;
    counter.count = &paints;
    m_controller->tableView->viewport()->installEventFilter(&counter);
    gate.release();
    // Nothing but the values' arrival makes the rows draw again.
    QVERIFY(TestSupport::waitUntil(
        [&] {
            return paints > 0 && cell(3, u"IPTCDataComplete"_s).data().toString() != u"Waiting"_s;
        },
        20000));
    m_controller->tableView->viewport()->removeEventFilter(&counter);
    QCOMPARE(resets.count(), 0);

    QCOMPARE(cell(0, u"City"_s).data().toString(), u"Paris"_s);
    QCOMPARE(cell(1, u"City"_s).data().toString(), u"n/a"_s);
    QCOMPARE(tooltipAt(cell(0, u"GPSDataAvailable"_s)), u"Complete GPS location data present"_s);
    QCOMPARE(tooltipAt(cell(1, u"IPTCDataComplete"_s)), u"No IPTC location data present"_s);
    QCOMPARE(tooltipAt(cell(2, u"GPSDataAvailable"_s)),
             u"Incomplete GPS location data — one or more coordinates are missing"_s);
    QCOMPARE(tooltipAt(cell(2, u"IPTCDataComplete"_s)),
             u"Incomplete IPTC location data — one or more fields are missing"_s);
}

void tst_PreviewTableViewController::divergentTooltipNamesTheFields()
{
    const QString suffix
        = u" — file also contains an XMP packet; changes will be mirrored into XMP."_s;
    QCOMPARE(tooltipAt(cell(3, u"IPTCDataComplete"_s)),
             u"IPTC and XMP disagree on: City and Country. Saving will sync them via MWG."_s
                 + suffix);
    QCOMPARE(tooltipAt(cell(3, u"GPSDataAvailable"_s)),
             u"GPS coordinates differ between the legacy packet (EXIF/QuickTime) and the "
             "embedded XMP. Saving will sync both."_s
                 + suffix);
}

void tst_PreviewTableViewController::emptyTableInvitesADrop()
{
    DragAndDropTableView *table = m_controller->tableView;
    // Pixels of the picture's grey in a band across the middle, below the few rows.
    const auto greyInTheMiddle = [table] {
        const QImage image = table->viewport()->grab().toImage();
        const int middle = image.height() / 2;
        int count = 0;
        for (int y = middle; y < middle + 30; ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor c = image.pixelColor(x, y);
                count += qAbs(c.red() - 142) < 24 && qAbs(c.blue() - 147) < 24
                    && qAbs(c.red() - c.green()) < 10;
            }
        }
        return count;
    };
    const QList<NodePtr> nodes = m_controller->previewTableViewDataSource->nodes();
    m_controller->setNodes({});
    QVERIFY(greyInTheMiddle() > 100);
    m_controller->setNodes(nodes);
    QCOMPARE(greyInTheMiddle(), 0);
}

void tst_PreviewTableViewController::droppedPathsJoinTheSourceList()
{
    m_model->sourceList.deleteAll();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(m_paths.at(0)), QUrl(u"https://example.org/x.jpg"_s),
                  QUrl::fromLocalFile(m_paths.at(1))});
    QWidget *viewport = m_controller->tableView->viewport();
    const QPoint at(20, 20);
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    QVERIFY(drop.isAccepted());
    QCOMPARE(drop.dropAction(), Qt::CopyAction);
    // Added on the next turn of the main queue, not inside the drop.
    QVERIFY(m_model->sourceList.value().isEmpty());
    QVERIFY(TestSupport::waitUntil([&] { return !m_model->sourceList.value().isEmpty(); }));
    QCOMPARE(m_model->sourceList.value(), (QStringList {m_paths.at(0), m_paths.at(1)}));
    m_model->sourceList.deleteAll();
}

void tst_PreviewTableViewController::movedColumnIsSavedButNotKept()
{
    QHeaderView *header = m_controller->tableView->horizontalHeader();
    header->moveSection(header->visualIndex(1), 5);
    QCOMPARE(m_model->columnList.value(),
             (QStringList {u"name"_s, u"Sub-location"_s, u"City"_s, u"Province-State"_s,
                           u"Country"_s, u"GPSDataAvailable"_s, u"IPTCDataComplete"_s}));
    m_controller->updateColumns();
    for (int logical = 0; logical < header->count(); ++logical)
        QCOMPARE(header->visualIndex(logical), logical);
    QCOMPARE(m_model->columnList.value().at(5), u"GPSDataAvailable"_s);
    QCOMPARE(header->sectionSize(1), 40);
    QCOMPARE(m_controller->tableView->rowHeight(0), 24);
}

void tst_PreviewTableViewController::minimalTableHasNameAndStatusColumns()
{
    const auto minimal = NiblessViewController::make<MinimalPreviewTableViewController>(*m_model);
    QCOMPARE(minimal->previewTableViewDataSource->columnKeys(),
             (QStringList {u"name"_s, u"GPSDataAvailable"_s, u"IPTCDataComplete"_s}));
    QCOMPARE(minimal->tableView->horizontalHeader()->sectionSize(2), 40);
}

void tst_PreviewTableViewController::clickedRowsBecomeTheSelection()
{
    RecordingMainContentView window;
    MainContentViewing::install(&window);
    // What the window's flag says while the selection's listeners run.
    auto flagSeen = std::make_shared<QList<bool>>();
    m_model->_selectedNodes->addColdListener([flagSeen](const QList<NodePtr> &) {
        const MainContentViewing *installed = MainContentViewing::installed();
        flagSeen->append(installed && installed->selectionChangedFromTable());
    });
    QTableView *table = m_controller->tableView;
    const QList<NodePtr> &nodes = m_controller->previewTableViewDataSource->nodes();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualRect(cell(1, u"City"_s)).center());
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {nodes.at(1)});
    QCOMPARE(*flagSeen, QList<bool> {true});
    QVERIFY(window.selectionChangedFromTable());
    QVERIFY(TestSupport::waitUntil([&] { return !window.selectionChangedFromTable(); }));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                      table->visualRect(cell(3, u"name"_s)).center());
    QCOMPARE(m_model->selectedNodes(), (QList<NodePtr> {nodes.at(1), nodes.at(2), nodes.at(3)}));

    // A selection made elsewhere shows without coming back as a change.
    QVERIFY(TestSupport::waitUntil([&] { return !window.selectionChangedFromTable(); }));
    flagSeen->clear();
    m_model->setSelectedNodes({nodes.at(0)});
    m_controller->selectRows(m_model->selectedNodes());
    QCOMPARE(*flagSeen, QList<bool> {false});
    QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
    // A new list keeps the selected rows that are still in it.
    m_controller->setNodes(nodes);
    m_controller->updateAll();
    QCOMPARE(table->selectionModel()->selectedRows().value(0).row(), 0);
    QCOMPARE(m_model->selectedNodes(), QList<NodePtr> {nodes.at(0)});
    QCOMPARE(flagSeen->size(), 1);
}

void tst_PreviewTableViewController::screenshots()
{
    // Looked at by hand: every status, light and dark, selected and not.
    QWidget *view = m_controller->view();
    m_controller->selectRows({m_controller->previewTableViewDataSource->nodes().at(2)});
    view->grab().save(u"/tmp/preview_table_light.png"_s);
    const QPalette light = QApplication::palette();
    QPalette dark = light;
    dark.setColor(QPalette::Window, QColor(40, 40, 42));
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::AlternateBase, QColor(44, 44, 46));
    dark.setColor(QPalette::Text, QColor(235, 235, 235));
    dark.setColor(QPalette::WindowText, QColor(235, 235, 235));
    dark.setColor(QPalette::Button, QColor(50, 50, 52));
    dark.setColor(QPalette::ButtonText, QColor(235, 235, 235));
    dark.setColor(QPalette::Disabled, QPalette::Text, QColor(120, 120, 120));
    QApplication::setPalette(dark);
    QApplication::processEvents();
    view->grab().save(u"/tmp/preview_table_dark.png"_s);
    m_controller->setNodes({});
    view->grab().save(u"/tmp/preview_table_empty_dark.png"_s);
    QApplication::setPalette(light);
    QApplication::processEvents();
    view->grab().save(u"/tmp/preview_table_empty_light.png"_s);
}

QTEST_MAIN(tst_PreviewTableViewController)
#include "tst_PreviewTableViewController.moc"
