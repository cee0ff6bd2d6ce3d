#include "Discovery/FlightFilesMatcher.h"

#include "Discovery/filePairing.h"
#include "Log/LogDecoder.h"
#include "Log/LogFile.h"
#include "Video/VideoInfoReader.h"

#include <QDebug>
#include <QHash>
#include <memory>
#include <utility>
#include <vector>

namespace corv {

namespace {

// What naming the flights needs of a decoded log. The log itself may be a gigabyte: it is let go
// before the next one is read.
struct PairedLog
{
    QFileInfo file;
    bool decoded = false;
    std::vector<RecEvent> recordings;
    QList<FlightNamingEvent> namings;
};

} // namespace

struct FlightFilesMatcher::Search
{
    QList<FlightMatchData> matches;
    std::vector<PairedLog> logs; ///< each once, in the order of first use
    std::vector<int> logOfMatch; ///< position in `logs` by position in `matches`, -1 for none
};

namespace {

// Log times wrap around like the clock of the log.
int wrappingSum(int a, int b)
{
    return static_cast<int>(static_cast<quint32>(a) + static_cast<quint32>(b));
}

// Two names of one file, by way of links, are one log.
QString identity(const QFileInfo& file)
{
    const QString canonical = file.canonicalFilePath();
    return canonical.isEmpty() ? file.absoluteFilePath() : canonical;
}

} // namespace

int FlightFilesMatcher::defaultVideoDurationMs(const QString& path)
{
    return VideoInfoReader(path).getDurationMs();
}

FlightFilesMatcher::FlightFilesMatcher(const std::atomic<bool>* abortFlag)
    : FlightFilesMatcher(abortFlag, FileFacts())
{
}

FlightFilesMatcher::FlightFilesMatcher(const std::atomic<bool>* abortFlag, FileFacts facts)
    : m_abortFlag(abortFlag), m_facts(std::move(facts))
{
}

QList<FlightMatchData> FlightFilesMatcher::matchFlightFiles(const QList<QFileInfo>& videos,
                                                            const QList<QFileInfo>& logs,
                                                            bool quickMode,
                                                            const Progress& progress)
{
    Search search = pair(videos, logs);
    if (hasAborted())
        return {};
    if (quickMode)
        return search.matches;
    collectLogs(search);
    readDurations(search);
    if (hasAborted() || !readLogs(search, progress) || !nameFlights(search) || hasAborted())
        return {};
    return search.matches;
}

bool FlightFilesMatcher::isAbortRequested() const
{
    return m_abortFlag->load(std::memory_order_relaxed);
}

bool FlightFilesMatcher::hasAborted() const
{
    const bool aborted = isAbortRequested();
    if (aborted)
        qInfo() << "Aborted. (flightFilesMatcher)";
    return aborted;
}

FlightFilesMatcher::Search FlightFilesMatcher::pair(const QList<QFileInfo>& videos,
                                                    const QList<QFileInfo>& logs) const
{
    const std::vector<TimedFile> timedVideos = sortedByTime(videos, m_facts.time);
    const std::vector<TimedFile> timedLogs = sortedByTime(logs, m_facts.time);
    qInfo() << "Logs: " << logs.size() << " entries";
    qInfo() << "Videos: " << videos.size() << " entries";
    const std::vector<int> paired = pairVideosWithLogs(timedVideos, timedLogs);
    Search search;
    search.matches.reserve(videos.size());
    for (size_t i = 0; i < timedVideos.size(); ++i) {
        FlightMatchData match;
        match.videoFile = timedVideos[i].file;
        match.matchFound = paired[i] >= 0;
        if (match.matchFound)
            match.logFile = timedLogs[static_cast<size_t>(paired[i])].file;
        search.matches.append(match);
    }
    return search;
}

void FlightFilesMatcher::collectLogs(Search& search)
{
    QHash<QString, int> positions;
    for (const FlightMatchData& match : qAsConst(search.matches)) {
        if (!match.matchFound) {
            search.logOfMatch.push_back(-1);
            continue;
        }
        const QString key = identity(match.logFile);
        const auto known = positions.constFind(key);
        if (known != positions.constEnd()) {
            search.logOfMatch.push_back(*known);
            continue;
        }
        const int position = static_cast<int>(search.logs.size());
        positions.insert(key, position);
        search.logOfMatch.push_back(position);
        search.logs.push_back({match.logFile, false, {}, {}});
    }
}

void FlightFilesMatcher::readDurations(Search& search) const
{
    for (int i = 0; i < search.matches.size(); ++i) {
        FlightMatchData& match = search.matches[i];
        qInfo() << "Getting time for video" << i;
        match.videoDuration = m_facts.videoDurationMs(match.videoFile.absoluteFilePath());
        qInfo() << "Duration:" << match.videoDuration << "msecs";
    }
}

bool FlightFilesMatcher::readLogs(Search& search, const Progress& progress) const
{
    const int total = static_cast<int>(search.logs.size());
    for (int k = 1; k <= total; ++k) {
        PairedLog& log = search.logs[static_cast<size_t>(k - 1)];
        qInfo() << "Start analyzing...";
        LogDecoder decoder(m_abortFlag);
        const std::unique_ptr<LogFile> decoded(decoder.parseLog(
            log.file.absoluteFilePath(), [&progress, k, total](int stage, int done, int ofTotal) {
                if (progress)
                    progress(k, total, stage, done, ofTotal);
            }));
        if (decoded) {
            log.decoded = true;
            log.namings = decoder.readFlightNamingEvents(decoded.get());
            log.recordings = LogDecoder::readRecordingEvents(decoded.get());
        }
        if (hasAborted())
            return false;
    }
    return true;
}

bool FlightFilesMatcher::nameFlights(Search& search) const
{
    for (int i = 0; i < search.matches.size(); ++i) {
        const int position = search.logOfMatch[static_cast<size_t>(i)];
        if (position < 0)
            continue;
        if (isAbortRequested())
            return false;
        const PairedLog& log = search.logs[static_cast<size_t>(position)];
        FlightMatchData& match = search.matches[i];
        if (!log.decoded || match.videoDuration <= 0)
            continue;
        LogDecoder decoder(m_abortFlag);
        const LogSyncResult sync = decoder.findLogTimeOffset(log.recordings, match.videoDuration);
        if (sync.found)
            match.naming =
                decoder.findNamingForFlight(log.namings, sync.logTimeOffset,
                                            wrappingSum(sync.logTimeOffset, match.videoDuration));
    }
    return true;
}

} // namespace corv
