// Formats a list of 100,000 items with 10 columns, every value already in the store, as
// tab-separated text, JSON and HTML through the engine's output stage. Prints each format's
// time and, last, the slowest format's time per 1,000 items (the median of three runs each).

#include "metadata/MetadataStorage.h"
#include "metadata/TagManager.h"
#include "session/OutputEngine.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr int itemCount = 100000;
constexpr int runs = 3;

// Ten columns of the catalogue that the ExifTool reader fills: text, a date and an integer.
const QStringList columns = {
    QStringLiteral("City"),
    QStringLiteral("Country"),
    QStringLiteral("Province-State"),
    QStringLiteral("Sub-location"),
    QStringLiteral("DateTimeOriginal"),
    QStringLiteral("GPSLatitude#"),
    QStringLiteral("GPSLongitude#"),
    QStringLiteral("LensModel"),
    QStringLiteral("ImageWidth"),
    QStringLiteral("Copyright"),
};

QString pathOf(int item)
{
    return QStringLiteral("/home/alex/Pictures/%1/Trip %2/IMG_%3.JPG")
        .arg(2010 + item / 20000)
        .arg(item / 250)
        .arg(item % 10000, 4, 10, QLatin1Char('0'));
}

FlatFileListPtr makeList()
{
    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource source = MetadataSource::ExifToolGeneric;
    QList<NodePtr> nodes;
    nodes.reserve(itemCount);
    for (int i = 0; i < itemCount; ++i) {
        const QString path = pathOf(i);
        const QString place = QString::number(i / 250);
        storage.store(path, source, QStringLiteral("City"), QStringLiteral("City ") + place);
        storage.store(path, source, QStringLiteral("Country"), QStringLiteral("Country & Co"));
        storage.store(path, source, QStringLiteral("Province-State"), QStringLiteral("Région"));
        storage.store(path, source, QStringLiteral("Sub-location"),
                      QStringLiteral("Old \"Town\" ") + place);
        storage.store(path, source, QStringLiteral("DateTimeOriginal"),
                      QDateTime::fromSecsSinceEpoch(1262304000 + qint64(i) * 37, Qt::UTC));
        storage.store(path, source, QStringLiteral("GPSLatitude#"),
                      QString::number(35.0 + i * 1e-5, 'f', 6));
        storage.store(path, source, QStringLiteral("GPSLongitude#"),
                      QString::number(-10.0 + i * 1e-5, 'f', 6));
        storage.store(path, source, QStringLiteral("LensModel"), QStringLiteral("24-70mm f/2.8"));
        storage.store(path, source, QStringLiteral("ImageWidth"), qint64(4032));
        storage.store(path, source, QStringLiteral("Copyright"), QStringLiteral("© Alex"));
        storage.store(path, source, QStringLiteral("retrieved"), true);
        const QString name = path.section(QLatin1Char('/'), -1);
        nodes.append(FileNode::create(name, path, name));
    }
    // Stores are queued; a read waits for all of them, so that the timing sees a filled store.
    storage.getWrappedValue(pathOf(itemCount - 1), QStringLiteral("City"), source);
    return std::make_shared<FlatFileList>(nodes);
}

struct Timing
{
    double wallMs = 0;
    // The process's processor time over the stage: on a busy machine wall time says less.
    double cpuMs = 0;
};

// One output stage, from launch until the engine holds its text.
Timing timeFormat(OutputEngine &engine, OutputFormatIndexEnum format, FlatFileListPtr list,
                  qsizetype &length)
{
    DataModelSnapshot snapshot;
    snapshot.outputFormat = format;
    snapshot.columnList = columns;
    snapshot.includeColumnTitlesMode = 2;
    snapshot.htmlColumnIdHeaderMode = 3;
    snapshot.htmlColumnClassMode = 2;
    QElapsedTimer timer;
    timer.start();
    const std::clock_t cpuStart = std::clock();
    engine.launchOutputOperation(snapshot, std::move(list));
    engine.queue().waitUntilAllOperationsAreFinished();
    const Timing timing {timer.nsecsElapsed() / 1e6,
                         double(std::clock() - cpuStart) * 1000.0 / CLOCKS_PER_SEC};
    length = engine.currentOutputString().value_or(QString()).size();
    return timing;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const FlatFileListPtr list = makeList();
    auto engine = OutputEngine::create(nullptr);

    double slowest = 0;
    const std::pair<OutputFormatIndexEnum, const char *> formats[] = {
        {OutputFormatIndexEnum::TSV, "TSV"},
        {OutputFormatIndexEnum::JSON, "JSON"},
        {OutputFormatIndexEnum::HTML, "HTML"},
    };
    for (const auto &[format, label] : formats) {
        Timing timings[runs];
        qsizetype length = 0;
        for (Timing &timing : timings)
            timing = timeFormat(*engine, format, list, length);
        std::sort(std::begin(timings), std::end(timings),
                  [](const Timing &a, const Timing &b) { return a.wallMs < b.wallMs; });
        const Timing median = timings[runs / 2];
        slowest = std::max(slowest, median.wallMs);
        std::printf("%-5s %d items x %lld columns: %.0f ms wall, %.0f ms processor (median of "
                    "%d), %lld characters\n",
                    label, itemCount, qlonglong(columns.size()), median.wallMs, median.cpuMs, runs,
                    qlonglong(length));
    }
    std::printf("RESULT output_ms_per_1000_items=%.2f\n", slowest / (itemCount / 1000.0));
    return 0;
}
