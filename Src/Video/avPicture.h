#pragma once

#include "Video/Frame.h"

#include <QSize>

struct AVFrame;

namespace corv {

/// How a stream's pictures become frames.
struct PictureForm
{
    QSize size;              ///< of every frame, turned, both sides even
    int rotation = 0;        ///< clockwise, in degrees: 0, 90, 180 or 270
    bool isMirrored = false; ///< left and right change places once it is turned
};

/// A decoded picture as a frame: on the decoder's own memory where the frame type knows the form of
/// its samples and nothing turns or scales it, else converted. A null frame if it cannot be.
Frame frameOf(const AVFrame& picture, const PictureForm& form);

} // namespace corv
