#include "Video/packetIndex.h"

#include "Video/AvInput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <QtEndian>
#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace corv {
namespace {

// No camera writes more parts than this; a hostile file can have millions.
constexpr int mostBoxes = 200000;

// More packets than a day at 200 frames a second.
constexpr int mostPackets = 20000000;

constexpr int packetsBetweenReports = 64;

// What looks into a packet looks at its head.
constexpr qint64 headBytesZeroed = 256;

struct Range
{
    qint64 begin = 0;
    qint64 end = 0;
};

class BytesWithoutPayload : public ByteSource
{
public:
    BytesWithoutPayload(std::unique_ptr<ByteSource> bytes, std::vector<Range> payload)
        : m_bytes(std::move(bytes)), m_payload(std::move(payload))
    {
    }

    qint64 sizeBytes() const override { return m_bytes->sizeBytes(); }

    qint64 readAt(qint64 position, uchar* bytes, qint64 count) override
    {
        const auto next =
            std::upper_bound(m_payload.begin(), m_payload.end(), position,
                             [](qint64 wanted, const Range& range) { return wanted < range.end; });
        if (next == m_payload.end())
            return m_bytes->readAt(position, bytes, count);
        if (position < next->begin)
            return m_bytes->readAt(position, bytes, std::min(count, next->begin - position));
        const qint64 zeros = std::min(count, next->end - position);
        // Nobody reads them; touching all the memory of an hour of video takes half a second.
        std::memset(bytes, 0, static_cast<size_t>(std::min(zeros, headBytesZeroed)));
        return zeros;
    }

private:
    std::unique_ptr<ByteSource> m_bytes;
    std::vector<Range> m_payload; // ascending
};

bool readWhole(ByteSource& bytes, qint64 position, uchar* target, qint64 count)
{
    while (count > 0) {
        const qint64 came = bytes.readAt(position, target, count);
        if (came <= 0)
            return false;
        position += came;
        target += came;
        count -= came;
    }
    return true;
}

// The places of the media data, from the chain of boxes that the file consists of.
std::vector<Range> payloadOf(ByteSource& bytes)
{
    std::vector<Range> payload;
    const qint64 size = bytes.sizeBytes();
    qint64 position = 0;
    for (int box = 0; box < mostBoxes && position <= size - 8; ++box) {
        uchar head[16];
        const bool isLong = position <= size - 16;
        if (!readWhole(bytes, position, head, isLong ? 16 : 8))
            break;
        qint64 headBytes = 8;
        quint64 boxBytes = qFromBigEndian<quint32>(head);
        if (boxBytes == 1 && isLong) {
            boxBytes = qFromBigEndian<quint64>(head + 8);
            headBytes = 16;
        } else if (boxBytes == 0) { // up to the end of the file
            boxBytes = static_cast<quint64>(size - position);
        }
        if (boxBytes < static_cast<quint64>(headBytes))
            break;
        const qint64 end = boxBytes > static_cast<quint64>(size - position)
                               ? size
                               : position + static_cast<qint64>(boxBytes);
        if (std::memcmp(head + 4, "mdat", 4) == 0)
            payload.push_back({position + headBytes, end});
        position = end;
    }
    return payload;
}

} // namespace

std::unique_ptr<ByteSource> withoutPayload(std::unique_ptr<ByteSource> bytes)
{
    std::vector<Range> payload = payloadOf(*bytes);
    return std::make_unique<BytesWithoutPayload>(std::move(bytes), std::move(payload));
}

Status readPacketIndex(AvInput& input, FrameIndex& index,
                       const std::function<bool(double)>& progress)
{
    index.setUnit(1000.0 * av_q2d(input.video()->time_base));
    AvPacketPtr packet(av_packet_alloc());
    const qint64 size = std::max<qint64>(input.sizeBytes(), 1);
    while (index.packetCount() < mostPackets) {
        const AvInput::Outcome outcome = input.next(*packet);
        if (outcome == AvInput::Outcome::failed)
            return Failure{Failure::Kind::unreadable,
                           QStringLiteral("The video can no longer be read.")};
        if (outcome == AvInput::Outcome::end)
            break;
        // Half a packet at the end of a file that was cut off is no picture.
        if (packet->flags & AV_PKT_FLAG_CORRUPT && packet->size > 0 &&
            packet->pos + packet->size >= size)
            break;
        FrameIndex::Packet entry;
        entry.pts = packet->pts;
        entry.dts = packet->dts;
        entry.position = packet->pos;
        entry.duration = packet->duration;
        entry.isKey = packet->flags & AV_PKT_FLAG_KEY;
        entry.isShown = !(packet->flags & AV_PKT_FLAG_DISCARD);
        index.add(entry);
        if (index.packetCount() % packetsBetweenReports == 0 &&
            progress(static_cast<double>(input.bytesDone()) / static_cast<double>(size)))
            return Failure{Failure::Kind::cancelled, QStringLiteral("Reading was cancelled.")};
    }
    return {};
}

} // namespace corv
