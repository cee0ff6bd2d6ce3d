#pragma once

#include <QtGlobal>
#include <optional>
#include <vector>

namespace corv {

/// A picture of the thermal camera, both versions of it.
constexpr int thermalCols = 160;
constexpr int thermalRows = 120;
constexpr int thermalPixels = thermalCols * thermalRows;

/// Log time of every thermal frame, by the frame's counter, and the way back: which frame belongs
/// to a moment. Built from the status records of a log, which may have gaps and junk at their end.
class ThermalFrameTimes
{
public:
    /// Frames up to here fit; at nine a second that is three weeks without a pause.
    static constexpr quint32 maxFrameCount = 1U << 24;

    /// Replaces the table by that of `count` records, in the order of the log, of a time in
    /// milliseconds and a frame counter each. False, and no frames, if the counters are of no
    /// camera: beyond `maxFrameCount`, or such that the last frame lies before the first.
    bool rebuild(const quint32* timesMs, const quint32* counters, int count);

    void clear() { m_latestTimesMs.clear(); }

    /// One more than the last good counter; 0 without a table.
    quint32 frameCount() const { return static_cast<quint32>(m_latestTimesMs.size()); }

    /// The first frame later than `logMs`; the last one if none is. Only with a table.
    quint32 frameAt(qint32 logMs) const;

private:
    // The latest time up to each frame, not the time itself: it ascends whatever the log holds, and
    // the first time above a moment is where the first latest time above it is.
    std::vector<qint32> m_latestTimesMs;
};

/// Finds the packet of a log that a part of a thermal frame is taken from.
class ThermalPartIndex
{
public:
    /// Replaces the index by that of `packetCount` packets, each with the counter of its frame and
    /// the number of its part. Parts from `partsPerFrame` on are never asked for and left out.
    void rebuild(const quint32* counters, const quint8* parts, quint32 packetCount,
                 quint32 partsPerFrame);

    void clear() { m_entries.clear(); }

    /// The number of the first packet with this part of the frame; where the log lacks it, of the
    /// newest frame before that has the part. None if there is no such frame.
    std::optional<quint32> newestPacket(quint32 frame, quint8 part) const;

private:
    struct Entry
    {
        quint32 frame;
        quint32 packet;
    };

    std::vector<std::vector<Entry>> m_entries; // of each part, by frame and packet
};

/// Writes the words of each thermal packet one after the other to `rows`, in the machine's byte
/// order. `block` is the log's column-major block of big-endian words, below 2 GiB: word k of
/// packet p goes from `block[k * packets + p]` to `rows[p * words + k]`.
void packetsInMachineOrder(const quint16* block, int words, int packets, quint16* rows);

} // namespace corv
