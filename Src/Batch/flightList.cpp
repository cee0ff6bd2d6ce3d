#include "Batch/flightList.h"

#include "Batch/FlightRun.h"
#include "Discovery/FlightFilesMatcher.h"
#include "Discovery/flightSearch.h"
#include "Video/fileNames.h"

#include <QHash>
#include <QSet>
#include <algorithm>

namespace corv {
namespace {

QString evidenceKey(const FlightMatchData& match)
{
    return matchingRows({match}).first().toMap().value(QStringLiteral("evidence")).toString();
}

QString logOf(const FlightMatchData& match)
{
    return match.matchFound ? match.logFile.absoluteFilePath() : QString();
}

/// The files of a flight whose lengths decided nothing: the numbered files that follow it, up to
/// one that has another log.
QStringList filesByNumber(const FlightMatchData& first,
                          const QHash<QString, const FlightMatchData*>& matches)
{
    QStringList files;
    const QString firstPath = first.videoFile.absoluteFilePath();
    for (const QString& path : expandVideoSequence(firstPath)) {
        const FlightMatchData* const match = matches.value(path);
        if (path != firstPath && (!match || (match->matchFound && logOf(*match) != logOf(first))))
            break;
        files << path;
    }
    return files.isEmpty() ? QStringList{firstPath} : files;
}

void putBrokenOffLast(QList<FlightJob>* jobs, const QString& outFolder)
{
    QHash<QString, qint64> times; // by the folder; 0 where none was killed
    for (const FlightJob& job : qAsConst(*jobs)) {
        const QDateTime time = FlightRun::brokenOffAt(outFolder, job);
        times.insert(job.folder, time.isValid() ? time.toMSecsSinceEpoch() : 0);
    }
    std::stable_sort(jobs->begin(), jobs->end(), [&](const FlightJob& a, const FlightJob& b) {
        return times.value(a.folder) < times.value(b.folder);
    });
}

QStringList sentencesOnUnusedLogs(const QList<QFileInfo>& logs, const QList<FlightJob>& jobs)
{
    QSet<QString> used;
    for (const FlightJob& job : jobs)
        used.insert(job.log);
    QStringList sentences;
    for (const QFileInfo& log : logs)
        if (!used.contains(log.absoluteFilePath()))
            sentences << QStringLiteral("The log %1 belongs to none of the videos that were found.")
                             .arg(log.absoluteFilePath());
    return sentences;
}

} // namespace

QList<FlightJob> jobsOfMatches(const QList<FlightMatchData>& matches)
{
    QHash<QString, const FlightMatchData*> byPath;
    for (const FlightMatchData& match : matches)
        byPath.insert(match.videoFile.absoluteFilePath(), &match);
    QStringList paths = byPath.keys();
    paths.sort(); // the parts of a flight follow their first
    QSet<QString> taken;
    QList<FlightJob> jobs;
    for (const QString& path : qAsConst(paths)) {
        const FlightMatchData& match = *byPath[path];
        if (taken.contains(path) || match.part > 1)
            continue;
        FlightJob job;
        job.videos = match.flightFiles.isEmpty() ? filesByNumber(match, byPath) : match.flightFiles;
        job.log = logOf(match);
        job.evidence = evidenceKey(match);
        job.isDoubtful = match.doubtful;
        job.naming = match.naming;
        job.date = match.videoFile.lastModified().date();
        for (const QString& file : qAsConst(job.videos))
            taken.insert(file);
        jobs << job;
    }
    return jobs;
}

FlightList listFlights(const QStringList& locations, const QString& outFolder,
                       const std::atomic<bool>& abortFlag)
{
    FlightList list;
    QList<QFileInfo> videos;
    QList<QFileInfo> logs;
    for (const QString& location : locations) {
        const SearchLocations here{location, location, false, false};
        const FlightFiles files = gatherFlightFiles(here);
        list.leftOut << searchRemarks(here, files);
        videos << files.videos;
        logs << files.logs;
    }
    FlightFilesMatcher matcher(&abortFlag);
    list.jobs = jobsOfMatches(matcher.matchFlightFiles(videos, logs, false, nullptr));
    list.leftOut << searchRemarks({}, {}, matcher.lostFiles());
    nameFolders(&list.jobs, outFolder);
    putBrokenOffLast(&list.jobs, outFolder);
    list.unusedLogs = sentencesOnUnusedLogs(logs, list.jobs);
    return list;
}

} // namespace corv
