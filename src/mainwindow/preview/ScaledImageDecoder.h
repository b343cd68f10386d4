#pragma once

#include <QImage>
#include <QSize>
#include <QString>

// Decodes a file straight at a reduced size, never the whole picture first: JPEGs at a half,
// quarter or eighth in the decoder itself, the largest needed preview embedded in a RAW file
// (through exiv2), a frame of a video (through FFmpeg). Images come out upright by the file's
// orientation. Safe from any thread.
class ScaledImageDecoder
{
public:
    struct Decoded
    {
        QImage image; // null when nothing could be decoded
        QSize originalSize; // upright, when known
        QString mimeType;
    };

    // Fits the picture into box pixels, keeping its shape and never enlarging it.
    static Decoded decode(const QString &path, const QSize &box);
    // The whole picture, for files that the scaled decode could not read.
    static QImage loadWholeImage(const QString &path);

    static QSize fittedSize(const QSize &size, const QSize &box);
    // Turns an image as stored into the upright one (EXIF orientations 1 to 8).
    static QImage applyOrientation(const QImage &image, int exifOrientation);
};
