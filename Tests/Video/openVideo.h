#pragma once

#include "SampleFlight/frameStrip.h"
#include "Video/VideoBackend.h"
#include "Video/frameConversion.h"

#include <opencv2/core.hpp>

namespace corv::test {

/// A file opened for reading by the program's back-end; null if it does not open.
inline std::unique_ptr<FrameSource> openVideo(const QString& file)
{
    Result<std::unique_ptr<FrameSource>> source = systemVideoBackend()->openSource(file);
    return source ? std::move(*source) : nullptr;
}

/// The next picture as BGR; an empty one if none comes.
inline cv::Mat readPicture(FrameSource& source)
{
    Frame frame;
    cv::Mat picture;
    if (source.read(frame) == ReadOutcome::frame)
        toBgr(frame, picture);
    return picture;
}

/// The number that the next picture carries; -1 if none comes or it carries none.
inline int readNumber(FrameSource& source)
{
    const cv::Mat picture = readPicture(source);
    return picture.empty() ? -1 : readFrameNumber(picture);
}

} // namespace corv::test
