#include "Log/logUnits.h"

#include <algorithm>
#include <array>

namespace corv {
namespace {

struct Unit
{
    const char* group; ///< null for every group
    const char* var;
    const char* unit;
};

constexpr std::array<Unit, 9> kUnits{{{nullptr, "time", "ms"},
                                      {"mobius_start_rec", "mobius_start_rec", "ms"},
                                      {"mobius_stop_rec", "mobius_stop_rec", "ms"},
                                      {"point_of_interest", "point_of_interest", "ms"},
                                      {"state_estimation", "euler_angles", "rad"},
                                      {"state_estimation", "heading_reference", "rad"},
                                      {"state_estimation", "altitude", "m"},
                                      {"state_estimation", "altitude_telem_ref", "m"},
                                      {"camera_cmd", "servo_angle", "deg"}}};

} // namespace

const char* logUnit(const std::string& group, const std::string& var)
{
    const auto found = std::find_if(kUnits.begin(), kUnits.end(), [&](const Unit& unit) {
        return (!unit.group || group == unit.group) && var == unit.var;
    });
    return found == kUnits.end() ? "" : found->unit;
}

} // namespace corv
