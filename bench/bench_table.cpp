// The preview table over 100,000 items whose values are in the store, in a 1600x1000 window:
// the time from handing the table the list to the first painted screen, the time to paint each
// page while scrolling through 2,000 rows (median and worst), and selecting all rows and then
// half of them, each through the table's own selection handling and the data model's listeners.
// Runs on the offscreen platform unless a display is asked for.

#include "mainwindow/DragAndDropTableView.h"
#include "mainwindow/PreviewTableViewController.h"
#include "metadata/MetadataStorage.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

constexpr int itemCount = 100000;
constexpr int scrolledRows = 2000;

struct Place
{
    QString sublocation, city, region, country;
};

const Place places[] = {
    {u"Eiffel Tower"_s, u"Paris"_s, u"Île-de-France"_s, u"France"_s},
    {u"Fourvière"_s, u"Lyon"_s, u"Auvergne-Rhône-Alpes"_s, u"France"_s},
    {u"Old Town"_s, u"Basel"_s, u"Basel-Stadt"_s, u"Switzerland"_s},
};

QList<NodePtr> makeNodes()
{
    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource source = MetadataSource::ExifToolGeneric;
    QList<NodePtr> nodes;
    nodes.reserve(itemCount);
    for (int i = 0; i < itemCount; ++i) {
        const QString folder = u"/home/alex/Pictures/Trip %1/"_s.arg(i / 250);
        const QString name = u"IMG_%1.JPG"_s.arg(i, 5, 10, QLatin1Char('0'));
        const QString path = folder + name;
        const Place &place = places[i % 3];
        // Every status shows: 0 none, 1 complete, 2 incomplete, 3 divergent.
        storage.store(path, source, u"GPSDataAvailable"_s, i % 4);
        storage.store(path, source, u"IPTCDataComplete"_s, (i / 4) % 4);
        if (i % 5 != 0) {
            storage.store(path, source, u"Sub-location"_s, place.sublocation);
            storage.store(path, source, u"City"_s, place.city);
            storage.store(path, source, u"Province-State"_s, place.region);
            storage.store(path, source, u"Country"_s, place.country);
        }
        storage.store(path, source, u"computedSublocation"_s, place.sublocation);
        storage.store(path, source, u"computedCity"_s, place.city);
        storage.store(path, source, u"GeolocationRegion"_s, place.region);
        storage.store(path, source, u"GeolocationCountry"_s, place.country);
        if (i % 2 == 0)
            storage.store(path, source, u"XMPPresent"_s, u"1"_s);
        if ((i / 4) % 4 == 3)
            storage.store(path, source, u"CityDivergent"_s, u"1"_s);
        storage.store(path, source, u"retrieved"_s, true);
        nodes << FileNode::createWithoutRead(name, path, QString(), {});
    }
    // Waits until the queued stores have run.
    storage.getStringValue(nodes.last()->absolutePath, u"City"_s, source);
    return nodes;
}

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// The main thread's processor time: on a loaded machine the wall time says more about the other
// processes than about the table.
double threadCpuMilliseconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir store;
    UserDefaults::setStandardFilePath(store.filePath(u"defaults.json"_s));

    const QList<NodePtr> nodes = makeNodes();
    DataModel dataModel;
    const auto made = NiblessViewController::make<PreviewTableViewController>(dataModel);
    PreviewTableViewController &controller = *made;
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(controller.view());
    window.resize(1600, 1000);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return 1;
    app.processEvents();

    // The list is swapped in as the engine does it, then the screen is painted at once.
    QElapsedTimer timer;
    double cpu = threadCpuMilliseconds();
    timer.start();
    controller.setNodes(nodes);
    controller.updateAll();
    window.repaint();
    const double firstPaint = milliseconds(timer);
    const double firstPaintCpu = threadCpuMilliseconds() - cpu;

    DragAndDropTableView *table = controller.tableView;
    const int rowsPerPage = table->viewport()->height() / table->rowHeight(0);
    QList<double> pages, pageCpu;
    for (int top = rowsPerPage; top < scrolledRows; top += rowsPerPage) {
        const double cpu = threadCpuMilliseconds();
        timer.start();
        table->verticalScrollBar()->setValue(top);
        table->viewport()->repaint();
        pages << milliseconds(timer);
        pageCpu << threadCpuMilliseconds() - cpu;
    }
    std::sort(pages.begin(), pages.end());
    std::sort(pageCpu.begin(), pageCpu.end());
    const double pageMedian = pages.at(pages.size() / 2);
    const double pageMax = pages.last();

    cpu = threadCpuMilliseconds();
    timer.start();
    table->selectAll();
    const double selectAll = milliseconds(timer);
    const double selectAllCpu = threadCpuMilliseconds() - cpu;
    if (dataModel.selectedNodes().size() != itemCount)
        return 2;

    timer.start();
    table->selectionModel()->select(
        QItemSelection(table->model()->index(0, 0),
                       table->model()->index(itemCount / 2 - 1, table->model()->columnCount() - 1)),
        QItemSelectionModel::ClearAndSelect);
    const double selectHalf = milliseconds(timer);
    if (dataModel.selectedNodes().size() != itemCount / 2)
        return 3;

    // The share of the data model's listeners (the location editors) in a select-all.
    dataModel.setSelectedNodes({});
    cpu = threadCpuMilliseconds();
    timer.start();
    dataModel.setSelectedNodes(nodes);
    const double listeners = milliseconds(timer);
    const double listenersCpu = threadCpuMilliseconds() - cpu;

    std::printf("processor time: first paint %.1f ms; pages painted: %lld of %d rows, per page "
                "median %.2f ms, worst %.2f ms\n",
                firstPaintCpu, qlonglong(pages.size()), rowsPerPage, pageCpu.at(pageCpu.size() / 2),
                pageCpu.last());
    std::printf("select all: %.1f ms of processor time, of which the data model's listeners (the "
                "location editors) %.1f ms wall, %.1f ms processor; select half: %.1f ms\n",
                selectAllCpu, listeners, listenersCpu, selectHalf);
    std::printf("RESULT table_first_paint_ms=%.1f table_page_paint_ms_median=%.2f "
                "table_page_paint_ms_max=%.2f select_all_ms=%.1f\n",
                firstPaint, pageMedian, pageMax, selectAll);
    return 0;
}
