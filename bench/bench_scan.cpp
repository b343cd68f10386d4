// Scans a generated tree of 100,000 empty files through the pipeline and compares the time with
// `find DIR -type f | sort` on the same tree, in the same run.

#include "metadata/DataCoordinator.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>

namespace {

constexpr int folders = 100, subfolders = 10, filesPerFolder = 100;

void makeTree(const QString &root)
{
    for (int f = 0; f < folders; ++f) {
        for (int s = 0; s < subfolders; ++s) {
            const QString folder = QStringLiteral("%1/Trip %2/Day %3").arg(root).arg(f).arg(s);
            QDir().mkpath(folder);
            for (int i = 0; i < filesPerFolder; ++i) {
                QFile file(QStringLiteral("%1/IMG_%2.jpg").arg(folder).arg(i));
                if (!file.open(QIODevice::WriteOnly))
                    qFatal("cannot create %s", qPrintable(file.fileName()));
            }
        }
    }
}

double timeFind(const QString &root)
{
    QElapsedTimer timer;
    timer.start();
    QProcess shell;
    shell.start(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("find \"$0\" -type f | sort >/dev/null"), root});
    shell.waitForFinished(-1);
    return timer.nsecsElapsed() / 1e9;
}

double timeScan(const QString &root, int &count)
{
    DataModel model;
    model.sourceList.deleteAll();
    auto engine = OutputEngine::create(&model);
    engine->startListening();
    engine->queue().waitUntilAllOperationsAreFinished();
    QCoreApplication::processEvents();

    QElapsedTimer timer;
    timer.start();
    model.sourceList.add({root}, false);
    // The scan runs on the engine's queue; its sorted result is swapped in on the engine's serial
    // queue, and the time stops there, before the output stage.
    for (;;) {
        FlatFileListPtr list = engine->flatFileList();
        if (list && !list->files.isEmpty())
            break;
        QThread::usleep(200);
    }
    const double seconds = timer.nsecsElapsed() / 1e9;
    count = int(engine->flatFileList()->files.size());
    model.sourceList.deleteAll();
    engine->queue().waitUntilAllOperationsAreFinished();
    return seconds;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir preferences;
    UserDefaults::setStandardFilePath(preferences.filePath(QStringLiteral("preferences.json")));
    // Tab-separated text of the default columns: a cheap output stage after each scan.
    UserDefaults::standard().setObject(int(OutputFormatIndexEnum::TSV),
                                       QStringLiteral("outputFormat"));
    QTemporaryDir tree;
    std::printf("Generating %d files...\n", folders * subfolders * filesPerFolder);
    makeTree(tree.path());

    timeFind(tree.path()); // warm the caches for both
    double best = 1e9, bestFind = 1e9;
    int count = 0;
    for (int round = 0; round < 3; ++round) {
        bestFind = std::min(bestFind, timeFind(tree.path()));
        best = std::min(best, timeScan(tree.path(), count));
    }
    std::printf("palomet scan+sort: %.3f s for %d items; find | sort: %.3f s (best of 3)\n", best,
                count, bestFind);
    std::printf("RESULT scan_vs_find=%.2f\n", best / bestFind);
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    return count == folders * subfolders * filesPerFolder ? 0 : 1;
}
