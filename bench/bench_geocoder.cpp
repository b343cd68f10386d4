// The offline geocoder as the pins and the map search use it: the worker's start (database
// loaded), then reverse lookups and name searches, each timed from the request to the answer
// on the main thread.
#include "location/Geocoder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// Runs the request and the event loop until its answer is in; milliseconds, or -1 on failure.
double timedRequest(const std::function<void(Geocoder::Completion)> &request)
{
    QElapsedTimer timer;
    timer.start();
    bool answered = false;
    request([&answered](const QList<Placemark> &) { answered = true; });
    while (!answered && timer.elapsed() < 60000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    return answered ? timer.nsecsElapsed() / 1e6 : -1.0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    Geocoder geocoder;

    const double startMs = timedRequest([&](Geocoder::Completion done) {
        geocoder.reverseGeocodeLocation({48.8530, 2.3499}, std::move(done));
    });
    if (startMs < 0) {
        std::fprintf(stderr, "the geocoder did not answer\n");
        return 1;
    }

    // A walk over Europe and North America, where places are densest.
    constexpr int reverseCount = 400;
    double reverseMs = 0;
    for (int i = 0; i < reverseCount; ++i) {
        const Coordinate2D coordinate = i % 2
            ? Coordinate2D {36.0 + (i % 37) * 0.5, -5.0 + (i % 53) * 0.6}
            : Coordinate2D {30.0 + (i % 41) * 0.5, -120.0 + (i % 61) * 0.8};
        reverseMs += timedRequest([&](Geocoder::Completion done) {
            geocoder.reverseGeocodeLocation(coordinate, std::move(done));
        });
    }

    const QStringList prefixes {u"par"_s, u"zur"_s, u"san"_s, u"new y"_s, u"lon"_s,
                                u"s"_s,   u"mün"_s, u"tok"_s, u"ber"_s,   u"mos"_s};
    // The first search builds the name index; it is timed apart.
    const double firstSearchMs = timedRequest(
        [&](Geocoder::Completion done) { geocoder.searchPlaces(u"a"_s, std::move(done)); });
    double searchMs = 0;
    for (const QString &prefix : prefixes) {
        searchMs += timedRequest(
            [&](Geocoder::Completion done) { geocoder.searchPlaces(prefix, std::move(done)); });
    }

    std::printf(
        "RESULT geocoder_start_ms=%.0f reverse_ms=%.2f first_search_ms=%.0f search_ms=%.2f\n",
        startMs, reverseMs / reverseCount, firstSearchMs, searchMs / prefixes.size());
    return 0;
}
