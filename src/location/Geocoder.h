#pragma once

#include "location/Coordinate2D.h"
#include "location/Placemark.h"
#include "platform/SerialQueue.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

// A part of the map: its centre and its full spans in degrees.
struct CoordinateRegion
{
    Coordinate2D center;
    double latitudeDelta = 0.0;
    double longitudeDelta = 0.0;
};

// The offline geocoder: a long-running worker (geocode.pl) that serves ExifTool's geolocation
// database. Requests go to it one after the other from a background queue, and each answer is
// delivered later on the main thread, or never when the worker fails, dies or takes too long.
// Such a worker is killed, and the next request starts a new one. Requests never block the
// caller.
class Geocoder
{
public:
    using Completion = std::function<void(const QList<Placemark> &)>;

    struct WorkerCommand
    {
        QString program;
        QStringList arguments;
    };

    static constexpr int defaultMaximumCount = 1;
    static constexpr double defaultMaximumDistanceKm = 100.0;
    static constexpr int defaultSearchCount = 10;
    // Loading the database takes about a second, much longer on a busy machine.
    static constexpr int defaultStartTimeoutMs = 30000;
    static constexpr int defaultRequestTimeoutMs = 10000;

    // The application's geocoder. It lives to the end of the process; its worker quits when the
    // process ends and the connection closes.
    static Geocoder &shared();
    // perl running geocode.pl from the resource folder.
    static WorkerCommand standardWorkerCommand();

    explicit Geocoder(WorkerCommand command = standardWorkerCommand());
    // Returns at once: requests already queued still run, and the worker stops after them.
    ~Geocoder();

    Geocoder(const Geocoder &) = delete;
    Geocoder &operator=(const Geocoder &) = delete;

    // The places nearest to the coordinate, nearest first, none further away than the distance.
    void reverseGeocodeLocation(Coordinate2D coordinate, Completion completion,
                                int maximumCount = defaultMaximumCount,
                                double maximumDistanceKm = defaultMaximumDistanceKm);
    // Places whose name begins with the text, ignoring case and accents: the biggest first or,
    // given a region, those nearest to the region first (the biggest first inside it).
    void searchPlaces(const QString &text, Completion completion,
                      int maximumCount = defaultSearchCount,
                      std::optional<CoordinateRegion> region = std::nullopt);
    // Runs the block on the main thread once every request made before has ended, whether it
    // delivered an answer or not.
    void notifyWhenIdle(std::function<void()> block);

    void setTimeouts(int startTimeoutMs, int requestTimeoutMs);
    // The running worker's process id, 0 when none runs.
    qint64 workerProcessId() const;

private:
    struct Worker;

    void submit(QByteArray verb, QList<QByteArray> arguments, Completion completion);

    // Shared with the queued blocks, which may outlive the geocoder.
    const std::shared_ptr<Worker> m_worker;
    SerialQueue m_queue {QStringLiteral("Geocoder")};
};
