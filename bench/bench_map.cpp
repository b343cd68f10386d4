// The map with 100,000 files spread over Europe, in the real view (QtWebEngine, offline base
// layer). The files' positions are in the store, and a reader thread hands them to the map one by
// one as the ExifTool reads do. Times, each until the page reports the frame that shows it: the
// map ready with every file; 20,000 of them selected; ten zoom steps and ten pans, made without
// animation (median and worst).

#include "MapWebView.h"
#include "MapWidget.h"
#include "location/Geocoder.h"
#include "map/MapDelegate.h"
#include "metadata/MetadataStorage.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <thread>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int fileCount = 100000;
constexpr int selectedCount = 20000;

QList<NodePtr> makeNodes()
{
    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource source = MetadataSource::ExifToolGeneric;
    QRandomGenerator random(2024);
    QList<NodePtr> nodes;
    nodes.reserve(fileCount);
    for (int i = 0; i < fileCount; ++i) {
        const QString folder = u"/home/alex/Pictures/Trip %1"_s.arg(i / 500);
        const QString name = u"IMG_%1.JPG"_s.arg(i, 6, 10, QLatin1Char('0'));
        const QString path = folder + u'/' + name;
        // Europe, from Portugal to the Urals, from Crete to Lapland; a third of the files in
        // groups, as photos of one trip are.
        double latitude = 35.0 + random.bounded(35.0);
        double longitude = -10.0 + random.bounded(50.0);
        if (i % 3 == 0) {
            latitude = 40.0 + (i / 300 % 20) + random.bounded(0.01);
            longitude = (i / 300 % 30) + random.bounded(0.01);
        }
        storage.store(path, source, u"GPSLatitude#"_s, QString::number(latitude, 'f', 6));
        storage.store(path, source, u"GPSLongitude#"_s, QString::number(longitude, 'f', 6));
        storage.store(path, source, u"GPSLatitudeRef"_s, u"North"_s);
        storage.store(path, source, u"GPSLongitudeRef"_s, u"East"_s);
        storage.store(path, source, u"retrieved"_s, true);
        nodes << FileNode::createWithoutRead(name, path, name, {});
    }
    return nodes;
}

// Runs the event loop until the condition holds and the page has shown the latest scene; the
// milliseconds since the timer started. Waits for events instead of spinning, which would take a
// core from the threads that do the work.
double untilPainted(MapDelegate &delegate, MapWebView &view, const std::function<bool()> &ready,
                    const QElapsedTimer &timer)
{
    QTimer wake;
    wake.start(20);
    while (!(ready() && view.paintedSequence() == delegate.scene().sequence)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        if (timer.elapsed() > 180000)
            qFatal("bench_map: the map did not settle within three minutes");
    }
    return timer.nsecsElapsed() / 1e6;
}

// Processor time of this process (not of the page's), all threads, in milliseconds.
double processorMs()
{
    timespec time {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1e3 + time.tv_nsec / 1e6;
}

double threadProcessorMs()
{
    timespec time {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * 1e3 + time.tv_nsec / 1e6;
}

// Processor time of the web engine's own processes (the page's renderer and its helpers), which
// descend from this one, in milliseconds.
double pageProcessorMs()
{
    QHash<qint64, qint64> parentOf;
    QHash<qint64, double> ticksOf;
    const QStringList entries = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool number = false;
        const qint64 pid = entry.toLongLong(&number);
        if (!number)
            continue;
        QFile stat(u"/proc/%1/stat"_s.arg(pid));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        // The command may hold spaces; the fields after its closing parenthesis do not.
        const QByteArray text = stat.readAll();
        const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < 15)
            continue;
        parentOf.insert(pid, fields.at(1).toLongLong());
        ticksOf.insert(pid, fields.at(11).toDouble() + fields.at(12).toDouble());
    }
    const qint64 self = QCoreApplication::applicationPid();
    double ticks = 0.0;
    for (auto it = parentOf.cbegin(); it != parentOf.cend(); ++it) {
        for (qint64 ancestor = it.value(); ancestor > 1; ancestor = parentOf.value(ancestor, 0)) {
            if (ancestor == self) {
                ticks += ticksOf.value(it.key());
                break;
            }
        }
    }
    return ticks * 1e3 / double(sysconf(_SC_CLK_TCK));
}

QString loadAverage()
{
    QFile file(u"/proc/loadavg"_s);
    if (!file.open(QIODevice::ReadOnly))
        return u"?"_s;
    return QString::fromLatin1(file.readAll()).section(u' ', 0, 2);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    MapWebView::prepareProcess();
    QApplication app(argc, argv);
    QTemporaryDir dir;
    UserDefaults::setStandardFilePath(dir.filePath(u"defaults.json"_s));

    DataModel model;
    MapDelegate delegate(model);
    delegate.setupMapListeners();
    const QList<NodePtr> nodes = makeNodes();

    MapWebView::Options options;
    options.online = false;
    options.cacheDirectory = dir.filePath(u"cache"_s);
    MapWidget widget(model, delegate, options, Geocoder::shared());
    widget.resize(1280, 800);
    widget.show();
    MapWebView &view = *widget.mapView();
    QElapsedTimer wait;
    wait.start();
    untilPainted(
        delegate, view, [&] { return view.isPageReady(); }, wait);
    delegate.setRegion({{50.0, 15.0}, 30.0, 50.0}, false);
    untilPainted(
        delegate, view, [] { return true; }, wait);

    // The stores above are queued; the reads below should not wait behind them.
    MetadataStorage::shared().getStringValue(nodes.last()->absolutePath, u"GPSLatitude#"_s,
                                             MetadataSource::ExifToolGeneric);

    // The clusters alone, on one thread: what each build of the index costs.
    {
        std::vector<MarkerClusterIndex::Point> points;
        for (quint32 i = 0; i < quint32(fileCount); ++i)
            points.push_back({*MapDelegate::markerCoordinate(*nodes.at(i)), i});
        timespec start {}, end {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
        const MarkerClusterIndex index(points, MapDelegate::clusterRadius);
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
        std::printf("cluster index of %lld points: %.0f ms of processor time\n",
                    qlonglong(index.pointCount()),
                    (end.tv_sec - start.tv_sec) * 1e3 + (end.tv_nsec - start.tv_nsec) / 1e6);
    }

    double processorBefore = processorMs();
    double pageBefore = pageProcessorMs();
    QElapsedTimer timer;
    timer.start();
    std::atomic<qint64> handedOverNs = 0;
    std::thread reader([&] {
        for (const NodePtr &node : nodes)
            delegate.addMarker(node);
        handedOverNs = timer.nsecsElapsed();
    });
    double markersMs = 0.0;
    double indexedMs = 0.0;
    const double readyMs = untilPainted(
        delegate, view,
        [&] {
            if (markersMs == 0.0 && delegate.markerCount() == fileCount)
                markersMs = timer.nsecsElapsed() / 1e6;
            if (indexedMs == 0.0 && delegate.indexedMarkerCount() == fileCount)
                indexedMs = timer.nsecsElapsed() / 1e6;
            return indexedMs > 0.0;
        },
        timer);
    reader.join();
    std::printf("ready: %.0f ms for %d files: handed over after %.0f ms, all on the map's list "
                "after %.0f ms, clustered after %.0f ms; processor time: %.0f ms here, %.0f ms in "
                "the page's processes (load %s)\n",
                readyMs, fileCount, handedOverNs / 1e6, markersMs, indexedMs,
                processorMs() - processorBefore, pageProcessorMs() - pageBefore,
                qPrintable(loadAverage()));

    QList<NodePtr> selection;
    for (int i = 0; i < selectedCount; ++i)
        selection << nodes.at(i * (fileCount / selectedCount));
    processorBefore = processorMs();
    pageBefore = pageProcessorMs();
    const double mainThreadBefore = threadProcessorMs();
    timer.restart();
    model.setSelectedNodes(selection);
    const double selectMs = untilPainted(
        delegate, view, [] { return true; }, timer);
    const double selectProcessorMs = processorMs() - processorBefore;
    const double selectMainThreadMs = threadProcessorMs() - mainThreadBefore;
    const double selectPageMs = pageProcessorMs() - pageBefore;
    // The same change in a model that no map listens to: what the model's own listeners (the
    // editors of position and place) cost the main thread.
    double withoutMapMs = 0.0;
    {
        DataModel bare;
        const double before = threadProcessorMs();
        bare.setSelectedNodes(selection);
        QEventLoop settle;
        QTimer::singleShot(3000, &settle, &QEventLoop::quit);
        settle.exec();
        withoutMapMs = threadProcessorMs() - before;
    }
    std::printf("selection of %d: %.0f ms; processor time: %.0f ms here (%.0f ms on the main "
                "thread; %.0f ms there for the same change in a model with no map), %.0f ms in "
                "the page's processes (load %s)\n",
                selectedCount, selectMs, selectProcessorMs, selectMainThreadMs, withoutMapMs,
                selectPageMs, qPrintable(loadAverage()));

    QList<double> steps;
    processorBefore = processorMs();
    pageBefore = pageProcessorMs();
    const auto step = [&](const MapViewState &target) {
        QElapsedTimer stepTimer;
        stepTimer.start();
        delegate.setViewState(target, false);
        steps << untilPainted(
            delegate, view, [] { return true; }, stepTimer);
    };
    MapViewState state = delegate.viewState();
    for (int i = 0; i < 10; ++i) {
        state.zoom = MapGeometry::clampedZoom(state.zoom + (i < 7 ? 1.0 : -2.0));
        step(state);
    }
    for (int i = 0; i < 10; ++i) {
        state = MapGeometry::zoomedAround(state, {state.width / 2 + 300, state.height / 2 + 100},
                                          state.zoom);
        step(state);
    }
    const double stepProcessorMs = (processorMs() - processorBefore) / 20.0;
    const double stepPageMs = (pageProcessorMs() - pageBefore) / 20.0;
    // What a step costs the logic alone: the scene for the new view and its text for the page.
    {
        state.zoom = 6.0;
        delegate.setViewState(state, false);
        timespec start {}, end {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
        const MapScene &scene = delegate.scene();
        const QString json = MapWebView::sceneJson(scene);
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
        std::printf("a scene of %lld markers at zoom 6 and its %lld characters: %.1f ms of "
                    "processor time\n",
                    qlonglong(scene.items.size()), qlonglong(json.size()),
                    (end.tv_sec - start.tv_sec) * 1e3 + (end.tv_nsec - start.tv_nsec) / 1e6);
        untilPainted(
            delegate, view, [] { return true; }, timer);
    }
    std::vector<double> sorted(steps.begin(), steps.end());
    std::sort(sorted.begin(), sorted.end());
    const double median = (sorted[9] + sorted[10]) / 2.0;
    std::printf("steps: median %.1f ms, worst %.1f ms; processor time per step: %.1f ms here, "
                "%.1f ms in the page's processes (load %s)\n",
                median, sorted.back(), stepProcessorMs, stepPageMs, qPrintable(loadAverage()));
    std::printf("RESULT map_100k_ready_ms=%.0f map_select_20k_ms=%.0f map_step_ms_median=%.1f "
                "map_step_ms_max=%.1f\n",
                readyMs, selectMs, median, sorted.back());
    return 0;
}
