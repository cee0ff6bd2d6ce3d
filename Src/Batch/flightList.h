#pragma once

#include "Batch/FlightJob.h"
#include "Discovery/FlightMatchData.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <atomic>

namespace corv {

/// What was found on some cards and folders.
struct FlightList
{
    QList<FlightJob> jobs;
    QStringList leftOut;    ///< sentences on what of the locations could not be read
    QStringList unusedLogs; ///< a sentence for each log that belongs to no flight
};

/// Finds and pairs the flights of all locations together, as the importer's full search does: a log
/// may lie on another card than its video. Each location is a card or a folder. The folders are
/// named with regard to what is in `outFolder` by now (`nameFolders`). Flights in which a run was
/// killed come last, the one that was killed longest ago first, so that a step that is always
/// killed keeps no other flight waiting. Blocks; may run on any thread. Empty after an abort.
FlightList listFlights(const QStringList& locations, const QString& outFolder,
                       const std::atomic<bool>& abortFlag);

/// One job a flight: the videos that are parts of one flight become one job. Not named yet.
QList<FlightJob> jobsOfMatches(const QList<FlightMatchData>& matches);

} // namespace corv
