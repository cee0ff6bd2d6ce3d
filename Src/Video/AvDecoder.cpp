#include "Video/AvDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <QThread>

namespace corv {

std::unique_ptr<AvDecoder> AvDecoder::open(const AVCodecParameters& parameters)
{
    const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
    if (!codec)
        return nullptr;
    std::unique_ptr<AvDecoder> decoder(new AvDecoder);
    decoder->m_context.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = decoder->m_context.get();
    if (!context || avcodec_parameters_to_context(context, &parameters) < 0)
        return nullptr;
    context->thread_count = QThread::idealThreadCount();
    if (avcodec_open2(context, codec, nullptr) < 0)
        return nullptr;
    return decoder;
}

bool AvDecoder::replacesMissing(const AVCodecParameters& parameters)
{
    return parameters.codec_id == AV_CODEC_ID_HEVC || parameters.codec_id == AV_CODEC_ID_MPEG4;
}

AvDecoder::Outcome AvDecoder::receive(AVFrame& picture)
{
    const int result = avcodec_receive_frame(m_context.get(), &picture);
    if (result == AVERROR(EAGAIN))
        return Outcome::needsPacket;
    if (result == AVERROR_EOF || result == AVERROR(EINVAL))
        return Outcome::end;
    return result < 0 ? Outcome::damaged : Outcome::picture;
}

int AvDecoder::numberOf(const AVFrame& picture)
{
    return picture.pts == AV_NOPTS_VALUE ? -1 : static_cast<int>(picture.pts);
}

bool AvDecoder::isBroken(const AVFrame& picture)
{
    return picture.decode_error_flags != 0 || picture.flags & AV_FRAME_FLAG_CORRUPT;
}

bool AvDecoder::send(AVPacket& packet, int number, bool skipUnreferenced)
{
    packet.pts = number;
    packet.dts = number;
    m_context->skip_frame = skipUnreferenced ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    return avcodec_send_packet(m_context.get(), &packet) >= 0;
}

void AvDecoder::sendEnd()
{
    m_context->skip_frame = AVDISCARD_DEFAULT;
    avcodec_send_packet(m_context.get(), nullptr);
}

void AvDecoder::flush()
{
    avcodec_flush_buffers(m_context.get());
}

int AvDecoder::delay() const
{
    const bool byFrames = m_context->active_thread_type & FF_THREAD_FRAME;
    return byFrames ? m_context->thread_count : 0;
}

} // namespace corv
