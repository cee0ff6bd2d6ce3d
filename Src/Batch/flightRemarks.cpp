#include "Batch/flightRemarks.h"

#include "Log/LogDecoder.h"

#include <algorithm>

namespace corv {
namespace {

// A log that covers its video to within this has all that matters.
constexpr int kEarlyMs = 2000;
constexpr int kMsPerSecond = 1000;
constexpr int kSecondsPerMinute = 60;

QString minutes(int ms)
{
    const int seconds = std::max(0, ms) / kMsPerSecond;
    return QStringLiteral("%1:%2")
        .arg(seconds / kSecondsPerMinute)
        .arg(seconds % kSecondsPerMinute, 2, 10, QLatin1Char('0'));
}

// Whether the log ends during a recording, so that its length is not known.
bool hasStartWithoutStop(const LogFile& log)
{
    const std::vector<RecEvent> recordings = LogDecoder::readRecordingEvents(&log);
    return !recordings.empty() && recordings.back().startTime != 0 &&
           recordings.back().stopTime == 0;
}

} // namespace

QStringList flightRemarks(const FlightJob& job, const LogParser& parser, int videoMs)
{
    const LogFile* const log = parser.getLogFile();
    if (!log && job.log.isEmpty())
        return {QStringLiteral("No log was found for the flight: it has neither instruments nor "
                               "points of interest from the air.")};
    if (!log)
        return {}; // one that cannot be read is a failure
    if (!parser.isSynced())
        return {QStringLiteral("The log %1 has no recording: its place in the video is not known.")
                    .arg(job.log)};
    QStringList remarks;
    const bool isOpenEnded = parser.logProbablyNotMatching() && hasStartWithoutStop(*log);
    if (isOpenEnded)
        remarks << QStringLiteral("The log %1 has the start of the recording, but no stop.")
                       .arg(job.log);
    else if (parser.logProbablyNotMatching())
        remarks << QStringLiteral("The log %1 may belong to another video: none of its recordings "
                                  "is as long as this one.")
                       .arg(job.log);
    else if (job.isDoubtful)
        remarks << QStringLiteral("It is not certain that the log %1 belongs to this video.")
                       .arg(job.log);
    const std::optional<LogTimeSpan> span = timeSpanOf(*log);
    const int endMs = span ? videoTimeOfLog(span->endMs, *parser.clock()) : 0;
    if (endMs < videoMs - kEarlyMs)
        remarks << QStringLiteral("The log %1 ends at %2 of the video, which is %3 long. There are "
                                  "neither instruments nor points of interest after that.")
                       .arg(job.log, minutes(endMs), minutes(videoMs));
    return remarks;
}

} // namespace corv
