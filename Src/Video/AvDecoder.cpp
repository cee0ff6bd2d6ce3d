#include "Video/AvDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <QThread>
#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstring>

namespace corv {
namespace {

// The messages of decoders of ours have levels from here on, by which they are known among those of
// other users of the library; nobody prints such levels.
constexpr int firstLevel = 4096;

bool isLackOfMemory(int result)
{
    return result == AVERROR(ENOMEM);
}

bool begins(const char* text, const char* beginning)
{
    return std::strncmp(text, beginning, std::strlen(beginning)) == 0;
}

// The library states in its messages alone which packet it had to guess parts of: with one thread
// per frame, the flag of a picture that waits for others to be shown first gets lost. Called by
// the thread that decodes the packet, with its own copy of the context.
void noteMessage(void* object, int level, const char* format, va_list)
{
    if (level < firstLevel || level > firstLevel + AV_LOG_INFO || !object ||
        *static_cast<const AVClass* const*>(object) != avcodec_get_class())
        return;
    const auto* context = static_cast<const AVCodecContext*>(object);
    const bool isGuess = begins(format, "concealing ") || begins(format, "error while decoding MB");
    const bool isLack = begins(format, "get_buffer() failed"); // of which no result says so
    if (!(isGuess || isLack) || context->log_level_offset != firstLevel || !context->opaque)
        return;
    auto* notes = static_cast<AvDecoder::GuessedPackets*>(context->opaque);
    if (isGuess)
        notes->note(static_cast<int>(context->reordered_opaque));
    else
        notes->noteLackOfMemory();
}

} // namespace

void AvDecoder::GuessedPackets::note(int packet)
{
    m_next[static_cast<size_t>(packet) % m_next.size()].store(packet + 1);
    m_isAny.store(true);
}

std::vector<int> AvDecoder::GuessedPackets::take()
{
    std::vector<int> packets;
    if (!m_isAny.load(std::memory_order_relaxed) || !m_isAny.exchange(false))
        return packets;
    for (std::atomic<int>& next : m_next) {
        const int noted = next.exchange(0);
        if (noted > 0)
            packets.push_back(noted - 1);
    }
    std::sort(packets.begin(), packets.end());
    return packets;
}

Result<std::unique_ptr<AvDecoder>> AvDecoder::open(const AVCodecParameters& parameters)
{
    const Failure none{Failure::Kind::notRecognised,
                       QStringLiteral("There is no decoder for this kind of video.")};
    const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
    if (!codec)
        return none;
    std::unique_ptr<AvDecoder> decoder(new AvDecoder);
    decoder->m_context.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = decoder->m_context.get();
    if (!context)
        return tooLittleMemory();
    int result = avcodec_parameters_to_context(context, &parameters);
    if (result < 0)
        return isLackOfMemory(result) ? tooLittleMemory() : none;
    context->log_level_offset = firstLevel;
    context->opaque = &decoder->m_guessed;
    context->thread_count = QThread::idealThreadCount();
    result = avcodec_open2(context, codec, nullptr);
    const bool lacksThreads = result == AVERROR(EAGAIN); // for want of room for their stacks
    if (result < 0)
        return lacksThreads || isLackOfMemory(result) ? tooLittleMemory() : none;
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
    if (isLackOfMemory(result))
        m_guessed.noteLackOfMemory();
    if (result < 0 && !m_inWork.empty())
        m_suspects = {m_inWork.front(), m_inWork.back()};
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

std::vector<int> AvDecoder::takeGuessed()
{
    return m_guessed.take();
}

bool AvDecoder::send(AVPacket& packet, int number, bool skipUnreferenced)
{
    packet.pts = number;
    packet.dts = number;
    m_context->reordered_opaque = number;
    av_log_set_callback(noteMessage); // which other users of the library in here may replace
    m_context->skip_frame = skipUnreferenced ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    const int result = avcodec_send_packet(m_context.get(), &packet);
    if (isLackOfMemory(result))
        m_guessed.noteLackOfMemory();
    const auto mostInWork = static_cast<size_t>(std::max(delay(), 1));
    m_inWork.push_back(number);
    if (m_inWork.size() > mostInWork)
        m_inWork.pop_front();
    const bool isFirst = isInStep() && m_inWork.size() == mostInWork;
    m_suspects = {m_inWork.front(), isFirst ? m_inWork.front() : m_inWork.back()};
    return result >= 0;
}

void AvDecoder::sendEnd()
{
    m_context->skip_frame = AVDISCARD_DEFAULT;
    avcodec_send_packet(m_context.get(), nullptr);
}

void AvDecoder::flush()
{
    avcodec_flush_buffers(m_context.get());
    m_guessed.take();
    m_inWork.clear();
}

// Whether each packet that is sent brings back what came of the first of those in work. Decoders of
// other kinds may split packets, or have fewer in work than threads.
bool AvDecoder::isInStep() const
{
    return m_context->codec_id == AV_CODEC_ID_H264 || m_context->codec_id == AV_CODEC_ID_HEVC ||
           m_context->codec_id == AV_CODEC_ID_MPEG4;
}

int AvDecoder::delay() const
{
    const bool byFrames = m_context->active_thread_type & FF_THREAD_FRAME;
    return byFrames ? m_context->thread_count : 0;
}

} // namespace corv
