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
    const int end = std::min(last + mostDoubtfulPackets, frames.keyPacketAfter(last));
    const bool follows = m_to > 0 && from <= m_to + mostReordered + delay;
    m_from = follows ? std::min(from, m_from) : from;
    m_to = follows ? std::max(end, m_to) : end;
}

bool DamagedPackets::isDoubtful(const FrameIndex& frames, int packet) const
{
    if (packet < m_from || isEmpty())
        return false;
    if (packet < m_to)
        return true;
    // Shown before the keyframe that ends the damage, and built on what precedes it.
    return m_to < frames.packetCount() && frames.packet(m_to).isKey &&
           frames.packet(packet).pts < frames.packet(m_to).pts;
}

} // namespace corv
