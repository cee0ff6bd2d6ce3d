#pragma once

#include "Base/Failure.h"
#include "Video/Frame.h"

#include <QSize>
#include <memory>

namespace corv {

/// What a read gave.
enum class ReadOutcome {
    frame, ///< a picture
    end,   ///< none: the source is at the end of the file
    failed ///< none: the medium gives nothing more
};

/// One open video file, read frame by frame.
///
/// Frames are numbered from 0 within the file, in the order of their times. Where the rate is
/// constant, the time of frame n is n * 1000 / fps; where it is not, it is the true presentation
/// time less that of the first frame. Used by one thread at a time. Nothing throws.
class FrameSource
{
public:
    virtual ~FrameSource() = default;

    /// Frames per second as the file states them, above 0 and finite.
    virtual double fps() const = 0;

    /// The number of frames that can be read, at least 1. A container may promise others.
    virtual int frameCount() const = 0;

    /// Size of every frame in pixels, as it is shown (turned if the file says so), both sides even.
    virtual QSize size() const = 0;

    /// Width and height of one pixel in relation to each other; 1:1 where the file states none.
    virtual QSize pixelAspectRatio() const { return {1, 1}; }

    /// Whether all frames are 1000 / fps milliseconds apart.
    virtual bool isConstantRate() const { return true; }

    /// Time of a frame in milliseconds from the first one. For `frameCount` and above, the end of
    /// the last frame; below 0, 0.
    virtual double frameTimeMs(int index) const;

    /// The frame that is nearest to `ms` where frames follow each other, and the one that is held
    /// where they do not: from 0 to frameCount - 1, whatever the time.
    virtual int frameAtTime(double ms) const;

    /// Length of the video in milliseconds: the time of the last frame and its duration.
    double durationMs() const { return frameTimeMs(frameCount()); }

    /// The last keyframe at or before `index`: reading it costs the decoding of one frame.
    virtual int nearestKeyframe(int index) const { return index; }

    /// Whether reading the frame costs no more than decoding one.
    virtual bool isAtHand(int index) const { return index == nextFrame(); }

    /// Gives back the memory of frames that are kept for quicker reading; none is lost.
    virtual void freeMemory() {}

    /// Some containers must be read through before the number and the times of their frames are
    /// known. Until then reading on from the start works; frameCount(), times and positioning wait
    /// for it. Any thread.
    virtual bool isIndexReady() const { return true; }

    /// The part of the file that has been read through, from 0 to 1. Any thread.
    virtual double indexProgress() const { return 1.0; }

    /// The number of the frame that read() returns next; frameCount() at the end of the file.
    virtual int nextFrame() const = 0;

    /// Seeks so that read() returns frame `index`, clamped to 0 to frameCount; the latter is the
    /// end. Costs nothing if the source is there already. False if the medium failed.
    virtual bool seekToFrame(int index) = 0;

    /// Seeks to the frame at a time, see frameAtTime().
    bool seekToTime(double ms) { return seekToFrame(frameAtTime(ms)); }

    /// Reads the frame with the number nextFrame() and advances by one. Damaged frames are skipped:
    /// `frame` is then the next good one, with its own number. After a seek to damaged frames with
    /// no good one behind them, it is the last good one before them. `frame` is changed only if the
    /// outcome is a frame.
    virtual ReadOutcome read(Frame& frame) = 0;

    /// Why the last read() or seekToFrame() failed. Only after a failure.
    virtual Failure failure() const;

    /// A second source on the same file, at its start; null if the file is gone.
    virtual std::unique_ptr<FrameSource> clone() const = 0;

    /// Time of the frame about to be read, in milliseconds from the first one.
    double nextFrameMs() const { return frameTimeMs(nextFrame()); }
};

} // namespace corv
