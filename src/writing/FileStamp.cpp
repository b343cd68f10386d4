#include "FileStamp.h"

#include <QFile>

#include <sys/stat.h>

FileStamp FileStamp::of(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return absent();
    return FileStamp {qint64(status.st_ctim.tv_sec) * 1000000000 + status.st_ctim.tv_nsec,
                      qint64(status.st_size)};
}
