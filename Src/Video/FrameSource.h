#pragma once

#include <QSize>
#include <QString>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>

namespace corv {

/// One open video file, read frame by frame. The one place that knows the decoding library; a test
/// puts a source of its own here to see a positioning or a read fail.
///
/// Frames are numbered from 0 within the file, and the time of frame n is n * 1000 / fps. Used by
/// one thread at a time. Nothing throws.
class FrameSource
{
public:
    virtual ~FrameSource() = default;

    /// Frames per second, above 0 and finite.
    virtual double fps() const = 0;

    /// The number of frames that can be read, at least 1. A container may promise others.
    virtual int frameCount() const = 0;

    /// Size of every frame in pixels, both sides even.
    virtual QSize size() const = 0;

    /// The number of the frame about to be read; `frameCount` at the end of the file.
    virtual int nextFrame() const = 0;

    /// Makes `index` the frame about to be read; an index outside the file means its end next to
    /// it. Costs nothing if the source already stands there. False if it failed.
    virtual bool seekToFrame(int index) = 0;

    /// Reads the frame about to be read as 8-bit BGR and moves to the next. The buffer of `frame`
    /// is written again if it fits: hand in one that nobody else looks at. False if no frame came.
    virtual bool read(cv::Mat& frame) = 0;

    /// A second source on the same file, standing at its start; null if the file is gone.
    virtual std::unique_ptr<FrameSource> clone() const = 0;

    /// Time inside the file of the frame about to be read, in milliseconds.
    double nextFrameMs() const { return nextFrame() * 1000.0 / fps(); }

    /// Makes the frame nearest to `ms` milliseconds from the start of the file the next one; behind
    /// the last frame that is the last one.
    bool seekToTime(double ms);
};

/// Opens a file, or gives null if it holds no video that can be read. Logs nothing.
using FrameSourceFactory = std::function<std::unique_ptr<FrameSource>(const QString& file)>;

/// The source on the decoding library.
std::unique_ptr<FrameSource> openFrameSource(const QString& file);

} // namespace corv
