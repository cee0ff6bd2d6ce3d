#pragma once

namespace corv {

class FrameIndex;

/// Which packets give no good picture, since they are damaged or built on one that is. Follows one
/// decoding of a file, in the order of the packets.
class DamagedPackets
{
public:
    void clear() { *this = {}; }
    bool isEmpty() const { return m_from == m_to; }

    /// One of the packets `from` to `last` is damaged, of a decoder with so many packets in work.
    /// Frames that are built on it are no better.
    void mark(const FrameIndex& frames, int from, int last, int delay);

    /// Whether the picture of a packet need not be good.
    bool isDoubtful(const FrameIndex& frames, int packet) const;

private:
    int m_from = 0; // packets from here ...
    int m_to = 0;   // ... to before this one give no good pictures
};

} // namespace corv
