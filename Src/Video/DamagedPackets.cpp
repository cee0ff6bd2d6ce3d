#include "Video/DamagedPackets.h"

#include "Video/FrameIndex.h"

#include <algorithm>

namespace corv {
namespace {

// Behind a damaged place, pictures without a fault of their own are shown again after this many,
// even if the next keyframe is further away.
constexpr int mostDoubtfulPackets = 300;

// Pictures come at most this many packets after their own.
constexpr int mostReordered = 32;

} // namespace

void DamagedPackets::mark(const FrameIndex& frames, int from, int last, int delay)
{
    // The picture of two fields is that of the first one's packet.
    if (from > 0 && from < frames.packetCount() && frames.packet(from).isSecondField)
        --from;
    const int end = std::min(last + mostDoubtfulPackets, frames.keyPacketAfter(last));
    const auto isPast = [&](const Range& range) {
        return range.end + mostReordered + delay < from;
    };
    m_ranges.erase(std::remove_if(m_ranges.begin(), m_ranges.end(), isPast), m_ranges.end());
    // Not across a keyframe: what is whole between two damaged places is shown.
    const auto touched = std::find_if(m_ranges.begin(), m_ranges.end(), [&](const Range& range) {
        return from <= range.end && end >= range.from;
    });
    if (touched == m_ranges.end()) {
        m_ranges.push_back({from, end});
        return;
    }
    touched->from = std::min(from, touched->from);
    touched->end = std::max(end, touched->end);
}

bool DamagedPackets::isDoubtful(const FrameIndex& frames, int packet) const
{
    return std::any_of(m_ranges.begin(), m_ranges.end(), [&](const Range& range) {
        if (packet < range.from)
            return false;
        if (packet < range.end)
            return true;
        // Shown before the keyframe that ends the damage, and built on what precedes it.
        return range.end < frames.packetCount() && frames.packet(range.end).isKey &&
               frames.packet(packet).pts < frames.packet(range.end).pts;
    });
}

} // namespace corv
