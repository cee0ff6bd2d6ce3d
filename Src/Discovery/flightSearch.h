#pragma once

#include "Discovery/FlightMatchData.h"
#include "Discovery/cardLayouts.h"

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

/// Where a search looks. A drive is searched in the layouts of the cards, a folder by itself.
struct SearchLocations
{
    QString videoDirectory;
    QString logDirectory;
    bool videoFromDrive = false;
    bool logFromDrive = false;
};

/// Finds the videos and logs of all models of drone. A folder that has no video of its own but the
/// folders of a card below it is searched as a card is. Each file is listed once, however many rows
/// of `layouts` lead to it. Both lists go to the diagnostic log. Any thread.
FlightFiles gatherFlightFiles(const SearchLocations& locations,
                              const QList<CardLayout>& layouts = cardLayouts());

/// One map per video for the interface and for scripts, with the keys "videoFile",
/// "videoFilename", "logFile", "logFilename", "matchFound", "namingDefined", "missionName",
/// "flightName", "flightNumber" and "videoDuration" (milliseconds). Any thread.
QVariantList matchingRows(const QList<FlightMatchData>& matches);

} // namespace corv
