#include "ScaledImageDecoder.h"

#include "VideoFrameDecoder.h"
#include "acquisition/ExivImage.h"

#include <QBuffer>
#include <QImageReader>
#include <QMimeDatabase>
#include <QTransform>

#include <cmath>

namespace {

// The smallest embedded preview that fills the box in one direction, else the largest there is;
// upright by the RAW file's own orientation, which the previews rarely repeat.
QImage rawPreview(const QString &path, const QSize &box, QSize *originalSize)
{
    const std::unique_ptr<ExivImage> raw = ExivImage::open(path);
    if (!raw)
        return {};
    try {
        const Exiv2::PreviewManager manager(raw->image());
        const Exiv2::PreviewPropertiesList previews = manager.getPreviewProperties();
        if (previews.empty())
            return {};
        auto chosen = previews.end() - 1;
        for (auto it = previews.begin(); it != previews.end(); ++it) {
            if (int(it->width_) >= box.width() || int(it->height_) >= box.height()) {
                chosen = it;
                break;
            }
        }
        const Exiv2::PreviewImage preview = manager.getPreviewImage(*chosen);
        QByteArray bytes(reinterpret_cast<const char *>(preview.pData()),
                         qsizetype(preview.size()));
        QBuffer buffer(&bytes);
        QImageReader reader(&buffer);
        reader.setAutoTransform(false);
        const int orientation = int(raw->exifNumber("Exif.Image.Orientation").value_or(1));
        const bool turned = orientation >= 5 && orientation <= 8;
        const QSize stored = reader.size();
        if (stored.isValid())
            reader.setScaledSize(
                ScaledImageDecoder::fittedSize(stored, turned ? box.transposed() : box));
        const QImage image = reader.read();
        if (image.isNull())
            return {};
        if (originalSize && raw->pixelWidth > 0 && raw->pixelHeight > 0) {
            const QSize pixels(raw->pixelWidth, raw->pixelHeight);
            *originalSize = turned ? pixels.transposed() : pixels;
        }
        return ScaledImageDecoder::applyOrientation(image, orientation);
    } catch (...) {
        return {};
    }
}

// Through Qt's readers, which apply the EXIF orientation themselves. The scaled size is given in
// the stored orientation, as the readers scale before they turn.
QImage readScaled(QImageReader &reader, const QSize &box, QSize *originalSize)
{
    reader.setAutoTransform(true);
    const QSize stored = reader.size();
    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    if (stored.isValid()) {
        const QSize fitted
            = ScaledImageDecoder::fittedSize(stored, turned ? box.transposed() : box);
        if (fitted != stored)
            reader.setScaledSize(fitted);
    }
    QImage image = reader.read();
    if (image.isNull())
        return image;
    if (!stored.isValid()) {
        const QSize fitted = ScaledImageDecoder::fittedSize(image.size(), box);
        if (fitted != image.size())
            image = image.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    if (originalSize && stored.isValid())
        *originalSize = turned ? stored.transposed() : stored;
    return image;
}

} // namespace

ScaledImageDecoder::Decoded ScaledImageDecoder::decode(const QString &path, const QSize &box)
{
    Decoded decoded;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path);
    decoded.mimeType = type.name();
    if (type.name().startsWith(QLatin1String("video/"))) {
        decoded.image = VideoFrameDecoder::frame(path, box, &decoded.originalSize);
        return decoded;
    }
    if (type.inherits(QStringLiteral("image/x-dcraw"))) {
        decoded.image = rawPreview(path, box, &decoded.originalSize);
        if (!decoded.image.isNull())
            return decoded;
    }
    QImageReader reader(path);
    decoded.image = readScaled(reader, box, &decoded.originalSize);
    return decoded;
}

QImage ScaledImageDecoder::loadWholeImage(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    return reader.read();
}

QSize ScaledImageDecoder::fittedSize(const QSize &size, const QSize &box)
{
    if (size.isEmpty() || box.isEmpty()
        || (size.width() <= box.width() && size.height() <= box.height()))
        return size;
    const double ratio
        = std::min(double(box.width()) / size.width(), double(box.height()) / size.height());
    return QSize(std::max(1, int(std::lround(size.width() * ratio))),
                 std::max(1, int(std::lround(size.height() * ratio))));
}

QImage ScaledImageDecoder::applyOrientation(const QImage &image, int exifOrientation)
{
    const auto turned = [](const QImage &source, double degrees) {
        return source.transformed(QTransform().rotate(degrees));
    };
    switch (exifOrientation) {
    case 2:
        return image.mirrored(true, false);
    case 3:
        return turned(image, 180);
    case 4:
        return image.mirrored(false, true);
    case 5:
        return turned(image.mirrored(true, false), 270);
    case 6:
        return turned(image, 90);
    case 7:
        return turned(image.mirrored(true, false), 90);
    case 8:
        return turned(image, 270);
    default:
        return image;
    }
}
