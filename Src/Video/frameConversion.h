#pragma once

#include <QImage>
#include <QVideoFrame>
#include <opencv2/core.hpp>

namespace corv {

/// A BGR picture as an image that owns its pixels; null, with a warning, for a picture of more
/// than 8 bits. Any thread.
QImage cvMatToQImage(const cv::Mat& picture);

/// A BGR picture of even sides as a planar 4:2:0 frame for the screen. Any thread.
QVideoFrame cvMatToQVideoFrame(const cv::Mat& picture);

} // namespace corv
