#pragma once

#include "Video/Frame.h"

#include <functional>
#include <opencv2/core.hpp>

namespace corv {

// Drawing on a part of a decoded picture without converting the rest of it. Any thread.

/// Whether drawOnPart() takes the frame: 4:2:0 in planes of 8 bits.
bool canDrawOnPart(const Frame& frame);

/// The smallest part with even edges that contains `place`, clipped to a frame of even sides.
cv::Rect evenPart(const cv::Rect& place, cv::Size frame);

/// A copy of the frame in which `draw` has changed the pixels of `part`, which it gets as BGR.
/// `part` comes from evenPart() and is not empty. Throws a std::exception if that cannot be done.
Frame drawOnPart(const Frame& frame, const cv::Rect& part,
                 const std::function<void(cv::Mat& bgr)>& draw);

} // namespace corv
