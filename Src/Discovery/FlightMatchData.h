#pragma once

#include "Discovery/flightPairing.h"
#include "Log/FlightNamingEvent.h"

#include <QDateTime>
#include <QFileInfo>
#include <QStringList>

namespace corv {

/// One video, with the log that belongs to it, how sure that is, and what the log says of the
/// flight. A value.
struct FlightMatchData
{
    QFileInfo videoFile;
    QFileInfo logFile;        ///< valid only if `matchFound`
    FlightNamingEvent naming; ///< undefined if the log has none
    int videoDuration = 0;    ///< milliseconds; 0 in quick mode, -1 if the video cannot be opened
    bool matchFound = false;
    QDateTime videoTime;    ///< of the last write; invalid if unknown
    qint64 videoBytes = -1; ///< -1 if unknown
    PairingEvidence evidence = PairingEvidence::None;
    bool lacksFiles = false;       ///< paired by its place in a flight of which files are missing
    bool checked = false;          ///< against lengths, which a quick search does not read
    bool doubtful = false;         ///< the pair is likely enough to be wrong; if checked
    qint64 flightLengthMs = -1;    ///< exact length of the flight, all its files; -1 if unknown
    qint64 recordingLengthMs = -1; ///< logged, of its recording, or of the log's nearest; or -1
    QStringList flightFiles; ///< all files of the flight in order, where the lengths show them
    int part = 1;            ///< place of the video in `flightFiles`, from 1
    qint64 partStartMs = 0;  ///< where the video begins within the flight
};

} // namespace corv
