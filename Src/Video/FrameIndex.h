#pragma once

#include <QtGlobal>
#include <limits>
#include <utility>
#include <vector>

namespace corv {

/// The packets of a video in the order in which they are decoded, and its frames in the order in
/// which they are shown: numbers, true times, keyframes. Knows neither the file nor a decoder.
///
/// Built once by adding packets and calling finish(); afterwards it does not change and may be
/// shared by threads.
class FrameIndex
{
public:
    static constexpr qint64 noTime = std::numeric_limits<qint64>::min();

    /// One packet as the container describes it. Times are in units of the time base.
    struct Packet
    {
        qint64 pts = noTime;     ///< when its frame is shown; noTime if the container does not say
        qint64 dts = noTime;     ///< when it is decoded
        qint64 shift = 0;        ///< what joinClocks() has added to both
        qint64 position = -1;    ///< in the file, in bytes; -1 if unknown
        qint64 duration = 0;     ///< of its frame; 0 if unknown
        bool isKey = false;      ///< decoding can start here
        bool isShown = true;     ///< false: decoded for the sake of others only (edit lists)
        bool beginsAnew = false; ///< a recording that was put behind another one begins with it
        bool isSecondField = false; ///< the second half of the frame of the packet before
        int frame = -1;             ///< number of its frame, or -1; set by finish()

        /// The times as the file has them.
        qint64 storedPts() const { return pts == noTime ? pts : pts - shift; }
        qint64 storedDts() const { return dts == noTime ? dts : dts - shift; }
    };

    /// `unitMs` is the length of one unit of the time base in milliseconds.
    void setUnit(double unitMs) { m_unitMs = unitMs; }

    void add(const Packet& packet) { m_packets.push_back(packet); }

    /// A recorder that starts again can begin its clock anew inside a file. Each part gets times
    /// that follow those of the part before, as its packets do; a gap that a recording can have
    /// stays a gap. Before giveTimes() and finish().
    void joinClocks();

    /// A fault that comes with a join shows up to so many packets early: readers look ahead.
    static constexpr int packetsAtJoin = 3;

    /// Whether the packet is one of the last before a place where a recorder started again: where
    /// its clock or its counters began anew, or after a pause.
    bool isAtJoin(int packet) const;

    /// Whether the times go on from packet to packet although the frames are shown in another
    /// order: some writers give the times of decoding for those of showing. `orders` has the place
    /// of each packet's frame on the screen.
    bool hasTimesOfDecoding(const std::vector<qint64>& orders) const;

    /// Gives every frame a time where the container has those of decoding alone, as such or as
    /// those of showing. `orders` is as above. The first frame gets the time of the packet after
    /// which a decoder delivers it, each later frame that of a later packet. Before finish().
    void giveTimes(const std::vector<qint64>& orders);

    /// Whether no shown packet has an earlier time than the one before.
    bool areTimesAscending() const;

    /// Whether the container says of each packet that decoding can start at it.
    bool areAllKeys() const;

    /// Whether decoding can start at each packet, where the container does not know. Before
    /// finish().
    void setKeyPackets(const std::vector<bool>& areKeys);

    /// Whether an edit list leads from the packet before to this one, which is not what followed
    /// it when both were recorded.
    bool isAtSeam(int packet) const;

    /// Where an edit list leads into the middle of a group of pictures, the reader of the container
    /// counts from the packet that is decoded first, not from the frame that is shown first. Each
    /// part gets the times that follow those of the part before. Before finish().
    void alignParts();

    /// The length that the container states, in milliseconds: where it can be that of what is
    /// shown, the last frame ends there. Before finish().
    void setStatedLength(double ms) { m_statedMs = ms; }

    /// Pictures came in the packets of others: a decoder that may leave out one loses the next.
    void setPacked() { m_isPacked = true; }
    bool isPacked() const { return m_isPacked; }

    /// Leaves out the frames that are shown before that of `packet`: a decoder that starts in the
    /// middle of a group of pictures does not deliver them. Before finish().
    void hideFramesBefore(int packet);

    /// Numbers the frames. `fps` is the rate that the file states: where every time agrees with it
    /// but for rounding, the rate is constant and gives the times.
    void finish(double fps);

    int frameCount() const { return static_cast<int>(m_shown.size()); }
    int packetCount() const { return static_cast<int>(m_packets.size()); }
    const Packet& packet(int number) const { return m_packets[static_cast<size_t>(number)]; }

    /// The packet of a frame. 0 to frameCount() - 1.
    int packetOfFrame(int frame) const { return m_shown[static_cast<size_t>(frame)]; }

    /// Whether the container states when each frame is shown. Otherwise frames are numbered in the
    /// order of decoding.
    bool hasTimes() const { return m_hasTimes; }

    /// The first and the last frame that are shown at the time of this one. Where these differ, a
    /// camera wrote equal times, and the order of their packets need not be that of the screen.
    std::pair<int, int> framesAtTimeOf(int frame) const;

    bool isConstantRate() const { return m_isConstantRate; }

    /// Milliseconds from the first frame; for frameCount() and above the end of the last frame.
    double timeMs(int frame) const;

    /// The frame that is nearest to a time where frames are no further apart than the rate says,
    /// and the one that is held where they are.
    int frameAtTime(double ms) const;

    /// The packet to start decoding at, for a frame: the last keyframe that precedes it both in the
    /// file and on the screen.
    int startFor(int frame) const;

    /// The last keyframe packet before `packet`; 0 if there is none.
    int startBefore(int packet) const;

    /// The first frame that is shown when decoding starts at `packet`: earlier ones are built on
    /// what precedes it.
    int firstFrameFrom(int packet) const;

    /// The last frame at or before `frame` that decoding can start at; the first if there is none.
    int keyframeAtOrBefore(int frame) const;

    /// The first keyframe packet after `packet`; packetCount() if there is none.
    int keyPacketAfter(int packet) const;

    /// The packet at this position in the file with these times of the file, searched from
    /// `expected` on; where several are at one position, the one with those times. -1 if there is
    /// none.
    int find(qint64 position, qint64 dts, qint64 pts, int expected) const;

private:
    std::vector<size_t> shownPackets() const;
    void findEqualTimes();
    double trueTimeMs(int frame) const;
    double trueEndMs() const;
    bool agrees(const Packet& packet, qint64 position, qint64 dts, qint64 pts) const;

    double m_unitMs = 1.0;
    double m_fps = 0.0;
    double m_statedMs = 0.0; // 0 if unknown
    bool m_hasTimes = true;
    bool m_isPacked = false;
    bool m_isRepeating = false; // several packets are at one position: a part is shown twice
    bool m_isConstantRate = false;
    double m_endMs = 0.0;
    std::vector<Packet> m_packets;
    std::vector<int> m_shown;       // packets in the order of their times
    std::vector<int> m_firstAtTime; // by frame; empty where no two times are equal
    std::vector<int> m_lastAtTime;
    std::vector<int> m_keyPackets; // ascending
    std::vector<int> m_keyFrames;  // ascending
    std::vector<int> m_byPosition; // packets in the order of their positions
};

} // namespace corv
