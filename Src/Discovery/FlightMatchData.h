#pragma once

#include "Log/FlightNamingEvent.h"

#include <QFileInfo>

namespace corv {

/// One video, with the log that belongs to it and what that log says of the flight. A value.
struct FlightMatchData
{
    QFileInfo videoFile;
    QFileInfo logFile;        ///< valid only if `matchFound`
    FlightNamingEvent naming; ///< undefined until a log has told
    int videoDuration = 0;    ///< milliseconds; 0 in quick mode, -1 if the video cannot be opened
    bool matchFound = false;
};

} // namespace corv
