#pragma once

#include "location/Coordinate2D.h"
#include "location/Placemark.h"
#include "platform/SerialQueue.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>

#include <sys/types.h>

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
// Such a worker is killed, and the next request starts a new one. Nothing here ever blocks the
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

    void setTimeouts(int startTimeoutMs, int requestTimeoutMs);
    // The running worker's process id, 0 when none runs.
    qint64 workerProcessId() const { return m_workerPid.load(); }

private:
    using Deadline = std::chrono::steady_clock::time_point;

    void submit(QByteArray verb, QList<QByteArray> arguments, Completion completion);
    std::optional<QList<Placemark>> exchange(const QByteArray &verb,
                                             const QList<QByteArray> &arguments);
    bool ensureWorker();
    void stopWorker();
    bool sendAll(const QByteArray &bytes, Deadline deadline);
    std::optional<QByteArray> readLine(Deadline deadline);

    const WorkerCommand m_command;
    std::atomic<int> m_startTimeoutMs {defaultStartTimeoutMs};
    std::atomic<int> m_requestTimeoutMs {defaultRequestTimeoutMs};
    std::atomic<qint64> m_workerPid {0};

    // Owned by m_queue: everything below up to the queue itself.
    pid_t m_pid = 0;
    int m_socket = -1;
    QByteArray m_received;
    quint64 m_lastRequestId = 0;

    // Declared last so that it is destroyed first: it runs what is queued, the stop included,
    // while the members above still exist.
    SerialQueue m_queue {QStringLiteral("Geocoder")};
};
