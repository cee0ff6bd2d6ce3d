#include "Discovery/FlightFilesMatcher.h"

#include "Discovery/logCategory.h"
#include "Log/LogDecoder.h"
#include "Log/LogFile.h"
#include "Platform/fileSystem.h"
#include "Threads/pool.h"
#include "Video/VideoInfoReader.h"

#include <QDebug>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QThread>
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <utility>

namespace corv {

struct FlightFilesMatcher::Search
{
    // One log file, by whatever names it was found.
    struct Log
    {
        TimedFile file;
        LogFacts facts;
    };

    QList<FlightMatchData> matches;
    std::vector<PairingVideo> videos; ///< by position in `matches`
    std::vector<Log> logs;       ///< those that the times pair first, in the order of first use
    std::vector<int> logOfMatch; ///< position in `logs` by position in `matches`, or -1
    size_t logsByTime = 0;
};

namespace {

// Two names of one file, by way of links, are one log.
QString identity(const QFileInfo& file)
{
    const QString canonical = file.canonicalFilePath();
    return canonical.isEmpty() ? file.absoluteFilePath() : canonical;
}

qint64 timeOf(const TimedFile& file)
{
    return file.time.isValid() ? file.timeMs : -1;
}

// Jobs by number, taken by several threads until none is left.
class SharedJobs
{
public:
    SharedJobs(size_t first, size_t end) : m_next(first), m_end(end) {}

    bool take(size_t* job)
    {
        *job = m_next.fetch_add(1, std::memory_order_relaxed);
        return *job < m_end;
    }

private:
    std::atomic<size_t> m_next;
    const size_t m_end;
};

// A second thread for the jobs, if the pool has one to spare before they are done.
class SpareReader
{
public:
    explicit SpareReader(std::function<void()> work)
        : m_state(std::make_shared<std::atomic<int>>(Waiting)),
          m_task(runOnPool([state = m_state, work = std::move(work)] {
              int expected = Waiting;
              if (state->compare_exchange_strong(expected, Working))
                  work();
          }))
    {
    }

    // Waiting for a pool that others keep busy could be for ever.
    void finish()
    {
        int expected = Waiting;
        if (!m_state->compare_exchange_strong(expected, Dismissed))
            m_task.waitForDone();
    }

private:
    enum State { Waiting, Working, Dismissed };

    std::shared_ptr<std::atomic<int>> m_state;
    PoolTask m_task;
};

// True if the first or the last byte cannot be had; not for a file that the system keeps from us.
bool failsToRead(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.error() != QFile::PermissionsError;
    char byte = 0;
    return file.size() > 0 &&
           !(file.getChar(&byte) && file.seek(file.size() - 1) && file.getChar(&byte));
}

} // namespace

FileState FlightFilesMatcher::stateOnDisk(const QFileInfo& file)
{
    const platform::LastWrite lastWrite = platform::lastWrite(file.filePath());
    return {lastWrite.time, lastWrite.sizeBytes};
}

VideoLength FlightFilesMatcher::readVideoLength(const QString& path)
{
    VideoLength length;
    const VideoInfoReader reader(path);
    length.coarseMs = reader.getDurationMs();
    const double exactMs = length.coarseMs >= 0 ? reader.exactDurationMs() : -1.0;
    if (exactMs > 0.0)
        length.exactMs = qRound64(exactMs);
    else
        length.isLost = failsToRead(path);
    return length;
}

LogFacts FlightFilesMatcher::readLogFacts(const QString& path, const std::atomic<bool>* abortFlag,
                                          const LogStages& stages)
{
    LogFacts facts;
    Result<LogDigest> digest = LogDecoder(abortFlag).readForPairing(path, stages);
    if (!digest) {
        const Failure::Kind kind = digest.failure().kind;
        facts.isLost = kind == Failure::Kind::unreadable || kind == Failure::Kind::notFound;
        return facts;
    }
    facts.read = true;
    facts.describesRecordings = digest->describesRecordings;
    facts.recordings = std::move(digest->recordings);
    facts.namings = std::move(digest->namings);
    return facts;
}

int FlightFilesMatcher::coresOfMachine()
{
    return QThread::idealThreadCount();
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
                                                            const Progress& progress,
                                                            const VideoProgress& videoProgress)
{
    Search search = pair(videos, logs, quickMode);
    if (hasAborted())
        return {};
    if (quickMode)
        return search.matches;
    readLengths(search, videoProgress);
    if (hasAborted() || !weigh(search, progress) || !nameFlights(search) || hasAborted())
        return {};
    for (const Search::Log& log : search.logs)
        if (log.facts.isLost)
            m_lostFiles.append(log.file.file.absoluteFilePath());
    doubtLostFiles(search);
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
        qCInfo(lcDiscovery) << "Aborted. (flightFilesMatcher)";
    return aborted;
}

FlightFilesMatcher::Search FlightFilesMatcher::pair(const QList<QFileInfo>& videos,
                                                    const QList<QFileInfo>& logs,
                                                    bool quickMode) const
{
    const std::vector<TimedFile> timedVideos = sortedByTime(videos, m_facts.state);
    const std::vector<TimedFile> timedLogs = sortedByTime(logs, m_facts.state);
    qCInfo(lcDiscovery) << "Logs: " << logs.size() << " entries";
    qCInfo(lcDiscovery) << "Videos: " << videos.size() << " entries";
    const std::vector<int> paired = pairVideosWithLogs(timedVideos, timedLogs);
    Search search;
    search.matches.reserve(videos.size());
    QHash<QString, int> positions;
    const auto positionOf = [&](const TimedFile& log) {
        const QString key = identity(log.file);
        if (!positions.contains(key)) {
            positions.insert(key, static_cast<int>(search.logs.size()));
            search.logs.push_back({log, {}});
        }
        return positions.value(key);
    };
    for (size_t i = 0; i < timedVideos.size(); ++i) {
        const TimedFile& video = timedVideos[i];
        FlightMatchData match;
        match.videoFile = video.file;
        match.videoTime = video.time;
        match.videoBytes = video.sizeBytes;
        match.matchFound = paired[i] >= 0;
        int log = -1;
        if (match.matchFound) {
            const TimedFile& pairedFile = timedLogs[static_cast<size_t>(paired[i])];
            match.logFile = pairedFile.file;
            match.evidence = PairingEvidence::Time;
            if (!quickMode) // which reads no log, and links cost a question per folder
                log = positionOf(pairedFile);
        }
        search.matches.append(match);
        if (quickMode)
            continue;
        search.logOfMatch.push_back(log);
        search.videos.push_back({video.file.absoluteFilePath(), timeOf(video), -1, log});
    }
    search.logsByTime = search.logs.size();
    if (!quickMode)
        for (const TimedFile& log : timedLogs)
            positionOf(log);
    return search;
}

void FlightFilesMatcher::readLengths(Search& search, const VideoProgress& progress)
{
    for (int i = 0; i < search.matches.size(); ++i) {
        if (isAbortRequested())
            break; // a card may hold hundreds
        if (progress)
            progress(i + 1, search.matches.size());
        qCInfo(lcDiscovery) << "Getting time for video" << i;
        const QString path = search.matches[i].videoFile.absoluteFilePath();
        const VideoLength length = m_facts.videoLength(path);
        if (length.isLost)
            m_lostFiles.append(path);
        search.matches[i].videoDuration = length.coarseMs;
        search.matches[i].flightLengthMs = length.exactMs;
        search.videos[static_cast<size_t>(i)].lengthMs = length.exactMs;
        qCInfo(lcDiscovery) << "Duration:" << length.coarseMs << "msecs";
    }
}

bool FlightFilesMatcher::readLogs(Search& search, size_t from, size_t end,
                                  const Progress& progress) const
{
    const int total = static_cast<int>(end);
    const auto jobs = std::make_shared<SharedJobs>(from, end);
    const auto work = [this, &search, jobs, total](const Progress& report) {
        size_t job = 0;
        while (!isAbortRequested() && jobs->take(&job)) {
            qCInfo(lcDiscovery) << "Start analyzing...";
            const int number = static_cast<int>(job) + 1;
            Search::Log& log = search.logs[job];
            log.facts = m_facts.log(log.file.file.absoluteFilePath(), m_abortFlag,
                                    [&report, number, total](int stage, int done, int ofTotal) {
                                        if (report)
                                            report(number, total, stage, done, ofTotal);
                                    });
        }
    };
    std::vector<SpareReader> spareReaders;
    const int others = std::min(m_facts.readers, static_cast<int>(end - from)) - 1;
    for (int i = 0; i < others; ++i)
        spareReaders.emplace_back([work] { work({}); });
    work(progress);
    for (SpareReader& spare : spareReaders)
        spare.finish();
    return !hasAborted();
}

// A single video does not show that a copy has made the times. Logs do that are nearer to each
// other than a flight of its length allows.
bool FlightFilesMatcher::canOthersShowLostTimes(const Search& search)
{
    qint64 lengthMs = 0;
    for (const PairingVideo& video : search.videos) {
        if (lengthMs > 0 && video.lengthMs > 0)
            return false;
        lengthMs = std::max(lengthMs, video.lengthMs);
    }
    const auto others = search.logs.begin() + static_cast<std::ptrdiff_t>(search.logsByTime);
    return std::any_of(search.logs.begin(), others, [&](const Search::Log& log) {
        return std::any_of(others, search.logs.end(), [&](const Search::Log& other) {
            return std::abs(timeOf(log.file) - timeOf(other.file)) < lengthMs / 2;
        });
    });
}

// The logs that no video has by time can only be needed where those that have one leave a question
// open.
bool FlightFilesMatcher::weigh(Search& search, const Progress& progress) const
{
    if (!readLogs(search, 0, search.logsByTime, progress))
        return false;
    decide(search);
    const bool settled =
        std::all_of(search.matches.begin(), search.matches.end(),
                    [](const auto& match) { return match.matchFound && !match.doubtful; });
    if ((settled && !canOthersShowLostTimes(search)) || search.logsByTime == search.logs.size())
        return true;
    if (!readLogs(search, search.logsByTime, search.logs.size(), progress))
        return false;
    decide(search);
    return true;
}

void FlightFilesMatcher::decide(Search& search)
{
    std::vector<PairingLog> logs;
    for (const Search::Log& log : search.logs)
        logs.push_back({log.file.file.absoluteFilePath(), timeOf(log.file), log.facts.recordings,
                        log.facts.read, log.facts.describesRecordings});
    const std::vector<Pairing> pairings = pairFlights(search.videos, logs);
    for (size_t i = 0; i < pairings.size(); ++i) {
        const Pairing& pairing = pairings[i];
        FlightMatchData& match = search.matches[static_cast<int>(i)];
        const bool replaced = pairing.log != search.videos[i].logByTime;
        search.logOfMatch[i] = pairing.log;
        match.matchFound = pairing.log >= 0;
        if (replaced)
            match.logFile = match.matchFound
                                ? search.logs[static_cast<size_t>(pairing.log)].file.file
                                : QFileInfo();
        match.evidence = pairing.evidence;
        match.lacksFiles = pairing.lacksFiles;
        match.checked = true;
        match.doubtful = pairing.doubtful;
        match.flightLengthMs = pairing.flightLengthMs;
        match.recordingLengthMs = pairing.recordingLengthMs;
        match.flightFiles.clear();
        match.part = 1;
        match.partStartMs = 0;
        qint64 reachedMs = 0;
        for (const size_t part : pairing.files) {
            match.flightFiles.append(search.videos[part].path);
            if (part == i) {
                match.part = match.flightFiles.size();
                match.partStartMs = reachedMs;
            }
            reachedMs += search.videos[part].lengthMs;
        }
    }
}

// What a file held that could not be read to its end is not known: nothing confirms its pair.
void FlightFilesMatcher::doubtLostFiles(Search& search) const
{
    const QSet<QString> lost(m_lostFiles.begin(), m_lostFiles.end());
    for (FlightMatchData& match : search.matches)
        if (match.matchFound && (lost.contains(match.videoFile.absoluteFilePath()) ||
                                 lost.contains(match.logFile.absoluteFilePath())))
            match.doubtful = true;
}

bool FlightFilesMatcher::nameFlights(Search& search) const
{
    for (int i = 0; i < search.matches.size(); ++i) {
        const int position = search.logOfMatch[static_cast<size_t>(i)];
        if (position < 0)
            continue;
        if (isAbortRequested())
            return false;
        const LogFacts& log = search.logs[static_cast<size_t>(position)].facts;
        FlightMatchData& match = search.matches[i];
        // The parts of a flight are one recording; the length of one of them fits to none.
        const int durationMs = match.flightFiles.size() > 1 ? static_cast<int>(match.flightLengthMs)
                                                            : match.videoDuration;
        if (!log.read || durationMs <= 0)
            continue;
        LogDecoder decoder(m_abortFlag);
        const LogSyncResult sync = decoder.findLogTimeOffset(log.recordings, durationMs);
        if (sync.found)
            match.naming =
                decoder.findNamingForRecording(log.namings, sync.logTimeOffset, durationMs);
    }
    return true;
}

} // namespace corv
