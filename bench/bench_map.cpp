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
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <thread>

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

// Runs the event loop until the condition holds and the page has shown the latest scene.
double untilPainted(MapDelegate &delegate, MapWebView &view, const std::function<bool()> &ready,
                    const QElapsedTimer &timer)
{
    while (!(ready() && view.paintedSequence() == delegate.scene().sequence)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (timer.elapsed() > 120000)
            qFatal("bench_map: the map did not settle within two minutes");
    }
    return timer.nsecsElapsed() / 1e6;
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

    QElapsedTimer timer;
    timer.start();
    std::thread reader([&] {
        for (const NodePtr &node : nodes)
            delegate.addMarker(node);
    });
    const double readyMs = untilPainted(
        delegate, view, [&] { return delegate.indexedMarkerCount() == fileCount; }, timer);
    reader.join();
    std::printf("ready: %.0f ms for %d files (load %s)\n", readyMs, fileCount,
                qPrintable(loadAverage()));

    QList<NodePtr> selection;
    for (int i = 0; i < selectedCount; ++i)
        selection << nodes.at(i * (fileCount / selectedCount));
    timer.restart();
    model.setSelectedNodes(selection);
    const double selectMs = untilPainted(
        delegate, view, [] { return true; }, timer);
    std::printf("selection of %d: %.0f ms (load %s)\n", selectedCount, selectMs,
                qPrintable(loadAverage()));

    QList<double> steps;
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
    std::vector<double> sorted(steps.begin(), steps.end());
    std::sort(sorted.begin(), sorted.end());
    const double median = (sorted[9] + sorted[10]) / 2.0;
    std::printf("steps: median %.1f ms, worst %.1f ms (load %s)\n", median, sorted.back(),
                qPrintable(loadAverage()));
    std::printf("RESULT map_100k_ready_ms=%.0f map_select_20k_ms=%.0f map_step_ms_median=%.1f "
                "map_step_ms_max=%.1f\n",
                readyMs, selectMs, median, sorted.back());
    return 0;
}
