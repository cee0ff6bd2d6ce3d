#pragma once

#include "Batch/FlightJob.h"
#include "Log/LogParser.h"

#include <QStringList>

namespace corv {

/// What somebody has to know of a flight before using its results, though nothing failed: its log
/// ends before the video does, may belong to another one, or is missing. `parser` has read the log
/// of the flight for its video of `videoMs` milliseconds. Sentences; empty if all is well.
QStringList flightRemarks(const FlightJob& job, const LogParser& parser, int videoMs);

} // namespace corv
