#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ctime>
#include <optional>
#include <sys/types.h>

// Performs one write to one file: runs the write worker (set_tag.pl beside ExifTool in the
// resource folder) as a one-shot child, turns a failure into a short message for the user and
// puts back the file's modification date, permissions and owner, which the rewrite through a
// temporary file would otherwise change. Each call blocks its thread for the whole write.
//
// Shares nothing between calls, so it is safe to call from several threads at once; two writes
// to one file at the same time are not prevented here.
class ExifWriteManager
{
public:
    static ExifWriteManager &shared();

    // Sets the flat tag, value list on the file. On false, errorMessage holds a short text.
    // A list of odd length is a programming error and stops the program.
    bool setTagsOfFile(const QString &path, const QStringList &tagValuePairs,
                       std::optional<QString> &errorMessage);

    // The child's arguments: the path, "<none>", then each tag and its value's UTF-8 in base64.
    static QList<QByteArray> workerArguments(const QString &path, const QStringList &tagValuePairs);

    // The user's message for the worker's output and exit status.
    static QString parseExifToolError(const QString &output, int terminationStatus);

    // What the rewrite changes and is put back afterwards. Absent members were not readable;
    // the creation date has no settable equal on Linux and is not kept.
    struct FileAttributes
    {
        std::optional<timespec> modificationDate;
        std::optional<mode_t> permissions;
        std::optional<uid_t> owner;
        std::optional<gid_t> group;
    };

private:
    ExifWriteManager() = default;

    static FileAttributes readAttributes(const QString &path);
    static void reapplyExistingAttributes(const FileAttributes &attributes, const QString &path);
};
