#pragma once

#include "Log/FlightNamingEvent.h"
#include "Log/LogFile.h"
#include "Log/LogSyncResult.h"

#include <QList>
#include <QString>
#include <atomic>
#include <functional>
#include <vector>

namespace corv {

/// What the counting pass of a decode found in the packet stream.
struct LogDecodeCounters
{
    qint64 total = 0; ///< packets with a known id
    qint64 valid = 0; ///< `total` minus all failures, so it can go below zero
    qint64 wrongCrc = 0;
    qint64 wrongSize = 0;
    qint64 wrongId = 0;
    bool incompleteLast = false; ///< the file ended inside its last packet
};

/// Turns flight log files into `LogFile` models, and finds in a model how it belongs to a video and
/// to a flight. Knows nothing of the rest of the program; used on the thread of whoever made it.
///
/// The format stands in Docs/log-format.md.
class LogDecoder
{
public:
    /// `stage` is 0 for the structure, 1 for counting and 2 for storing packets, the only one with
    /// real figures for `done` and `total`.
    using Progress = std::function<void(int stage, int done, int total)>;

    /// `abortFlag` is looked at while decoding and stays the caller's; it outlives every call.
    explicit LogDecoder(const std::atomic<bool>* abortFlag) : m_abortFlag(abortFlag) {}

    /// Decodes a file. Gives a model that the caller owns, or null, with the reason in the
    /// diagnostics, when the file cannot be read, when its description is no XML or does not fit in
    /// memory, or when the abort flag was set. Damaged packets cost nothing but themselves.
    /// `progress` must be callable and is called on this thread.
    LogFile* parseLog(const QString& path, const Progress& progress);

    /// Of the last decode, as far as it came.
    LogDecodeCounters counters() const { return m_counters; }
    int logVersion() const { return m_logVersion; }

    /// The type number that the file declares for a var of the last decode, both by their index in
    /// the model; `LogVar::Uint8` where there is no such var.
    int declaredType(size_t group, size_t var) const;

    /// Reads the recordings of a log and matches a video of `videoDuration` milliseconds with them.
    /// `found` is false for a duration of 0 or less, or without a log.
    LogSyncResult syncLogToVideo(const LogFile* log, int videoDuration) const;

    /// The recordings of a log; starts and stops are paired by their position.
    static std::vector<RecEvent> readRecordingEvents(const LogFile* log);

    /// Picks the recording whose length is nearest to `videoDuration` milliseconds.
    LogSyncResult findLogTimeOffset(const std::vector<RecEvent>& events, int videoDuration) const;

    /// Every naming in the log, also the undefined ones, in file order.
    QList<FlightNamingEvent> readFlightNamingEvents(const LogFile* log) const;

    /// The latest naming before `referenceEnd`; undefined if there is none. Log-clock milliseconds.
    FlightNamingEvent findNamingForFlight(const QList<FlightNamingEvent>& events,
                                          int referenceStart, int referenceEnd) const;

    /// The type of thermal camera that the log names last; 255 when it names none, -1 when it does
    /// not tell.
    int findThermalCameraHwVersion(const LogFile* log) const;

private:
    class Run;

    const std::atomic<bool>* m_abortFlag;
    LogDecodeCounters m_counters;
    int m_logVersion = 0;
    std::vector<std::vector<int>> m_declaredTypes;
};

} // namespace corv
