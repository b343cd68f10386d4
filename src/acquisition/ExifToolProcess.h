#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

// One long-running read worker (extract.pl among the resources) and the conversation with it:
// a path and a line feed go in, the tags come back ending in the terminator. The tag lists
// travel once, in the worker's environment at launch. Restarting is the caller's business.
class ExifToolProcess
{
public:
    static constexpr QByteArrayView terminator = "-<-do-not_use_thisInMetaData-Finished-->";

    // Starts the resource worker at once; its absence stops the program.
    ExifToolProcess(const QStringList &whiteList, const QStringList &rawWhiteList,
                    bool geolocation);
    // Starts the worker at launchPath instead, for stand-in workers.
    ExifToolProcess(const QString &launchPath, const QStringList &whiteList,
                    const QStringList &rawWhiteList, bool geolocation);
    // Closes the worker's input, which makes it exit; does not wait for it.
    ~ExifToolProcess();

    ExifToolProcess(const ExifToolProcess &) = delete;
    ExifToolProcess &operator=(const ExifToolProcess &) = delete;

    // Blocks until the worker has answered for path and returns the whole answer, terminator
    // included. Absent only when the path can't be encoded or the answer can't be decoded. The
    // end of the worker ends the wait with what came so far. A path with a line feed can't be
    // asked for and gets an empty answer. One caller at a time.
    std::optional<QString> obtainStrippedString(const QString &path);

    // Asks the worker to stop (SIGTERM), as a replaced worker is told.
    void terminate();

    const QString &launchPath() const { return m_launchPath; }
    pid_t processIdentifier() const { return m_pid; }

    // The reader's test after each chunk: the buffer, as UTF-8 or else as Mac OS Roman, ends
    // with the terminator.
    static bool responseIsComplete(const QByteArray &buffer);
    // The delivered text: UTF-8, or else ISO Latin 1.
    static std::optional<QString> decodeResponse(const QByteArray &buffer);

private:
    struct Reader;

    void launch();
    void readerLoop();

    const QString m_launchPath;
    const QStringList m_whiteList;
    const QStringList m_rawWhiteList;
    const bool m_geolocation;

    pid_t m_pid = -1;
    int m_writeFd = -1; // our end of the worker's standard input
    int m_readFd = -1; // our end of the worker's standard output

    // Owned by m_mutex: the hand-over between the caller and the reader thread. The reader
    // reads only while a request is waiting, so unasked bytes stay in the pipe.
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_waiting = false;
    bool m_closing = false;
    QByteArray m_buffer;
    std::thread m_reader;
};
