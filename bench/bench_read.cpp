// Reads 500 small JPEGs with GPS, IPTC and XMP as a fresh list does: each new node schedules its
// embedded read on the DataCoordinator queue, which asks the read worker one file at a time and
// stores the values and statuses. In the same run, the same files go through ExifTool's own batch
// mode with the same tag list; three rounds each, taking turns, each on fresh copies.
#include "acquisition/ExifToolHelper.h"
#include "commons/ApplicationStart.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/Node.h"

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

constexpr int rounds = 3;

double seconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e9;
}

// Palomet's way: nodes for the files, whose creation schedules the reads; done when the queue is.
double readThroughCoordinator(const QStringList &files, qsizetype *values)
{
    QElapsedTimer timer;
    timer.start();
    QList<NodePtr> nodes;
    for (const QString &file : files)
        nodes << FileNode::create(file.section(u'/', -1), file, QString());
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    const double elapsed = seconds(timer);
    *values = 0;
    for (const QString &file : files)
        *values += MetadataStorage::shared()
                       .getKeysForAllAvailableStringValues(file, MetadataSource::ExifToolGeneric)
                       .size();
    return elapsed;
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
    // Fresh copies for each round: a file read once is not read again.
    QList<QStringList> filesOfRound;
    for (int round = 0; round < rounds; ++round) {
        QStringList files;
        for (int index = 0; index < fileCount; ++index) {
            files << QDir(directory.path())
                         .filePath(
                             u"r%1-photo%2.jpg"_s.arg(round).arg(index, 3, 10, QLatin1Char('0')));
            QFile::copy(model, files.last());
        }
        filesOfRound << files;
    }

    ApplicationStart::installMetadataReaders();
    const QStringList whiteList = ExifToolHelper::sharedInstance().whiteList();
    const QStringList rawWhiteList = ExifToolHelper::sharedInstance().rawWhiteList();

    // The machine is shared, so the two ways take turns and each keeps its fastest round.
    double palometSeconds = 1e9;
    double batchSeconds = 1e9;
    qsizetype values = 0;
    for (int round = 0; round < rounds; ++round) {
        const double palomet = readThroughCoordinator(filesOfRound.at(round), &values);
        const std::optional<double> batch
            = readInBatch(filesOfRound.at(round), whiteList + rawWhiteList);
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
