#include "Timeline/instruments.h"

namespace corv {
namespace {

constexpr float degreesPerRadian = 57.2957763671875F;

constexpr const char* attitude = "state_estimation";
constexpr const char* camera = "camera_cmd";

} // namespace

const std::vector<HudRow>& hudInstruments()
{
    using Dial = HudRow::Dial;
    // clang-format off
    static const std::vector<HudRow> rows{
        {"Pitch", {attitude, "euler_angles", 1}, {},
         degreesPerRadian, 0, 0, Dial::none, &hudAngle},
        {"Roll", {attitude, "euler_angles", 0}, {},
         degreesPerRadian, 0, 0, Dial::none, &hudAngle},
        {"Heading", {attitude, "euler_angles", 2}, {attitude, "heading_reference", 0},
         degreesPerRadian, 360, 0, Dial::compass, &hudAngle},
        {"Altitude", {attitude, "altitude", 0}, {attitude, "altitude_telem_ref", 0},
         1.0F, 0, 1, Dial::none, &hudLength},
        {"Cam pitch", {camera, "servo_angle", 0}, {},
         1.0F, 0, 0, Dial::camera, &hudAngle},
    };
    // clang-format on
    return rows;
}

} // namespace corv
