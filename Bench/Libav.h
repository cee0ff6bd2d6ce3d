#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <QString>
#include <QThread>

namespace corv::bench {

/// The libraries below the program's reader, as any program uses them.
class Libav
{
public:
    explicit Libav(const QString& file)
    {
        avformat_open_input(&m_format, qPrintable(file), nullptr, nullptr);
        avformat_find_stream_info(m_format, nullptr);
        m_stream = av_find_best_stream(m_format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        const AVCodecParameters* parameters = m_format->streams[m_stream]->codecpar;
        const AVCodec* codec = avcodec_find_decoder(parameters->codec_id);
        m_codec = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(m_codec, parameters);
        m_codec->thread_count = QThread::idealThreadCount();
        avcodec_open2(m_codec, codec, nullptr);
    }

    ~Libav()
    {
        av_packet_free(&m_packet);
        av_frame_free(&m_picture);
        avcodec_free_context(&m_codec);
        avformat_close_input(&m_format);
    }

    Libav(const Libav&) = delete;
    Libav& operator=(const Libav&) = delete;

    /// The keyframe before a frame and the way from there, at 30 frames a second.
    void seekTo(int frame)
    {
        const int64_t wanted = seekToKeyframe(frame);
        while (decodeNext() && m_picture->pts < wanted)
            continue;
    }

    /// The keyframe alone.
    void decodeKeyframe(int frame)
    {
        seekToKeyframe(frame);
        decodeNext();
    }

    /// False at the end.
    bool decodeNext()
    {
        for (;;) {
            const int result = avcodec_receive_frame(m_codec, m_picture);
            if (result != AVERROR(EAGAIN))
                return result >= 0;
            if (av_read_frame(m_format, m_packet) < 0)
                avcodec_send_packet(m_codec, nullptr);
            else if (m_packet->stream_index == m_stream)
                avcodec_send_packet(m_codec, m_packet);
            av_packet_unref(m_packet);
        }
    }

    const AVFrame& picture() const { return *m_picture; }

private:
    int64_t seekToKeyframe(int frame)
    {
        const AVStream& stream = *m_format->streams[m_stream];
        const int64_t wanted = stream.start_time + av_rescale_q(frame, {1, 30}, stream.time_base);
        av_seek_frame(m_format, m_stream, wanted, AVSEEK_FLAG_BACKWARD);
        avcodec_flush_buffers(m_codec);
        return wanted;
    }

    AVFormatContext* m_format = nullptr;
    AVCodecContext* m_codec = nullptr;
    AVPacket* m_packet = av_packet_alloc();
    AVFrame* m_picture = av_frame_alloc();
    int m_stream = 0;
};

} // namespace corv::bench
