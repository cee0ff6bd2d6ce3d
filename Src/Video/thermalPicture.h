#pragma once

#include "Video/VideoDisplaySettings.h"

#include <opencv2/core.hpp>

namespace corv {

/// Where the thermal camera's view lies in a video frame of this size: the fixed mounting, moved by
/// the user's alignment, or the whole frame. It may lie partly or wholly outside the frame, and is
/// empty for a frame too small for it or an alignment that is no number.
cv::Rect thermalRectangle(cv::Size frame, const VideoDisplaySettings& settings);

/// Gives a thermal frame (`CV_16UC1`) false colours (`CV_8UC3`), over the range that the settings
/// ask for. False, with `colours` unchanged, if that range is empty or no numbers.
bool colourThermalFrame(const cv::Mat& thermal, const VideoDisplaySettings& settings,
                        bool invertColours, cv::Mat& colours);

/// The false colours (`CV_8UC3`) of values from 0, the coldest, to 255 (`CV_8U`).
void applyPalette(const cv::Mat& values, ThermalPalette palette, cv::Mat& colours);

/// Lays `colours`, enlarged to `place` in blocks, over the part of `place` that lies inside the
/// frame (`CV_8UC3`): half of each, or all of it.
void layOver(cv::Mat& frame, const cv::Mat& colours, const cv::Rect& place, bool translucent);

} // namespace corv
