#include "VideoFrameDecoder.h"

#include "ScaledImageDecoder.h"

#include <QFile>
#include <QTransform>

#include <cmath>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace {

struct FormatCloser
{
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};
struct CodecFreer
{
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
struct FrameFreer
{
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct PacketFreer
{
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};

// The first frame the decoder gives from the current position, or none.
std::unique_ptr<AVFrame, FrameFreer> decodeOneFrame(AVFormatContext *format, AVCodecContext *codec,
                                                    int streamIndex)
{
    std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
    std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
    if (!frame || !packet)
        return nullptr;
    // Enough packets for any sane group of pictures; a broken file stops here.
    for (int packets = 0; packets < 2000; ++packets) {
        const int read = av_read_frame(format, packet.get());
        if (read < 0) {
            avcodec_send_packet(codec, nullptr); // drain what the decoder holds
        } else if (packet->stream_index != streamIndex) {
            av_packet_unref(packet.get());
            continue;
        } else {
            const int sent = avcodec_send_packet(codec, packet.get());
            av_packet_unref(packet.get());
            if (sent < 0 && sent != AVERROR(EAGAIN))
                return nullptr;
        }
        const int received = avcodec_receive_frame(codec, frame.get());
        if (received == 0)
            return frame;
        if (received != AVERROR(EAGAIN) || read < 0)
            return nullptr;
    }
    return nullptr;
}

} // namespace

QImage VideoFrameDecoder::frame(const QString &path, const QSize &box, QSize *originalSize)
{
    av_log_set_level(AV_LOG_QUIET);
    // The "file:" prefix keeps FFmpeg from reading the path as any other kind of address, and
    // the whitelist keeps a playlist from reaching beyond local files.
    const QByteArray name = "file:" + QFile::encodeName(path);
    AVDictionary *options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    AVFormatContext *opened = nullptr;
    const int openResult = avformat_open_input(&opened, name.constData(), nullptr, &options);
    av_dict_free(&options);
    if (openResult < 0)
        return {};
    std::unique_ptr<AVFormatContext, FormatCloser> format(opened);
    if (avformat_find_stream_info(format.get(), nullptr) < 0)
        return {};

    const AVCodec *decoder = nullptr;
    const int streamIndex
        = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (streamIndex < 0 || !decoder)
        return {};
    AVStream *stream = format->streams[streamIndex];
    std::unique_ptr<AVCodecContext, CodecFreer> codec(avcodec_alloc_context3(decoder));
    if (!codec || avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0)
        return {};
    codec->thread_count = 1;
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0)
        return {};

    // A tenth in, where a clip has usually left its black opening; a short or unseekable file
    // is read from the start.
    if (format->duration > 0) {
        const int64_t target = std::min<int64_t>(format->duration / 10, 10 * int64_t(AV_TIME_BASE));
        const int64_t timestamp = av_rescale_q(target, AV_TIME_BASE_Q, stream->time_base);
        if (av_seek_frame(format.get(), streamIndex, timestamp, AVSEEK_FLAG_BACKWARD) >= 0)
            avcodec_flush_buffers(codec.get());
    }
    const auto decoded = decodeOneFrame(format.get(), codec.get(), streamIndex);
    if (!decoded || decoded->width <= 0 || decoded->height <= 0)
        return {};

    // Display size: the pixel aspect applied to the width.
    const AVRational aspect = av_guess_sample_aspect_ratio(format.get(), stream, decoded.get());
    const double pixelAspect = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1.0;
    const QSize display(std::max(1, int(std::lround(decoded->width * pixelAspect))),
                        decoded->height);

    double rotation = 0;
    if (const uint8_t *matrix = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr))
        rotation = -av_display_rotation_get(reinterpret_cast<const int32_t *>(matrix));
    const int quarterTurns = ((int(std::lround(rotation / 90.0)) % 4) + 4) % 4;
    const bool turned = quarterTurns % 2 == 1;

    const QSize target = ScaledImageDecoder::fittedSize(display, turned ? box.transposed() : box);
    SwsContext *scaler = sws_getContext(
        decoded->width, decoded->height, AVPixelFormat(decoded->format), target.width(),
        target.height(), AV_PIX_FMT_BGRA, SWS_AREA, nullptr, nullptr, nullptr);
    if (!scaler)
        return {};
    QImage image(target, QImage::Format_ARGB32);
    uint8_t *planes[4] = {image.bits(), nullptr, nullptr, nullptr};
    const int strides[4] = {int(image.bytesPerLine()), 0, 0, 0};
    const int rows
        = sws_scale(scaler, decoded->data, decoded->linesize, 0, decoded->height, planes, strides);
    sws_freeContext(scaler);
    if (rows <= 0)
        return {};

    if (quarterTurns != 0)
        image = image.transformed(QTransform().rotate(90.0 * quarterTurns));
    if (originalSize)
        *originalSize = turned ? display.transposed() : display;
    return image;
}
