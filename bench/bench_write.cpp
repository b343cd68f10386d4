// Writes GPS and a city to 300 JPEGs through the write engine, as a bulk apply does (one edit
// per file, merged and run as one batch through the long-running write worker, each file read
// again afterwards), and the same tags to copies of the same files with one batch exiftool call,
// to tell how far Palomet is from ExifTool's own batch speed. Palomet's time runs until the new
// values of every file are back in the store. What each write replaced goes to the undo
// journal, as in the application.
#include "WriteFixtures.h"

#include "commons/ApplicationStart.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "session/Node.h"
#include "writing/UndoJournal.h"
#include "writing/WriteEngine.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <QThread>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int fileCount = 300;

const QStringList pairs = {u"GPSLatitude#"_s,   u"-33.856784"_s,      u"GPSLongitude#"_s,
                           u"151.215297"_s,     u"GPSLongitudeRef"_s, u"East"_s,
                           u"GPSLatitudeRef"_s, u"South"_s,           u"City"_s,
                           u"Sydney"_s};

void print(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

bool newValuesStored(const QString &path)
{
    MetadataStorage &storage = MetadataStorage::shared();
    return storage.getStringValue(path, u"City"_s, MetadataSource::ExifToolGeneric) == u"Sydney"_s
        && storage.getStringValue(path, u"GPSLatitudeRef"_s, MetadataSource::ExifToolGeneric)
        == u"South"_s;
}

QString loadAverage()
{
    QFile file(u"/proc/loadavg"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).section(u' ', 0, 2)
                                          : u"unknown"_s;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTemporaryDir root;
    const QString original = root.filePath(u"original.jpg"_s);
    const QString made = WriteFixtures::makeFixture(original);
    if (!made.isEmpty()) {
        print(u"cannot make the fixture: "_s + made);
        return 1;
    }

    QStringList palometFiles;
    QStringList batchFiles;
    for (const QString &name : {u"palomet"_s, u"batch"_s}) {
        QDir().mkpath(root.filePath(name));
        for (int i = 0; i < fileCount; ++i) {
            const QString path = root.filePath(u"%1/%2.jpg"_s.arg(name).arg(i, 3, 10, QChar(u'0')));
            QFile::copy(original, path);
            (name == u"palomet" ? palometFiles : batchFiles) << path;
        }
    }

    // Every write is recorded for undo, as in the application; the journal goes to a folder of
    // its own. PALOMET_BENCH_NO_UNDO=1 leaves it off, for comparison.
    const bool undo = qEnvironmentVariableIntValue("PALOMET_BENCH_NO_UNDO") == 0;
    if (undo)
        UndoJournal::shared().enable(root.filePath(u"data/undo-journal"_s));

    // The list's nodes exist and have been read before an apply; that is not part of the write.
    ApplicationStart::installMetadataReaders();
    QList<NodePtr> nodes;
    for (const QString &path : std::as_const(palometFiles)) {
        const QString name = QFileInfo(path).fileName();
        nodes << FileNode::create(name, path, name);
    }
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    QCoreApplication::processEvents();

    const QString loadBefore = loadAverage();
    QElapsedTimer timer;
    timer.start();
    auto failuresSeen = std::make_shared<int>(0);
    WriteEngine &engine = WriteEngine::shared();
    for (const NodePtr &node : std::as_const(nodes)) {
        engine.enqueueWrite({node->absolutePath, pairs, node, [failuresSeen](bool success) {
                                 if (!success)
                                     ++*failuresSeen;
                             }});
    }
    engine.flushImmediately();
    engine.waitForCompletion();
    // The re-reads may still be under way: the write is seen once the store has the new values.
    qsizetype stored = 0;
    while (stored < palometFiles.size()) {
        if (newValuesStored(palometFiles.at(stored))) {
            ++stored;
            continue;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
        if (timer.elapsed() > 600000) {
            print(u"the new values of %1 never reached the store"_s.arg(palometFiles.at(stored)));
            return 1;
        }
    }
    const double palometSeconds = timer.nsecsElapsed() / 1e9;
    const int failures = *failuresSeen;

    // The same tags for the command line: TAG#=VALUE takes the number as it is, and -P keeps
    // the dates as the application does.
    QStringList arguments = {u"-q"_s,
                             u"-overwrite_original"_s,
                             u"-P"_s,
                             u"-GPS:GPSLatitude#=33.856784"_s,
                             u"-GPS:GPSLongitude#=151.215297"_s,
                             u"-GPSLongitudeRef=East"_s,
                             u"-GPSLatitudeRef=South"_s,
                             u"-City=Sydney"_s};
    arguments << root.filePath(u"batch"_s);
    timer.restart();
    const WriteFixtures::CommandResult batch = WriteFixtures::exifTool(arguments);
    const double batchSeconds = timer.nsecsElapsed() / 1e9;
    if (failures > 0 || batch.exitCode != 0) {
        print(u"writes failed: %1 through the worker, batch exit code %2"_s.arg(failures).arg(
            batch.exitCode));
        return 1;
    }

    const double palometRate = fileCount / palometSeconds;
    const double batchRate = fileCount / batchSeconds;
    print(u"files: %1 JPEGs of %2 bytes, GPS with references and City"_s.arg(fileCount).arg(
        QFileInfo(original).size()));
    print(u"load average before the run: %1, after: %2"_s.arg(loadBefore, loadAverage()));
    print(undo ? u"undo journal on: %1 commands, %2 bytes"_s
                     .arg(UndoJournal::shared().commands().size())
                     .arg(UndoJournal::shared().fileSize())
               : u"undo journal off"_s);
    print(u"WriteEngine, written and read back into the store: %1 s, %2 files/s"_s
              .arg(palometSeconds, 0, 'f', 2)
              .arg(palometRate, 0, 'f', 1));
    print(u"one batch exiftool call: %1 s, %2 files/s"_s.arg(batchSeconds, 0, 'f', 2)
              .arg(batchRate, 0, 'f', 1));
    print(u"RESULT write_vs_batch=%1 write_files_per_s=%2"_s.arg(palometRate / batchRate, 0, 'f', 3)
              .arg(palometRate, 0, 'f', 1));
    return 0;
}
