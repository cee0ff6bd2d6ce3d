#include "Video/PlaybackClock.h"

#include <algorithm>
#include <cmath>

namespace corv {
namespace {

// Lateness up to here is made up for by the frames that follow. More than that is no hiccup but a
// slow decoder, and to make up for it would be to show its backlog in a rush.
constexpr double forgivenMs = 150.0;

// An hour is longer than any gap that is worth holding a picture for.
constexpr double longestWaitMs = 3'600'000.0;

} // namespace

double PlaybackClock::dueMs(int frameMs, int speed) const
{
    return m_startMs + (static_cast<double>(frameMs) - m_startFrameMs) / std::max(speed, 1);
}

void PlaybackClock::frameShown(int frameMs, int speed, double nowMs)
{
    if (m_isRunning && nowMs - dueMs(frameMs, speed) <= forgivenMs)
        return;
    m_isRunning = true;
    m_startFrameMs = frameMs;
    m_startMs = nowMs;
}

int PlaybackClock::msUntilDue(int frameMs, int speed, double nowMs) const
{
    if (!m_isRunning)
        return 0;
    const double waitMs = dueMs(frameMs, speed) - nowMs;
    return static_cast<int>(std::round(std::clamp(waitMs, 0.0, longestWaitMs)));
}

} // namespace corv
