#include "Video/AvInput.h"

#include "Base/arithmetic.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mem.h>
}

#include <QByteArray>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace corv {
namespace {

// What states more frames a second states the ticks of its clock.
constexpr double mostFps = 1000.0;

// The list of all packets of two days at 60 a second, and twice a plane of 8192 x 8192 points of
// two bytes.
constexpr size_t largestAllocation = size_t{256} * 1024 * 1024;

// That many packets that cannot be read in a row are no damage but the end.
constexpr int hopelessErrors = 500;

// The tables before the first packet of a stream are a few blocks; the head of a block of a
// transport stream has its counter.
constexpr qint64 mostTableBytes = qint64{64} * 1024;
constexpr qint64 blockHeadBytes = 4;

int openNothing(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EPERM);
}

Failure noVideo()
{
    return {Failure::Kind::notRecognised, QStringLiteral("The file holds no video.")};
}

} // namespace

void prepareLibav()
{
    static const bool isDone = [] {
        av_log_set_level(AV_LOG_QUIET); // its texts go to no log of ours
        av_max_alloc(largestAllocation);
        return true;
    }();
    Q_UNUSED(isDone)
}

Failure tooLittleMemory()
{
    return {Failure::Kind::noMemory, QStringLiteral("There is too little memory.")};
}

void AvDelete::operator()(AVCodecContext* context) const
{
    avcodec_free_context(&context);
}

void AvDelete::operator()(AVFrame* frame) const
{
    av_frame_free(&frame);
}

void AvDelete::operator()(AVPacket* packet) const
{
    av_packet_free(&packet);
}

Result<std::unique_ptr<AvInput>> AvInput::open(std::unique_ptr<ByteSource> bytes,
                                               const QString& name, int bufferBytes)
{
    prepareLibav();
    std::unique_ptr<AvInput> input(new AvInput);
    input->m_io.bytes = std::move(bytes);
    AVFormatContext* context = avformat_alloc_context();
    auto* buffer = static_cast<unsigned char*>(av_malloc(static_cast<size_t>(bufferBytes)));
    AVIOContext* io = buffer ? avio_alloc_context(buffer, bufferBytes, 0, &input->m_io, readBytes,
                                                  nullptr, seekBytes)
                             : nullptr;
    if (!context || !io) {
        avformat_free_context(context);
        return tooLittleMemory();
    }
    context->pb = io;
    context->io_open = openNothing;
    const QByteArray nameBytes = name.toUtf8();
    const int opened = avformat_open_input(&context, nameBytes.constData(), nullptr, nullptr);
    if (opened < 0) { // which has freed the context, but not our bytes
        av_freep(&io->buffer);
        avio_context_free(&io);
        if (opened == AVERROR(ENOMEM))
            return tooLittleMemory();
        return input->m_io.failed
                   ? Failure{Failure::Kind::unreadable, QStringLiteral("Reading failed.")}
                   : noVideo();
    }
    input->m_context = context;
    input->chooseStream();
    // Some containers have no head: their streams show in the packets.
    if (input->m_videoStream < 0 && context->ctx_flags & AVFMTCTX_NOHEADER && input->probe())
        input->chooseStream();
    // Their times repeat or jump; bytes do not.
    input->m_seeksByPosition = context->iformat->flags & AVFMT_TS_DISCONT;
    if (input->m_videoStream < 0)
        return noVideo();
    return input;
}

// The first video that is no cover picture.
void AvInput::chooseStream()
{
    for (unsigned i = 0; i < m_context->nb_streams; ++i) {
        AVStream* stream = m_context->streams[i];
        const bool isVideo = stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                             !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC);
        if (isVideo && m_videoStream < 0)
            m_videoStream = static_cast<int>(i);
        else
            stream->discard = AVDISCARD_ALL;
    }
}

AvInput::~AvInput()
{
    if (!m_context)
        return;
    AVIOContext* io = m_context->pb;
    avformat_close_input(&m_context);
    av_freep(&io->buffer);
    avio_context_free(&io);
}

int AvInput::readBytes(void* opaque, uint8_t* buffer, int count)
{
    Io& io = *static_cast<Io*>(opaque);
    if (io.aborted.load(std::memory_order_relaxed))
        return AVERROR_EXIT;
    const qint64 came = io.bytes->readAt(io.position, buffer, count);
    if (came == 0)
        return AVERROR_EOF;
    if (came < 0) {
        io.failed = true;
        return AVERROR(EIO);
    }
    io.position += came;
    return static_cast<int>(came);
}

int64_t AvInput::seekBytes(void* opaque, int64_t offset, int whence)
{
    Io& io = *static_cast<Io*>(opaque);
    const qint64 size = io.bytes->sizeBytes();
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return size;
    case SEEK_CUR:
        offset += io.position;
        break;
    case SEEK_END:
        offset += size;
        break;
    default:
        break;
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    io.position = offset;
    return offset;
}

bool AvInput::probe()
{
    if (!m_isProbed) { // a second time the library does not survive
        const int result = avformat_find_stream_info(m_context, nullptr);
        m_isProbed = result >= 0;
        m_lacksMemory = m_lacksMemory || result == AVERROR(ENOMEM);
    }
    return m_isProbed;
}

bool AvInput::isDescribed() const
{
    const AVStream& stream = *video();
    const AVRational& rate = stream.r_frame_rate; // of the container alone, so far
    const AVRational& average = stream.avg_frame_rate;
    return describesPackets() && rate.num > 0 && rate.den > 0 && average.num > 0 &&
           average.den > 0 && std::abs(av_q2d(average) / av_q2d(rate) - 1.0) < 0.01 &&
           stream.codecpar->width > 0 && stream.codecpar->height > 0;
}

AVStream* AvInput::video() const
{
    return m_context->streams[m_videoStream];
}

bool AvInput::describesPackets() const
{
    return std::strstr(m_context->iformat->name, "mp4") != nullptr;
}

bool AvInput::cutsAnywhere() const
{
    return std::strcmp(m_context->iformat->name, "mpeg") == 0;
}

double AvInput::statedFps() const
{
    const auto isRate = [](double fps) { return std::isfinite(fps) && fps > 0.0 && fps < mostFps; };
    const double fps = av_q2d(av_guess_frame_rate(m_context, video(), nullptr));
    if (isRate(fps))
        return fps;
    const double average = av_q2d(video()->avg_frame_rate);
    return isRate(average) ? average : 0.0;
}

double AvInput::statedDurationMs() const
{
    const double ms = streamDurationMs();
    if (ms > 0.0)
        return ms;
    return m_context->duration > 0 ? static_cast<double>(m_context->duration) / 1000.0 : 0.0;
}

double AvInput::streamDurationMs() const
{
    const AVStream& stream = *video();
    if (stream.duration == AV_NOPTS_VALUE || stream.duration <= 0)
        return 0.0;
    return static_cast<double>(stream.duration) * 1000.0 * av_q2d(stream.time_base);
}

int AvInput::promisedFrames() const
{
    const int64_t stated = video()->nb_frames;
    if (stated > 0)
        return static_cast<int>(std::min<int64_t>(stated, std::numeric_limits<int>::max()));
    return truncateToInt(statedDurationMs() * statedFps() / 1000.0 + 0.5);
}

AvInput::Outcome AvInput::next(AVPacket& packet)
{
    for (int errors = 0; errors < hopelessErrors;) {
        av_packet_unref(&packet);
        const int result = av_read_frame(m_context, &packet);
        if (m_io.failed || result == AVERROR_EXIT)
            return Outcome::failed;
        if (result == AVERROR_EOF)
            return Outcome::end;
        m_lacksMemory = m_lacksMemory || result == AVERROR(ENOMEM);
        if (result < 0) {
            ++errors;
        } else if (packet.stream_index == m_videoStream) {
            m_isMoved = true;
            return Outcome::packet;
        }
    }
    return Outcome::end;
}

bool AvInput::beginsAgainAt(qint64 position, qint64 first)
{
    const qint64 count = first + blockHeadBytes;
    if (first <= 0 || first > mostTableBytes || position <= first)
        return false;
    std::vector<uchar> begin(static_cast<size_t>(count));
    std::vector<uchar> other(begin.size());
    return readWhole(*m_io.bytes, 0, begin.data(), count) &&
           readWhole(*m_io.bytes, position - first, other.data(), count) && begin == other;
}

void AvInput::takePacketsAsStored()
{
    m_context->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
}

// The medium may be back, and what failed elsewhere is no matter.
void AvInput::forgetFailures()
{
    m_io.failed = false;
    m_context->pb->eof_reached = 0;
    m_context->pb->error = 0;
}

bool AvInput::seek(qint64 dts, qint64 position)
{
    forgetFailures();
    m_isMoved = true;
    if (m_seeksByPosition && position >= 0)
        return av_seek_frame(m_context, m_videoStream, position, AVSEEK_FLAG_BYTE) >= 0;
    return av_seek_frame(m_context, m_videoStream, dts, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool AvInput::rewind()
{
    forgetFailures();
    if (m_seeksByPosition)
        return av_seek_frame(m_context, m_videoStream, 0, AVSEEK_FLAG_BYTE) >= 0;
    // What Matroska lists are some of the keyframes, and the very first need not be among them.
    if (!m_isMoved && std::strstr(m_context->iformat->name, "matroska"))
        return true;
    constexpr int anyBefore = AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY;
    const AVIndexEntry* first = avformat_index_get_entry(video(), 0);
    // Where the second part of a cut video begins with earlier times, a search finds that one.
    if (first && av_index_search_timestamp(video(), first->timestamp, anyBefore) > 0)
        return !m_isMoved;
    if (first && av_seek_frame(m_context, m_videoStream, first->timestamp, anyBefore) >= 0)
        return true;
    const int64_t lowest = std::numeric_limits<int64_t>::min();
    const int64_t highest = std::numeric_limits<int64_t>::max();
    return avformat_seek_file(m_context, m_videoStream, lowest, lowest, highest, 0) >= 0;
}

qint64 AvInput::bytesDone() const
{
    return m_io.position;
}

qint64 AvInput::sizeBytes() const
{
    return m_io.bytes->sizeBytes();
}

} // namespace corv
