#include "Geotagger.h"

#include "platform/ChildProcess.h"
#include "platform/Resources.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTimeZone>

#include <cerrno>
#include <cmath>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The child and its pipes. A worker that has gone is noticed at the next exchange and replaced.
struct Geotagger::Worker
{
    pid_t pid = -1;
    int input = -1;
    int output = -1;
    QByteArray buffer;

    ~Worker() { stop(); }

    bool ensureStarted()
    {
        if (pid > 0)
            return true;
        const QString script = Resources::path(u"geotag.pl"_s);
        const ChildProcess::Started started
            = ChildProcess::start(script, {}, QFileInfo(script).absolutePath(),
                                  ChildProcess::Input::Pipe, ChildProcess::ErrorOutput::Inherited);
        if (started.launchError != 0)
            return false;
        pid = started.pid;
        input = started.input;
        output = started.output;
        buffer.clear();
        return true;
    }

    void stop()
    {
        if (pid <= 0)
            return;
        ::close(input); // the worker ends at the end of its input
        ::close(output);
        ChildProcess::reapInBackground(pid);
        pid = -1;
        input = output = -1;
    }

    // The lines of one answer up to "done", or nothing when the worker has gone.
    std::optional<QList<QByteArray>> exchange(const QByteArray &request)
    {
        if (!ensureStarted() || !ChildProcess::writeAll(input, request)) {
            stop();
            return std::nullopt;
        }
        QList<QByteArray> lines;
        for (;;) {
            const qsizetype end = buffer.indexOf('\n');
            if (end >= 0) {
                QByteArray line = buffer.left(end);
                buffer.remove(0, end + 1);
                if (line == "done")
                    return lines;
                lines.append(std::move(line));
                continue;
            }
            char chunk[65536];
            const ssize_t count = ::read(output, chunk, sizeof chunk);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0) {
                stop();
                return std::nullopt;
            }
            buffer.append(chunk, count);
        }
    }
};

namespace {

const QString workerGone = u"The geotagging worker stopped unexpectedly"_s;

QByteArray field(const QString &text)
{
    return text.toUtf8().toBase64();
}

} // namespace

Geotagger::Geotagger()
    : m_worker(std::make_unique<Worker>())
{ }

Geotagger::~Geotagger() = default;

QString Geotagger::geotimeText(double utcTime)
{
    const qint64 milliseconds = std::llround(utcTime * 1000.0);
    const QDateTime instant = QDateTime::fromMSecsSinceEpoch(milliseconds, QTimeZone::utc());
    QString text = instant.toString(u"yyyy:MM:dd HH:mm:ss"_s);
    if (milliseconds % 1000 != 0)
        text += instant.toString(u".zzz"_s);
    return text + u'Z';
}

bool Geotagger::loadTracks(const QStringList &paths, QList<TrackPoint> *points,
                           QString *errorMessage)
{
    points->clear();
    m_sentOptions.reset(); // a new worker, or a new track, takes the options again
    if (paths.isEmpty()) {
        *errorMessage = u"No track file chosen"_s;
        return false;
    }
    QByteArray request = "load";
    for (const QString &path : paths)
        request += '\t' + field(path);
    const auto lines = m_worker->exchange(request + '\n');
    if (!lines) {
        *errorMessage = workerGone;
        return false;
    }
    for (const QByteArray &line : *lines) {
        const QList<QByteArray> parts = line.split('\t');
        if (parts.value(0) == "error") {
            points->clear();
            *errorMessage = QString::fromUtf8(line.mid(6));
            return false;
        }
        if (parts.size() != 5 || parts[0] != "point")
            continue;
        points->append(
            {parts[1].toDouble(), {parts[2].toDouble(), parts[3].toDouble()}, parts[4] == "1"});
    }
    if (points->isEmpty()) {
        *errorMessage = u"The track holds no positions"_s;
        return false;
    }
    return true;
}

QList<GeotagPlacement> Geotagger::place(const QList<double> &utcTimes, const GeotagOptions &options)
{
    QList<GeotagPlacement> placements(utcTimes.size());
    if (utcTimes.isEmpty())
        return placements;

    QByteArray request;
    if (m_sentOptions != options) {
        request += "options\t" + QByteArray::number(options.maximumGapSeconds) + '\t'
            + QByteArray::number(options.maximumExtrapolationSeconds) + '\t'
            + QByteArray::number(options.clockCorrectionSeconds, 'f', 3) + '\n';
    }
    request += "place\t" + QByteArray::number(utcTimes.size()) + '\n';
    for (qsizetype i = 0; i < utcTimes.size(); ++i)
        request += QByteArray::number(i) + '\t' + geotimeText(utcTimes[i]).toLatin1() + '\n';

    // The options' answer is an empty one ahead of the placements'.
    if (m_sentOptions != options) {
        const qsizetype split = request.indexOf('\n') + 1;
        if (!m_worker->exchange(request.left(split))) {
            for (GeotagPlacement &placement : placements)
                placement.message = workerGone;
            return placements;
        }
        request.remove(0, split);
        m_sentOptions = options;
    }
    const auto lines = m_worker->exchange(request);
    if (!lines) {
        m_sentOptions.reset();
        for (GeotagPlacement &placement : placements)
            placement.message = workerGone;
        return placements;
    }
    for (const QByteArray &line : *lines) {
        const QList<QByteArray> parts = line.split('\t');
        bool ok = false;
        const qsizetype index = parts.value(1).toLongLong(&ok);
        if (!ok || index < 0 || index >= placements.size())
            continue;
        GeotagPlacement &placement = placements[index];
        if (parts[0] == "fix" && parts.size() >= 4) {
            placement.miss = GeotagPlacement::Miss::none;
            placement.coordinate = {parts[2].toDouble(), parts[3].toDouble()};
            if (parts.size() >= 5 && !parts[4].isEmpty())
                placement.altitude = parts[4].toDouble();
        } else if (parts[0] == "miss" && parts.size() >= 5) {
            const QByteArray &kind = parts[2];
            placement.miss = kind == "before" ? GeotagPlacement::Miss::beforeTrack
                : kind == "after"             ? GeotagPlacement::Miss::afterTrack
                : kind == "gap"               ? GeotagPlacement::Miss::inGap
                                              : GeotagPlacement::Miss::other;
            placement.gapSeconds = parts[3].toDouble();
            placement.message = QString::fromUtf8(parts[4]);
        }
    }
    return placements;
}
