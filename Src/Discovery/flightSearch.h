#pragma once

#include "Discovery/FlightMatchData.h"
#include "Discovery/cardLayouts.h"

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

namespace corv {

/// The files that a search looks through.
struct FlightFiles
{
    QList<QFileInfo> videos;
    QList<QFileInfo> logs;
    int skippedNames =
        0; ///< videos and logs whose names are no text, so that they cannot be listed
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

/// Sentences for the pilot on what a search could not do: a location that cannot be read or whose
/// files have gone since they were listed, files that the matcher lost, names that cannot be
/// listed. Empty if all is well. Any thread.
QStringList searchRemarks(const SearchLocations& locations, const FlightFiles& files,
                          const QStringList& lostFiles = {});

/// What the pairing of one video rests on, in words.
QString evidenceText(const FlightMatchData& match);

/// One map per video for the interface and for scripts, with the keys "videoFile",
/// "videoFilename", "logFile", "logFilename", "matchFound", "namingDefined", "missionName",
/// "flightName", "flightNumber" and "videoDuration" (milliseconds), and
/// - "evidence": "none", "time", "lengthDiffers", "length" or "timeAndLength", "doubtful", and
///   both in words as "evidenceText";
/// - "checked": false after a quick search, which compares no lengths and so doubts nothing;
/// - "flightLengthMs", "recordingLengthMs": the two lengths that were compared, -1 if unknown;
/// - "flightFiles": all files of the flight where the lengths show them, "part": the place of the
///   video among them, "partText": that in words for all but the first, "partStartMs": where it
///   begins within the flight, milliseconds;
/// - "videoTime" (of the last write, in ISO form) and "videoSize" (bytes).
/// Any thread.
QVariantList matchingRows(const QList<FlightMatchData>& matches);

} // namespace corv
