#include "Geocoder.h"

#include "commons/Log.h"
#include "platform/MainQueue.h"
#include "platform/Resources.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <vector>

extern char **environ;

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maximumSearchTextLength = 200;
constexpr qsizetype maximumLineLength = 1 << 20;

QByteArray numberText(double value)
{
    return QByteArray::number(value, 'g', 17);
}

// The protocol separates fields by tabs and requests by line feeds.
QByteArray fieldText(const QString &text)
{
    QString cleaned = text.left(maximumSearchTextLength);
    for (QChar &c : cleaned) {
        if (c == u'\t' || c == u'\n' || c == u'\r')
            c = u' ';
    }
    return cleaned.toUtf8();
}

int remainingMs(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? int(left.count()) : 0;
}

std::optional<Placemark> placemarkFromFields(const QList<QByteArray> &fields)
{
    // place, id, name, subLocality, locality, administrativeArea, country, code, lat, lon
    if (fields.size() != 10)
        return std::nullopt;
    bool latitudeOk = false;
    bool longitudeOk = false;
    const double latitude = fields.at(8).toDouble(&latitudeOk);
    const double longitude = fields.at(9).toDouble(&longitudeOk);
    if (!latitudeOk || !longitudeOk)
        return std::nullopt;
    return Placemark {QString::fromUtf8(fields.at(2)),   QString::fromUtf8(fields.at(3)),
                      QString::fromUtf8(fields.at(4)),   QString::fromUtf8(fields.at(5)),
                      QString::fromUtf8(fields.at(6)),   QString::fromUtf8(fields.at(7)),
                      Coordinate2D {latitude, longitude}};
}

} // namespace

// The child and the connection to it. Used only by the geocoder's queue, except the atomics.
struct Geocoder::Worker
{
    using Deadline = std::chrono::steady_clock::time_point;

    explicit Worker(WorkerCommand command)
        : command(std::move(command))
    { }

    std::optional<QList<Placemark>> exchange(const QByteArray &verb,
                                             const QList<QByteArray> &arguments);
    bool ensureStarted();
    void stop();
    bool sendAll(const QByteArray &bytes, Deadline deadline);
    std::optional<QByteArray> readLine(Deadline deadline);

    const WorkerCommand command;
    std::atomic<int> startTimeoutMs {defaultStartTimeoutMs};
    std::atomic<int> requestTimeoutMs {defaultRequestTimeoutMs};
    std::atomic<qint64> runningPid {0};

    // Owned by the geocoder's queue.
    pid_t childPid = 0;
    int connection = -1;
    QByteArray received;
    quint64 lastRequestId = 0;
};

Geocoder &Geocoder::shared()
{
    static Geocoder *const instance = new Geocoder;
    return *instance;
}

Geocoder::WorkerCommand Geocoder::standardWorkerCommand()
{
    return {u"perl"_s, {Resources::path(u"geocode.pl"_s)}};
}

Geocoder::Geocoder(WorkerCommand command)
    : m_worker(std::make_shared<Worker>(std::move(command)))
{ }

Geocoder::~Geocoder()
{
    m_queue.async([worker = m_worker] { worker->stop(); });
}

void Geocoder::setTimeouts(int startTimeoutMs, int requestTimeoutMs)
{
    m_worker->startTimeoutMs = startTimeoutMs;
    m_worker->requestTimeoutMs = requestTimeoutMs;
}

qint64 Geocoder::workerProcessId() const
{
    return m_worker->runningPid.load();
}

void Geocoder::notifyWhenIdle(std::function<void()> block)
{
    m_queue.async([block = std::move(block)] { MainQueue::post(block); });
}

void Geocoder::reverseGeocodeLocation(Coordinate2D coordinate, Completion completion,
                                      int maximumCount, double maximumDistanceKm)
{
    submit("reverse",
           {numberText(coordinate.latitude), numberText(coordinate.longitude),
            QByteArray::number(maximumCount), numberText(maximumDistanceKm)},
           std::move(completion));
}

void Geocoder::searchPlaces(const QString &text, Completion completion, int maximumCount,
                            std::optional<CoordinateRegion> region)
{
    QList<QByteArray> arguments {fieldText(text), QByteArray::number(maximumCount)};
    if (region) {
        arguments << numberText(region->center.latitude) << numberText(region->center.longitude)
                  << numberText(region->latitudeDelta) << numberText(region->longitudeDelta);
    }
    submit("search", std::move(arguments), std::move(completion));
}

void Geocoder::submit(QByteArray verb, QList<QByteArray> arguments, Completion completion)
{
    m_queue.async([worker = m_worker, verb = std::move(verb), arguments = std::move(arguments),
                   completion = std::move(completion)] {
        const std::optional<QList<Placemark>> places = worker->exchange(verb, arguments);
        if (places && completion)
            MainQueue::post([completion, places = *places] { completion(places); });
    });
}

std::optional<QList<Placemark>> Geocoder::Worker::exchange(const QByteArray &verb,
                                                           const QList<QByteArray> &arguments)
{
    if (!ensureStarted())
        return std::nullopt;

    const QByteArray id = QByteArray::number(++lastRequestId);
    QByteArray request = verb + '\t' + id;
    for (const QByteArray &argument : arguments)
        request += '\t' + argument;
    request += '\n';

    const Deadline deadline
        = std::chrono::steady_clock::now() + std::chrono::milliseconds(requestTimeoutMs.load());
    if (!sendAll(request, deadline)) {
        stop();
        return std::nullopt;
    }

    QList<Placemark> places;
    for (;;) {
        const std::optional<QByteArray> line = readLine(deadline);
        if (!line) {
            Log::line(u"Geocoder: the worker did not answer; stopping it");
            stop();
            return std::nullopt;
        }
        const QList<QByteArray> fields = line->split('\t');
        // Lines of another request cannot come from a sound worker; they are passed over.
        if (fields.size() < 2 || fields.at(1) != id)
            continue;
        if (fields.at(0) == "done")
            return places;
        if (fields.at(0) == "error") {
            Log::line(u"Geocoder: "_s + QString::fromUtf8(fields.value(2)));
            return std::nullopt;
        }
        const std::optional<Placemark> place
            = fields.at(0) == "place" ? placemarkFromFields(fields) : std::nullopt;
        if (!place) {
            Log::line(u"Geocoder: the worker's answer is unreadable; stopping it");
            stop();
            return std::nullopt;
        }
        places << *place;
    }
}

bool Geocoder::Worker::ensureStarted()
{
    if (childPid > 0)
        return true;

    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        Log::line(u"Geocoder: no socket pair for the worker");
        return false;
    }
    // The worker talks through its standard input and output, both on its end of the pair.
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], STDOUT_FILENO);

    std::vector<QByteArray> arguments {command.program.toLocal8Bit()};
    for (const QString &argument : command.arguments)
        arguments.push_back(argument.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    pid_t spawnedPid = 0;
    const int spawned
        = posix_spawnp(&spawnedPid, argv.front(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(sockets[1]);
    if (spawned != 0) {
        close(sockets[0]);
        Log::line(u"Geocoder: cannot start "_s + command.program);
        return false;
    }
    childPid = spawnedPid;
    connection = sockets[0];
    received.clear();
    runningPid = spawnedPid;

    const Deadline deadline
        = std::chrono::steady_clock::now() + std::chrono::milliseconds(startTimeoutMs.load());
    const std::optional<QByteArray> line = readLine(deadline);
    if (!line || !line->startsWith("ready")) {
        Log::line(u"Geocoder: the worker did not start; stopping it");
        stop();
        return false;
    }
    return true;
}

void Geocoder::Worker::stop()
{
    if (connection >= 0) {
        close(connection);
        connection = -1;
    }
    if (childPid > 0) {
        kill(childPid, SIGKILL);
        while (waitpid(childPid, nullptr, 0) < 0 && errno == EINTR) { }
        childPid = 0;
    }
    received.clear();
    runningPid = 0;
}

bool Geocoder::Worker::sendAll(const QByteArray &bytes, Deadline deadline)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        pollfd ready {connection, POLLOUT, 0};
        const int polled = poll(&ready, 1, remainingMs(deadline));
        if (polled < 0 && errno == EINTR)
            continue;
        if (polled <= 0)
            return false;
        // MSG_NOSIGNAL: a worker that died must not take the application with it (SIGPIPE).
        const ssize_t written
            = send(connection, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (written < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (written <= 0)
            return false;
        sent += written;
    }
    return true;
}

std::optional<QByteArray> Geocoder::Worker::readLine(Deadline deadline)
{
    for (;;) {
        const qsizetype end = received.indexOf('\n');
        if (end >= 0) {
            QByteArray line = received.left(end);
            received.remove(0, end + 1);
            return line;
        }
        if (received.size() > maximumLineLength)
            return std::nullopt;
        pollfd ready {connection, POLLIN, 0};
        const int polled = poll(&ready, 1, remainingMs(deadline));
        if (polled < 0 && errno == EINTR)
            continue;
        if (polled <= 0)
            return std::nullopt;
        char buffer[65536];
        const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count <= 0)
            return std::nullopt; // the worker closed its end or died
        received.append(buffer, count);
    }
}
