#pragma once

#include <vector>

namespace corv {

class FrameIndex;

/// Which packets give no good picture, since they are damaged or built on one that is. Follows one
/// decoding of a file, in the order of the packets.
class DamagedPackets
{
public:
    void clear() { m_ranges.clear(); }
    bool isEmpty() const { return m_ranges.empty(); }

    /// One of the packets `from` to `last` is damaged, of a decoder with so many packets in work.
    /// Frames that are built on it are no better.
    void mark(const FrameIndex& frames, int from, int last, int delay);

    /// Whether the picture of a packet need not be good.
    bool isDoubtful(const FrameIndex& frames, int packet) const;

private:
    struct Range // packets that give no good pictures
    {
        int from = 0;
        int end = 0; // behind the last
    };

    std::vector<Range> m_ranges; // those whose pictures may still come
};

} // namespace corv
