#pragma once

#include <QtGlobal>
#include <atomic>

namespace corv {

/// Where the open video sits on the clock of its flight log. One object for the whole life of its
/// `LogParser`, which alone writes it, on the interface thread; any thread reads it.
struct FlightClock
{
    /// Log time of the video's first frame, in milliseconds.
    std::atomic<int> logTimeOffset{0};

    /// The correction that the user sets, in milliseconds.
    std::atomic<int> manualLogTimeOffset{0};

    /// Whether a match of video and log found an offset.
    std::atomic<bool> synced{false};
};

/// The log time, in milliseconds, of what the video shows at `videoMs`. This way counts the user's
/// correction: it asks which values belong to a picture. Wraps around as 32-bit numbers do.
int logTimeOfVideo(int videoMs, const FlightClock& clock);

/// The place, in milliseconds, of a log event on the video's axis. This way leaves the user's
/// correction out, so that events stay where they are while the correction is being tried.
int videoTimeOfLog(quint32 logMs, const FlightClock& clock);

} // namespace corv
