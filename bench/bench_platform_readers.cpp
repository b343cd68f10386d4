// Reads 500 JPEGs and 50 short MP4s with each platform reader and compares the slowest
// reader's time per JPEG with ExifTool's, which runs as a stay-open process the way the
// application's read worker does, so that Perl's start-up is not counted against it.

#include "acquisition/AVKitHelper.h"
#include "acquisition/ImageIOHelper.h"
#include "acquisition/SpotlightHelper.h"
#include "platform/Resources.h"

#include "ReaderFixtures.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>

namespace {

constexpr int jpegCount = 500;
constexpr int videoCount = 50;

QStringList copies(const QString &source, const QString &dir, const QString &pattern, int count)
{
    QDir().mkpath(dir);
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        const QString path = QDir(dir).filePath(pattern.arg(i, 3, 10, QLatin1Char('0')));
        QFile::copy(source, path);
        paths << path;
    }
    return paths;
}

double millisecondsFor(const QStringList &paths, const std::function<void(const QString &)> &read)
{
    QElapsedTimer timer;
    timer.start();
    for (const QString &path : paths)
        read(path);
    return double(timer.nsecsElapsed()) / 1e6;
}

// ExifTool's JSON read of each file through one stay-open process.
double exifToolMillisecondsFor(const QStringList &paths)
{
    QProcess exiftool;
    exiftool.start(QStringLiteral("perl"),
                   {Resources::path(QStringLiteral("exiftool/exiftool")),
                    QStringLiteral("-stay_open"), QStringLiteral("True"), QStringLiteral("-@"),
                    QStringLiteral("-")});
    if (!exiftool.waitForStarted())
        return -1;
    auto readOne = [&](const QString &path) {
        exiftool.write("-j\n" + QFile::encodeName(path) + "\n-execute\n");
        QByteArray answer;
        while (!answer.endsWith("{ready}\n")) {
            if (!exiftool.waitForReadyRead(30000))
                return false;
            answer += exiftool.readAllStandardOutput();
        }
        return true;
    };
    // The first request loads ExifTool's modules.
    readOne(paths.first());
    QElapsedTimer timer;
    timer.start();
    for (const QString &path : paths) {
        if (!readOne(path))
            return -1;
    }
    const double elapsed = double(timer.nsecsElapsed()) / 1e6;
    exiftool.write("-stay_open\nFalse\n");
    exiftool.closeWriteChannel();
    exiftool.waitForFinished();
    return elapsed;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString jpeg = ReaderFixtures::jpegWithMetadata(dir.path());
    const QString mp4 = ReaderFixtures::mp4WithLocation(dir.path());
    if (jpeg.isEmpty() || mp4.isEmpty()) {
        std::fprintf(stderr, "could not make the sample files\n");
        return 1;
    }
    const QStringList jpegs = copies(jpeg, dir.filePath("jpegs"), "photo%1.jpg", jpegCount);
    const QStringList videos = copies(mp4, dir.filePath("videos"), "clip%1.mp4", videoCount);

    struct Reader
    {
        const char *name;
        std::function<void(const QString &)> read;
        double jpegMs = 0;
        double videoMs = 0;
    };
    Reader readers[] = {
        {"imageio",
         [](const QString &p) {
             ImageIOHelper::shared().extract(p);
         }},
        {"spotlight",
         [](const QString &p) {
             SpotlightHelper::shared().extract(p);
         }},
        {"avkit",
         [](const QString &p) {
             AVKitHelper::shared().extract(p);
         }},
    };
    for (Reader &reader : readers) {
        // A first pass fills the page cache and the libraries' one-time set-up.
        millisecondsFor(jpegs.mid(0, 20) + videos.mid(0, 5), reader.read);
        reader.jpegMs = millisecondsFor(jpegs, reader.read);
        reader.videoMs = millisecondsFor(videos, reader.read);
        std::printf("%-10s %8.3f ms per JPEG  %8.3f ms per MP4\n", reader.name,
                    reader.jpegMs / jpegCount, reader.videoMs / videoCount);
    }
    const double exifToolMs = exifToolMillisecondsFor(jpegs);
    if (exifToolMs <= 0) {
        std::fprintf(stderr, "ExifTool did not answer\n");
        return 1;
    }
    const double exifToolPerJpeg = exifToolMs / jpegCount;
    std::printf("exiftool   %8.3f ms per JPEG (stay-open, -j)\n", exifToolPerJpeg);

    double slowestPerJpeg = 0;
    for (const Reader &reader : readers)
        slowestPerJpeg = std::max(slowestPerJpeg, reader.jpegMs / jpegCount);
    const auto perFile = [](const Reader &r) {
        return (r.jpegMs + r.videoMs) / (jpegCount + videoCount);
    };
    std::printf("RESULT imageio_ms_per_file=%.3f spotlight_ms_per_file=%.3f avkit_ms_per_file=%.3f "
                "slowest_vs_exiftool=%.3f\n",
                perFile(readers[0]), perFile(readers[1]), perFile(readers[2]),
                slowestPerJpeg / exifToolPerJpeg);
    return 0;
}
