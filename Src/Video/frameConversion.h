#pragma once

#include "Video/Frame.h"

#include <QImage>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>
#include <opencv2/core.hpp>

namespace corv {

// Between frames and what OpenCV, the screen and files take. Any thread. What throws, throws a
// std::exception, for a picture of a form that it does not know or for want of memory.

/// A BGR picture as an image that owns its pixels; null, with a warning, for a picture of more
/// than 8 bits.
QImage cvMatToQImage(const cv::Mat& picture);

/// A BGR picture of even sides as a planar 4:2:0 frame for the screen, by BT.601. Throws.
QVideoFrame cvMatToQVideoFrame(const cv::Mat& picture);

/// A BGR picture as a frame on the same pixels. They must not be changed while the frame is in use.
Frame bgrFrame(const cv::Mat& picture);

/// The frame's pixels as BGR: a view on them if they are BGR already, else converted into `buffer`,
/// whose memory is used again if it fits. Not to be written to. Throws.
cv::Mat bgrView(const Frame& frame, cv::Mat& buffer);

/// Copies or converts the frame to BGR, into the memory of `bgr` if it fits. Throws.
void toBgr(const Frame& frame, cv::Mat& bgr);

/// Makes `bgr` an 8-bit BGR picture of this size with room behind its lines, as the conversions
/// need it; its memory stays if it fits. Throws.
void createForScaling(cv::Mat& bgr, QSize size);

/// A frame for the screen: its own planes, without a copy, where the screen can take them and their
/// lines end with the picture. Throws.
QVideoFrame toVideoFrame(const Frame& frame);

/// A BGR picture made from a frame, for the screen, in the colours of that frame: a surface that
/// shows the one shows the other. Throws.
QVideoFrame toVideoFrame(const cv::Mat& bgr, const Frame& madeFrom);

/// Writes an 8-bit BGR picture of even sides into planes of 4:2:0 in 8 bits, by their matrix and
/// range. The planes have at least its size and belong to the caller alone.
void fillPlanes(const cv::Mat& bgr, Frame& target);

/// The form of the surface that shows a frame made here: size, planes and colours. A surface that
/// runs in another one must be started again.
QVideoSurfaceFormat surfaceFormatOf(const QVideoFrame& frame);

} // namespace corv
