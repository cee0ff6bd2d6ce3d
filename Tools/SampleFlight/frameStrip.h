#pragma once

#include <opencv2/core.hpp>

namespace corv {

/// Numbers up to here fit into the strip.
constexpr int maxStripNumber = (1 << 20) - 1;

/// Rows of the strip at the top of a picture of `rows` rows, in pixels.
int frameStripHeight(int rows);

/// Writes `number` (0 to `maxStripNumber`) along the top edge of a BGR picture, as a row of black
/// and white blocks with check bits. Readable again after lossy compression, a change of contrast
/// or brightness that leaves black and white apart, and the loss of a column or row at the far
/// edges. Pictures narrower than 64 pixels are better left alone.
void drawFrameNumber(cv::Mat& bgr, int number);

/// The number in the strip of a BGR, RGB or grey picture of 8 bits; -1 if there is no whole strip.
int readFrameNumber(const cv::Mat& bgr);

} // namespace corv
