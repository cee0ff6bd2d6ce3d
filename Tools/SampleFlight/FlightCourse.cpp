#include "SampleFlight/FlightCourse.h"

#include <algorithm>
#include <cmath>

namespace corv {
namespace {

constexpr double cruiseAltitudeM = 22.0;
constexpr double sweepM = 14.0;
constexpr double gravity = 9.81;
constexpr double leastPictureAltitudeM = 2.0; // on the ground the camera sees no more than this

double wave(double seconds, double periodS)
{
    return std::sin(2.0 * CV_PI * seconds / periodS);
}

// 0 before, 1 behind, and a soft way up in between.
double ramp(double position)
{
    const double x = std::clamp(position, 0.0, 1.0);
    return x * x * (3.0 - 2.0 * x);
}

double metresPerPixel(const FlightCourse::Pose& pose, cv::Size frame)
{
    const double altitude = std::max(pose.altitudeM, leastPictureAltitudeM);
    return 16.0 / cruiseAltitudeM * altitude / frame.width;
}

} // namespace

FlightCourse::Pose FlightCourse::poseAt(double seconds) const
{
    Pose pose;
    const double phase = 2.0 * CV_PI * seconds / (2.0 * passPeriodS);
    pose.ground = {-sweepM * std::cos(phase), 1.1 * wave(seconds, 41.0)};
    const double flying =
        ramp((seconds + 13.0) / 11.0) * ramp((m_videoSeconds + 12.0 - seconds) / 9.0);
    pose.altitudeM = flying * (cruiseAltitudeM + 1.2 * wave(seconds, 17.0));
    pose.turn = flying * 0.038 * wave(seconds, 9.3);
    // A drone leans into the way it speeds up.
    const double rate = CV_PI / passPeriodS;
    const double acceleration = sweepM * rate * rate * std::cos(phase);
    pose.roll = flying * (std::atan(acceleration / gravity) + 0.012 * wave(seconds, 2.7));
    pose.pitch = flying * (0.035 * wave(seconds, 12.1) + 0.009 * wave(seconds, 1.9));
    pose.cameraPitchDegrees = -58.0 * flying + 1.5 * wave(seconds, 23.0);
    return pose;
}

cv::Point2d groundOfPixel(const FlightCourse::Pose& pose, cv::Size frame, cv::Point2d pixel)
{
    const double scale = metresPerPixel(pose, frame);
    const cv::Point2d fromMiddle =
        (pixel - cv::Point2d(frame.width / 2.0, frame.height / 2.0)) * scale;
    const double c = std::cos(pose.turn);
    const double s = std::sin(pose.turn);
    return pose.ground +
           cv::Point2d(c * fromMiddle.x - s * fromMiddle.y, s * fromMiddle.x + c * fromMiddle.y);
}

cv::Point2d pixelOfGround(const FlightCourse::Pose& pose, cv::Size frame, cv::Point2d ground)
{
    const cv::Point2d fromMiddle = ground - pose.ground;
    const double c = std::cos(pose.turn);
    const double s = std::sin(pose.turn);
    const double scale = metresPerPixel(pose, frame);
    return cv::Point2d(c * fromMiddle.x + s * fromMiddle.y, -s * fromMiddle.x + c * fromMiddle.y) /
               scale +
           cv::Point2d(frame.width / 2.0, frame.height / 2.0);
}

cv::Matx23d frameToPicture(const FlightCourse::Pose& pose, cv::Size frame, cv::Point2d origin,
                           double density)
{
    const cv::Point2d corner = (groundOfPixel(pose, frame, {0.0, 0.0}) - origin) * density;
    const cv::Point2d right = (groundOfPixel(pose, frame, {1.0, 0.0}) - origin) * density - corner;
    const cv::Point2d down = (groundOfPixel(pose, frame, {0.0, 1.0}) - origin) * density - corner;
    return {right.x, down.x, corner.x, right.y, down.y, corner.y};
}

} // namespace corv
