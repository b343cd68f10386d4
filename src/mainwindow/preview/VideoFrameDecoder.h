#pragma once

#include <QImage>
#include <QSize>
#include <QString>

// One frame of a video, through FFmpeg: the key frame at a tenth of its length (at most ten
// seconds in), scaled into a box, with the pixel aspect and the display rotation applied.
class VideoFrameDecoder
{
public:
    // A null image when the file has no decodable video stream. originalSize receives the
    // upright display size of the video.
    static QImage frame(const QString &path, const QSize &box, QSize *originalSize = nullptr);
};
