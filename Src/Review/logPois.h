#pragma once

#include <vector>

namespace corv {

class LogParser;

/// Places on the video's time axis of the points of interest in the log, in milliseconds, in the
/// order of the log; without the user's correction. Empty for a log that is not synchronised, or
/// that has none.
std::vector<int> logPoiTimesMs(const LogParser& parser);

} // namespace corv
