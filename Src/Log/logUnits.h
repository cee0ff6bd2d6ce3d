#pragma once

#include <string>

namespace corv {

/// The unit of a field of the log, such as "ms" or "rad"; empty where it is not known.
const char* logUnit(const std::string& group, const std::string& var);

} // namespace corv
