#pragma once

#include "Video/Frame.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace corv {

/// A picture in memory, as the scaling library takes it.
struct PictureView
{
    AVPixelFormat format = AV_PIX_FMT_NONE;
    int width = 0;
    int height = 0;
    std::array<const uchar*, 4> data{};
    std::array<int, 4> bytesPerLine{};
    int colourSpace = AVCOL_SPC_SMPTE170M; ///< an AVColorSpace
    bool fullRange = false;
};

/// Converts and scales one picture into the memory of the other. Throws std::runtime_error if it
/// cannot be done. Any thread.
void scalePicture(const PictureView& from, const PictureView& to);

/// The planes of a frame.
PictureView viewOf(const Frame& frame);

/// The AVColorSpace of a matrix.
int colourSpaceOf(Frame::Matrix matrix);

/// 4:2:0 in 8 bits on memory of its own: the form of the screen.
Frame makeI420(QSize size, Frame::Matrix matrix, Frame::Range range);

} // namespace corv
