#pragma once

#include "Discovery/FlightMatchData.h"

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QVariantList>

namespace corv {

/// The files that a search looks through.
struct FlightFiles
{
    QList<QFileInfo> videos;
    QList<QFileInfo> logs;
};

/// Finds the videos and logs of all models of drone. On a card the videos are sought in the folders
/// of its layout, else in `videoDirectory` itself; the logs always in `logDirectory` itself. Both
/// lists go to the diagnostic log. Any thread.
FlightFiles gatherFlightFiles(const QString& videoDirectory, const QString& logDirectory,
                              bool videoFromDrive);

/// One map per video for the interface and for scripts, with the keys "videoFile",
/// "videoFilename", "logFile", "logFilename", "matchFound", "namingDefined", "missionName",
/// "flightName", "flightNumber" and "videoDuration" (milliseconds). Any thread.
QVariantList matchingRows(const QList<FlightMatchData>& matches);

} // namespace corv
