// Reads 500 small JPEGs with GPS, IPTC and XMP through the read worker, one request per file as
// Palomet does, and the same files with ExifTool's own batch mode and the same tag list, three
// rounds each, taking turns. Until the metadata store is in, the files go to
// ModernExifExtraction directly rather than through DataCoordinator.
#include "acquisition/ExifToolHelper.h"
#include "acquisition/ModernExifExtraction.h"

#include "Fixtures.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int fileCount = 500;

const QStringList geolocationTags
    = {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
       u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s};

constexpr int rounds = 3;

double seconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e9;
}

// Palomet's way: a fresh worker, started by the first read, one request per file.
double readOneByOne(const QStringList &files, const QStringList &whiteList,
                    const QStringList &rawWhiteList, qsizetype *values)
{
    ModernExifExtraction extraction;
    extraction.whiteList = whiteList;
    extraction.rawWhiteList = rawWhiteList;
    QElapsedTimer timer;
    timer.start();
    *values = 0;
    for (const QString &file : files)
        *values += extraction.extractTagsFor(file, true).size();
    return seconds(timer);
}

// The same engine's limit: one batch run over all files with the same tags.
std::optional<double> readInBatch(const QStringList &files, const QStringList &tags)
{
    QStringList arguments = {u"-j"_s, u"-n"_s, u"-fast"_s, u"-api"_s, u"geolocation=1"_s};
    for (const QString &tag : tags)
        arguments << u"-"_s + QString(tag).remove(u'#');
    QElapsedTimer timer;
    timer.start();
    QProcess batch;
    batch.start(Fixtures::exifToolPath(), arguments + files);
    batch.waitForFinished(-1);
    if (batch.exitStatus() != QProcess::NormalExit || batch.exitCode() != 0)
        return std::nullopt;
    return seconds(timer);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QTemporaryDir directory;
    const QString model = Fixtures::makeJpeg(
        directory.path(), u"model.jpg"_s,
        {u"-GPSLatitude=48.8583"_s, u"-GPSLatitudeRef=N"_s, u"-GPSLongitude=2.2944"_s,
         u"-GPSLongitudeRef=E"_s, u"-IPTC:City=Paris"_s, u"-IPTC:Province-State=Ile-de-France"_s,
         u"-IPTC:Country-PrimaryLocationName=France"_s, u"-XMP-photoshop:City=Paris"_s,
         u"-XMP-exif:GPSLatitude=48.8583"_s, u"-XMP-exif:GPSLongitude=2.2944"_s});
    if (model.isEmpty())
        return 1;
    QStringList files;
    for (int index = 0; index < fileCount; ++index) {
        files << QDir(directory.path())
                     .filePath(u"photo%1.jpg"_s.arg(index, 3, 10, QLatin1Char('0')));
        QFile::copy(model, files.last());
    }

    const QStringList whiteList = ExifToolHelper::sharedInstance().whiteList() + geolocationTags;
    const QStringList rawWhiteList = ExifToolHelper::sharedInstance().rawWhiteList();

    // The machine is shared, so the two ways take turns and each keeps its fastest round.
    double palometSeconds = 1e9;
    double batchSeconds = 1e9;
    qsizetype values = 0;
    for (int round = 0; round < rounds; ++round) {
        const double palomet = readOneByOne(files, whiteList, rawWhiteList, &values);
        const std::optional<double> batch = readInBatch(files, whiteList + rawWhiteList);
        if (!batch)
            return 1;
        palometSeconds = std::min(palometSeconds, palomet);
        batchSeconds = std::min(batchSeconds, *batch);
    }

    const double palometRate = fileCount / palometSeconds;
    const double batchRate = fileCount / batchSeconds;
    std::printf("palomet: %d files in %.2f s (%.0f files/s, %lld values)\n", fileCount,
                palometSeconds, palometRate, static_cast<long long>(values));
    std::printf("batch:   %d files in %.2f s (%.0f files/s)\n", fileCount, batchSeconds, batchRate);
    std::printf("RESULT read_vs_batch=%.3f\n", palometRate / batchRate);
    return 0;
}
