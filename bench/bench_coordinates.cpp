// The coordinate parser runs on every keystroke of the GPS fields and compiles its patterns on
// each call. Prints the time of one parse of a pair of fields, over the notations users type,
// and of one DMS plus DMM formatting.
#include "location/LocationHelper.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const LocationHelper &helper = LocationHelper::shared();
    const QList<std::pair<QString, QString>> inputs {
        {u"48.8584"_s, u"2.2945"_s},        {u"48°51'30.24\"N, 2°17'40.2\"E"_s, QString()},
        {u"48°51.504'N"_s, u"2°17.67'E"_s}, {u"48.8584 N"_s, u"2.2945 E"_s},
        {u"junk"_s, u"more junk"_s},
    };

    constexpr int rounds = 4000;
    double sink = 0;
    QElapsedTimer timer;
    timer.start();
    for (int round = 0; round < rounds; ++round) {
        for (const auto &[latitude, longitude] : inputs)
            sink += helper.parseCoordinateFields(latitude, longitude).latitude.value_or(0.0);
    }
    const double parseUs = timer.nsecsElapsed() / 1000.0 / (rounds * inputs.size());

    timer.restart();
    qsizetype length = 0;
    for (int round = 0; round < rounds * 10; ++round) {
        const double value = -179.5 + round * 0.0011;
        length += helper.formatToDMS(value, CoordinateAxis::Longitude).size()
            + helper.formatToDMM(value, CoordinateAxis::Longitude).size();
    }
    const double formatUs = timer.nsecsElapsed() / 1000.0 / (rounds * 10);

    std::printf("checksum %.3f %lld\n", sink, static_cast<long long>(length));
    std::printf("RESULT parse_fields_us=%.1f format_dms_dmm_us=%.2f\n", parseUs, formatUs);
    return 0;
}
