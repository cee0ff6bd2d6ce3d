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
    QStringList remarks; ///< sentences on what could not be read
};

/// Finds and pairs the flights of all locations together, as the importer's full search does: a log
/// may lie on another card than its video. Each location is a card or a folder. Blocks; may run on
/// any thread. Empty after an abort.
FlightList listFlights(const QStringList& locations, const std::atomic<bool>& abortFlag);

/// One job a flight: the videos that are parts of one flight become one job, and each is named.
QList<FlightJob> jobsOfMatches(const QList<FlightMatchData>& matches);

} // namespace corv
