#include "FileAttributes.h"

#include <QFile>
#include <QSet>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace FileAttributes {

std::optional<QByteArray> extendedAttribute(const QString &path, const char *name)
{
    const QByteArray encoded = QFile::encodeName(path);
    QByteArray buffer(256, Qt::Uninitialized);
    for (int attempt = 0; attempt < 4; ++attempt) {
        const ssize_t size
            = ::getxattr(encoded.constData(), name, buffer.data(), size_t(buffer.size()));
        if (size >= 0) {
            buffer.truncate(qsizetype(size));
            return buffer;
        }
        if (errno != ERANGE)
            return std::nullopt;
        const ssize_t needed = ::getxattr(encoded.constData(), name, nullptr, 0);
        if (needed < 0)
            return std::nullopt;
        buffer.resize(qsizetype(needed));
    }
    return std::nullopt;
}

std::optional<QStringList> tags(const QString &path)
{
    const std::optional<QByteArray> raw = extendedAttribute(path, "user.xdg.tags");
    if (!raw)
        return std::nullopt;
    QStringList result;
    const QString text = QString::fromUtf8(*raw);
    if (text.isEmpty())
        return result;
    for (const QString &tag : text.split(QLatin1Char(',')))
        result.append(tag);
    return result;
}

std::optional<QDateTime> creationDate(const QString &path)
{
    struct statx info = {};
    const QByteArray encoded = QFile::encodeName(path);
    if (::statx(AT_FDCWD, encoded.constData(), AT_SYMLINK_NOFOLLOW, STATX_BTIME, &info) != 0)
        return std::nullopt;
    if (!(info.stx_mask & STATX_BTIME))
        return std::nullopt;
    const qint64 ms = qint64(info.stx_btime.tv_sec) * 1000 + info.stx_btime.tv_nsec / 1000000;
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
}

bool isFilePackage(const QString &path)
{
    static const QSet<QString> packageExtensions = {
        QStringLiteral("app"),           QStringLiteral("bundle"),
        QStringLiteral("framework"),     QStringLiteral("plugin"),
        QStringLiteral("kext"),          QStringLiteral("photoslibrary"),
        QStringLiteral("aplibrary"),     QStringLiteral("migratedaplibrary"),
        QStringLiteral("imovielibrary"), QStringLiteral("fcpbundle"),
        QStringLiteral("rtfd"),          QStringLiteral("pages"),
        QStringLiteral("numbers"),       QStringLiteral("key"),
        QStringLiteral("logicx"),        QStringLiteral("band"),
        QStringLiteral("xcodeproj"),     QStringLiteral("playground"),
        QStringLiteral("scptd"),
    };
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (dot <= slash + 1 || dot == path.size() - 1)
        return false;
    if (!packageExtensions.contains(path.mid(dot + 1).toLower()))
        return false;
    struct stat info = {};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace FileAttributes
