#include "WriteWorker.h"

#include "platform/ChildProcess.h"
#include "platform/Resources.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// How often a silent worker is looked at.
constexpr std::chrono::milliseconds longestPoll = std::chrono::seconds(1);

} // namespace

WriteWorker::WriteWorker(std::chrono::milliseconds hangTimeout, bool recordUndo)
    : WriteWorker(Resources::path(QStringLiteral("set_tag.pl")), hangTimeout, recordUndo)
{ }

WriteWorker::WriteWorker(const QString &launchPath, std::chrono::milliseconds hangTimeout,
                         bool recordUndo)
    : m_launchPath(launchPath)
    , m_hangTimeout(hangTimeout)
    , m_recordUndo(recordUndo)
{ }

WriteWorker::~WriteWorker()
{
    if (m_pid < 0)
        return;
    close(m_input);
    close(m_output);
    ChildProcess::reapInBackground(m_pid);
}

bool WriteWorker::launch(int *launchError)
{
    QList<QByteArray> arguments = {QByteArrayLiteral("--serve")};
    if (m_recordUndo)
        arguments << QByteArrayLiteral("--record-undo");
    const ChildProcess::Started started
        = ChildProcess::start(m_launchPath, arguments, QFileInfo(m_launchPath).absolutePath(),
                              ChildProcess::Input::Pipe, ChildProcess::ErrorOutput::Inherited);
    if (started.launchError != 0) {
        *launchError = started.launchError;
        return false;
    }
    m_pid = started.pid;
    m_input = started.input;
    m_output = started.output;
    return true;
}

void WriteWorker::stop()
{
    kill(m_pid, SIGKILL);
    close(m_input);
    close(m_output);
    ChildProcess::waitForExit(m_pid);
    m_pid = -1;
    m_input = m_output = -1;
}

WriteWorker::Answer WriteWorker::write(const QString &path, const QString &destination,
                                       const QStringList &tagValuePairs)
{
    // A worker that ended between two files is replaced without a word: no file was in its hands.
    const pid_t ended = m_pid > 0 ? waitpid(m_pid, nullptr, WNOHANG) : 0;
    if (ended == m_pid || (ended < 0 && errno == ECHILD)) {
        close(m_input);
        close(m_output);
        m_pid = -1;
    }
    if (m_pid < 0) {
        Answer answer;
        if (!launch(&answer.launchError)) {
            answer.outcome = Answer::Outcome::notStarted;
            return answer;
        }
    }
    if (!ChildProcess::writeAll(m_input, request(path, destination, tagValuePairs))) {
        stop();
        return {Answer::Outcome::stopped, 0, QString(), 0, {}};
    }
    return waitForAnswer();
}

// Reads until the terminator. Silence alone is no hang: a worker that is busy with a large
// file uses processor time; one that uses none and says nothing for the whole time-out is.
WriteWorker::Answer WriteWorker::waitForAnswer()
{
    QByteArray buffer;
    Clock::time_point lastSign = Clock::now();
    std::optional<std::chrono::nanoseconds> lastTime = ChildProcess::processorTime(m_pid);
    for (;;) {
        pollfd wait = {m_output, POLLIN, 0};
        const auto pollTime = std::min(longestPoll, m_hangTimeout);
        const int ready = poll(&wait, 1, int(pollTime.count()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready > 0) {
            char chunk[4096];
            const ssize_t count = read(m_output, chunk, sizeof chunk);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0) {
                stop();
                return {Answer::Outcome::stopped, 0, QString(), 0, {}};
            }
            buffer.append(chunk, count);
            lastSign = Clock::now();
            if (buffer.endsWith(terminator))
                break;
            continue;
        }
        const std::optional<std::chrono::nanoseconds> time = ChildProcess::processorTime(m_pid);
        if (time != lastTime) {
            lastTime = time;
            lastSign = Clock::now();
        } else if (Clock::now() - lastSign >= m_hangTimeout) {
            stop();
            return {Answer::Outcome::hung, 0, QString(), 0, {}};
        }
    }

    buffer.chop(terminator.size());
    const qsizetype lineEnd = buffer.indexOf('\n');
    Answer answer;
    bool isNumber = false;
    answer.status = buffer.left(lineEnd).toInt(&isNumber);
    if (!isNumber || lineEnd < 0) {
        // Not a worker of ours: it can't be trusted with the next file either.
        stop();
        return {Answer::Outcome::stopped, 0, QString(), 0, {}};
    }
    // "undo TAG VALUE" lines come only with a success; the rest is the message.
    QByteArrayList messageLines;
    for (const QByteArray &line : buffer.mid(lineEnd + 1).split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (answer.status == 0 && fields.size() == 3 && fields.at(0) == "undo")
            answer.undoPairs << QString::fromLatin1(fields.at(1))
                             << QString::fromLatin1(fields.at(2));
        else
            messageLines << line;
    }
    answer.output = QString::fromUtf8(messageLines.join('\n'));
    return answer;
}

QByteArray WriteWorker::request(const QString &path, const QString &destination,
                                const QStringList &tagValuePairs)
{
    QByteArray line
        = QFile::encodeName(path).toBase64() + ' ' + QFile::encodeName(destination).toBase64();
    for (qsizetype i = 0; i + 1 < tagValuePairs.size(); i += 2)
        line += ' ' + tagValuePairs[i].toUtf8() + ' ' + tagValuePairs[i + 1].toUtf8().toBase64();
    return line + '\n';
}
