#pragma once

#include "Video/PictureInset.h"

#include <opencv2/core.hpp>

namespace corv {

/// The pixels of a picture of that size that blendInset() changes.
cv::Rect changedBy(const PictureInset::Part& part, cv::Size picture);

/// Draws a part over a BGR picture of 8 bits, as far as it lies on it. `origin` is the place in the
/// whole picture of the first pixel of `bgr`.
void blendInset(cv::Mat& bgr, const PictureInset::Part& part, cv::Point origin = {0, 0});

} // namespace corv
