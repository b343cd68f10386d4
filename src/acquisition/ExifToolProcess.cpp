#include "ExifToolProcess.h"

#include "acquisition/MacRomanDecoder.h"
#include "platform/ChildProcess.h"
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
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

// The worker's environment: ours, with the five variables it reads set anew.
QList<QByteArray> workerEnvironment(const QStringList &whiteList, const QStringList &rawWhiteList,
                                    bool geolocation)
{
    const std::vector<std::pair<QByteArray, QByteArray>> settings = {
        {"EXIFTOOL_CHARSET", "utf8"},
        {"EXIFTOOL_CHARSET_FILENAME", "utf8"},
        {"EXIFTOOL_INCLUDE_TAGS", whiteList.join(QLatin1Char(',')).toUtf8()},
        {"EXIFTOOL_INCLUDE_RAW_TAGS", rawWhiteList.join(QLatin1Char(',')).toUtf8()},
        {"EXIFTOOL_ENABLE_GEOLOCATION", geolocation ? "1" : "0"},
    };
    QList<QByteArray> environment;
    for (char **entry = environ; entry && *entry; ++entry) {
        const QByteArray variable(*entry);
        const QByteArray name = variable.left(variable.indexOf('='));
        const bool replaced
            = std::any_of(settings.begin(), settings.end(),
                          [&](const auto &setting) { return setting.first == name; });
        if (!replaced)
            environment.append(variable);
    }
    for (const auto &[name, value] : settings)
        environment.append(name + '=' + value);
    return environment;
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
    // A replaced worker exits once its input is closed.
    ChildProcess::reapInBackground(m_pid);
}

void ExifToolProcess::launch()
{
    // The script is its own executable, started in its own folder; standard error stays ours.
    const ChildProcess::Started started
        = ChildProcess::start(m_launchPath, {}, QFileInfo(m_launchPath).absolutePath(),
                              ChildProcess::Input::Pipe, ChildProcess::ErrorOutput::Inherited,
                              workerEnvironment(m_whiteList, m_rawWhiteList, m_geolocation));
    if (started.launchError != 0)
        qFatal("Could not start %s: %s", qPrintable(m_launchPath), strerror(started.launchError));
    m_pid = started.pid;
    m_writeFd = started.input;
    m_readFd = started.output;
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
    if (ChildProcess::writeAll(m_writeFd, request)) {
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
