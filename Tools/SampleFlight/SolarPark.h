#pragma once

#include <opencv2/core.hpp>

namespace corv {

/// The ground that the sample flight is flown over: rows of solar panels in the grass, one with a
/// hot cell. Painted once, as it looks and as it is warm; metres, with the origin in the middle.
class SolarPark
{
public:
    explicit SolarPark(unsigned seed);

    /// The middle of the hot cell, in metres.
    static cv::Point2d hotCell();

    /// The ground in colours (`CV_8UC3`, BGR).
    const cv::Mat& picture() const { return m_picture; }
    static constexpr double pictureDensity = 80.0; ///< pixels to the metre

    /// The ground's temperature in degrees Celsius (`CV_32FC1`).
    const cv::Mat& temperature() const { return m_temperature; }
    static constexpr double temperatureDensity = 30.0;

    /// Where the first pixel of both lies, in metres.
    static cv::Point2d origin() { return {-halfWidthM, -halfHeightM}; }

private:
    static constexpr double halfWidthM = 24.0;
    static constexpr double halfHeightM = 7.5;

    void paintGrass(cv::RNG& random);
    void paintShadows();
    void paintTables(cv::RNG& random);
    void paintPanel(cv::Point2d corner, cv::RNG& random);
    void paintBushes(cv::RNG& random);
    void paintHotCell();

    void fill(cv::Point2d corner, cv::Size2d size, const cv::Scalar& colour);
    void warm(cv::Point2d corner, cv::Size2d size, double degrees);

    cv::Mat m_picture;
    cv::Mat m_temperature;
};

} // namespace corv
