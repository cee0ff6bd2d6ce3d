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

/// A unit in which numbers are shown.
struct HudUnit
{
    const char* name;   ///< as tables have it: "deg"
    const char* suffix; ///< what follows a painted number, in UTF-8, with its blank: "°", " m"
    float factor;       ///< from the metric unit to this one
};

/// What an instrument measures, in its two units: the second is shown with imperial units.
struct HudQuantity
{
    HudUnit metric;
    HudUnit imperial;
};

// What instruments measure. This table is the only place to edit for another unit.
// clang-format off
inline constexpr HudQuantity hudAngle{{"deg", "°", 1.0F}, {"deg", "°", 1.0F}};
inline constexpr HudQuantity hudLength{{"m", " m", 1.0F}, {"ft", " ft", 3.2808399200439453F}};
// clang-format on

/// One instrument of the head-up display: what it shows, and how.
struct HudRow
{
    enum class Dial { none, compass, camera };

    const char* label;
    HudSource value;
    HudSource reference; ///< subtracted from the value; a missing one counts as 0
    float factor;        ///< from the log's unit to the metric one
    int modulo;          ///< 0 for none
    int decimals;
    Dial dial;
    const HudQuantity* quantity; ///< never null
};

/// The instruments, from top to bottom. This table is the only place to edit for another one.
const std::vector<HudRow>& hudInstruments();

} // namespace corv
