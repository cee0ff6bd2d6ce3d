#include "Video/thermalTables.h"

#include <algorithm>
#include <numeric>
#include <opencv2/core/hal/intrin.hpp>
#include <tuple>

namespace corv {
namespace {

constexpr quint32 framePeriodMs = 114;

// One more than the last counter that follows the one before it: what the end of a broken-off log
// holds is not counted on.
quint32 countFrames(const quint32* counters, int count)
{
    quint32 last = 0;
    for (int i = count - 1; i > 0; --i) {
        last = counters[i];
        if (counters[i] == counters[i - 1] + 1)
            break;
    }
    return last + 1;
}

struct Start
{
    quint32 frame = 0; // the first counter that the next one follows
    int record = 0;    // and where it stands
};

Start findStart(const quint32* counters, int count)
{
    Start start;
    while (start.record < count - 1) {
        start.frame = counters[start.record];
        if (start.frame == counters[start.record + 1] - 1)
            break;
        ++start.record;
    }
    return start;
}

// Numbers of the records from `from` on, by counter, those of one counter in the log's order.
std::vector<int> recordsByCounter(const quint32* counters, int from, int count)
{
    std::vector<int> records(static_cast<size_t>(count - from));
    std::iota(records.begin(), records.end(), from);
    const auto byCounter = [counters](int a, int b) { return counters[a] < counters[b]; };
    if (!std::is_sorted(records.begin(), records.end(), byCounter))
        std::stable_sort(records.begin(), records.end(), byCounter);
    return records;
}

} // namespace

bool ThermalFrameTimes::rebuild(const quint32* timesMs, const quint32* counters, int count)
{
    m_latestTimesMs.clear();
    const quint32 frames = countFrames(counters, count);
    Start start = findStart(counters, count);
    if (frames == 0 || frames > maxFrameCount || start.frame > frames)
        return false;

    m_latestTimesMs.assign(frames, 0);
    const std::vector<int> records = recordsByCounter(counters, start.record, count);
    auto next = records.begin();
    quint32 timeMs = 0;
    qint32 latestMs = 0;
    for (quint32 frame = start.frame; frame < frames; ++frame) {
        timeMs += framePeriodMs;
        while (next != records.end() &&
               (counters[*next] < frame || (counters[*next] == frame && *next < start.record)))
            ++next;
        if (next != records.end() && counters[*next] == frame) {
            start.record = *next;
            timeMs = timesMs[start.record];
        }
        const auto signedMs = static_cast<qint32>(timeMs);
        latestMs = frame == 0 ? signedMs : std::max(latestMs, signedMs);
        m_latestTimesMs[frame] = latestMs;
    }
    return true;
}

quint32 ThermalFrameTimes::frameAt(qint32 logMs) const
{
    const auto last = m_latestTimesMs.end() - 1;
    return static_cast<quint32>(std::upper_bound(m_latestTimesMs.begin(), last, logMs) -
                                m_latestTimesMs.begin());
}

void ThermalPartIndex::rebuild(const quint32* counters, const quint8* parts, quint32 packetCount,
                               quint32 partsPerFrame)
{
    m_entries.clear();
    m_entries.reserve(packetCount);
    for (quint32 packet = 0; packet < packetCount; ++packet) {
        if (parts[packet] < partsPerFrame)
            m_entries.push_back({counters[packet], packet, parts[packet]});
    }
    const auto byKey = [](const Entry& a, const Entry& b) {
        return std::tie(a.frame, a.part, a.packet) < std::tie(b.frame, b.part, b.packet);
    };
    if (!std::is_sorted(m_entries.begin(), m_entries.end(), byKey))
        std::sort(m_entries.begin(), m_entries.end(), byKey);
}

bool ThermalPartIndex::isBefore(const Entry& entry, quint32 frame, quint8 part)
{
    return std::tie(entry.frame, entry.part) < std::tie(frame, part);
}

std::optional<quint32> ThermalPartIndex::firstPacket(quint32 frame, quint8 part) const
{
    const auto found = std::lower_bound(
        m_entries.begin(), m_entries.end(), frame,
        [part](const Entry& entry, quint32 wanted) { return isBefore(entry, wanted, part); });
    if (found == m_entries.end() || found->frame != frame || found->part != part)
        return std::nullopt;
    return found->packet;
}

namespace {

constexpr int step = 8; // words of one vector

quint16 swapped(quint16 word)
{
    return static_cast<quint16>(word << 8 | word >> 8);
}

void swapAndTransposeWords(quint16* block, int columns, int packets, quint16* rows, int column,
                           int columnEnd, int packet, int packetEnd)
{
    for (int k = column; k < columnEnd; ++k) {
        for (int p = packet; p < packetEnd; ++p) {
            quint16& word = block[static_cast<size_t>(k) * static_cast<size_t>(packets) +
                                  static_cast<size_t>(p)];
            word = swapped(word);
            rows[static_cast<size_t>(p) * static_cast<size_t>(columns) + static_cast<size_t>(k)] =
                word;
        }
    }
}

#if CV_SIMD128
void swapAndTransposeEight(quint16* block, size_t packets, quint16* rows, size_t columns)
{
    cv::v_uint16x8 a[step];
    cv::v_uint16x8 b[step];
    for (int i = 0; i < step; ++i) {
        quint16* words = block + static_cast<size_t>(i) * packets;
        const cv::v_uint16x8 read = cv::v_load(words);
        a[i] = cv::v_shl<8>(read) | cv::v_shr<8>(read);
        cv::v_store(words, a[i]);
    }
    // Three rounds of interleaving row i with row i + 4 turn eight columns into eight rows.
    for (int i = 0; i < 4; ++i)
        cv::v_zip(a[i], a[i + 4], b[2 * i], b[2 * i + 1]);
    for (int i = 0; i < 4; ++i)
        cv::v_zip(b[i], b[i + 4], a[2 * i], a[2 * i + 1]);
    for (int i = 0; i < 4; ++i)
        cv::v_zip(a[i], a[i + 4], b[2 * i], b[2 * i + 1]);
    for (int i = 0; i < step; ++i)
        cv::v_store(rows + static_cast<size_t>(i) * columns, b[i]);
}
#endif

void swapAndTransposeTile(quint16* block, int columns, int packets, quint16* rows, int column,
                          int columnEnd, int packet, int packetEnd)
{
#if CV_SIMD128
    const int wholeColumns = column + (columnEnd - column) / step * step;
    const int wholePackets = packet + (packetEnd - packet) / step * step;
    const auto rowWords = static_cast<size_t>(columns);
    const auto columnWords = static_cast<size_t>(packets);
    for (int p = packet; p < wholePackets; p += step) {
        for (int k = column; k < wholeColumns; k += step) {
            const auto atColumn = static_cast<size_t>(k);
            const auto atPacket = static_cast<size_t>(p);
            swapAndTransposeEight(block + atColumn * columnWords + atPacket, columnWords,
                                  rows + atPacket * rowWords + atColumn, rowWords);
        }
    }
    swapAndTransposeWords(block, columns, packets, rows, wholeColumns, columnEnd, packet,
                          wholePackets);
    swapAndTransposeWords(block, columns, packets, rows, column, columnEnd, wholePackets,
                          packetEnd);
#else
    swapAndTransposeWords(block, columns, packets, rows, column, columnEnd, packet, packetEnd);
#endif
}

} // namespace

void swapBytesAndTranspose(quint16* block, int columns, int packets, quint16* rows)
{
    // Whole cache lines on both sides, and few enough of them for the innermost cache.
    constexpr int tilePackets = 64;
    constexpr int tileColumns = 64;
    for (int packet = 0; packet < packets; packet += tilePackets) {
        const int packetEnd = std::min(packets - packet, tilePackets) + packet;
        for (int column = 0; column < columns; column += tileColumns) {
            const int columnEnd = std::min(columns - column, tileColumns) + column;
            swapAndTransposeTile(block, columns, packets, rows, column, columnEnd, packet,
                                 packetEnd);
        }
    }
}

} // namespace corv
