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

/// The picture as it was before it was turned by `rotation` degrees.
inline cv::Mat turnedBack(const cv::Mat& picture, int rotation)
{
    cv::Mat upright = picture;
    if (rotation == 90)
        cv::rotate(picture, upright, cv::ROTATE_90_COUNTERCLOCKWISE);
    else if (rotation == 180)
        cv::rotate(picture, upright, cv::ROTATE_180);
    else if (rotation == 270)
        cv::rotate(picture, upright, cv::ROTATE_90_CLOCKWISE);
    return upright;
}

/// What the next read gives: -1 for index and number if no frame comes.
struct Shown
{
    int index = -1;
    int number = -1; ///< in its pixels
    double timeMs = 0.0;
};

/// `rotation` is that of the file, in degrees clockwise.
inline Shown readShown(FrameSource& source, int rotation = 0)
{
    Frame frame;
    if (source.read(frame) != ReadOutcome::frame)
        return {};
    cv::Mat picture;
    toBgr(frame, picture);
    return {frame.index, readFrameNumber(turnedBack(picture, rotation)), frame.timeMs};
}

} // namespace corv::test
