#pragma once

#include "Video/Frame.h"

#include <QImage>
#include <QVideoFrame>
#include <opencv2/core.hpp>

namespace corv {

/// A BGR picture as an image that owns its pixels; null, with a warning, for a picture of more
/// than 8 bits. Any thread.
QImage cvMatToQImage(const cv::Mat& picture);

/// A BGR picture of even sides as a planar 4:2:0 frame for the screen. Any thread.
QVideoFrame cvMatToQVideoFrame(const cv::Mat& picture);

/// A BGR picture as a frame on the same pixels. They must not be changed while the frame is in use.
Frame bgrFrame(const cv::Mat& picture);

/// The frame's pixels as BGR: a view on them if they are BGR already, else converted into `buffer`,
/// whose memory is used again if it fits. Not to be written to. Any thread.
cv::Mat bgrView(const Frame& frame, cv::Mat& buffer);

/// Copies or converts the frame to BGR, into memory that belongs to `bgr` alone. Any thread.
void toBgr(const Frame& frame, cv::Mat& bgr);

/// A frame for the screen: its own planes, without a copy, where the screen can take them.
QVideoFrame toVideoFrame(const Frame& frame);

} // namespace corv
