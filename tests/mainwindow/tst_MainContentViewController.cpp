#include "bricks/walls/TabWall.h"
#include "commons/ApplicationStart.h"
#include "location/PinAndStepperController.h"
#include "mainwindow/DragAndDropTableView.h"
#include "mainwindow/MainContentViewController.h"
#include "mainwindow/MinimalPreviewTableViewController.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "metadata/DataCoordinator.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include "Fixtures.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The main content over sixty real photos: the tabs move the one table and the one map, and a
// selection travels between the tables, the model and the stepper as a user would see it.
class tst_MainContentViewController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void tabsMoveTheOneTableAndTheOneMap();
    void selectionMadeElsewhereIsSelectedAndRevealed();
    void selectionMadeInTheTableStaysAsTheUserLeftIt();
    void stepperWorksOnTheTableShown();

private:
    PreviewTableViewController &table() const { return *m_controller->previewTableViewController; }
    PreviewTableViewController &minimal() const
    {
        return *m_controller->minimalPreviewTableViewController;
    }
    static QList<int> selectedRows(PreviewTableViewController &table);
    QStringList selectedNames() const;
    void showMode(int mode);

    QTemporaryDir m_folder;
    std::unique_ptr<DataModel> m_model;
    std::shared_ptr<OutputEngine> m_engine;
    std::unique_ptr<MainContentViewController> m_controller;
    QWidget *m_map = nullptr;
};

void tst_MainContentViewController::initTestCase()
{
    TestSupport::useTemporaryUserDefaults();
    ApplicationStart::installMetadataReaders();
    // Rows 0 and 1 in Lyon, 2 to 4 in Nice, the rest in Paris.
    QTemporaryDir samples;
    QMap<QString, QString> byCity;
    for (const QString &city : {u"Lyon"_s, u"Nice"_s, u"Paris"_s}) {
        byCity[city] = Fixtures::makeJpeg(samples.path(), city + u".jpg"_s, {u"-City="_s + city});
        QVERIFY(!byCity[city].isEmpty());
    }
    for (int i = 0; i < 60; ++i) {
        const QString city = i < 2 ? u"Lyon"_s : i < 5 ? u"Nice"_s : u"Paris"_s;
        QVERIFY(QFile::copy(byCity[city],
                            m_folder.filePath(u"IMG_%1.jpg"_s.arg(i, 2, 10, QChar(u'0')))));
    }

    m_model = std::make_unique<DataModel>();
    m_engine = OutputEngine::create(m_model.get());
    m_controller = NiblessViewController::make<MainContentViewController>(*m_model, m_engine);
    m_controller->buildIfNeeded();
    m_map = new QWidget;
    m_map->setObjectName(u"mapView"_s);
    m_controller->setMapView(m_map);
    m_controller->view()->resize(1100, 700);
    m_controller->view()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->view()));
    m_engine->startListening();
    m_model->sourceList.add({m_folder.path()}, false);
    QVERIFY(TestSupport::waitUntil(
        [&] {
            const QList<NodePtr> &nodes = table().previewTableViewDataSource->nodes();
            return !m_model->waitingForData->value() && nodes.size() == 60
                && std::all_of(nodes.cbegin(), nodes.cend(), [](const NodePtr &node) {
                       return node->hasBeenRead(MetadataSource::ExifToolGeneric);
                   });
        },
        60000));
}

void tst_MainContentViewController::cleanupTestCase()
{
    m_controller.reset();
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
}

QList<int> tst_MainContentViewController::selectedRows(PreviewTableViewController &table)
{
    QList<int> rows;
    for (const QModelIndex &index : table.tableView->selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

QStringList tst_MainContentViewController::selectedNames() const
{
    QStringList names;
    for (const NodePtr &node : m_model->selectedNodes())
        names << node->name;
    names.sort();
    return names;
}

void tst_MainContentViewController::showMode(int mode)
{
    m_model->previewMode->setValue(mode);
    QCOMPARE(m_controller->tabWall->currentIndex(), mode + 1);
}

void tst_MainContentViewController::tabsMoveTheOneTableAndTheOneMap()
{
    QWidget *tableView = table().view();
    const struct
    {
        int mode;
        QWidget *tableHost;
        QWidget *mapHost;
    } tabs[] = {
        {0, m_controller->itemsTableHost, m_controller->mapHost},
        {1, m_controller->itemsTableHost, m_controller->mapHost},
        {2, m_controller->combinedTableHost, m_controller->combinedMapHost},
        {3, m_controller->itemsTableHost, m_controller->horizontalMapHost},
        {1, m_controller->itemsTableHost, m_controller->mapHost},
        {2, m_controller->combinedTableHost, m_controller->combinedMapHost},
        {0, m_controller->itemsTableHost, m_controller->combinedMapHost},
    };
    for (const auto &tab : tabs) {
        showMode(tab.mode);
        QCOMPARE(tableView->parentWidget(), tab.tableHost);
        QCOMPARE(m_map->parentWidget(), tab.mapHost);
        QCOMPARE(m_controller->view()->findChildren<QWidget *>(u"mapView"_s).size(), 1);
    }
    // A wait shows the waiting tab and leaves the views and the stored mode where they are.
    showMode(2);
    m_model->waitingForData->setValue(true);
    QCOMPARE(m_controller->tabWall->currentIndex(), int(PreviewTab::wait));
    QCOMPARE(m_map->parentWidget(), m_controller->combinedMapHost.data());
    m_model->waitingForData->setValue(false);
    QCOMPARE(m_controller->tabWall->currentIndex(), int(PreviewTab::vertical));
    QCOMPARE(m_model->previewMode->value(), 2);
    showMode(0);
}

void tst_MainContentViewController::selectionMadeElsewhereIsSelectedAndRevealed()
{
    showMode(0);
    const NodePtr far = table().previewTableViewDataSource->nodes().at(50);
    // As the map or a pin would: the variable, without the table's flag.
    m_model->setSelectedNodes({far});
    QCOMPARE(selectedRows(table()), QList<int> {50});
    QCOMPARE(selectedRows(minimal()), QList<int> {50});
    QTableView *view = table().tableView;
    QVERIFY(view->viewport()->rect().intersects(
        view->visualRect(table().previewTableViewDataSource->index(50, 0))));
    QCOMPARE(m_model->_previewFilePaths->value(), QStringList {far->absolutePath});
}

void tst_MainContentViewController::selectionMadeInTheTableStaysAsTheUserLeftIt()
{
    showMode(0);
    QTableView *view = table().tableView;
    const auto clickRow = [view](int row, Qt::KeyboardModifiers modifiers) {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers,
                          view->visualRect(view->model()->index(row, 0)).center());
    };
    view->scrollToTop();
    clickRow(0, {});
    view->scrollToBottom();
    const int scrolled = view->verticalScrollBar()->value();
    QVERIFY(scrolled > 0);
    clickRow(59, Qt::ShiftModifier);
    QCOMPARE(m_model->selectedNodes().size(), 60);
    // The table's own selection is not made again, which would scroll back to its first row.
    QTest::qWait(50);
    QCOMPARE(view->verticalScrollBar()->value(), scrolled);
    QVERIFY(!m_controller->selectionChangedFromTable());

    // The table beside the map, not shown when the click came, shows the same rows.
    clickRow(59, {});
    clickRow(57, Qt::ControlModifier);
    QVERIFY(TestSupport::waitUntil([&] { return !m_controller->selectionChangedFromTable(); }));
    showMode(3);
    QCOMPARE(selectedRows(minimal()), (QList<int> {57, 59}));
    showMode(0);
}

void tst_MainContentViewController::stepperWorksOnTheTableShown()
{
    showMode(3);
    m_model->setStepperMode(StepperMode::inactive);
    m_model->setSelectedNodes({});
    m_controller->selectItem(true);
    QCOMPARE(selectedNames(), QStringList {u"IMG_00.jpg"_s});
    QCOMPARE(selectedRows(minimal()), QList<int> {0});
    m_controller->selectItem(false);
    QCOMPARE(selectedNames(), QStringList {u"IMG_59.jpg"_s});

    // By city: from Paris, forwards wraps to the first group, then the next one.
    m_model->setStepperMode(StepperMode::city);
    m_controller->selectItem(true);
    QCOMPARE(selectedNames(), (QStringList {u"IMG_00.jpg"_s, u"IMG_01.jpg"_s}));
    m_controller->selectItem(true);
    QCOMPARE(selectedNames(), (QStringList {u"IMG_02.jpg"_s, u"IMG_03.jpg"_s, u"IMG_04.jpg"_s}));
    QCOMPARE(selectedRows(minimal()), (QList<int> {2, 3, 4}));
    // The full table, back on screen, shows the group too.
    showMode(0);
    QCOMPARE(selectedRows(table()), (QList<int> {2, 3, 4}));
    m_model->setStepperMode(StepperMode::inactive);
}

QTEST_MAIN(tst_MainContentViewController)
#include "tst_MainContentViewController.moc"
