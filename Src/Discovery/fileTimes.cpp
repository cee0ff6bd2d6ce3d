#include "Discovery/fileTimes.h"

#include "Discovery/flightSegments.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corv {
namespace {

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Ends of files, each with the length of what it holds.
using FileEnds = std::vector<std::pair<qint64, qint64>>;

// The share of the files that can have been ended by the camera or the drone: neither can end one
// sooner after another than it is long; a copy can, and mostly does. At least two files.
double shareOfPossibleEnds(FileEnds ends)
{
    std::sort(ends.begin(), ends.end());
    double possible = 0;
    for (size_t i = 1; i < ends.size(); ++i)
        possible += ends[i].first - ends[i - 1].first >= ends[i].second / 2;
    return possible / static_cast<double>(ends.size() - 1);
}

} // namespace

bool isWhole(const RecEvent& event)
{
    return event.startTime != 0 && event.stopTime > event.startTime;
}

qint64 lengthOf(const RecEvent& event)
{
    return static_cast<qint64>(event.stopTime) - static_cast<qint64>(event.startTime);
}

double likelihoodOfKeptTimes(const std::vector<PairingVideo>& videos,
                             const std::vector<PairingLog>& logs)
{
    constexpr double unknown = 0.7;
    constexpr double lost = 0.3;
    FileEnds ends;
    for (const PairingVideo& video : videos)
        if (video.timeMs >= 0 && video.lengthMs > 0)
            ends.emplace_back(video.timeMs, video.lengthMs);
    if (ends.size() >= 2) {
        const double share = shareOfPossibleEnds(ends);
        return share > 0.8 ? 0.995 : share > 0.4 ? unknown : lost;
    }
    // A single video shows nothing; logs beside it can still show that a copy has made the times.
    FileEnds logEnds;
    for (const PairingLog& log : logs) {
        qint64 recordedMs = 0;
        for (const RecEvent& event : log.recordings)
            recordedMs += isWhole(event) ? lengthOf(event) : 0;
        if (log.timeMs >= 0 && recordedMs > 0)
            logEnds.emplace_back(log.timeMs, recordedMs);
    }
    return logEnds.size() >= 2 && shareOfPossibleEnds(logEnds) <= 0.4 ? lost : unknown;
}

bool goesOnAtOnce(const PairingVideo& before, const PairingVideo& next)
{
    constexpr qint64 atOnceMs = 5000; // some cards know times to two seconds
    return before.timeMs < 0 || next.timeMs < 0 ||
           next.timeMs - next.lengthMs - before.timeMs <= atOnceMs;
}

LogDelay::LogDelay(const std::vector<PairingVideo>& videos, const std::vector<PairingLog>& logs,
                   const std::vector<LoggedRecording>& recordings)
    : m_logs(logs)
{
    std::vector<double> delays;
    for (const PairingVideo& video : videos) {
        double nearest = -1;
        for (const LoggedRecording& recording : recordings)
            if (recording.log == video.logByTime &&
                lengthsAgree(video.lengthMs, recording.lengthMs)) {
                const double secs = delaySecs(video, recording);
                nearest = nearest < 0 ? secs : std::min(nearest, secs);
            }
        if (nearest >= 0)
            delays.push_back(nearest);
    }
    if (delays.size() < 3)
        return;
    m_typicalSecs = median(delays);
    for (double& delay : delays)
        delay = std::abs(delay - m_typicalSecs);
    m_spreadSecs = std::max(20.0, 1.5 * median(delays));
}

double LogDelay::fit(const PairingVideo& video, const LoggedRecording& recording) const
{
    constexpr double longestSecs = 1800;
    constexpr double anyOrder = 0.02;
    const PairingLog& log = m_logs[static_cast<size_t>(recording.log)];
    if (video.timeMs < 0 || log.timeMs < 0)
        return 1;
    const double wholeSecs = static_cast<double>(log.timeMs - video.timeMs) / 1000;
    const double secs = delaySecs(video, recording);
    if (wholeSecs < -3 || secs >= longestSecs + 3)
        return anyOrder;
    const double apart = std::abs(secs - m_typicalSecs);
    const double near = std::exp(-apart / m_spreadSecs) / (2 * m_spreadSecs);
    return std::min(20.0, 0.95 * near * longestSecs + 0.05);
}

bool LogDelay::followsAtOnce(const PairingVideo& video, const LoggedRecording& recording) const
{
    const double secs = delaySecs(video, recording);
    return secs * 1000 < static_cast<double>(recording.lengthMs) ||
           std::abs(secs - m_typicalSecs) <= m_spreadSecs;
}

bool LogDelay::isDuring(const PairingVideo& video, const LoggedRecording& recording) const
{
    constexpr double usualSpreads = 2;
    const PairingLog& log = m_logs[static_cast<size_t>(recording.log)];
    if (video.timeMs < 0 || log.timeMs < 0)
        return false;
    const qint64 untilStopMs = log.timeMs - recording.untilLastStopMs - video.timeMs;
    const double latestSecs = m_typicalSecs + usualSpreads * m_spreadSecs;
    return untilStopMs >= -3000 && static_cast<double>(untilStopMs + video.lengthMs -
                                                       recording.lengthMs) < 1000 * latestSecs;
}

// From the end of the video to the writing of the log, less what the log itself says lies
// between; where the two clocks disagree, the file times alone.
double LogDelay::delaySecs(const PairingVideo& video, const LoggedRecording& recording) const
{
    const qint64 wholeMs = m_logs[static_cast<size_t>(recording.log)].timeMs - video.timeMs;
    const qint64 restMs = wholeMs - recording.untilLastStopMs;
    return static_cast<double>(restMs >= -3000 ? std::max(qint64(0), restMs) : wholeMs) / 1000;
}

} // namespace corv
