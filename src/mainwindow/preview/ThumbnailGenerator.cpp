#include "ThumbnailGenerator.h"

#include "FreedesktopThumbnailCache.h"
#include "ScaledImageDecoder.h"
#include "platform/MainQueue.h"

#include <QApplication>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QMimeDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cmath>

namespace {

// Decodes outlive their generator (they hold it weakly); a process about to end waits for them.
std::atomic<int> workInFlight {0};

struct InFlight
{
    InFlight() { ++workInFlight; }
    ~InFlight() { --workInFlight; }
    InFlight(const InFlight &) = delete;
    InFlight &operator=(const InFlight &) = delete;
};

// What the thumbnailer made: an image fitted to the request, and the decoded one to write back
// to the shared cache (null when it came from there, or when no cache folder is large enough).
struct Thumbnailed
{
    QImage image;
    QImage toStore;
    std::optional<FreedesktopThumbnailCache::Folder> folder;
    QSize originalSize;
    QString mimeType;
};

constexpr double largestIconSide = 128;

QSize pixelsFor(const QSizeF &size, double scale)
{
    return QSize(std::max(1, int(std::ceil(size.width() * scale))),
                 std::max(1, int(std::ceil(size.height() * scale))));
}

// The shared cache first; otherwise a decode at the size of the folder that fits the request, so
// that what is written back is a proper thumbnail of that folder for every other reader.
Thumbnailed thumbnailer(const QString &path, const QSizeF &size, double scale)
{
    const QSize needed = pixelsFor(size, scale);
    const auto folder = FreedesktopThumbnailCache::folderFor(needed);
    if (folder) {
        const QImage cached = FreedesktopThumbnailCache::lookup(path, needed);
        if (!cached.isNull())
            return {ThumbnailGenerator::scaleImage(cached, size, scale), {}, {}, {}, {}};
    }
    const int edge = folder ? int(*folder) : 0;
    const ScaledImageDecoder::Decoded decoded
        = ScaledImageDecoder::decode(path, folder ? QSize(edge, edge) : needed);
    Thumbnailed made;
    made.mimeType = decoded.mimeType;
    if (decoded.image.isNull())
        return made;
    made.image = ThumbnailGenerator::scaleImage(decoded.image, size, scale);
    if (folder) {
        made.toStore = decoded.image;
        made.folder = folder;
        made.originalSize = decoded.originalSize;
    }
    return made;
}

} // namespace

std::shared_ptr<ThumbnailGenerator> ThumbnailGenerator::create(int maxConcurrent, int cacheSize)
{
    return std::make_shared<ThumbnailGenerator>(Passkey(), maxConcurrent, cacheSize);
}

ThumbnailGenerator::ThumbnailGenerator(Passkey, int maxConcurrent, int cacheSize)
    : m_operationQueue(QStringLiteral("net.morrowgate.ImagePreview.ThumbnailGenerator"),
                       maxConcurrent, QualityOfService::UserInitiated)
    , m_maxCacheSize(cacheSize)
{ }

void ThumbnailGenerator::setDelegate(std::weak_ptr<ThumbnailGeneratorDelegate> delegate)
{
    m_delegate = std::move(delegate);
}

QUuid ThumbnailGenerator::requestThumbnail(const ImagePreviewItem &item, int index,
                                           const QSizeF &size)
{
    const QUuid requestId = QUuid::createUuid();
    if (std::optional<QImage> cached = getCachedThumbnail(item.path)) {
        if (const auto delegate = m_delegate.lock())
            delegate->thumbnailGenerator(*this, {index, item.path, cached, requestId, true});
        return requestId;
    }
    const ThumbnailRequest request {item, size, mainScreenScale(), index, requestId};
    {
        QMutexLocker locker(&m_lock);
        m_pendingRequests.insert(requestId, request);
    }
    m_operationQueue.addOperation(
        [generator = weak_from_this(), request] { generateThumbnail(generator, request); });
    return requestId;
}

std::optional<QImage> ThumbnailGenerator::getCachedThumbnail(const QString &path)
{
    QMutexLocker locker(&m_lock);
    const auto found = m_thumbnailCache.constFind(path);
    if (found == m_thumbnailCache.constEnd())
        return std::nullopt;
    const qsizetype at = m_cacheAccessOrder.indexOf(path);
    if (at >= 0)
        m_cacheAccessOrder.move(at, m_cacheAccessOrder.size() - 1);
    return *found;
}

void ThumbnailGenerator::cancelAllRequests()
{
    {
        QMutexLocker locker(&m_lock);
        m_pendingRequests.clear();
    }
    m_operationQueue.cancelAllOperations();
}

void ThumbnailGenerator::clearCache()
{
    QMutexLocker locker(&m_lock);
    m_thumbnailCache.clear();
    m_cacheAccessOrder.clear();
}

QStringList ThumbnailGenerator::cacheAccessOrder() const
{
    QMutexLocker locker(&m_lock);
    return m_cacheAccessOrder;
}

int ThumbnailGenerator::pendingRequestCount() const
{
    QMutexLocker locker(&m_lock);
    return int(m_pendingRequests.size());
}

bool ThumbnailGenerator::isPending(const QUuid &requestId) const
{
    QMutexLocker locker(&m_lock);
    return m_pendingRequests.contains(requestId);
}

void ThumbnailGenerator::generateThumbnail(const std::weak_ptr<ThumbnailGenerator> &generator,
                                           const ThumbnailRequest &request)
{
    const InFlight inFlight;
    const QString path = request.item.path;
    const ThumbnailResult failed {request.index, path, std::nullopt, request.requestId, false};
    {
        const auto self = generator.lock();
        if (!self || !self->isPending(request.requestId))
            return;
        if (!QFileInfo::exists(path)) {
            self->deliverResult(failed, path);
            return;
        }
    }

    // The decode holds no reference: a generator dropped meanwhile drops the result.
    const Thumbnailed made = thumbnailer(path, request.size, request.scale);

    const auto self = generator.lock();
    if (!self || !self->isPending(request.requestId))
        return;
    QImage image = made.image;
    if (image.isNull()) {
        const QImage whole = ScaledImageDecoder::loadWholeImage(path);
        if (!whole.isNull())
            image = scaleImage(whole, request.size, request.scale);
    }
    if (!image.isNull()) {
        self->deliverResult({request.index, path,
                             roundCorners(image, thumbnailCornerRadius * request.scale,
                                          thumbnailBorderWidth * request.scale),
                             request.requestId, true},
                            path);
    } else {
        // Icons come from the icon theme, which lives on the main thread.
        MainQueue::post([generator, request, failed, mimeType = made.mimeType] {
            const auto owner = generator.lock();
            if (!owner)
                return;
            const QImage icon = getFileIcon(mimeType, request.size, request.scale);
            if (icon.isNull()) {
                owner->deliverResult(failed, request.item.path);
                return;
            }
            owner->deliverResult({request.index, request.item.path,
                                  roundCorners(icon, thumbnailCornerRadius * request.scale,
                                               thumbnailBorderWidth * request.scale),
                                  request.requestId, true},
                                 request.item.path);
        });
    }

    // Written after the result is on its way, so that the shared cache costs the view nothing.
    if (!made.toStore.isNull())
        FreedesktopThumbnailCache::store(path, made.toStore, *made.folder, made.originalSize,
                                         made.mimeType);
}

void ThumbnailGenerator::deliverResult(const ThumbnailResult &result, const QString &path)
{
    {
        QMutexLocker locker(&m_lock);
        m_pendingRequests.remove(result.requestId);
        if (result.image)
            addToCacheUnsafe(*result.image, path);
    }
    MainQueue::runOrPost([generator = weak_from_this(), result] {
        const auto self = generator.lock();
        if (!self)
            return;
        if (const auto delegate = self->m_delegate.lock())
            delegate->thumbnailGenerator(*self, result);
    });
}

void ThumbnailGenerator::addToCacheUnsafe(const QImage &image, const QString &path)
{
    if (m_thumbnailCache.contains(path)) {
        m_thumbnailCache.insert(path, image);
        m_cacheAccessOrder.removeAll(path);
        m_cacheAccessOrder.append(path);
        return;
    }
    if (m_thumbnailCache.size() >= m_maxCacheSize && !m_cacheAccessOrder.isEmpty())
        m_thumbnailCache.remove(m_cacheAccessOrder.takeFirst());
    m_thumbnailCache.insert(path, image);
    m_cacheAccessOrder.append(path);
}

double ThumbnailGenerator::mainScreenScale()
{
    const QScreen *screen = qobject_cast<QGuiApplication *>(QCoreApplication::instance())
        ? QGuiApplication::primaryScreen()
        : nullptr;
    return screen ? screen->devicePixelRatio() : 2.0;
}

QImage ThumbnailGenerator::scaleImage(const QImage &image, const QSizeF &size, double scale)
{
    if (image.isNull() || size.isEmpty())
        return image;
    const QSizeF source = image.deviceIndependentSize();
    const double ratio
        = std::min({size.width() / source.width(), size.height() / source.height(), 1.0});
    const QSizeF points = source * ratio;
    // Whole pixels, and never more of them than the image has.
    const QSize pixels(std::clamp(int(std::lround(points.width() * scale)), 1, image.width()),
                       std::clamp(int(std::lround(points.height() * scale)), 1, image.height()));
    QImage scaled = pixels == image.size()
        ? image
        : image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(pixels.width() / points.width());
    return scaled;
}

QImage ThumbnailGenerator::roundCorners(const QImage &image, double radius, double borderWidth)
{
    if (image.isNull())
        return image;
    QImage rounded(image.size(), QImage::Format_ARGB32_Premultiplied);
    rounded.fill(Qt::transparent);
    const double inset = borderWidth / 2;
    QPainterPath outline;
    outline.addRoundedRect(QRectF(rounded.rect()).adjusted(inset, inset, -inset, -inset), radius,
                           radius);
    QPainter painter(&rounded);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipPath(outline);
    QImage source = image;
    source.setDevicePixelRatio(1.0);
    painter.drawImage(0, 0, source);
    painter.setClipping(false);
    if (borderWidth > 0) {
        painter.setPen(QPen(Qt::black, borderWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(outline);
    }
    painter.end();
    rounded.setDevicePixelRatio(image.devicePixelRatio());
    return rounded;
}

QImage ThumbnailGenerator::getFileIcon(const QString &mimeTypeName, const QSizeF &size,
                                       double scale)
{
    const QMimeType type = QMimeDatabase().mimeTypeForName(
        mimeTypeName.isEmpty() ? QStringLiteral("application/octet-stream") : mimeTypeName);
    QIcon icon = QIcon::fromTheme(type.iconName());
    if (icon.isNull())
        icon = QIcon::fromTheme(type.genericIconName());
    if (icon.isNull() && qobject_cast<QApplication *>(QCoreApplication::instance()))
        icon = QFileIconProvider().icon(QAbstractFileIconProvider::File);
    if (icon.isNull() || size.isEmpty())
        return {};
    // Centred in a bitmap of the target size, at most at the size icon themes draw for.
    const QSize pixels = pixelsFor(size, scale);
    const int side
        = std::min({pixels.width() * 3 / 4, pixels.height() * 3 / 4, int(largestIconSide * scale)});
    const QImage drawn = icon.pixmap(QSize(side, side), 1.0).toImage();
    QImage bitmap(pixels, QImage::Format_ARGB32_Premultiplied);
    bitmap.fill(Qt::transparent);
    QPainter painter(&bitmap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect((pixels.width() - side) / 2, (pixels.height() - side) / 2, side, side),
                      drawn);
    painter.end();
    bitmap.setDevicePixelRatio(scale);
    return bitmap;
}

bool ThumbnailGenerator::waitForWorkInFlight(int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (workInFlight.load() > 0) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(5);
    }
    return true;
}
