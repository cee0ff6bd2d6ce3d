#pragma once

#include "Base/Result.h"
#include "Video/ByteSource.h"

#include <atomic>
#include <memory>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

namespace corv {

/// Sets what holds for libav in the whole program, also below OpenCV: silence, and a limit for each
/// piece of memory, as a damaged count in a file of a few kilobytes can ask for gigabytes. Before
/// any use of it; the first call does all. Any thread.
void prepareLibav();

/// For what libav could not allocate.
Failure tooLittleMemory();

/// Frees what libav allocated.
struct AvDelete
{
    void operator()(AVCodecContext* context) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVPacket* packet) const;
};
using AvCodecContextPtr = std::unique_ptr<AVCodecContext, AvDelete>;
using AvFramePtr = std::unique_ptr<AVFrame, AvDelete>;
using AvPacketPtr = std::unique_ptr<AVPacket, AvDelete>;

/// The packets of the first video stream of a file, read from a byte source. Opens nothing else: a
/// playlist or a reference to another file leads nowhere. Used by one thread at a time.
class AvInput
{
public:
    /// One seek of a card takes as long as reading this many bytes.
    static constexpr int cardBufferBytes = 256 * 1024;

    /// Smaller than most packets, which are then not copied through the buffer.
    static constexpr int smallBufferBytes = 16 * 1024;

    /// `name` serves the recognition of the container by its suffix. Fails if the bytes are no
    /// container with a video, or if there is no memory for it.
    static Result<std::unique_ptr<AvInput>>
    open(std::unique_ptr<ByteSource> bytes, const QString& name, int bufferBytes = cardBufferBytes);
    ~AvInput();
    AvInput(const AvInput&) = delete;
    AvInput& operator=(const AvInput&) = delete;

    /// Looks into the packets for what the head of the file does not say: rate, size, parameters of
    /// the decoder. Reads some of them; what follows starts at the first again.
    bool probe();

    /// Whether the head says all of that, so that probe() would find nothing new: one of a
    /// container that describes its packets, and at one constant rate. Before probe().
    bool isDescribed() const;

    /// The stream, owned by this object.
    AVStream* video() const;

    /// Whether the container is of the family of MP4, MOV and 3GP, which describe all packets in
    /// one place.
    bool describesPackets() const;

    /// Whether the container is of those whose clock can begin anew inside a file.
    bool canClockBeginAnew() const { return m_seeksByPosition; }

    /// Whether the container is cut into blocks without regard to packets, as a programme stream
    /// is: the position of a packet is that of the block in which it begins.
    bool cutsAnywhere() const;

    /// The rate as the file states it, in frames per second; 0 if it does not. After probe(), where
    /// there is need of it.
    double statedFps() const;

    /// The length as the head of the file states it, in milliseconds; 0 if it does not.
    double statedDurationMs() const;

    /// The same of the video alone, without sound and other streams.
    double streamDurationMs() const;

    /// The number of frames that the container states; where it states none, length times rate.
    int promisedFrames() const;

    /// What a next() gave.
    enum class Outcome { packet, end, failed };

    /// The next packet of the video. Damaged places are skipped; failed means that the medium gives
    /// nothing more.
    Outcome next(AVPacket& packet);

    /// Whether the bytes that lead to a packet are those at the beginning of the file, which lead
    /// to its first packet: the same tables with the same counters, of which the chance is small
    /// where no recording begins. Both positions in bytes.
    bool beginsAgainAt(qint64 position, qint64 first);

    /// Packets as the container has them: no parser splits them, joins them or corrects their
    /// times. Before the first next().
    void takePacketsAsStored();

    /// Seeks so that the next packet is one at or before the one with this time and position. The
    /// packet that comes may be an earlier one; false if it cannot be done.
    bool seek(qint64 dts, qint64 position);

    /// Seeks to the very first packet, or to the first that the container lists: then only an input
    /// that is opened anew begins at the very first.
    bool rewind();

    /// Whether something was passed over for want of memory.
    bool lacksMemory() const { return m_lacksMemory; }

    /// Where in the file the last read ended, in bytes, and the size of the file.
    qint64 bytesDone() const;
    qint64 sizeBytes() const;

    /// Ends every read at once. Any thread.
    std::atomic<bool>& abortFlag() { return m_io.aborted; }

private:
    struct Io
    {
        std::unique_ptr<ByteSource> bytes;
        qint64 position = 0;
        bool failed = false;
        std::atomic<bool> aborted{false};
    };

    AvInput() = default;
    void chooseStream();
    void forgetFailures();
    static int readBytes(void* opaque, uint8_t* buffer, int count);
    static int64_t seekBytes(void* opaque, int64_t offset, int whence);

    Io m_io;
    AVFormatContext* m_context = nullptr;
    int m_videoStream = -1;
    bool m_isProbed = false;
    bool m_seeksByPosition = false;
    bool m_isMoved = false; // from the very first packet
    bool m_lacksMemory = false;
};

} // namespace corv
