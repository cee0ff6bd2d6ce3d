#pragma once

#include "Video/ThermalOverlay.h"
#include "Video/VideoDisplaySettings.h"

#include <opencv2/core.hpp>

namespace corv {

// What the settings change in a picture: contrast and brightness, and the thermal overlay on top.
// All of these run on the thread of the overlay. None throws for what a log or a setting holds.

/// Whether applyPictureEffects() would change a picture at all. If not, the picture may be shown as
/// it is; the range of the thermal frame is left to be reported.
bool changesPictures(const ThermalOverlay& overlay, const VideoDisplaySettings& settings);

/// The part of a frame of this size that applyPictureEffects() would change; the whole if contrast
/// or brightness do.
cv::Rect changedPart(const ThermalOverlay& overlay, cv::Size frame,
                     const VideoDisplaySettings& settings);

/// Contrast, brightness and overlay, in place, on the frame at `timeMs` of the timeline, and
/// `reportRange()` of the overlay between the first two and the overlay, if a report is given.
void applyPictureEffects(ThermalOverlay& overlay, cv::Mat& frame, int timeMs,
                         VideoDisplaySettings& settings, bool invertColours,
                         const ThermalOverlay::RangeReport& report);

} // namespace corv
