#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

#include "FileStamp.h"

class FileReplacement;
class WriteWorker;

// What a recorded write tells its caller: the pairs that undo it, before the new file takes the
// old one's place, and the file's stamp once it has.
struct WriteRecording
{
    std::function<void(const QStringList &undoPairs)> willReplace;
    std::optional<FileStamp> written;
};

// Performs one write to one file: has the write worker (set_tag.pl beside ExifTool in the
// resource folder) write the file anew beside the original, turns a failure into a short
// message for the user, and puts the new file in place with everything the file system keeps
// about the original (FileReplacement): owner, mode, extended attributes, modification time.
// Each call blocks its thread for the whole write.
//
// Shares nothing between calls, so it is safe to call from several threads at once; two writes
// to one file at the same time are not prevented here.
class ExifWriteManager
{
public:
    static ExifWriteManager &shared();

    // Sets the flat tag, value list on the file through a one-shot worker. On false,
    // errorMessage holds a short text. A list of odd length is a programming error and stops
    // the program.
    bool setTagsOfFile(const QString &path, const QStringList &tagValuePairs,
                       std::optional<QString> &errorMessage);
    // The same through a long-running worker, which the write queue keeps while writes come.
    // With a recording (and a worker that records undo), the pairs that undo the write are
    // handed over before the file is replaced, and the stamp of the written file is kept.
    bool setTagsOfFile(const QString &path, const QStringList &tagValuePairs,
                       std::optional<QString> &errorMessage, WriteWorker &worker,
                       WriteRecording *recording = nullptr);

    // The one-shot child's arguments: the path, where the new file goes, then each tag and its
    // value's UTF-8 in base64.
    static QList<QByteArray> workerArguments(const QString &path, const QString &destination,
                                             const QStringList &tagValuePairs);

    // The pairs that undo the making of a file: written, they remove it.
    static const QStringList &removalPairs();

    // The user's message for the worker's output and exit status.
    static QString parseExifToolError(const QString &output, int terminationStatus);

private:
    ExifWriteManager() = default;

    // What running a worker for one file gave: a status and output, or a message of its own.
    struct WorkerResult
    {
        int status = 0;
        QString output;
        std::optional<QString> failure;
        QStringList undoPairs;
    };
    using WorkerRun = std::function<WorkerResult(const FileReplacement &, const QStringList &)>;

    static bool writeFile(const QString &path, const QStringList &tagValuePairs,
                          std::optional<QString> &errorMessage, const WorkerRun &run,
                          WriteRecording *recording = nullptr);
};
