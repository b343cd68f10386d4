// Fuzzes what users type into the coordinate fields. Beyond not crashing, every parsed value in
// range must format to DMS and DMM texts that read back as the same position, a pair of fields
// must agree with the pair parser, and the signed texts must read back exactly.
#include "location/LocationHelper.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr const char *defaultRuns = "-runs=50000";

std::uint64_t g_runs = 0;
std::chrono::steady_clock::time_point g_start;

[[noreturn]] void fail(const char *what, const QString &text)
{
    std::fprintf(stderr, "fuzz_coordinates: %s: \"%s\"\n", what, text.toUtf8().constData());
    std::abort();
}

bool sameValue(std::optional<double> a, std::optional<double> b)
{
    if (!a || !b)
        return !a && !b;
    if (std::isnan(*a) || std::isnan(*b))
        return std::isnan(*a) && std::isnan(*b);
    return *a == *b;
}

void checkFormatsReadBack(std::optional<double> value, CoordinateAxis axis)
{
    const double limit = axis == CoordinateAxis::Latitude ? 90.0 : 180.0;
    if (!value || !(std::abs(*value) <= limit))
        return;
    const LocationHelper &helper = LocationHelper::shared();
    const QString dms = helper.formatToDMS(*value, axis);
    const QString dmm = helper.formatToDMM(*value, axis);
    // Between -1 and 0 the letter follows the truncated degrees and the sign is lost on purpose.
    if (*value > -1.0 && *value < 0.0)
        return;
    const auto fromDms = helper.parseCoordinateString(dms).latitude;
    const auto fromDmm = helper.parseCoordinateString(dmm).latitude;
    if (!fromDms || std::abs(*fromDms - *value) > 0.005 / 3600.0 + 1e-9)
        fail("DMS text does not read back", dms);
    if (!fromDmm || std::abs(*fromDmm - *value) > 0.0005 / 60.0 + 1e-9)
        fail("DMM text does not read back", dmm);
}

void printResult()
{
    const double seconds
        = std::chrono::duration<double>(std::chrono::steady_clock::now() - g_start).count();
    std::printf("RESULT fuzz_coordinates_runs=%llu fuzz_coordinates_execs_per_s=%.0f\n",
                static_cast<unsigned long long>(g_runs), seconds > 0 ? g_runs / seconds : 0.0);
    std::fflush(stdout);
}

} // namespace

// make bench starts every benchmark without arguments: then a fixed, repeatable amount of
// fuzzing with the dictionary. Given arguments, it is an ordinary libFuzzer target.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static std::vector<char *> arguments(*argv, *argv + *argc);
    if (*argc == 1) {
        static char runs[32];
        static char seed[] = "-seed=1";
        static char dictionary[] = "-dict=" PALOMET_FUZZ_DICTIONARY;
        static char maxLength[] = "-max_len=512";
        std::strcpy(runs, defaultRuns);
        arguments.insert(arguments.end(), {runs, seed, dictionary, maxLength});
        arguments.push_back(nullptr);
        *argc = int(arguments.size()) - 1;
        *argv = arguments.data();
    }
    // The parser compiles its patterns on every call, and Qt's JIT compilation would then take
    // nearly all of the time. The interpreter matches the same, so the fuzzer uses it.
    setenv("QT_ENABLE_REGEXP_JIT", "0", 1);
    g_start = std::chrono::steady_clock::now();
    std::atexit(printResult);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ++g_runs;
    const LocationHelper &helper = LocationHelper::shared();
    const QString text
        = QString::fromUtf8(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    const qsizetype bar = text.indexOf(u'|');
    const QString first = bar < 0 ? text : text.left(bar);
    const QString second = bar < 0 ? QString() : text.mid(bar + 1);

    const auto pair = helper.parseCoordinateString(text);
    checkFormatsReadBack(pair.latitude, CoordinateAxis::Latitude);
    checkFormatsReadBack(pair.longitude, CoordinateAxis::Longitude);

    const auto fields = helper.parseCoordinateFields(first, second);
    checkFormatsReadBack(fields.latitude, CoordinateAxis::Latitude);
    checkFormatsReadBack(fields.longitude, CoordinateAxis::Longitude);
    const auto firstAlone = helper.parseCoordinateString(first.trimmed());
    if (!first.trimmed().isEmpty() && first.trimmed() == first && firstAlone.latitude
        && firstAlone.longitude
        && !(sameValue(fields.latitude, firstAlone.latitude)
             && sameValue(fields.longitude, firstAlone.longitude)))
        fail("a pair in the latitude field does not win", text);

    if (const auto signedTexts = helper.addPlusOrMinusToValues(first, second)) {
        const auto back = helper.coordinateFromDD(signedTexts->first, signedTexts->second);
        if (!back || !sameValue(back->latitude, helper.wholeTextDouble(first))
            || !sameValue(back->longitude, helper.wholeTextDouble(second)))
            fail("signed texts do not read back", text);
    }

    const QString truncated = helper.truncateDecimalString(text, int(size % 8));
    if (truncated.size() > text.size() + 1)
        fail("truncation made the text longer", text);
    if (truncated != text && !text.startsWith(truncated.chopped(1)))
        fail("truncation is not a prefix", text);

    helper.createCLLocationCoordinate2DFrom(first, second, QStringLiteral("S"),
                                            QStringLiteral("east"));
    return 0;
}
