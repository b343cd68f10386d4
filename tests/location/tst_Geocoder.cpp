#include "location/Geocoder.h"
#include "location/LocationHelper.h"

#include "TestSupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// What a request delivered: nothing yet, or the places and the thread they arrived on.
struct Delivery
{
    int count = 0;
    QList<Placemark> places;
    bool onMainThread = false;
};

Geocoder::Completion recorder(const std::shared_ptr<Delivery> &delivery)
{
    return [delivery](const QList<Placemark> &places) {
        ++delivery->count;
        delivery->places = places;
        delivery->onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
    };
}

std::optional<QList<Placemark>> reverse(Geocoder &geocoder, Coordinate2D coordinate, int count = 1,
                                        double maximumKm = 100.0)
{
    auto delivery = std::make_shared<Delivery>();
    geocoder.reverseGeocodeLocation(coordinate, recorder(delivery), count, maximumKm);
    if (!TestSupport::waitUntil([&] { return delivery->count > 0; }, 120000))
        return std::nullopt;
    return delivery->places;
}

std::optional<QList<Placemark>> search(Geocoder &geocoder, const QString &text, int count,
                                       std::optional<CoordinateRegion> region = std::nullopt)
{
    auto delivery = std::make_shared<Delivery>();
    geocoder.searchPlaces(text, recorder(delivery), count, region);
    if (!TestSupport::waitUntil([&] { return delivery->count > 0; }, 120000))
        return std::nullopt;
    return delivery->places;
}

double distanceKm(Coordinate2D a, Coordinate2D b)
{
    const double toRadians = M_PI / 180.0;
    const double sinLatitude = std::sin((b.latitude - a.latitude) * toRadians / 2);
    const double sinLongitude = std::sin((b.longitude - a.longitude) * toRadians / 2);
    const double h = sinLatitude * sinLatitude
        + std::cos(a.latitude * toRadians) * std::cos(b.latitude * toRadians) * sinLongitude
            * sinLongitude;
    return 2 * 6371.0 * std::asin(std::sqrt(h));
}

bool processExists(qint64 pid)
{
    return ::kill(pid_t(pid), 0) == 0 || errno != ESRCH;
}

Geocoder::WorkerCommand perlWorker(const QString &code)
{
    return {u"perl"_s, {u"-e"_s, code}};
}

} // namespace

class tst_Geocoder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void reverseGeocoding_data();
    void reverseGeocoding();
    void reverseAnswersNearestFirstWithinTheLimit();
    void searchByPrefix();
    void unreadableRequestDeliversNothingAndKeepsTheWorker();
    void killedWorkerIsReplacedByTheNextRequest();
    void brokenWorkersDeliverNothing_data();
    void brokenWorkersDeliverNothing();
    void hungWorkerNeverBlocksTheMainThread();
    void locationHelperAsksTheSharedGeocoder();

private:
    Geocoder m_geocoder;
};

void tst_Geocoder::initTestCase()
{
    // The machine may be busy: a slow start must not pass for a hung worker here.
    m_geocoder.setTimeouts(60000, 50000);
}

void tst_Geocoder::reverseGeocoding_data()
{
    QTest::addColumn<Coordinate2D>("coordinate");
    QTest::addColumn<QStringList>("expected"); // name, subLocality, locality, area, country, code

    QTest::newRow("Paris") << Coordinate2D {48.8530, 2.3499}
                           << QStringList {u"Paris"_s,         {},          u"Paris"_s,
                                           u"Île-de-France"_s, u"France"_s, u"FR"_s};
    QTest::newRow("section of a place") << Coordinate2D {47.3717, 8.5450}
                                        << QStringList {u"Zürich (Kreis 1) / Rathaus"_s,
                                                        u"Zürich (Kreis 1) / Rathaus"_s,
                                                        u"Bezirk Zürich"_s,
                                                        u"Zurich"_s,
                                                        u"Switzerland"_s,
                                                        u"CH"_s};
    QTest::newRow("section in a county loses the suffix")
        << Coordinate2D {40.7153, -74.0094}
        << QStringList {u"Tribeca"_s,  u"Tribeca"_s,       u"New York"_s,
                        u"New York"_s, u"United States"_s, u"US"_s};
    QTest::newRow("southern hemisphere")
        << Coordinate2D {-36.8485, 174.7636}
        << QStringList {u"Auckland"_s, {}, u"Auckland"_s, u"Auckland"_s, u"New Zealand"_s, u"NZ"_s};
    QTest::newRow("across the antimeridian")
        << Coordinate2D {-16.5, -179.9}
        << QStringList {u"Labasa"_s, {}, u"Labasa"_s, u"Northern"_s, u"Fiji"_s, u"FJ"_s};
}

void tst_Geocoder::reverseGeocoding()
{
    QFETCH(Coordinate2D, coordinate);
    QFETCH(QStringList, expected);
    const auto places = reverse(m_geocoder, coordinate);
    QVERIFY(places);
    QCOMPARE(places->size(), 1);
    const Placemark &place = places->first();
    QCOMPARE((QStringList {place.name, place.subLocality, place.locality, place.administrativeArea,
                           place.country, place.isoCountryCode}),
             expected);
    QVERIFY(distanceKm(place.coordinate, coordinate) < 100.0);
}

void tst_Geocoder::reverseAnswersNearestFirstWithinTheLimit()
{
    const Coordinate2D eiffelTower {48.8584, 2.2945};
    const auto places = reverse(m_geocoder, eiffelTower, 8, 5.0);
    QVERIFY(places);
    QCOMPARE(places->size(), 8);
    double previous = 0.0;
    for (const Placemark &place : *places) {
        const double distance = distanceKm(place.coordinate, eiffelTower);
        QVERIFY2(distance >= previous - 0.01 && distance <= 5.0, qPrintable(place.name));
        previous = distance;
    }

    // Nothing near enough is an answer too: an empty list.
    const auto atSea = reverse(m_geocoder, Coordinate2D {0.0, 0.0});
    QVERIFY(atSea);
    QVERIFY(atSea->isEmpty());
    const auto tooStrict = reverse(m_geocoder, eiffelTower, 1, 0.01);
    QVERIFY(tooStrict);
    QVERIFY(tooStrict->isEmpty());
}

void tst_Geocoder::searchByPrefix()
{
    const auto zurich = search(m_geocoder, u"ZURI"_s, 5);
    QVERIFY(zurich);
    QCOMPARE(zurich->size(), 5);
    QCOMPARE(zurich->first().name, u"Zürich"_s); // the biggest first, accents ignored
    for (const Placemark &place : *zurich)
        QVERIFY2(place.name.startsWith(u"Zür"_s) || place.name.startsWith(u"Zur"_s),
                 qPrintable(place.name));

    const auto paris = search(m_geocoder, u"paris"_s, 3);
    QVERIFY(paris);
    QCOMPARE(paris->first().country, u"France"_s);

    const CoordinateRegion northTexas {{33.66, -95.55}, 2.0, 2.0};
    const auto nearTexas = search(m_geocoder, u"Paris"_s, 2, northTexas);
    QVERIFY(nearTexas);
    QCOMPARE(nearTexas->size(), 2);
    QCOMPARE(nearTexas->first().administrativeArea, u"Texas"_s);
    QCOMPARE(nearTexas->first().country, u"United States"_s);

    const auto nothing = search(m_geocoder, QString(), 5);
    QVERIFY(nothing);
    QVERIFY(nothing->isEmpty());

    // Tabs and line breaks in the text cannot split the request.
    const auto broken = search(m_geocoder, u"Par\tis\n"_s, 5);
    QVERIFY(broken);
    QVERIFY(broken->isEmpty());
    const auto longText = search(m_geocoder, QString(100000, u'a'), 5);
    QVERIFY(longText);
    QVERIFY(longText->isEmpty());
}

void tst_Geocoder::unreadableRequestDeliversNothingAndKeepsTheWorker()
{
    QVERIFY(reverse(m_geocoder, Coordinate2D {48.8530, 2.3499}));
    const qint64 pid = m_geocoder.workerProcessId();
    QVERIFY(pid > 0);

    auto delivery = std::make_shared<Delivery>();
    m_geocoder.reverseGeocodeLocation(Coordinate2D {std::nan(""), 2.0}, recorder(delivery));
    m_geocoder.reverseGeocodeLocation(Coordinate2D {95.0, 2.0}, recorder(delivery));
    const auto afterwards = reverse(m_geocoder, Coordinate2D {47.3667, 8.5501});
    QVERIFY(afterwards);
    QCOMPARE(afterwards->value(0).locality, u"Zürich"_s);
    QCOMPARE(delivery->count, 0);
    QCOMPARE(m_geocoder.workerProcessId(), pid);
}

void tst_Geocoder::killedWorkerIsReplacedByTheNextRequest()
{
    QVERIFY(reverse(m_geocoder, Coordinate2D {48.8530, 2.3499}));
    const qint64 pid = m_geocoder.workerProcessId();
    QVERIFY(pid > 0);
    QCOMPARE(::kill(pid_t(pid), SIGKILL), 0);

    auto delivery = std::make_shared<Delivery>();
    m_geocoder.reverseGeocodeLocation(Coordinate2D {47.3667, 8.5501}, recorder(delivery));
    // The request that finds the worker dead may deliver nothing; the next one must work.
    const auto places = reverse(m_geocoder, Coordinate2D {47.3667, 8.5501});
    QVERIFY(places);
    QCOMPARE(places->value(0).locality, u"Zürich"_s);
    QVERIFY(m_geocoder.workerProcessId() > 0);
    QVERIFY(m_geocoder.workerProcessId() != pid);
    QVERIFY(!processExists(pid));
}

void tst_Geocoder::brokenWorkersDeliverNothing_data()
{
    QTest::addColumn<Geocoder::WorkerCommand>("command");

    QTest::newRow("no such program") << Geocoder::WorkerCommand {u"/nonexistent/geocoder"_s, {}};
    QTest::newRow("exits at once") << perlWorker(u"exit 3"_s);
    QTest::newRow("never ready") << perlWorker(u"sleep 60"_s);
    QTest::newRow("dies on the request")
        << perlWorker(u"$| = 1; print qq(ready\\t1\\n); <STDIN>; exit 1"_s);
    QTest::newRow("unreadable place")
        << perlWorker(u"$| = 1; print qq(ready\\t1\\n); while (<STDIN>) { my @f = split /\\t/; "
                      "print qq(place\\t$f[1]\\tonly a name\\n); }"_s);
    QTest::newRow("answer cut short")
        << perlWorker(u"$| = 1; print qq(ready\\t1\\n); <STDIN>; print qq(place\\t1\\tParis); "
                      "exit 0"_s);
    QTest::newRow("endless line") << perlWorker(
        u"$| = 1; print qq(ready\\t1\\n); <STDIN>; print q(x) x 1e5 while 1"_s);
}

void tst_Geocoder::brokenWorkersDeliverNothing()
{
    QFETCH(Geocoder::WorkerCommand, command);
    Geocoder geocoder(command);
    geocoder.setTimeouts(1000, 300);
    auto delivery = std::make_shared<Delivery>();
    geocoder.reverseGeocodeLocation(Coordinate2D {48.8530, 2.3499}, recorder(delivery));
    geocoder.searchPlaces(u"Paris"_s, recorder(delivery));
    auto idle = std::make_shared<bool>(false);
    geocoder.notifyWhenIdle([idle] { *idle = true; });
    QVERIFY(TestSupport::waitUntil([&] { return *idle; }, 10000));
    QCOMPARE(delivery->count, 0);
    QCOMPARE(geocoder.workerProcessId(), 0);
}

void tst_Geocoder::hungWorkerNeverBlocksTheMainThread()
{
    Geocoder geocoder(perlWorker(u"$| = 1; print qq(ready\\t1\\n); 1 while <STDIN>"_s));
    geocoder.setTimeouts(5000, 400);
    auto delivery = std::make_shared<Delivery>();

    QElapsedTimer timer;
    timer.start();
    geocoder.reverseGeocodeLocation(Coordinate2D {48.8530, 2.3499}, recorder(delivery));
    QVERIFY(timer.elapsed() < 100);

    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
    ticker.start(10);
    QVERIFY(TestSupport::waitUntil([&] { return geocoder.workerProcessId() > 0; }));
    const qint64 hungPid = geocoder.workerProcessId();
    QVERIFY(TestSupport::waitUntil([&] { return geocoder.workerProcessId() == 0; }, 10000));
    QVERIFY(!processExists(hungPid));
    QVERIFY2(ticks >= 10, qPrintable(QString::number(ticks)));

    // The next request starts a new worker, which hangs in turn.
    geocoder.reverseGeocodeLocation(Coordinate2D {48.8530, 2.3499}, recorder(delivery));
    QVERIFY(TestSupport::waitUntil([&] {
        const qint64 pid = geocoder.workerProcessId();
        return pid > 0 && pid != hungPid;
    }));
    QVERIFY(TestSupport::waitUntil([&] { return geocoder.workerProcessId() == 0; }, 10000));
    QCOMPARE(delivery->count, 0);
}

void tst_Geocoder::locationHelperAsksTheSharedGeocoder()
{
    auto delivery = std::make_shared<Delivery>();
    LocationHelper::shared().retrieveLocationDescription(Coordinate2D {48.8530, 2.3499},
                                                         recorder(delivery));
    QVERIFY(TestSupport::waitUntil([&] { return delivery->count > 0; }, 120000));
    QVERIFY(delivery->onMainThread);
    QCOMPARE(delivery->places.value(0).locality, u"Paris"_s);
}

QTEST_GUILESS_MAIN(tst_Geocoder)
#include "tst_Geocoder.moc"
