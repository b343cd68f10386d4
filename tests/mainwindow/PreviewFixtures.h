#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

// Pictures for the image preview's tests and benchmark, made here: a coloured scene in the
// given size, a JPEG with an EXIF orientation, a RAW file with an embedded JPEG preview, and a
// camera-sized JPEG with the detail of a photograph. Each returns the new file's path.
namespace PreviewFixtures {

// A scene in the colour: a lighter sun near the top left, a darker hill at the bottom, and the
// plain colour in the centre.
QImage scene(const QSize &size, const QColor &color);
// A scene with the fine grain of a photograph, which JPEG can't compress away.
QImage cameraPicture(const QSize &size);

// The format follows the extension (.jpg or .png).
QString makePicture(const QString &directory, const QString &name, const QSize &size,
                    const QColor &color);
// A JPEG stored as size, to be shown turned by the EXIF orientation (1 to 8).
QString makeOrientedJpeg(const QString &directory, const QString &name, const QSize &size,
                         const QColor &color, int orientation);
// A TIFF-based RAW (DNG) of rawSize whose picture is only in its embedded JPEG preview.
QString makeRawWithPreview(const QString &directory, const QString &name, const QSize &rawSize,
                           const QImage &preview, int orientation = 1);
// A JPEG at quality 92 with fine grain, so that its size and decoding time are those of a
// camera's picture of that many pixels.
QString makeCameraJpeg(const QString &directory, const QString &name, const QSize &size);

// The colour at the centre of an image, for telling pictures apart.
QColor centreColor(const QImage &image);
bool similar(const QColor &a, const QColor &b, int tolerance = 24);

} // namespace PreviewFixtures
