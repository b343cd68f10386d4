#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

// The per-user thumbnail cache that desktop file managers share: PNG files named by the MD5 of
// the file's URI, in one folder per size, each carrying the URI and the file's modification time
// so that a changed file is not shown with an old picture. Reading and writing are safe from any
// thread; writes go to a temporary file that is renamed into place.
class FreedesktopThumbnailCache
{
public:
    // The folders and the longest side their thumbnails may have, in pixels.
    enum class Folder { normal = 128, large = 256, xLarge = 512, xxLarge = 1024 };

    // $XDG_CACHE_HOME/thumbnails, or ~/.cache/thumbnails when that is not set.
    static QString thumbnailsDirectory();
    static QString folderName(Folder folder);
    // The smallest folder whose thumbnails hold the longer side of pixels; none above 1024.
    static std::optional<Folder> folderFor(const QSize &pixels);

    // The file's absolute URI as file managers write it: UTF-8 bytes, with everything outside
    // the letters, digits and "-._~!$&'()*+,=:@/" percent-encoded.
    static QByteArray uriForPath(const QString &path);
    static QString thumbnailPath(const QString &path, Folder folder);

    // A thumbnail of the unchanged file that covers pixels without being enlarged, looked for
    // from the fitting folder up; a null image if there is none.
    static QImage lookup(const QString &path, const QSize &pixels);
    // Stores the thumbnail (at most the folder's size) with the file's URI, modification time,
    // size, type and original dimensions. Only readable regular files are looked up or stored,
    // and never the cache's own files.
    static bool store(const QString &path, const QImage &thumbnail, Folder folder,
                      const QSize &originalSize, const QString &mimeType);
};
