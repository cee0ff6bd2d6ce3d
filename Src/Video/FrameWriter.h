#pragma once

#include "Base/Result.h"
#include "Video/Frame.h"

namespace corv {

/// A video file that is being written. Used by one thread.
class FrameWriter
{
public:
    virtual ~FrameWriter() = default;

    /// Appends a frame of the size of the video. It is encoded beside the caller, one frame at a
    /// time: when write() returns, the frame before is no longer in use.
    virtual void write(const Frame& frame) = 0;

    /// Ends the file once all frames are in it. Nothing is written afterwards; the destructor does
    /// it too. A failure is what is known of frames that could not be written.
    virtual Status finish() = 0;
};

} // namespace corv
