// Reads 500 small JPEGs with GPS, IPTC and XMP through the read worker, one request per file as
// Palomet does, and the same files with ExifTool's own batch mode and the same tag list. Until
// the metadata store is in, the files go to ModernExifExtraction directly rather than through
// DataCoordinator.
#include "acquisition/ExifToolHelper.h"
#include "acquisition/ModernExifExtraction.h"

#include "Fixtures.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int fileCount = 500;

const QStringList geolocationTags
    = {u"GeolocationCity"_s, u"GeolocationCountry"_s, u"GeolocationRegion"_s,
       u"GeolocationSubregion"_s, u"GeolocationFeatureCode"_s};

double seconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e9;
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

    // Palomet's way: one worker, started by the first read, one request per file.
    ModernExifExtraction extraction;
    extraction.whiteList = whiteList;
    extraction.rawWhiteList = rawWhiteList;
    QElapsedTimer timer;
    timer.start();
    qsizetype values = 0;
    for (const QString &file : std::as_const(files))
        values += extraction.extractTagsFor(file, true).size();
    const double palometSeconds = seconds(timer);

    // The same engine's limit: one batch run over all files.
    QStringList arguments = {u"-j"_s, u"-n"_s, u"-fast"_s, u"-api"_s, u"geolocation=1"_s};
    for (const QString &tag : whiteList + rawWhiteList)
        arguments << u"-"_s + QString(tag).remove(u'#');
    timer.restart();
    QProcess batch;
    batch.start(Fixtures::exifToolPath(), arguments + files);
    batch.waitForFinished(-1);
    const double batchSeconds = seconds(timer);
    if (batch.exitCode() != 0)
        return 1;

    const double palometRate = fileCount / palometSeconds;
    const double batchRate = fileCount / batchSeconds;
    std::printf("palomet: %d files in %.2f s (%.0f files/s, %lld values)\n", fileCount,
                palometSeconds, palometRate, static_cast<long long>(values));
    std::printf("batch:   %d files in %.2f s (%.0f files/s)\n", fileCount, batchSeconds, batchRate);
    std::printf("RESULT read_vs_batch=%.3f\n", palometRate / batchRate);
    return 0;
}
