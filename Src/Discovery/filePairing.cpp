#include "Discovery/filePairing.h"

#include "Discovery/logCategory.h"

#include <QDebug>
#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

namespace corv {
namespace {

constexpr int longestGapSecs = 1800;

// A full card of each model stays below it.
constexpr size_t mostPairsListed = 10'000;

constexpr qint64 differencesPerWrap = qint64(1) << 32;

qint64 secsFrom(const TimedFile& video, const TimedFile& log)
{
    return (log.timeMs - video.timeMs) / 1000;
}

qint32 low32Bits(qint64 seconds)
{
    return static_cast<qint32>(static_cast<quint32>(seconds & 0xffffffff));
}

using Position = std::vector<TimedFile>::const_iterator;

Position endOfTimed(const std::vector<TimedFile>& logs)
{
    return std::partition_point(logs.begin(), logs.end(),
                                [](const TimedFile& log) { return log.time.isValid(); });
}

// The first log that lies `seconds` or more after the video.
Position firstFrom(const TimedFile& video, Position begin, Position end, qint64 seconds)
{
    return std::partition_point(begin, end, [&video, seconds](const TimedFile& log) {
        return secsFrom(video, log) < seconds;
    });
}

void list(const TimedFile& video, const TimedFile& log)
{
    qCInfo(lcDiscovery) << "Log file: " << log.file.fileName() << ", metadataChangeTime "
                        << log.timeText;
    if (video.time.isValid() && log.time.isValid())
        qCInfo(lcDiscovery) << "Difference with video: " << secsFrom(video, log) << " secs";
}

void listNeighbours(const TimedFile& video, const std::vector<TimedFile>& logs, int paired)
{
    const Position end = endOfTimed(logs);
    const Position next = video.time.isValid() ? firstFrom(video, logs.begin(), end, 0) : end;
    if (next != logs.begin())
        list(video, *std::prev(next));
    if (next != end)
        list(video, *next);
    if (paired >= 0 && logs.begin() + paired != next)
        list(video, logs[static_cast<size_t>(paired)]);
}

// As the format "dd/MM/yyyy hh:mm:ss" gives it, which takes several times as long.
QString textOf(const QDateTime& time)
{
    if (!time.isValid())
        return {};
    const QDate date = time.date();
    const QTime clock = time.time();
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d/%02d/%04d %02d:%02d:%02d", date.day(),
                  date.month(), date.year(), clock.hour(), clock.minute(), clock.second());
    return QString::fromLatin1(text.data());
}

} // namespace

std::vector<TimedFile> sortedByTime(const QList<QFileInfo>& files,
                                    const std::function<FileState(const QFileInfo&)>& stateOf)
{
    std::vector<TimedFile> timed;
    timed.reserve(static_cast<size_t>(files.size()));
    for (const QFileInfo& file : files) {
        const FileState state = stateOf(file);
        const QDateTime& time = state.time;
        if (!time.isValid())
            qCWarning(lcDiscovery) << "No time for file" << file.filePath();
        timed.push_back({file, time, time.toMSecsSinceEpoch(), textOf(time), state.sizeBytes});
    }
    std::stable_sort(timed.begin(), timed.end(), [](const TimedFile& a, const TimedFile& b) {
        if (a.time.isValid() != b.time.isValid())
            return a.time.isValid();
        return a.time.isValid() && a.timeMs < b.timeMs;
    });
    return timed;
}

int pairedLog(const TimedFile& video, const std::vector<TimedFile>& logs)
{
    const Position end = endOfTimed(logs);
    if (!video.time.isValid() || end == logs.begin())
        return -1;
    // Within one wrap of the differences the nearest log is the first one from zero on.
    const qint64 firstWrap = secsFrom(video, logs.front()) >> 32;
    const qint64 lastWrap = secsFrom(video, *std::prev(end)) >> 32;
    int best = -1;
    qint32 bestSecs = longestGapSecs;
    for (qint64 wrap = firstWrap; wrap <= lastWrap; ++wrap) {
        const Position log = firstFrom(video, logs.begin(), end, wrap * differencesPerWrap);
        if (log == end)
            break;
        const qint32 secs = low32Bits(secsFrom(video, *log));
        if (secs >= 0 && secs < bestSecs) {
            best = static_cast<int>(std::distance(logs.begin(), log));
            bestSecs = secs;
        }
    }
    return best;
}

std::vector<int> pairVideosWithLogs(const std::vector<TimedFile>& videos,
                                    const std::vector<TimedFile>& logs)
{
    const bool listAll = videos.size() * logs.size() <= mostPairsListed;
    std::vector<int> paired;
    paired.reserve(videos.size());
    for (const TimedFile& video : videos) {
        qCInfo(lcDiscovery) << "Video file  : " << video.file.fileName() << ", metadataChangeTime "
                            << video.timeText;
        paired.push_back(pairedLog(video, logs));
        if (!listAll)
            listNeighbours(video, logs, paired.back());
        else
            for (const TimedFile& log : logs)
                list(video, log);
    }
    return paired;
}

} // namespace corv
