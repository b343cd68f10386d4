#include "FreedesktopThumbnailCache.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>
#include <QUrl>

namespace {

constexpr FreedesktopThumbnailCache::Folder allFolders[]
    = {FreedesktopThumbnailCache::Folder::normal, FreedesktopThumbnailCache::Folder::large,
       FreedesktopThumbnailCache::Folder::xLarge, FreedesktopThumbnailCache::Folder::xxLarge};

QString modificationTime(const QFileInfo &file)
{
    return QString::number(file.lastModified().toSecsSinceEpoch());
}

// Thumbnails are private to their user, as the pictures they show may be.
bool makePrivateDirectory(const QString &path)
{
    if (!QDir().mkpath(path))
        return false;
    return QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

QString FreedesktopThumbnailCache::thumbnailsDirectory()
{
    const QString cacheHome = qEnvironmentVariable("XDG_CACHE_HOME").trimmed();
    const QString base = !cacheHome.isEmpty() && QDir::isAbsolutePath(cacheHome)
        ? cacheHome
        : QDir::homePath() + QStringLiteral("/.cache");
    return QDir::cleanPath(base + QStringLiteral("/thumbnails"));
}

QString FreedesktopThumbnailCache::folderName(Folder folder)
{
    switch (folder) {
    case Folder::normal:
        return QStringLiteral("normal");
    case Folder::large:
        return QStringLiteral("large");
    case Folder::xLarge:
        return QStringLiteral("x-large");
    case Folder::xxLarge:
        return QStringLiteral("xx-large");
    }
    return {};
}

std::optional<FreedesktopThumbnailCache::Folder> FreedesktopThumbnailCache::folderFor(
    const QSize &pixels)
{
    const int longer = std::max(pixels.width(), pixels.height());
    for (Folder folder : allFolders) {
        if (longer <= int(folder))
            return folder;
    }
    return std::nullopt;
}

QByteArray FreedesktopThumbnailCache::uriForPath(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    return QByteArrayLiteral("file://")
        + QUrl::toPercentEncoding(absolute.toUtf8(), QByteArrayLiteral("!$&'()*+,=:@/"));
}

QString FreedesktopThumbnailCache::thumbnailPath(const QString &path, Folder folder)
{
    const QByteArray hash
        = QCryptographicHash::hash(uriForPath(path), QCryptographicHash::Md5).toHex();
    return thumbnailsDirectory() + u'/' + folderName(folder) + u'/' + QString::fromLatin1(hash)
        + QStringLiteral(".png");
}

QImage FreedesktopThumbnailCache::lookup(const QString &path, const QSize &pixels)
{
    const QFileInfo file(path);
    const auto fitting = folderFor(pixels);
    if (!fitting || !file.isFile() || !file.isReadable())
        return {};
    const QString uri = QString::fromLatin1(uriForPath(path));
    const QString mtime = modificationTime(file);
    for (Folder folder : allFolders) {
        if (int(folder) < int(*fitting))
            continue;
        // The keys are read with the picture: the reader's header text can't hold "::" names.
        QImageReader reader(thumbnailPath(path, folder), "png");
        const QImage thumbnail = reader.read();
        if (thumbnail.isNull() || thumbnail.text(QStringLiteral("Thumb::URI")) != uri
            || thumbnail.text(QStringLiteral("Thumb::MTime")) != mtime)
            continue;
        // Smaller than its folder allows means the picture itself was that small.
        const bool wholePicture = std::max(thumbnail.width(), thumbnail.height()) < int(folder);
        const bool coversRequest
            = thumbnail.width() >= pixels.width() || thumbnail.height() >= pixels.height();
        if (wholePicture || coversRequest)
            return thumbnail;
    }
    return {};
}

bool FreedesktopThumbnailCache::store(const QString &path, const QImage &thumbnail, Folder folder,
                                      const QSize &originalSize, const QString &mimeType)
{
    const QFileInfo file(path);
    const QString root = thumbnailsDirectory();
    if (thumbnail.isNull() || !file.isFile() || !file.isReadable()
        || std::max(thumbnail.width(), thumbnail.height()) > int(folder)
        || file.absoluteFilePath().startsWith(root + u'/'))
        return false;
    const QString directory = root + u'/' + folderName(folder);
    if (!makePrivateDirectory(root) || !makePrivateDirectory(directory))
        return false;

    QImage tagged = thumbnail;
    tagged.setDevicePixelRatio(1.0);
    tagged.setText(QStringLiteral("Thumb::URI"), QString::fromLatin1(uriForPath(path)));
    tagged.setText(QStringLiteral("Thumb::MTime"), modificationTime(file));
    tagged.setText(QStringLiteral("Thumb::Size"), QString::number(file.size()));
    if (!mimeType.isEmpty())
        tagged.setText(QStringLiteral("Thumb::Mimetype"), mimeType);
    if (originalSize.isValid()) {
        tagged.setText(QStringLiteral("Thumb::Image::Width"),
                       QString::number(originalSize.width()));
        tagged.setText(QStringLiteral("Thumb::Image::Height"),
                       QString::number(originalSize.height()));
    }
    tagged.setText(QStringLiteral("Software"), QStringLiteral("Palomet"));

    QSaveFile target(thumbnailPath(path, folder));
    if (!target.open(QIODevice::WriteOnly))
        return false;
    target.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    QImageWriter writer(&target, "png");
    // Fast compression: a thumbnail is written once per file and read many times.
    writer.setQuality(70);
    if (!writer.write(tagged)) {
        target.cancelWriting();
        return false;
    }
    return target.commit();
}
