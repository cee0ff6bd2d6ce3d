#pragma once

#include <QtGlobal>

namespace corv {

/// Keeps the pace of playback: says how long the picture on screen is to be held before a frame is
/// due, so that frames come at their true times however the timer rounds, and a gap between two
/// frames holds the first. It does not skip: a decoder that cannot keep up is waited for, and the
/// pace goes on from there.
///
/// Times of frames are milliseconds of the timeline, "now" is milliseconds of any steady clock.
class PlaybackClock
{
public:
    /// The next frame shown is where the pace starts from: after a start, a seek, a change of
    /// speed.
    void reset() { m_isRunning = false; }

    /// A frame was shown. One that came much too late starts the pace anew.
    void frameShown(int frameMs, int speed, double nowMs);

    /// Whole milliseconds until a frame is due at `speed` times the true pace; 0 if it is due or
    /// if no pace has started.
    int msUntilDue(int frameMs, int speed, double nowMs) const;

private:
    double dueMs(int frameMs, int speed) const;

    bool m_isRunning = false;
    int m_startFrameMs = 0;
    double m_startMs = 0.0;
};

} // namespace corv
