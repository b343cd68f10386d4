#pragma once

#include "ImagePreviewItem.h"
#include "platform/OperationQueue.h"

#include <QHash>
#include <QImage>
#include <QMutex>
#include <QSizeF>
#include <QStringList>
#include <QUuid>

#include <memory>
#include <optional>

class ThumbnailGenerator;

struct ThumbnailRequest
{
    ImagePreviewItem item;
    QSizeF size; // in points
    double scale = 1.0;
    int index = 0; // the item's position in the asking view's list
    QUuid requestId;
};

struct ThumbnailResult
{
    int index = 0;
    QString path;
    std::optional<QImage> image;
    QUuid requestId;
    bool success = false; // there is something to show
};

class ThumbnailGeneratorDelegate
{
public:
    virtual ~ThumbnailGeneratorDelegate() = default;
    virtual void thumbnailGenerator(ThumbnailGenerator &generator, const ThumbnailResult &result)
        = 0;
};

// Small images of files, made in the background. Each request first looks in a tiny cache of
// finished images (by path, least recently used first out); a miss is made on the owner's queue
// by the first source that gives something: the thumbnailer (the freedesktop cache, else a
// decode at the needed size that is written back to that cache), then the whole image, then
// the file type's icon. Every image is rounded and outlined.
//
// Results reach the delegate on the main thread; a cache hit reaches it before requestThumbnail
// returns. Only a new list of paths cancels work (cancelAllRequests): requests in flight then
// find their id gone at one of two check points and deliver nothing.
//
// Always owned through a shared_ptr (create): queued work holds the generator weakly and drops
// its result once the generator is gone.
class ThumbnailGenerator : public std::enable_shared_from_this<ThumbnailGenerator>
{
    struct Passkey
    { };

public:
    static constexpr double thumbnailCornerRadius = 4.0;
    static constexpr double thumbnailBorderWidth = 1.0;

    static std::shared_ptr<ThumbnailGenerator> create(int maxConcurrent, int cacheSize);
    ThumbnailGenerator(Passkey, int maxConcurrent, int cacheSize);
    ThumbnailGenerator(const ThumbnailGenerator &) = delete;
    ThumbnailGenerator &operator=(const ThumbnailGenerator &) = delete;

    // Main thread only. The delegate is held weakly: a result for a vanished one is dropped.
    void setDelegate(std::weak_ptr<ThumbnailGeneratorDelegate> delegate);

    // Gives the id of the request, which the result carries. Main thread.
    QUuid requestThumbnail(const ImagePreviewItem &item, int index, const QSizeF &size);
    // A hit moves the path to the most recent place.
    std::optional<QImage> getCachedThumbnail(const QString &path);

    // What the owner does on a new list of paths: forget the requests in flight, drop the
    // queued work, and empty the cache.
    void cancelAllRequests();
    void clearCache();

    OperationQueue &operationQueue() { return m_operationQueue; }
    int maxCacheSize() const { return m_maxCacheSize; }
    QStringList cacheAccessOrder() const;
    int pendingRequestCount() const;

    // Waits until no thumbnail is being made by any generator, for at most timeoutMs; false if
    // some still is. For the end of the process: a decode must not outlive the libraries' data.
    static bool waitForWorkInFlight(int timeoutMs);

    // The main screen's device pixel ratio, 2.0 when there is no screen.
    static double mainScreenScale();
    // Fits the image into size points without enlarging it; the result has scale pixels per
    // point, or fewer when the image has fewer.
    static QImage scaleImage(const QImage &image, const QSizeF &size, double scale);
    // Clips to a rounded rectangle inset by half the border and strokes it in black. Radius and
    // border are in pixels; the result keeps the image's size in points.
    static QImage roundCorners(const QImage &image, double radius, double borderWidth);
    // The icon of the file's type, fitted into size points. Main thread.
    static QImage getFileIcon(const QString &mimeTypeName, const QSizeF &size, double scale);

private:
    static void generateThumbnail(const std::weak_ptr<ThumbnailGenerator> &generator,
                                  const ThumbnailRequest &request);
    bool isPending(const QUuid &requestId) const;
    void deliverResult(const ThumbnailResult &result, const QString &path);
    void addToCacheUnsafe(const QImage &image, const QString &path);

    // Main thread only.
    std::weak_ptr<ThumbnailGeneratorDelegate> m_delegate;
    OperationQueue m_operationQueue;
    mutable QMutex m_lock;
    // Owned by m_lock: the three collections below. Never held across a decode or a call to
    // the delegate.
    QHash<QUuid, ThumbnailRequest> m_pendingRequests;
    QHash<QString, QImage> m_thumbnailCache;
    QStringList m_cacheAccessOrder;
    const int m_maxCacheSize;
};
