// Start-up of the whole application on a folder of photos, in this process as `palomet FOLDER`
// would run it: the time from the process's start to the first painted window, and until every
// file's ExifTool values and statuses are stored; the resident memory of the process and all its
// children then (the workers, and the web engine's processes when the map is there); and the
// time to select every row of the table with all the selection's listeners live. One batch
// `exiftool -fast` call over the same folder with the read worker's tags is the yardstick.
//     bench_startup [FILES]   (10,000 by default)
// Last line: RESULT window_ms=... ready_10k_ms=... ready_vs_batch=... rss_mb=... select_all_ms=...

#include "acquisition/ExifToolHelper.h"
#include "commons/ApplicationStart.h"
#include "mainwindow/AppDelegate.h"
#include "mainwindow/DragAndDropTableView.h"
#include "mainwindow/MainContentViewController.h"
#include "mainwindow/MainWindow.h"
#include "mainwindow/PreviewTableDataSource.h"
#include "mainwindow/PreviewTableViewController.h"
#include "metadata/MetadataStorage.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include "Fixtures.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <ctime>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Seconds since the process started, from the kernel's own start time.
double processAge()
{
    QFile stat(u"/proc/self/stat"_s);
    QFile uptime(u"/proc/uptime"_s);
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    const double started = fields.value(19).toDouble() / double(sysconf(_SC_CLK_TCK));
    return uptime.readAll().split(' ').value(0).toDouble() - started;
}

// The resident memory of this process and every process below it, in megabytes.
double treeResidentMegabytes()
{
    QHash<int, int> parentOf;
    QHash<int, qint64> residentKb;
    for (const QString &entry : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        bool isPid = false;
        const int pid = entry.toInt(&isPid);
        if (!isPid)
            continue;
        QFile status(u"/proc/%1/status"_s.arg(pid));
        if (!status.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("PPid:"))
                parentOf.insert(pid, line.mid(5).trimmed().toInt());
            else if (line.startsWith("VmRSS:"))
                residentKb.insert(pid, line.mid(6).trimmed().split(' ').value(0).toLongLong());
        }
    }
    const int self = int(::getpid());
    qint64 total = 0;
    for (auto it = residentKb.cbegin(); it != residentKb.cend(); ++it) {
        for (int pid = it.key(); pid > 1; pid = parentOf.value(pid, 0)) {
            if (pid == self) {
                total += it.value();
                break;
            }
        }
    }
    return double(total) / 1024.0;
}

// The processor time of the calling thread: on a loaded machine the wall time of a select-all
// says more about the other programs than about this one.
double threadCpuMilliseconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double batchSeconds(const QString &folder)
{
    QStringList arguments = {u"-j"_s, u"-n"_s, u"-fast"_s, u"-r"_s, u"-api"_s, u"geolocation=1"_s};
    const ExifToolHelper &helper = ExifToolHelper::sharedInstance();
    for (const QString &tag : helper.whiteList() + helper.rawWhiteList())
        arguments << u"-"_s + QString(tag).remove(u'#');
    QElapsedTimer timer;
    timer.start();
    QProcess batch;
    batch.setStandardOutputFile(QProcess::nullDevice());
    batch.start(Fixtures::exifToolPath(), arguments << folder);
    batch.waitForFinished(-1);
    return double(timer.nsecsElapsed()) / 1e9;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    // Loading the program and its libraries and making the application object count as start-up;
    // the copies made below do not.
    const double applicationMade = processAge();
    const int count = argc > 1 ? std::max(1, atoi(argv[1])) : 10000;
    QTemporaryDir store;
    UserDefaults::setStandardFilePath(store.filePath(u"preferences.json"_s));

    // The photos: one small JPEG with a position and a city, copied.
    QTemporaryDir folder;
    const QString sample = Fixtures::makeJpeg(store.path(), u"sample.jpg"_s,
                                              {u"-GPSLatitude=48.8584"_s, u"-GPSLatitudeRef=N"_s,
                                               u"-GPSLongitude=2.2945"_s, u"-GPSLongitudeRef=E"_s,
                                               u"-City=Paris"_s});
    for (int i = 0; i < count; ++i) {
        const QString sub = folder.filePath(u"day%1"_s.arg(i / 500, 3, 10, QChar(u'0')));
        if (i % 500 == 0)
            QDir().mkpath(sub);
        QFile::copy(sample, sub + u"/IMG_%1.jpg"_s.arg(i, 5, 10, QChar(u'0')));
    }
    const double setUp = processAge();

    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();
    AppDelegate delegate;
    delegate.finishInitialization();
    ChangeManager::setDataModel(delegate.dataModel.get());
    delegate.openFilesOnceWindowIsPainted({folder.path()});

    double painted = -1, ready = -1;
    // The window tells of its first paint on the next turn, before the work it holds back for
    // it: a poll would see the paint only once that work lets the loop turn. The window is made
    // and shown by the launch's first callbacks; this one comes after them.
    delegate.willFinishLaunchingCallbackList.append(
        [&](SmartAppDelegate &, const AppNotification &) {
            QObject::connect(
                delegate.mainWindow.get(), &MainWindow::firstPainted, &app,
                [&] { painted = processAge(); }, Qt::SingleShotConnection);
        });
    int ticks = 0;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &app, [&] {
        if (painted < 0)
            return;
        // Looking at every file costs the main thread; ten times a second is precise enough
        // and leaves the machine to the reads being measured.
        if (++ticks % 20 != 0)
            return;
        const QList<NodePtr> &nodes
            = delegate.mainWindow->mainContentViewController->previewTableViewController
                  ->previewTableViewDataSource->nodes();
        if (nodes.size() < count)
            return;
        MetadataStorage &storage = MetadataStorage::shared();
        for (const NodePtr &node : nodes) {
            if (!node->hasBeenRead(MetadataSource::ExifToolGeneric)
                || storage.getObjCIntegerValue(node->absolutePath, u"IPTCDataComplete"_s,
                                               MetadataSource::ExifToolGeneric)
                    < 0)
                return;
        }
        ready = processAge();
        app.quit();
    });
    poll.start(5);
    QTimer::singleShot(600000, &app, [&] { app.quit(); });
    app.exec();
    poll.stop();
    if (ready < 0) {
        std::fprintf(stderr, "bench_startup: the files were not all read in ten minutes\n");
        return 1;
    }
    const double residentMb = treeResidentMegabytes();

    QTableView *table
        = delegate.mainWindow->mainContentViewController->previewTableViewController->tableView;
    QElapsedTimer selectTimer;
    const double selectCpuStart = threadCpuMilliseconds();
    selectTimer.start();
    table->selectAll();
    QCoreApplication::processEvents();
    const double selectAllMs = double(selectTimer.nsecsElapsed()) / 1e6;
    const double selectAllCpuMs = threadCpuMilliseconds() - selectCpuStart;
    if (delegate.dataModel->selectedNodes().size() != count)
        std::fprintf(stderr, "bench_startup: select-all selected %lld rows\n",
                     qlonglong(delegate.dataModel->selectedNodes().size()));

    const double batch = batchSeconds(folder.path());
    // The copies were made before the program's own start counts.
    const double windowMs = (painted - setUp + applicationMade) * 1000;
    const double readyMs = (ready - setUp + applicationMade) * 1000;
    QFile loadAverage(u"/proc/loadavg"_s);
    const QByteArray load
        = loadAverage.open(QIODevice::ReadOnly) ? loadAverage.readAll().trimmed() : "?";
    std::printf("%d files, load average %s\n", count, load.constData());
    std::printf("window %.0f ms, ready %.0f ms, batch exiftool %.0f ms, memory %.0f MB, "
                "select all %.0f ms (%.0f ms of the main thread's processor time)\n",
                windowMs, readyMs, batch * 1000, residentMb, selectAllMs, selectAllCpuMs);
    std::printf("RESULT window_ms=%.0f ready_10k_ms=%.0f ready_vs_batch=%.2f rss_mb=%.0f "
                "select_all_ms=%.0f\n",
                windowMs, readyMs, readyMs / (batch * 1000), residentMb, selectAllMs);
    ChangeManager::setDataModel(nullptr);
    return 0;
}
