#pragma once

#include <QString>

/// One naming of a flight by its pilot, as the log holds it.
struct FlightNamingEvent
{
    bool undefined = true; ///< it held neither a name nor a number
    int time = 0;          ///< log-clock milliseconds
    QString missionName;
    QString flightName;
    int flightNumber = 0;
};
