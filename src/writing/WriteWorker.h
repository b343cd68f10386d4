#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <sys/types.h>

// The long-running write worker (set_tag.pl --serve among the resources) and the conversation
// with it: one request per file, each answered with the status and message a one-shot run would
// have given, ending in the terminator. Saves a Perl and ExifTool start per file. A worker that
// has gone, or that has neither answered nor used any processor time for hangTimeout, is
// stopped; the file it was writing gets a failure, and the next request starts a new worker.
// One caller at a time.
class WriteWorker
{
public:
    static constexpr QByteArrayView terminator = "-<-do-not_use_thisInMetaData-Finished-->";
    static constexpr std::chrono::milliseconds defaultHangTimeout = std::chrono::minutes(1);

    struct Answer
    {
        enum class Outcome {
            answered, // status and output are the worker's
            notStarted, // launchError says why
            stopped, // the worker ended before it answered
            hung, // the worker stopped answering and was killed
        };
        Outcome outcome = Outcome::answered;
        int status = 0;
        QString output;
        int launchError = 0;
        // With recordUndo, the exact tag, value pairs that put back what a successful write
        // replaced; they are not part of output.
        QStringList undoPairs;
    };

    // With recordUndo the worker tells, for each successful write, what the write replaced.
    explicit WriteWorker(std::chrono::milliseconds hangTimeout = defaultHangTimeout,
                         bool recordUndo = false);
    // A stand-in worker at launchPath, for tests.
    WriteWorker(const QString &launchPath, std::chrono::milliseconds hangTimeout,
                bool recordUndo = false);
    // Closes the worker's input, which makes it exit; does not wait for it.
    ~WriteWorker();

    WriteWorker(const WriteWorker &) = delete;
    WriteWorker &operator=(const WriteWorker &) = delete;

    // Asks the worker to write path with the tags into destination and waits for the answer.
    Answer write(const QString &path, const QString &destination, const QStringList &tagValuePairs);

    // The process id of the running worker, or -1 before the first request and after it went.
    pid_t processIdentifier() const { return m_pid; }

    // One request line: path and destination in base64, then each tag and its value's UTF-8 in
    // base64, separated by spaces.
    static QByteArray request(const QString &path, const QString &destination,
                              const QStringList &tagValuePairs);

private:
    bool launch(int *launchError);
    void stop();
    Answer waitForAnswer();

    const QString m_launchPath;
    const std::chrono::milliseconds m_hangTimeout;
    const bool m_recordUndo;
    pid_t m_pid = -1;
    int m_input = -1; // our end of the worker's standard input
    int m_output = -1; // our end of the worker's standard output
};
