#pragma once

#include <opencv2/core.hpp>

namespace corv {

/// Where the drone of the sample flight is and where its cameras look, at any moment. Moments are
/// seconds from the first frame of the video; before it the drone takes off, behind it it lands.
///
/// It sweeps to and fro along a row of panels, fast enough for half a second to be plain to see,
/// and comes past the same spot every 14 seconds.
class FlightCourse
{
public:
    struct Pose
    {
        cv::Point2d ground; ///< metres: what the middle of the video frame shows
        double altitudeM = 0.0;
        double turn = 0.0;  ///< radians by which the picture is turned against the rows
        double roll = 0.0;  ///< radians
        double pitch = 0.0; ///< radians
        double cameraPitchDegrees = 0.0;
    };

    static constexpr double passPeriodS = 14.0;
    static constexpr double firstPassS = 7.0;

    explicit FlightCourse(double videoSeconds) : m_videoSeconds(videoSeconds) {}

    Pose poseAt(double seconds) const;

private:
    double m_videoSeconds;
};

/// From pixels of a video frame to metres on the ground, as seen from `pose`; and back.
cv::Point2d groundOfPixel(const FlightCourse::Pose& pose, cv::Size frame, cv::Point2d pixel);
cv::Point2d pixelOfGround(const FlightCourse::Pose& pose, cv::Size frame, cv::Point2d ground);

/// The 2x3 matrix that takes pixels of a video frame to pixels of a ground picture whose first
/// pixel lies at `origin` (metres) and that has `density` pixels to the metre.
cv::Matx23d frameToPicture(const FlightCourse::Pose& pose, cv::Size frame, cv::Point2d origin,
                           double density);

} // namespace corv
