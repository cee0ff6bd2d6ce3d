#include "Video/packetIndex.h"

#include "Video/AvInput.h"
#include "Video/PictureParser.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <QtEndian>
#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace corv {
namespace {

// No camera writes more parts than this; a hostile file can have millions.
constexpr int mostBoxes = 200000;

// More packets than a day at 200 frames a second.
constexpr int mostPackets = 20000000;

constexpr int packetsBetweenReports = 8;

// So many bytes of each packet are given as zeros: parsers that look into one look at its
// beginning.
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

namespace {

FrameIndex::Packet entryOf(const AVPacket& packet)
{
    FrameIndex::Packet entry;
    entry.pts = packet.pts;
    entry.dts = packet.dts;
    entry.position = packet.pos;
    entry.duration = packet.duration;
    entry.isKey = packet.flags & AV_PKT_FLAG_KEY;
    entry.isShown = !(packet.flags & AV_PKT_FLAG_DISCARD);
    return entry;
}

// Half a packet at the end of a file that was cut off is no picture.
bool isCutOff(const AVPacket& packet, qint64 fileBytes)
{
    return packet.flags & AV_PKT_FLAG_CORRUPT && packet.size > 0 &&
           packet.pos + packet.size >= fileBytes;
}

// Finds times and halves of frames where the container does not state them.
class PictureFacts
{
public:
    PictureFacts(const AvInput& input, bool arePicturesRead)
    {
        if (arePicturesRead)
            m_parser.emplace(*input.video()->codecpar);
    }

    void add(const AVPacket& packet, FrameIndex::Packet& entry)
    {
        if (!m_parser)
            return;
        const PictureParser::Picture picture = m_parser->look(packet);
        m_orders.push_back(picture.order);
        m_keys.push_back(picture.isKey && !picture.isSecondField);
        if (picture.isSecondField) {
            entry.isSecondField = true;
            entry.isShown = false;
            entry.isKey = false;
            return;
        }
        m_areAllKeys = m_areAllKeys && entry.isKey;
        m_areAllWhole = m_areAllWhole && picture.isWhole;
        entry.isKey = entry.isKey && !picture.isPlaceholder;
        m_isPacked = m_isPacked || picture.isPlaceholder;
        m_isOrderKnown = m_isOrderKnown && picture.hasOrder;
        // Some containers have no times below 0. What a cut has left of pictures that are shown
        // before the first one does not arrive.
        const bool hasTime = entry.pts != FrameIndex::noTime;
        if (!hasTime && m_isOrderKnown && m_isFirstTimed && picture.order < m_orders.front())
            entry.isShown = false;
        if (m_orders.size() == 1)
            m_isFirstTimed = hasTime;
        m_isTimeMissing = m_isTimeMissing || (entry.isShown && !hasTime);
    }

    void finish(FrameIndex& index) const
    {
        if (m_parser && m_isOrderKnown && (m_isTimeMissing || index.hasTimesOfDecoding(m_orders)))
            index.giveTimes(m_orders);
        if (m_isPacked)
            index.setPacked();
        // A container without its list of keyframes says that all packets are such.
        if (m_areAllKeys && !m_areAllWhole)
            index.setKeyPackets(m_keys);
    }

private:
    std::optional<PictureParser> m_parser;
    std::vector<qint64> m_orders;
    std::vector<bool> m_keys; // by what the pictures say
    bool m_areAllKeys = true; // by what the container says
    bool m_areAllWhole = true;
    bool m_isOrderKnown = true;
    bool m_isTimeMissing = false;
    bool m_isPacked = false;
    bool m_isFirstTimed = false;
};

// Finds where another recording was put behind one in the same file, though its clock goes on: the
// counters of its blocks begin anew, which looks as if blocks were lost.
class Joins
{
public:
    void look(AvInput& input, const AVPacket& packet, FrameIndex::Packet& entry)
    {
        if (m_first < 0)
            m_first = packet.pos;
        entry.beginsAnew = entry.isKey && m_sinceDamage < FrameIndex::packetsAtJoin &&
                           input.beginsAgainAt(packet.pos, m_first);
        m_sinceDamage = packet.flags & AV_PKT_FLAG_CORRUPT ? 0 : m_sinceDamage + 1;
    }

private:
    qint64 m_first = -1; // position of the first packet
    int m_sinceDamage = FrameIndex::packetsAtJoin;
};

} // namespace

Status readPacketIndex(AvInput& input, FrameIndex& index, bool arePicturesRead,
                       const std::function<bool(double)>& progress)
{
    index.setUnit(1000.0 * av_q2d(input.video()->time_base));
    AvPacketPtr packet(av_packet_alloc());
    PictureFacts facts(input, arePicturesRead);
    Joins joins;
    const qint64 size = std::max<qint64>(input.sizeBytes(), 1);
    Status status;
    while (index.packetCount() < mostPackets) {
        const AvInput::Outcome outcome = input.next(*packet);
        if (outcome == AvInput::Outcome::failed)
            status = Failure{Failure::Kind::unreadable,
                             QStringLiteral("The video can no longer be read.")};
        if (outcome != AvInput::Outcome::packet || isCutOff(*packet, size))
            break;
        FrameIndex::Packet entry = entryOf(*packet);
        if (input.canClockBeginAnew())
            joins.look(input, *packet, entry);
        facts.add(*packet, entry);
        index.add(entry);
        if (index.packetCount() % packetsBetweenReports == 0 &&
            progress(static_cast<double>(input.bytesDone()) / static_cast<double>(size))) {
            status = Failure{Failure::Kind::cancelled, QStringLiteral("Reading was cancelled.")};
            break;
        }
    }
    if (input.canClockBeginAnew())
        index.joinClocks();
    if (input.describesPackets())
        index.alignParts();
    facts.finish(index);
    return status;
}

} // namespace corv
