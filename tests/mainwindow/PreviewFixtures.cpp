#include "PreviewFixtures.h"

#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QRandomGenerator>
#include <QTest>

#include <exiv2/exiv2.hpp>

namespace PreviewFixtures {

QImage scene(const QSize &size, const QColor &color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // A sun and a hill, leaving the centre in the base colour.
    painter.setBrush(color.lighter(150));
    const int unit = std::min(size.width(), size.height());
    painter.drawEllipse(QRectF(size.width() * 0.08, size.height() * 0.08, unit * 0.2, unit * 0.2));
    painter.setBrush(color.darker(140));
    painter.drawEllipse(
        QRectF(-size.width() * 0.2, size.height() * 0.75, size.width() * 1.4, size.height() * 0.7));
    return image;
}

QImage cameraPicture(const QSize &size)
{
    QImage image = scene(size, QColor(70, 120, 170));
    QRandomGenerator random(7);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int grain = int(random.bounded(25)) - 12;
            const QRgb pixel = line[x];
            line[x] = qRgb(std::clamp(qRed(pixel) + grain, 0, 255),
                           std::clamp(qGreen(pixel) + grain, 0, 255),
                           std::clamp(qBlue(pixel) + grain, 0, 255));
        }
    }
    return image;
}

namespace {

bool save(const QImage &image, const QString &path, int quality = 90)
{
    QImageWriter writer(path);
    writer.setQuality(quality);
    if (!writer.write(image)) {
        QTest::qFail(qPrintable(QStringLiteral("Could not write ") + path), __FILE__, __LINE__);
        return false;
    }
    return true;
}

QByteArray jpegBytes(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 90);
    return bytes;
}

// One little-endian TIFF directory entry whose value fits in four bytes.
void entry(QDataStream &out, quint16 tag, quint16 type, quint32 count, quint32 value)
{
    out << tag << type << count;
    if (type == 3 && count == 1)
        out << quint16(value) << quint16(0);
    else
        out << value;
}

} // namespace

QString makePicture(const QString &directory, const QString &name, const QSize &size,
                    const QColor &color)
{
    const QString path = QDir(directory).filePath(name);
    return save(scene(size, color), path) ? path : QString();
}

QString makeOrientedJpeg(const QString &directory, const QString &name, const QSize &size,
                         const QColor &color, int orientation)
{
    const QString path = makePicture(directory, name, size, color);
    try {
        auto image = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
        image->readMetadata();
        image->exifData()["Exif.Image.Orientation"] = uint16_t(orientation);
        image->writeMetadata();
    } catch (const std::exception &error) {
        QTest::qFail(error.what(), __FILE__, __LINE__);
        return {};
    }
    return path;
}

QString makeRawWithPreview(const QString &directory, const QString &name, const QSize &rawSize,
                           const QImage &picture, int orientation)
{
    const QByteArray preview = jpegBytes(picture);
    const QByteArray make("Palomet\0", 8);
    const QByteArray model("Fixture\0", 8);
    const QByteArray strip(16, '\0');

    constexpr quint16 entries = 16;
    const quint32 ifdSize = 2 + entries * 12 + 4;
    const quint32 makeAt = 8 + ifdSize;
    const quint32 modelAt = makeAt + quint32(make.size());
    const quint32 stripAt = modelAt + quint32(model.size());
    const quint32 previewAt = stripAt + quint32(strip.size());

    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("II", 2);
    out << quint16(42) << quint32(8) << entries;
    entry(out, 254, 4, 1, 0); // NewSubfileType: the main image
    entry(out, 256, 4, 1, quint32(rawSize.width()));
    entry(out, 257, 4, 1, quint32(rawSize.height()));
    entry(out, 258, 3, 1, 16); // BitsPerSample
    entry(out, 259, 3, 1, 1); // Compression: none
    entry(out, 262, 3, 1, 32803); // PhotometricInterpretation: colour filter array
    entry(out, 271, 2, quint32(make.size()), makeAt);
    entry(out, 272, 2, quint32(model.size()), modelAt);
    entry(out, 273, 4, 1, stripAt);
    entry(out, 274, 3, 1, quint32(orientation));
    entry(out, 277, 3, 1, 1); // SamplesPerPixel
    entry(out, 278, 4, 1, quint32(rawSize.height()));
    entry(out, 279, 4, 1, quint32(strip.size()));
    entry(out, 513, 4, 1, previewAt); // JPEGInterchangeFormat
    entry(out, 514, 4, 1, quint32(preview.size()));
    out << quint16(50706) << quint16(1) << quint32(4); // DNGVersion 1.4.0.0
    out.writeRawData("\x01\x04\x00\x00", 4);
    out << quint32(0);
    out.writeRawData(make.constData(), int(make.size()));
    out.writeRawData(model.constData(), int(model.size()));
    out.writeRawData(strip.constData(), int(strip.size()));
    out.writeRawData(preview.constData(), int(preview.size()));

    const QString path = QDir(directory).filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        QTest::qFail(qPrintable(QStringLiteral("Could not write ") + path), __FILE__, __LINE__);
        return {};
    }
    return path;
}

QString makeCameraJpeg(const QString &directory, const QString &name, const QSize &size)
{
    const QString path = QDir(directory).filePath(name);
    return save(cameraPicture(size), path, 92) ? path : QString();
}

QColor centreColor(const QImage &image)
{
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

bool similar(const QColor &a, const QColor &b, int tolerance)
{
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
        && std::abs(a.blue() - b.blue()) <= tolerance;
}

} // namespace PreviewFixtures
