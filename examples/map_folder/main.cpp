// Shows the map with the files of a folder: every photo, video or sound file whose metadata
// holds a position gets a marker once ExifTool has read it, and the map then shows them all.
//
//     map_folder [--offline] [--screenshot FILE] FOLDER
//
// --offline keeps the map from loading tiles; --screenshot saves the window once the files are
// on the map, and quits.

#include "MapWebView.h"
#include "MapWidget.h"
#include "commons/ApplicationStart.h"
#include "location/Geocoder.h"
#include "map/MapDelegate.h"
#include "metadata/DataCoordinator.h"
#include "session/DataModel.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDirIterator>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    MapWebView::prepareProcess();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("palomet-map-folder"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the files of a folder on the map."));
    parser.addHelpOption();
    const QCommandLineOption offline(QStringLiteral("offline"),
                                     QStringLiteral("Show country shapes only, load no tiles."));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Save the window to FILE and quit."),
                                        QStringLiteral("FILE"));
    parser.addOptions({offline, screenshot});
    parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("The folder to show."));
    parser.process(app);
    if (parser.positionalArguments().size() != 1
        || !QFileInfo(parser.positionalArguments().first()).isDir()) {
        std::fprintf(stderr, "map_folder: give one folder\n");
        return 2;
    }

    ApplicationStart::installMetadataReaders();
    DataModel model;
    MapDelegate delegate(model);
    delegate.setupMapListeners();
    delegate.install();

    MapWebView::Options options;
    options.online = !parser.isSet(offline) && MapWebView::onlineSetting();
    QMainWindow window;
    auto *map = new MapWidget(model, delegate, options, Geocoder::shared());
    window.setCentralWidget(map);
    auto *status = new QLabel(&window);
    window.statusBar()->addWidget(status, 1);
    window.resize(1100, 720);
    window.setWindowTitle(QStringLiteral("Palomet map: ") + parser.positionalArguments().first());
    window.show();

    // Each node queues its own ExifTool read, which puts the marker on the map.
    QList<NodePtr> nodes;
    QDirIterator files(parser.positionalArguments().first(), QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        nodes << FileNode::create(QFileInfo(path).fileName(), path, QString());
    }
    status->setText(QStringLiteral("Reading %1 files…").arg(nodes.size()));

    QTimer poll;
    bool shown = false;
    QObject::connect(&poll, &QTimer::timeout, &window, [&] {
        const bool reading = DataCoordinator::shared().queue().operationCount() > 0;
        status->setText(QStringLiteral("%1 files, %2 on the map%3")
                            .arg(nodes.size())
                            .arg(delegate.markerCount())
                            .arg(reading ? QStringLiteral(", reading…") : QString()));
        if (reading || shown || !map->mapView()->isPageReady())
            return;
        shown = true;
        QList<NodePtr> placed;
        for (const MapDelegate::Marker &marker : delegate.markers())
            placed << marker.node;
        delegate.adjustMapToShowNodes(placed);
        if (parser.isSet(screenshot)) {
            // Time for the camera to arrive and the page to draw.
            QTimer::singleShot(2500, &window, [&] {
                window.grab().save(parser.value(screenshot));
                app.quit();
            });
        }
    });
    poll.start(200);

    const int exitCode = app.exec();
    delegate.uninstall();
    return exitCode;
}
