// How long the image preview waits for its pictures. Six 24-megapixel JPEGs (made here, with the
// grain of a photograph) are asked for as one grid page of a 600 by 400 point view, and the time
// runs from the first request until the sixth result reaches the main thread:
//   - cold: an empty freedesktop cache (a fresh XDG_CACHE_HOME) and a fresh generator;
//   - cached: a fresh generator (empty memory cache) over the freedesktop cache the cold run
//     filled;
//   - raw: one RAW file whose picture is a full-size embedded JPEG preview, asked for as the
//     single image of the same view, with an empty cache.
// Each figure is the median of five runs. Goals on two cores: cold 400 ms or less, cached 30 ms
// or less. The processor time of each interval is printed too: on a shared machine the wall
// time says more about the other programs than about this one.

#include "PreviewFixtures.h"
#include "mainwindow/preview/ImagePreviewController.h"
#include "mainwindow/preview/ThumbnailGenerator.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr int runs = 5;

class Collector : public ThumbnailGeneratorDelegate
{
public:
    explicit Collector(int expected)
        : expected(expected)
    { }
    void thumbnailGenerator(ThumbnailGenerator &, const ThumbnailResult &result) override
    {
        failures += result.success ? 0 : 1;
        if (++received == expected)
            loop.quit();
    }
    const int expected;
    int received = 0;
    int failures = 0;
    QEventLoop loop;
};

double processorMs()
{
    timespec now {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

struct Timing
{
    double wallMs;
    double processorMs;
};

// From the first request until every result is on the main thread.
Timing timeRequests(const QStringList &paths, const QSizeF &size)
{
    const auto generator
        = ThumbnailGenerator::create(ImagePreviewConfiguration().maxConcurrentThumbnails, 6);
    const auto collector = std::make_shared<Collector>(int(paths.size()));
    generator->setDelegate(collector);
    QElapsedTimer timer;
    timer.start();
    const double processorStart = processorMs();
    for (int i = 0; i < paths.size(); ++i)
        generator->requestThumbnail(ImagePreviewItem(paths[i]), i, size);
    if (collector->received < collector->expected)
        collector->loop.exec();
    const Timing elapsed {double(timer.nsecsElapsed()) / 1e6, processorMs() - processorStart};
    if (collector->failures > 0)
        std::fprintf(stderr, "bench_thumbnails: %d requests failed\n", collector->failures);
    // The write-back to the shared cache finishes after the results; let it before the next run.
    generator->operationQueue().waitUntilAllOperationsAreFinished();
    return elapsed;
}

double median(const QList<Timing> &timings, double Timing::*figure)
{
    QList<double> values;
    for (const Timing &timing : timings)
        values << timing.*figure;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

QString loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("unknown");
    return QString::fromLatin1(file.readAll()).section(u' ', 0, 2);
}

void useEmptyCache(const QTemporaryDir &root, int run)
{
    const QString home = root.filePath(QStringLiteral("cache-%1").arg(run));
    QDir().mkpath(home);
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home));
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir dir;
    QTemporaryDir caches;
    if (!dir.isValid() || !caches.isValid())
        return 1;

    std::printf("Making six 24-megapixel JPEGs and a RAW file...\n");
    std::fflush(stdout);
    const QString first
        = PreviewFixtures::makeCameraJpeg(dir.path(), QStringLiteral("camera-1.jpg"), {6000, 4000});
    if (first.isEmpty())
        return 1;
    QStringList grid {first};
    for (int i = 2; i <= 6; ++i) {
        const QString copy = dir.filePath(QStringLiteral("camera-%1.jpg").arg(i));
        QFile::copy(first, copy);
        grid << copy;
    }
    const QString raw = PreviewFixtures::makeRawWithPreview(
        dir.path(), QStringLiteral("camera.dng"), {6000, 4000},
        PreviewFixtures::cameraPicture({6000, 4000}));

    // The cells of a three by two grid in a 600 by 400 view, and the single image of that view.
    const double margin = ImagePreviewController::outerMargin;
    const QSizeF cell((600 - 2 * margin) / 3, (400 - 2 * margin) / 2);
    const QSizeF single(600 - 2 * margin, 400 - 2 * margin);

    QList<Timing> cold, cached, rawTimes;
    for (int run = 0; run < runs; ++run) {
        useEmptyCache(caches, run);
        cold << timeRequests(grid, cell);
        cached << timeRequests(grid, cell);
        rawTimes << timeRequests({raw}, single);
    }

    const double scale = ThumbnailGenerator::mainScreenScale();
    std::printf(
        "JPEG %.1f MB, RAW %.1f MB; cell %.0f x %.0f points, single %.0f x %.0f, scale %.1f\n",
        QFileInfo(first).size() / 1e6, QFileInfo(raw).size() / 1e6, cell.width(), cell.height(),
        single.width(), single.height(), scale);
    for (int run = 0; run < runs; ++run)
        std::printf("run %d: cold %.1f ms (processor %.1f), cached %.1f ms (%.1f), raw %.1f ms "
                    "(%.1f)\n",
                    run + 1, cold[run].wallMs, cold[run].processorMs, cached[run].wallMs,
                    cached[run].processorMs, rawTimes[run].wallMs, rawTimes[run].processorMs);
    const double coldMs = median(cold, &Timing::wallMs);
    const double cachedMs = median(cached, &Timing::wallMs);
    const double rawMs = median(rawTimes, &Timing::wallMs);
    std::printf("processor time, medians: cold %.1f ms, cached %.1f ms, raw %.1f ms\n",
                median(cold, &Timing::processorMs), median(cached, &Timing::processorMs),
                median(rawTimes, &Timing::processorMs));
    std::printf("goals: cold <= 400 ms %s, cached <= 30 ms %s; load average %s on %d cores\n",
                coldMs <= 400 ? "met" : "MISSED", cachedMs <= 30 ? "met" : "MISSED",
                qPrintable(loadAverage()), QThread::idealThreadCount());
    std::printf("RESULT grid6_cold_ms=%.1f grid6_cached_ms=%.1f raw_preview_ms=%.1f\n", coldMs,
                cachedMs, rawMs);
    return 0;
}
