// Geotagging a folder from a long track: photos against a track of 100,000 fixes. Timed: the
// track's loading, the preview (ExifTool's correlation in the geotagging worker, the track
// loaded) and the apply until every file is written through the write engine; the whole road
// from choosing the track to the last file is set against one batch "exiftool -geotag" call on
// copies, which also loads the track.
// GEOTAG_FILES changes the number of photos (5,000).

#include "WriteFixtures.h"

#include "commons/ApplicationStart.h"
#include "location/GeotagController.h"
#include "metadata/DataCoordinator.h"
#include "platform/Resources.h"
#include "session/Node.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int trackPoints = 100000;
const QDateTime trackStart(QDate(2024, 5, 1), QTime(8, 0), QTimeZone::utc());

void print(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

QString loadAverage()
{
    QFile file(u"/proc/loadavg"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).section(u' ', 0, 2)
                                          : u"unknown"_s;
}

// One fix a second along a line to the north-east.
bool writeTrack(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<gpx version=\"1.1\" creator=\"bench\" "
               "xmlns=\"http://www.topografix.com/GPX/1/1\"><trk><trkseg>\n");
    for (int i = 0; i < trackPoints; ++i) {
        const QString time = trackStart.addSecs(i).toString(u"yyyy-MM-ddTHH:mm:ssZ"_s);
        file.write(QString::asprintf("<trkpt lat=\"%.6f\" lon=\"%.6f\"><ele>%d</ele><time>%s</time>"
                                     "</trkpt>\n",
                                     45.0 + i * 1e-5, 5.0 + i * 1e-5, 100 + i % 50,
                                     qPrintable(time))
                       .toLatin1());
    }
    file.write("</trkseg></trk></gpx>\n");
    return true;
}

class Waiter : public GeotagView
{
public:
    void geotagTrackChanged() override { ++tracks; }
    void geotagPreviewChanged() override { ++previews; }
    void geotagFailed(const QString &message) override { failure = message; }
    void geotagApplyFinished(int written, int failed) override
    {
        this->written = written;
        this->failed = failed;
    }
    int tracks = 0;
    int previews = 0;
    int written = -1;
    int failed = -1;
    QString failure;
};

// The resource ExifTool, waited for as long as it takes: thousands of files outlast the tests'
// time limit.
int exifTool(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(u"perl"_s, QStringList {Resources::path(u"exiftool/exiftool"_s)} + arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    return process.exitCode();
}

bool waitFor(const std::function<bool()> &done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
        if (timer.elapsed() > 1800000)
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("TZ", "UTC"); // capture times are read in UTC here and by the batch call
    QCoreApplication application(argc, argv);
    const int fileCount = qEnvironmentVariableIntValue("GEOTAG_FILES") > 0
        ? qEnvironmentVariableIntValue("GEOTAG_FILES")
        : 5000;
    QTemporaryDir root;
    const QString track = root.filePath(u"track.gpx"_s);
    const QString original = root.filePath(u"original.jpg"_s);
    const QString made = WriteFixtures::makeFixture(original);
    if (!made.isEmpty() || !writeTrack(track)) {
        print(u"cannot make the fixtures: "_s + made);
        return 1;
    }

    // A photo every 15 seconds along the track; the capture time comes from the file's date.
    QStringList palometFiles;
    for (const QString &name : {u"palomet"_s, u"batch"_s}) {
        QDir().mkpath(root.filePath(name));
        for (int i = 0; i < fileCount; ++i) {
            const QString path = root.filePath(u"%1/%2.jpg"_s.arg(name).arg(i, 5, 10, QChar(u'0')));
            QFile::copy(original, path);
            QFile file(path);
            file.open(QIODevice::ReadWrite);
            file.setFileTime(trackStart.addSecs(30 + 15 * i), QFileDevice::FileModificationTime);
            if (name == u"palomet"_s)
                palometFiles << path;
        }
        const int dated = exifTool({u"-q"_s, u"-overwrite_original"_s, u"-P"_s,
                                    u"-DateTimeOriginal<FileModifyDate"_s, root.filePath(name)});
        if (dated != 0) {
            print(u"cannot date the photos"_s);
            return 1;
        }
    }

    // The list has been read before the user geotags it.
    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();
    QList<NodePtr> nodes;
    for (const QString &path : std::as_const(palometFiles)) {
        const QString name = QFileInfo(path).fileName();
        nodes << FileNode::create(name, path, name);
    }
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    QCoreApplication::processEvents();

    Waiter waiter;
    GeotagController controller;
    controller.setView(&waiter);
    const QString loadBefore = loadAverage();
    QElapsedTimer timer;
    timer.start();
    controller.setTrackFiles({track});
    if (!waitFor([&] { return waiter.tracks > 0; }) || !controller.hasTrack()) {
        print(u"the track did not load: "_s + waiter.failure);
        return 1;
    }
    const double loadMs = timer.nsecsElapsed() / 1e6;

    timer.restart();
    controller.setFiles(nodes);
    if (!waitFor([&] { return waiter.previews > 0 && !controller.isBusy(); })) {
        print(u"no preview"_s);
        return 1;
    }
    const double previewMs = timer.nsecsElapsed() / 1e6;
    const int placed = controller.placedCount();

    timer.restart();
    controller.apply();
    if (!waitFor([&] { return waiter.written >= 0; }) || waiter.failed != 0) {
        print(u"the apply failed for %1 files"_s.arg(waiter.failed));
        return 1;
    }
    const double palometSeconds = timer.nsecsElapsed() / 1e9;
    const QString loadAfterPalomet = loadAverage();

    timer.restart();
    const int batch = exifTool({u"-q"_s, u"-overwrite_original"_s, u"-P"_s, u"-api"_s,
                                u"GeoMaxExtSecs=0"_s, u"-geotag"_s, track,
                                u"-geotime<DateTimeOriginal"_s, root.filePath(u"batch"_s)});
    const double batchSeconds = timer.nsecsElapsed() / 1e9;
    if (batch != 0) {
        print(u"the batch call failed"_s);
        return 1;
    }

    print(u"photos: %1 JPEGs, %2 placed; track: %3 fixes"_s.arg(fileCount).arg(placed).arg(
        trackPoints));
    print(u"load average: %1 before, %2 after the apply"_s.arg(loadBefore, loadAfterPalomet));
    print(u"track loaded by the worker: %1 ms"_s.arg(loadMs, 0, 'f', 0));
    print(u"preview of all photos, track loaded: %1 ms"_s.arg(previewMs, 0, 'f', 0));
    print(u"apply through the write engine, all files written: %1 s"_s.arg(palometSeconds, 0, 'f',
                                                                           2));
    print(u"one batch exiftool -geotag call: %1 s"_s.arg(batchSeconds, 0, 'f', 2));
    print(u"RESULT geotag_preview_ms=%1 geotag_write_vs_batch=%2 geotag_track_load_ms=%3"_s
              .arg(previewMs, 0, 'f', 0)
              .arg(batchSeconds / (loadMs / 1e3 + previewMs / 1e3 + palometSeconds), 0, 'f', 3)
              .arg(loadMs, 0, 'f', 0));
    return 0;
}
