#include "Video/FrameIndex.h"

#include "Base/arithmetic.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

namespace corv {
namespace {

// A time that differs from that of the stated rate by less is the same, rounded by the container.
constexpr double roundingMs = 0.6;

// A last frame that is shown for more frames than that is none, but what the sound has more.
constexpr double mostLastFrames = 3.0;

// A clock that goes back by more, or ahead by more than any flight, has begun anew.
constexpr double mostBackMs = 300.0;
constexpr double mostAheadMs = 60.0 * 60.0 * 1000.0;

// Where a recorder paused, its next packet is a keyframe after at least this long.
constexpr double leastPauseMs = 1000.0;

// No decoder holds back more frames until earlier ones come: H.264 and HEVC have the same limit.
constexpr size_t mostDecodingDelay = 16;

// Times beyond this are no clock, and sums of them leave 64 bits.
constexpr qint64 highestClock = qint64(1) << 60;

// A file can state times whose difference no 64 bits hold.
double distance(qint64 from, qint64 to)
{
    return static_cast<double>(to) - static_cast<double>(from);
}

bool isClock(qint64 time)
{
    return time == FrameIndex::noTime || (time > -highestClock && time < highestClock);
}

// From one time to the next; 0 if all are the same.
qint64 shortestStep(const std::vector<qint64>& times)
{
    double shortest = static_cast<double>(highestClock);
    for (size_t i = 1; i < times.size(); ++i) {
        const double step = distance(times[i - 1], times[i]);
        if (step > 0.0)
            shortest = std::min(shortest, step);
    }
    return shortest < static_cast<double>(highestClock) ? static_cast<qint64>(shortest) : 0;
}

void moveClock(FrameIndex::Packet& packet, qint64 shift)
{
    packet.dts += packet.dts == FrameIndex::noTime ? 0 : shift;
    packet.pts += packet.pts == FrameIndex::noTime ? 0 : shift;
    packet.shift += shift;
}

bool isAt(const FrameIndex::Packet& packet, qint64 dts, qint64 pts)
{
    return packet.storedDts() == dts && packet.storedPts() == pts;
}

// Of the packets that are decoded one after the other, which one is the first on the screen, which
// the second, and so on.
std::vector<size_t> turnsOfDecoding(const std::vector<size_t>& decoded,
                                    const std::vector<qint64>& orders)
{
    std::vector<size_t> turns(decoded.size());
    std::iota(turns.begin(), turns.end(), size_t(0));
    std::stable_sort(turns.begin(), turns.end(),
                     [&](size_t a, size_t b) { return orders[decoded[a]] < orders[decoded[b]]; });
    return turns;
}

// How many packets later than in its turn on the screen a frame can be decoded.
size_t decodingDelay(const std::vector<size_t>& turns)
{
    size_t delay = 0;
    for (size_t i = 0; i < turns.size(); ++i)
        delay = std::max(delay, std::max(turns[i], i) - i);
    return delay;
}

} // namespace

void FrameIndex::hideFramesBefore(int packet)
{
    const qint64 pts = m_packets[static_cast<size_t>(packet)].pts;
    if (pts == noTime)
        return;
    for (Packet& other : m_packets) {
        if (other.pts != noTime && other.pts < pts)
            other.isShown = false;
    }
}

void FrameIndex::joinClocks()
{
    const bool areClocks =
        std::all_of(m_packets.begin(), m_packets.end(), [](const Packet& packet) {
            return isClock(packet.pts) && isClock(packet.dts);
        });
    if (!areClocks)
        return;
    qint64 shift = 0;
    qint64 last = noTime;
    qint64 step = 0; // from one packet to the next
    for (Packet& packet : m_packets) {
        if (packet.dts != noTime) {
            const double ms = last == noTime ? 0.0 : distance(last, packet.dts + shift) * m_unitMs;
            if (ms < -mostBackMs || ms > mostAheadMs)
                shift = last + step - packet.dts;
            else if (ms > 0.0)
                step = packet.dts + shift - last;
            packet.dts += shift;
            last = packet.dts;
        }
        if (packet.pts != noTime)
            packet.pts += shift;
        packet.shift = shift;
    }
}

bool FrameIndex::isAtJoin(int packet) const
{
    const int last = std::min(packet + packetsAtJoin, packetCount() - 1);
    for (int i = packet; i < last; ++i) {
        const Packet& before = this->packet(i);
        const Packet& behind = this->packet(i + 1);
        if (behind.beginsAnew || before.shift != behind.shift)
            return true;
        const bool areKnown = before.dts != noTime && behind.dts != noTime;
        if (behind.isKey && areKnown && distance(before.dts, behind.dts) * m_unitMs > leastPauseMs)
            return true;
    }
    return false;
}

bool FrameIndex::areAllKeys() const
{
    return std::all_of(m_packets.begin(), m_packets.end(),
                       [](const Packet& packet) { return packet.isKey; });
}

void FrameIndex::setKeyPackets(const std::vector<bool>& areKeys)
{
    for (size_t i = 0; i < m_packets.size(); ++i)
        m_packets[i].isKey = areKeys[i];
}

// Each part begins at a keyframe before what it shows, and ends at one behind that.
bool FrameIndex::isAtSeam(int packet) const
{
    if (packet == 0 || !this->packet(packet).isKey)
        return false;
    const qint64 before = this->packet(packet - 1).storedDts();
    const qint64 behind = this->packet(packet).storedDts();
    return before != noTime && behind != noTime && behind < before;
}

void FrameIndex::alignParts()
{
    std::optional<qint64> firstLead; // from decoding to showing
    bool isInsideGroup = false;
    int end = 0;
    for (int begin = 0; begin < packetCount(); begin = end) {
        for (end = begin + 1; end < packetCount() && !isAtSeam(end);)
            ++end;
        qint64 dts = noTime;
        qint64 pts = highestClock;
        for (int i = begin; i < end; ++i) {
            const Packet& other = packet(i);
            if (!isClock(other.pts) || !isClock(other.dts))
                return;
            if (!other.isShown)
                continue;
            if (other.pts == noTime || other.dts == noTime)
                return;
            dts = dts == noTime ? other.dts : dts;
            pts = std::min(pts, other.pts);
        }
        if (dts == noTime)
            continue;
        isInsideGroup = isInsideGroup || !packet(begin).isShown;
        const qint64 shift = firstLead.value_or(pts - dts) - (pts - dts);
        firstLead = firstLead.value_or(pts - dts);
        // Less than half a frame is the frames' own.
        const double lengthOfAll = distance(packet(begin).dts, packet(end - 1).dts);
        const bool isOff = std::abs(static_cast<double>(shift)) * 2.0 * (end - begin) > lengthOfAll;
        for (int i = begin; i < end && isInsideGroup && isOff; ++i)
            moveClock(m_packets[static_cast<size_t>(i)], shift);
    }
}

std::vector<size_t> FrameIndex::shownPackets() const
{
    std::vector<size_t> shown;
    for (size_t i = 0; i < m_packets.size(); ++i) {
        if (m_packets[i].isShown)
            shown.push_back(i);
    }
    return shown;
}

bool FrameIndex::areTimesAscending() const
{
    const std::vector<size_t> shown = shownPackets();
    return std::all_of(shown.begin(), shown.end(), [&, before = noTime](size_t i) mutable {
        const qint64 last = std::exchange(before, m_packets[i].pts);
        return m_packets[i].pts != noTime && last <= m_packets[i].pts;
    });
}

bool FrameIndex::hasTimesOfDecoding(const std::vector<qint64>& orders) const
{
    if (!areTimesAscending())
        return false;
    const std::vector<size_t> turns = turnsOfDecoding(shownPackets(), orders);
    const size_t delay = decodingDelay(turns);
    return delay > 0 && delay <= mostDecodingDelay;
}

void FrameIndex::giveTimes(const std::vector<qint64>& orders)
{
    const std::vector<size_t> decoded = shownPackets();
    const bool areTimesGiven = areTimesAscending();
    std::vector<qint64> times;
    for (const size_t i : decoded) {
        const qint64 time = areTimesGiven ? m_packets[i].pts : m_packets[i].dts;
        if (time == noTime || !isClock(time))
            return;
        times.push_back(time);
    }
    std::sort(times.begin(), times.end());
    const std::vector<size_t> turns = turnsOfDecoding(decoded, orders);
    const size_t delay = decodingDelay(turns);
    // No sum of these leaves 64 bits.
    const qint64 step =
        std::min(shortestStep(times), highestClock / static_cast<qint64>(times.size() + 1));
    for (size_t i = 0; i < turns.size(); ++i) {
        const size_t turn = i + delay;
        const size_t last = std::min(turn, times.size() - 1);
        const qint64 behind = static_cast<qint64>(turn - last);
        m_packets[decoded[turns[i]]].pts = times[last] + behind * step;
    }
}

void FrameIndex::finish(double fps)
{
    m_fps = fps;
    m_shown.clear();
    m_keyPackets.clear();
    m_keyFrames.clear();
    m_byPosition.resize(m_packets.size());
    m_hasTimes = true;
    for (size_t i = 0; i < m_packets.size(); ++i) {
        const Packet& packet = m_packets[i];
        m_byPosition[i] = static_cast<int>(i);
        if (packet.isKey)
            m_keyPackets.push_back(static_cast<int>(i));
        if (!packet.isShown)
            continue;
        m_shown.push_back(static_cast<int>(i));
        m_hasTimes = m_hasTimes && packet.pts != noTime;
    }
    std::stable_sort(m_byPosition.begin(), m_byPosition.end(),
                     [this](int a, int b) { return packet(a).position < packet(b).position; });
    const auto isSamePlace = [this](int a, int b) {
        return packet(a).position >= 0 && packet(a).position == packet(b).position;
    };
    m_isRepeating = std::adjacent_find(m_byPosition.begin(), m_byPosition.end(), isSamePlace) !=
                    m_byPosition.end();
    // Without times the order of decoding is the only one known.
    if (m_hasTimes) {
        std::stable_sort(m_shown.begin(), m_shown.end(),
                         [this](int a, int b) { return packet(a).pts < packet(b).pts; });
    }
    for (size_t i = 0; i < m_shown.size(); ++i) {
        Packet& shown = m_packets[static_cast<size_t>(m_shown[i])];
        shown.frame = static_cast<int>(i);
        if (shown.isKey)
            m_keyFrames.push_back(static_cast<int>(i));
    }
    findEqualTimes();
    m_isConstantRate = true;
    for (int i = 0; m_hasTimes && i < frameCount() && m_isConstantRate; ++i)
        m_isConstantRate = std::abs(trueTimeMs(i) - i * 1000.0 / m_fps) < roundingMs;
    if (m_shown.empty())
        return;
    if (m_isConstantRate) {
        m_endMs = frameCount() * 1000.0 / m_fps;
        return;
    }
    m_endMs = trueEndMs();
}

void FrameIndex::findEqualTimes()
{
    m_firstAtTime.clear();
    m_lastAtTime.clear();
    const auto isEqual = [this](int a, int b) { return packet(a).pts == packet(b).pts; };
    if (!m_hasTimes || std::adjacent_find(m_shown.begin(), m_shown.end(), isEqual) == m_shown.end())
        return;
    m_firstAtTime.resize(m_shown.size());
    m_lastAtTime.resize(m_shown.size());
    for (size_t first = 0; first < m_shown.size();) {
        size_t end = first + 1;
        while (end < m_shown.size() && isEqual(m_shown[first], m_shown[end]))
            ++end;
        for (size_t frame = first; frame < end; ++frame) {
            m_firstAtTime[frame] = static_cast<int>(first);
            m_lastAtTime[frame] = static_cast<int>(end) - 1;
        }
        first = end;
    }
}

std::pair<int, int> FrameIndex::framesAtTimeOf(int frame) const
{
    if (m_firstAtTime.empty())
        return {frame, frame};
    return {m_firstAtTime[static_cast<size_t>(frame)], m_lastAtTime[static_cast<size_t>(frame)]};
}

// What is stated as the length of the last packet can be no more than the mean of all.
double FrameIndex::trueEndMs() const
{
    const double beginMs = trueTimeMs(frameCount() - 1);
    if (m_statedMs > beginMs && m_statedMs <= beginMs + mostLastFrames * 1000.0 / m_fps)
        return m_statedMs;
    const double lastMs = static_cast<double>(packet(m_shown.back()).duration) * m_unitMs;
    return beginMs + (lastMs > 0.0 ? lastMs : 1000.0 / m_fps);
}

double FrameIndex::trueTimeMs(int frame) const
{
    return distance(packet(m_shown.front()).pts, packet(packetOfFrame(frame)).pts) * m_unitMs;
}

double FrameIndex::timeMs(int frame) const
{
    if (frame <= 0)
        return 0.0;
    if (frame >= frameCount())
        return m_endMs;
    return m_isConstantRate ? frame * 1000.0 / m_fps : trueTimeMs(frame);
}

int FrameIndex::frameAtTime(double ms) const
{
    const int last = frameCount() - 1;
    if (m_isConstantRate)
        return std::min(truncateToInt(std::max(ms, 0.0) * m_fps / 1000.0 + 0.5), last);
    // The last frame that is not later.
    int low = 0;
    int high = last;
    while (low < high) {
        const int middle = high - (high - low) / 2;
        if (timeMs(middle) <= ms)
            low = middle;
        else
            high = middle - 1;
    }
    if (low == last)
        return last;
    // Times come rounded down to whole milliseconds, and each frame reaches half a frame back.
    const double gap = timeMs(low + 1) - timeMs(low);
    const double reach = std::min(gap, 1000.0 / m_fps) / 2.0;
    return timeMs(low + 1) - ms <= reach ? low + 1 : low;
}

int FrameIndex::startFor(int frame) const
{
    if (!m_hasTimes) // frames are known by counting them alone
        return 0;
    const int wanted = packetOfFrame(frame);
    const qint64 pts = packet(wanted).pts;
    auto key = std::upper_bound(m_keyPackets.begin(), m_keyPackets.end(), wanted);
    while (key != m_keyPackets.begin()) {
        --key;
        if (packet(*key).pts <= pts)
            return *key;
    }
    return 0;
}

int FrameIndex::startBefore(int packet) const
{
    const auto key = std::lower_bound(m_keyPackets.begin(), m_keyPackets.end(), packet);
    return key == m_keyPackets.begin() ? 0 : *(key - 1);
}

int FrameIndex::firstFrameFrom(int packet) const
{
    const auto before = [this](int a, int wanted) {
        const qint64 pts = this->packet(a).pts;
        const qint64 wantedPts = this->packet(wanted).pts;
        return m_hasTimes && pts != wantedPts ? pts < wantedPts : a < wanted;
    };
    const auto first = std::lower_bound(m_shown.begin(), m_shown.end(), packet, before);
    return static_cast<int>(first - m_shown.begin());
}

int FrameIndex::keyframeAtOrBefore(int frame) const
{
    const auto key = std::upper_bound(m_keyFrames.begin(), m_keyFrames.end(), frame);
    return key == m_keyFrames.begin() ? 0 : *(key - 1);
}

int FrameIndex::keyPacketAfter(int packet) const
{
    const auto key = std::upper_bound(m_keyPackets.begin(), m_keyPackets.end(), packet);
    return key == m_keyPackets.end() ? packetCount() : *key;
}

bool FrameIndex::agrees(const Packet& packet, qint64 position, qint64 dts, qint64 pts) const
{
    if (packet.position >= 0 && position >= 0)
        return packet.position == position;
    return isAt(packet, dts, pts);
}

int FrameIndex::find(qint64 position, qint64 dts, qint64 pts, int expected) const
{
    const bool isLikely =
        expected >= 0 && expected < packetCount() && agrees(packet(expected), position, dts, pts);
    if (isLikely && (!m_isRepeating || isAt(packet(expected), dts, pts)))
        return expected;
    const auto before = [this](int a, qint64 wanted) { return packet(a).position < wanted; };
    auto at = std::lower_bound(m_byPosition.begin(), m_byPosition.end(), position, before);
    int found = isLikely ? expected : -1;
    for (; at != m_byPosition.end() && packet(*at).position == position; ++at) {
        if (isAt(packet(*at), dts, pts))
            return *at;
        if (found < 0 && position >= 0)
            found = *at;
    }
    return found;
}

} // namespace corv
