#pragma once

#include "Base/Result.h"
#include "Video/FrameSource.h"
#include "Video/FrameWriter.h"

#include <QSize>
#include <QString>
#include <memory>

namespace corv {

/// What is known of a video file without decoding it.
struct VideoInfo
{
    double fps = 0.0;        ///< as the file states it
    int promisedFrames = 0;  ///< as the container states it, which is not how many arrive
    double durationMs = 0.0; ///< length: the time of the last frame and its duration
};

/// The one way to video files: opens them for reading and writing, and gives information about
/// them. The only place that knows the video libraries; a test puts a back-end of its own here. All
/// functions may be called from any thread.
class VideoBackend
{
public:
    virtual ~VideoBackend() = default;

    /// Opens a file for reading; the source is at its first frame.
    virtual Result<std::unique_ptr<FrameSource>> openSource(const QString& file) const = 0;

    /// Information about a file.
    virtual Result<VideoInfo> info(const QString& file) const = 0;

    /// Starts a file; its suffix picks the container. `fps` is the rate and `size` that of every
    /// frame. A failure is `notPossible` if the suffix is that of no video format.
    virtual Result<std::unique_ptr<FrameWriter>> openWriter(const QString& file, double fps,
                                                            QSize size) const = 0;
};

/// The back-end on the video libraries. Any thread.
std::shared_ptr<const VideoBackend> systemVideoBackend();

} // namespace corv
