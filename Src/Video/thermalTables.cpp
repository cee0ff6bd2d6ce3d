#include "Video/thermalTables.h"

#include "Log/transpose.h"

#include <algorithm>
#include <limits>
#include <numeric>
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
    int record = 0;    // and where it is
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
    m_entries.resize(std::min<quint32>(partsPerFrame, std::numeric_limits<quint8>::max() + 1));
    for (std::vector<Entry>& entries : m_entries)
        entries.reserve(packetCount / m_entries.size() + 1);
    for (quint32 packet = 0; packet < packetCount; ++packet) {
        if (parts[packet] < m_entries.size())
            m_entries[parts[packet]].push_back({counters[packet], packet});
    }
    const auto byKey = [](const Entry& a, const Entry& b) {
        return std::tie(a.frame, a.packet) < std::tie(b.frame, b.packet);
    };
    for (std::vector<Entry>& entries : m_entries) {
        if (!std::is_sorted(entries.begin(), entries.end(), byKey))
            std::sort(entries.begin(), entries.end(), byKey);
    }
}

std::optional<quint32> ThermalPartIndex::newestPacket(quint32 frame, quint8 part) const
{
    if (part >= m_entries.size())
        return std::nullopt;
    const std::vector<Entry>& entries = m_entries[part];
    const auto later =
        std::upper_bound(entries.begin(), entries.end(), frame,
                         [](quint32 wanted, const Entry& entry) { return wanted < entry.frame; });
    if (later == entries.begin())
        return std::nullopt;
    const auto first =
        std::lower_bound(entries.begin(), later, std::prev(later)->frame,
                         [](const Entry& entry, quint32 wanted) { return entry.frame < wanted; });
    return first->packet;
}

void packetsInMachineOrder(const quint16* block, int words, int packets, quint16* rows)
{
    // The block has a row for each word of a packet, so its columns are the packets.
    const auto wordRows = static_cast<size_t>(words);
    const auto packetRows = static_cast<size_t>(packets);
    std::vector<std::uint32_t> offsets(wordRows);
    for (size_t k = 0; k < wordRows; ++k)
        offsets[k] = static_cast<std::uint32_t>(k * packetRows * sizeof(quint16));
    const RowSource from{reinterpret_cast<const unsigned char*>(block), offsets.data(), wordRows};
    transposeWords(from, packetRows, reinterpret_cast<unsigned char*>(rows),
                   wordRows * sizeof(quint16), WordBytes::exchanged);
}

} // namespace corv
