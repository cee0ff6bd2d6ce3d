#pragma once

#include "Base/Result.h"
#include "Log/FlightNamingEvent.h"
#include "Log/LogFile.h"
#include "Log/LogSyncResult.h"

#include <QList>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
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

/// What pairing a log with videos and naming its flights needs of the log.
struct LogDigest
{
    std::vector<RecEvent> recordings;
    QList<FlightNamingEvent> namings;
    int thermalCameraHwVersion = -1;  ///< as `LogDecoder::findThermalCameraHwVersion` gives it
    bool describesRecordings = false; ///< so that a log without a recording saw none
};

/// From the earliest to the latest `time` of any group, in log-clock milliseconds.
struct LogTimeSpan
{
    quint32 startMs = 0;
    quint32 endMs = 0;
};

/// The span of a decoded log; nothing where no group has times.
std::optional<LogTimeSpan> timeSpanOf(const LogFile& log);

/// What a log holds, without its values.
struct LogSurvey
{
    /// The groups and fields with their shapes; values only of what the digest is made of.
    std::shared_ptr<const LogFile> log;
    std::optional<LogTimeSpan> span; ///< nothing where no group has times
    LogDigest digest;
};

/// What a reading says in the diagnostics: its steps and failures, or the failures alone. The first
/// message of a program makes it look for rules of logging in several folders, which takes a short
/// command a twentieth of its time.
enum class LogMessages { steps, failures };

/// Turns flight log files into `LogFile` models, and finds in a model how it belongs to a video and
/// to a flight. Used on the thread that made it.
///
/// The format is described in Docs/log-format.md.
class LogDecoder
{
public:
    /// `stage` is 0 for the structure, 1 for counting and 2 for storing packets, the only one with
    /// real figures for `done` and `total`.
    using Progress = std::function<void(int stage, int done, int total)>;

    /// `abortFlag` is read while decoding. It stays the caller's and outlives every call.
    explicit LogDecoder(const std::atomic<bool>* abortFlag) : m_abortFlag(abortFlag) {}

    /// Decodes a file. Damaged packets are skipped and counted. Fails when the file cannot be read,
    /// when its description is no XML or too large, when the values do not fit in memory, and when
    /// the abort flag was set; the diagnostics say so too. `progress` must be callable and is
    /// called on this thread.
    Result<std::shared_ptr<const LogFile>> decode(const QString& path, const Progress& progress);

    /// The same, as a model that the caller owns, or null.
    LogFile* parseLog(const QString& path, const Progress& progress);

    /// Reads of a file only what pairing and naming need, in one pass and in a few megabytes of
    /// memory: the same recordings, namings and camera version as those of the decoded log. A log
    /// whose other fields are too large to be decoded can be read. `progress` as for
    /// `decode`, with kilobytes of the file as the figures of stage 2.
    Result<LogDigest> readForPairing(const QString& path, const Progress& progress) const;

    /// Reads what a file holds, in one pass and without keeping the values: the same groups,
    /// counters, recordings and namings as those of the decoded log. `progress` as for
    /// `readForPairing`.
    Result<LogSurvey> survey(const QString& path, const Progress& progress,
                             LogMessages messages = LogMessages::steps);

    /// Of the last decode or survey, as far as it came.
    LogDecodeCounters counters() const { return m_counters; }
    int logVersion() const { return m_logVersion; }

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

    /// The same for a recording from `startMs` on, `durationMs` long. Its end wraps around as
    /// 32-bit numbers do.
    FlightNamingEvent findNamingForRecording(const QList<FlightNamingEvent>& events, int startMs,
                                             int durationMs) const;

    /// The type of thermal camera that the log names last; 255 when it names none, -1 when it has
    /// no such field.
    int findThermalCameraHwVersion(const LogFile* log) const;

    /// `hwVersion` if it is that of a known thermal camera, else -1.
    static int knownThermalCamera(int hwVersion);

private:
    class Run;

    Result<std::unique_ptr<LogFile>> read(const QString& path, const Progress& progress);
    LogDigest digestOf(const LogFile* log) const;

    const std::atomic<bool>* m_abortFlag;
    LogDecodeCounters m_counters;
    int m_logVersion = 0;
};

} // namespace corv
