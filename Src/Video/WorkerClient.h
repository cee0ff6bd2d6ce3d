#pragma once

#include "Base/Result.h"

#include <QSize>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QVideoFrame>
#include <memory>

namespace corv {

class ThermalReading;

/// A decoded frame on its way to the screen.
struct PlayerFrame
{
    int frameIndex = 0; ///< on the timeline
    int timeMs = 0;     ///< on the timeline
    QVideoFrame frame;
    std::shared_ptr<const ThermalReading> thermal; ///< of the overlay in it, null if it has none
};

/// What a frame is handed over for.
enum class FrameUse {
    playback,   ///< to be shown when its time has come
    seekResult, ///< the picture that a seek led to
    preview,    ///< replaces the picture of a seek that takes long; number and time are the
                ///< seek's own
    redraw      ///< the picture on screen, drawn anew
};

/// How a wish for a place on the timeline ended.
enum class WishOutcome {
    shown,     ///< with the picture of that place
    previewed, ///< with a preview; the wish is to be repeated once nothing newer is wished for
    overtaken, ///< without a picture, because a newer wish waits
    failed     ///< without a picture, because there is none to be had
};

/// The files that were opened as one timeline.
struct OpenedTimeline
{
    double fps = 0.0; ///< of the first file; 0 if none opened
    int totalFrames = 0;
    int durationMs = 0;
    QSizeF size; ///< of the first file's frames
    QSize pixelAspectRatio{1, 1};
    QStringList failedFiles;
    QList<Failure> failures; ///< why, for each of them
    int secondFileMs = -1;   ///< where the second file begins; below 0 if there is none
};

/// Receives what a worker has done. All functions are called on the thread of the object that the
/// worker was given beside the client. Each carries the number of the opening that it belongs to,
/// so that the client can drop what was overtaken by closing or by another opening.
class WorkerClient
{
public:
    virtual void onVideoFilesProcessed(int opening, const OpenedTimeline& timeline) = 0;

    /// The files must be read through before they are open: the part that has been, from 0 to 1.
    virtual void onOpeningProgress(int opening, double part) = 0;

    /// The first picture of files that are not open yet; once, if at all.
    virtual void onFirstPicture(int opening, QSize pixelAspectRatio,
                                const QVideoFrame& picture) = 0;

    /// The worker now reads `file`.
    virtual void onCurrentFile(int opening, const QString& file) = 0;

    virtual void onFrameReady(int opening, const PlayerFrame& frame, FrameUse use) = 0;

    /// A seek to a place on the timeline gave no frame.
    virtual void onSeekFailed(int opening) = 0;

    /// A wish is over, after its frame if it gave one.
    virtual void onWishServed(int opening, WishOutcome outcome) = 0;

    /// A redraw is over, after its frame if it gave one.
    virtual void onRedrawFinished(int opening) = 0;

    /// No frames follow for playback: a medium gives nothing more, or it is the end behind
    /// `lastFrame`, the last one that could be decoded. At the end the worker has no place in the
    /// flight, and so no pictures to be saved, until it goes to a frame; below 0 if it is not.
    virtual void onPlaybackEnded(int opening, int lastFrame) = 0;

    /// A file of the timeline, which was to be read on or gone to, gives nothing more.
    virtual void onReadFailed(int opening, const QString& file) = 0;

    /// The thermal frames of a log have been taken over, or why there are none.
    virtual void onThermalFrames(const Status& status) = 0;

    /// A burst is over, after its frames.
    virtual void onBurstFinished() = 0;

protected:
    ~WorkerClient() = default;
};

} // namespace corv
