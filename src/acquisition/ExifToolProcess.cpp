#include "ExifToolProcess.h"

#include "acquisition/MacRomanDecoder.h"
#include "platform/Resources.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

// The worker's environment: ours, with the five variables it reads set anew.
std::vector<QByteArray> workerEnvironment(const QStringList &whiteList,
                                          const QStringList &rawWhiteList, bool geolocation)
{
    const std::vector<std::pair<QByteArray, QByteArray>> settings = {
        {"EXIFTOOL_CHARSET", "utf8"},
        {"EXIFTOOL_CHARSET_FILENAME", "utf8"},
        {"EXIFTOOL_INCLUDE_TAGS", whiteList.join(QLatin1Char(',')).toUtf8()},
        {"EXIFTOOL_INCLUDE_RAW_TAGS", rawWhiteList.join(QLatin1Char(',')).toUtf8()},
        {"EXIFTOOL_ENABLE_GEOLOCATION", geolocation ? "1" : "0"},
    };
    std::vector<QByteArray> environment;
    for (char **entry = environ; entry && *entry; ++entry) {
        const QByteArray variable(*entry);
        const QByteArray name = variable.left(variable.indexOf('='));
        const bool replaced
            = std::any_of(settings.begin(), settings.end(),
                          [&](const auto &setting) { return setting.first == name; });
        if (!replaced)
            environment.push_back(variable);
    }
    for (const auto &[name, value] : settings)
        environment.push_back(name + '=' + value);
    return environment;
}

// Starts the script as its own executable with two pipes, in its own folder. Returns the child's
// id and our ends of its standard input and output; failure to start stops the program.
pid_t spawnWorker(const QString &launchPath, const std::vector<QByteArray> &environment,
                  int *writeFd, int *readFd)
{
    int input[2];
    int output[2];
    // Close-on-exec, so that no other child of ours holds the worker's pipes open.
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0)
        qFatal("Could not create the pipes of %s", qPrintable(launchPath));

    const QByteArray path = QFile::encodeName(launchPath);
    const QByteArray directory = QFile::encodeName(QFileInfo(launchPath).absolutePath());

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addchdir_np(&actions, directory.constData());

    // The worker starts with no blocked signals and a default SIGPIPE, whatever our thread has.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    std::vector<char *> envp;
    for (const QByteArray &variable : environment)
        envp.push_back(const_cast<char *>(variable.constData()));
    envp.push_back(nullptr);
    char *argv[] = {const_cast<char *>(path.constData()), nullptr};

    pid_t pid = -1;
    const int error = posix_spawn(&pid, path.constData(), &actions, &attributes, argv, envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0)
        qFatal("Could not start %s: %s", path.constData(), strerror(error));

    close(input[0]);
    close(output[1]);
    *writeFd = input[1];
    *readFd = output[0];
    return pid;
}

// Writes all of data; false when the reader is gone. SIGPIPE is held back on this thread
// meanwhile and a pending one taken away, so a dead worker can't end the application.
bool writeWithoutSigpipe(int fd, const QByteArray &data)
{
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    sigset_t previous;
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);

    bool written = true;
    qsizetype done = 0;
    while (done < data.size()) {
        const ssize_t count = write(fd, data.constData() + done, size_t(data.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            written = false;
            break;
        }
        done += count;
    }
    if (!written) {
        const timespec noWait {0, 0};
        while (sigtimedwait(&pipeSignal, nullptr, &noWait) == SIGPIPE) { }
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return written;
}

// A replaced worker exits once its input is closed; reaping it must not hold anyone up.
void reapInBackground(pid_t pid)
{
    std::thread([pid] {
        while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) { }
    }).detach();
}

std::optional<QString> decodeUtf8(const QByteArray &buffer)
{
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(buffer);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace

ExifToolProcess::ExifToolProcess(const QStringList &whiteList, const QStringList &rawWhiteList,
                                 bool geolocation)
    : ExifToolProcess(Resources::path(QStringLiteral("extract.pl")), whiteList, rawWhiteList,
                      geolocation)
{ }

ExifToolProcess::ExifToolProcess(const QString &launchPath, const QStringList &whiteList,
                                 const QStringList &rawWhiteList, bool geolocation)
    : m_launchPath(launchPath)
    , m_whiteList(whiteList)
    , m_rawWhiteList(rawWhiteList)
    , m_geolocation(geolocation)
{
    // The worker is part of the application: without it nothing can be read.
    if (!QFileInfo(m_launchPath).isFile())
        std::abort();
    launch();
}

ExifToolProcess::~ExifToolProcess()
{
    {
        std::lock_guard lock(m_mutex);
        m_closing = true;
    }
    m_changed.notify_all();
    m_reader.join();
    close(m_writeFd);
    close(m_readFd);
    reapInBackground(m_pid);
}

void ExifToolProcess::launch()
{
    m_pid = spawnWorker(m_launchPath, workerEnvironment(m_whiteList, m_rawWhiteList, m_geolocation),
                        &m_writeFd, &m_readFd);
    m_reader = std::thread([this] { readerLoop(); });
}

void ExifToolProcess::terminate()
{
    kill(m_pid, SIGTERM);
}

// The readability handler: while a request waits, each chunk is appended and the whole is
// tested; the end of the worker or a complete answer hands the buffer back.
void ExifToolProcess::readerLoop()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_waiting || m_closing; });
        if (m_closing)
            return;
        lock.unlock();
        char chunk[65536];
        ssize_t count;
        do {
            count = read(m_readFd, chunk, sizeof chunk);
        } while (count < 0 && errno == EINTR);
        lock.lock();
        if (count > 0)
            m_buffer.append(chunk, count);
        if (count <= 0 || responseIsComplete(m_buffer)) {
            m_waiting = false;
            m_changed.notify_all();
        }
    }
}

std::optional<QString> ExifToolProcess::obtainStrippedString(const QString &path)
{
    QStringEncoder encoder(QStringConverter::Utf8);
    QByteArray request = encoder.encode(path);
    if (encoder.hasError())
        return std::nullopt;
    // The request is one line: a path with a line feed would reach the worker as two requests
    // and shift every later answer by one. It is answered as a file with no tags instead.
    if (request.contains('\n'))
        return QString();
    request.append('\n');

    QByteArray buffer;
    // A worker that is gone can't be written to; that counts as the end of its output.
    if (writeWithoutSigpipe(m_writeFd, request)) {
        std::unique_lock lock(m_mutex);
        m_buffer.clear();
        m_waiting = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_waiting; });
        buffer = std::exchange(m_buffer, QByteArray());
    }
    return decodeResponse(buffer);
}

bool ExifToolProcess::responseIsComplete(const QByteArray &buffer)
{
    if (!buffer.endsWith(terminator.back()))
        return false;
    const std::optional<QString> utf8 = decodeUtf8(buffer);
    const QString text = utf8 ? *utf8 : MacRomanDecoder::decode(buffer);
    return text.endsWith(QLatin1StringView(terminator.data(), terminator.size()));
}

std::optional<QString> ExifToolProcess::decodeResponse(const QByteArray &buffer)
{
    if (std::optional<QString> utf8 = decodeUtf8(buffer))
        return utf8;
    return QString::fromLatin1(buffer);
}
