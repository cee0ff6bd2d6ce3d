#pragma once

#include <vector>

namespace corv {

/// A column of the flight log that holds 32-bit floats, one for each time of the group's `time`
/// field. Without a var it is none.
struct HudSource
{
    const char* group = nullptr;
    const char* var = nullptr;
    int column = 0;
};

/// One instrument of the head-up display: what it shows, and how.
struct HudRow
{
    enum class Dial { none, compass, camera };
    enum class Unit { degrees, length };

    const char* label;
    HudSource value;
    HudSource reference; ///< subtracted from the value; a missing one counts as 0
    float factor;        ///< from the log's unit to the one shown
    int modulo;          ///< 0 for none
    int decimals;
    Dial dial;
    Unit unit;
};

/// The instruments, from top to bottom. This table is the only place to edit for another one.
const std::vector<HudRow>& hudInstruments();

} // namespace corv
