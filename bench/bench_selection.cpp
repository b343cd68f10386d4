// Selects 20,000 items whose data is in the store, then half of them, and times how long the GPS
// editor and the four location editors take to show the half's values after that change. The
// two halves hold two places, so the whole selection shows multiple values and the half one.
// Prints the median of five rounds.

#include "location/GPSCoordinateComponent.h"
#include "location/IPTCLocationComponent.h"
#include "metadata/DataCoordinator.h"
#include "metadata/MetadataStorage.h"
#include "platform/UserDefaults.h"
#include "session/DataModel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int itemCount = 20000;
constexpr int rounds = 5;

struct Place
{
    QString latitude, longitude, sublocation, city, region, country;
};

const Place paris {u"48.8584"_s, u"2.2945"_s,        u"Eiffel Tower"_s,
                   u"Paris"_s,   u"Île-de-France"_s, u"France"_s};
const Place lyon {u"45.7623"_s, u"4.8225"_s, u"Fourvière"_s, u"Lyon"_s, u"Auvergne-Rhône-Alpes"_s,
                  u"France"_s};

QList<NodePtr> makeNodes()
{
    MetadataStorage &storage = MetadataStorage::shared();
    const MetadataSource source = MetadataSource::ExifToolGeneric;
    QList<NodePtr> nodes;
    nodes.reserve(itemCount);
    for (int i = 0; i < itemCount; ++i) {
        const QString path = u"/home/alex/Pictures/Trip %1/IMG_%2.JPG"_s.arg(i / 250).arg(
            i, 5, 10, QLatin1Char('0'));
        const Place &place = i < itemCount / 2 ? paris : lyon;
        storage.store(path, source, u"GPSLatitude#"_s, place.latitude);
        storage.store(path, source, u"GPSLongitude#"_s, place.longitude);
        storage.store(path, source, u"Sub-location"_s, place.sublocation);
        storage.store(path, source, u"City"_s, place.city);
        storage.store(path, source, u"Province-State"_s, place.region);
        storage.store(path, source, u"Country"_s, place.country);
        storage.store(path, source, u"computedSublocation"_s, place.sublocation);
        storage.store(path, source, u"computedCity"_s, place.city);
        storage.store(path, source, u"GeolocationRegion"_s, place.region);
        storage.store(path, source, u"GeolocationCountry"_s, place.country);
        storage.store(path, source, u"retrieved"_s, true);
        nodes << FileNode::create(path.section(u'/', -1), path, QString());
    }
    return nodes;
}

bool editorsShow(DataModel &model, const Place &place)
{
    return model.gpsCoordinateComponent->latitudeField().text == u"+48.858400"_s
        && model.gpsCoordinateComponent->longitudeField().text == u"+2.294500"_s
        && model.sublocationComponent->_currentValueInInterface->value() == place.sublocation
        && model.cityComponent->_currentValueInInterface->value() == place.city
        && model.regionComponent->_currentValueInInterface->value() == place.region
        && model.countryComponent->_currentValueInInterface->value() == place.country;
}

// Runs the event loop until the editors show the place; the milliseconds it took.
double settle(DataModel &model, const Place &place)
{
    QElapsedTimer timer;
    timer.start();
    while (!editorsShow(model, place)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        if (timer.elapsed() > 60000)
            qFatal("the editors did not settle within a minute");
    }
    return timer.nsecsElapsed() / 1e6;
}

// Runs the event loop until no editor has changed for a while, so that nothing of the previous
// selection is left to do.
void waitUntilQuiet(DataModel &model)
{
    const auto revisions = [&] {
        return QList<int> {model.gpsCoordinateComponent->stateRevision->value(),
                           model.sublocationComponent->stateRevision->value(),
                           model.cityComponent->stateRevision->value(),
                           model.regionComponent->stateRevision->value(),
                           model.countryComponent->stateRevision->value()};
    };
    QList<int> last = revisions();
    QElapsedTimer quiet;
    quiet.start();
    while (quiet.elapsed() < 500) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        if (revisions() != last) {
            last = revisions();
            quiet.restart();
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir defaultsDir;
    UserDefaults::setStandardFilePath(defaultsDir.filePath(u"defaults.json"_s));

    DataModel model;
    const QList<NodePtr> nodes = makeNodes();
    // As in a list that has been read: the nodes' reads are done and announced.
    DataCoordinator::shared().queue().waitUntilAllOperationsAreFinished();
    QCoreApplication::processEvents(QEventLoop::AllEvents);

    QList<double> times;
    for (int round = 0; round < rounds; ++round) {
        model.setSelectedNodes(nodes);
        waitUntilQuiet(model);

        QElapsedTimer timer;
        timer.start();
        model.setSelectedNodes(nodes.first(itemCount / 2));
        const double selectMs = timer.nsecsElapsed() / 1e6;
        const double totalMs = selectMs + settle(model, paris);
        std::printf("round %d: selection change %.1f ms, editors settled after %.1f ms\n", round,
                    selectMs, totalMs);
        times << totalMs;
        waitUntilQuiet(model);
    }
    std::sort(times.begin(), times.end());
    std::printf("RESULT select_20000_ms=%.1f\n", times.at(rounds / 2));
    return 0;
}
