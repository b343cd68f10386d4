// The parameter side of Palomet over the files and folders given on the command line, beside a
// table of the list: edit positions and places, make pins, step through groups, change the
// output settings, and copy or save the list's text. Edits are written to the files.
//     parameter_side [--screenshot file.png] PATH...
// With --screenshot it waits until the list has been read, selects its first item, saves a
// picture of the window and quits.

#include "ExampleWindow.h"
#include "commons/ApplicationStart.h"
#include "mainwindow/QtAlertPresenter.h"
#include "mainwindow/QtBeeper.h"
#include "mainwindow/QtClipboardWriter.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"
#include "writing/ChangeManager.h"
#include "writing/WriteEngine.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

namespace {

// Waits with the event loop running, for the screenshot.
void waitFor(const std::function<bool()> &done, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < milliseconds) {
        QApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(20);
    }
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QStringList arguments = app.arguments().mid(1);
    QString screenshot;
    if (const qsizetype at = arguments.indexOf(QStringLiteral("--screenshot")); at >= 0) {
        screenshot = arguments.value(at + 1);
        arguments.remove(at, 2);
    }

    // The example keeps its settings in a private store, away from the application's.
    QTemporaryDir store;
    UserDefaults::setStandardFilePath(store.filePath(QStringLiteral("defaults.json")));

    ApplicationStart::installMetadataReaders();
    ApplicationStart::installWritePath();
    QtAlertPresenter alerts;
    AlertPresenter::install(&alerts);
    QtClipboardWriter clipboard;
    ClipboardWriter::install(&clipboard);
    QtBeeper beeper;
    Beeper::install(&beeper);

    DataModel model;
    ChangeManager::setDataModel(&model);
    std::shared_ptr<OutputEngine> engine = OutputEngine::create(&model);
    int status = 0;
    {
        ExampleWindow window(model, engine);
        window.show();
        engine->startListening();
        QStringList paths;
        for (const QString &argument : std::as_const(arguments))
            paths << QFileInfo(argument).absoluteFilePath();
        if (!paths.isEmpty())
            model.sourceList.add(paths, true);

        if (screenshot.isEmpty()) {
            status = app.exec();
        } else {
            waitFor([&] { return window.numberOfRows() > 0; }, 30000);
            window.selectRowIndexes({0}, false);
            waitFor([&] { return false; }, 6000);
            status = window.grab().save(screenshot) ? 0 : 1;
        }
        // Edits on their way to the files are written before the window goes.
        WriteEngine::shared().waitForCompletion();
    }
    model.sourceList.deleteAll();
    Beeper::install(nullptr);
    ClipboardWriter::install(nullptr);
    AlertPresenter::install(nullptr);
    ChangeManager::setDataModel(nullptr);
    return status;
}
