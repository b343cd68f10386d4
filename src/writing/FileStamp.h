#pragma once

#include <QString>

// What tells a file changed since Palomet last wrote it: its status change time and its size.
// The modification time can't tell, as every write puts it back.
struct FileStamp
{
    qint64 changeTimeNanoseconds = 0;
    qint64 size = 0;

    bool operator==(const FileStamp &) const = default;

    // The stamp of the file at path, links followed; absent() when there is no such file.
    static FileStamp of(const QString &path);
    // What a missing file is stamped with.
    static FileStamp absent() { return {-1, -1}; }
};
