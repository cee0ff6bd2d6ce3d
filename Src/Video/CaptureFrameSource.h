#pragma once

#include "Video/FrameSource.h"

#include <QString>
#include <memory>

namespace corv {

/// Opens a file with the capture of OpenCV; null if it holds no video that can be read.
std::unique_ptr<FrameSource> openCaptureFrameSource(const QString& file);

} // namespace corv
