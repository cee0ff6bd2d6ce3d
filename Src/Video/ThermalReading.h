#pragma once

#include "Video/ThermalScale.h"

#include <QPointF>
#include <QSize>
#include <opencv2/core.hpp>
#include <optional>

namespace corv {

/// The thermal frame that lies over a video frame, in raw values of the camera, to be asked by
/// place. A place is a point of the video frame, as parts of its width and height from the upper
/// left corner. Does not change once made; any thread.
class ThermalReading
{
public:
    /// A raw value and the middle of its thermal pixel.
    struct Point
    {
        int value = 0;
        QPointF place;
    };

    /// `thermal` (`CV_16UC1`, not empty) is copied. `overlay` is where it lies in a video frame of
    /// `frame` pixels; neither is empty.
    ThermalReading(const cv::Mat& thermal, const cv::Rect& overlay, cv::Size frame,
                   const ThermalScale& scale = {});

    /// What the colours of the overlay mean.
    const ThermalScale& scale() const { return m_scale; }

    /// The raw value at a place; none beside the overlay or the frame.
    std::optional<int> valueAt(QPointF place) const;

    /// The lowest and the highest value inside the frame; the first of equal ones, line by line.
    const Point& coldest() const { return m_coldest; }
    const Point& hottest() const { return m_hottest; }

private:
    QPointF placeOf(cv::Point pixel) const;

    cv::Mat m_thermal;
    cv::Rect m_overlay;
    cv::Size m_frame;
    ThermalScale m_scale;
    Point m_coldest;
    Point m_hottest;
};

} // namespace corv
