#pragma once

#include "Base/Result.h"
#include "Video/PictureInset.h"
#include "Video/VideoBackend.h"
#include "Video/VideoTimeline.h"

#include <QString>
#include <array>
#include <functional>
#include <opencv2/core.hpp>
#include <vector>

namespace corv {

class ExportTarget;

/// Writes all frames of a timeline as one new video, in one go on the worker's thread. The video
/// has one constant rate: each frame is at its true time in it, held where frames are missing, left
/// out where there are more than the rate has places for.
class VideoExporter
{
public:
    /// What the export asks of its surroundings while it runs.
    struct Hooks
    {
        /// Whether applyEffects() would change a picture.
        std::function<bool()> changesPictures;
        std::function<void(cv::Mat& picture, int timeMs)> applyEffects;
        /// What is shown in parts of the picture, whose effects have been applied before.
        std::function<std::vector<PictureInset::Part>(int timeMs, QSize picture)> insets;
        std::function<void(int exportedFrames, int totalFrames)> reportProgress;
        std::function<bool()> isCancelled;
    };

    struct Outcome
    {
        /// Whether the video was begun and the position could be put back, whatever single frames
        /// or files gave.
        bool isPositionBack = false;

        /// What is missing in the video, or why there is none.
        Status status;
    };

    VideoExporter(const VideoBackend& backend, VideoTimeline& timeline, Hooks hooks);

    /// Size and rate come from the file at `currentFile`, whose position is put back at the end;
    /// frames of another size are left out.
    Outcome exportTo(const QString& target, int currentFile);

private:
    /// A frame that came too soon after the one before to have a place.
    struct LateFrame
    {
        Frame frame;
        int overlayMs = 0;
    };

    void writeAll(ExportTarget& target, QSize size);
    void exportFile(VideoFileEntry& entry, ExportTarget& target, QSize size, int done);
    void place(const VideoFileEntry& entry, const Frame& frame, ExportTarget& target);
    void holdUntil(double timelineMs, ExportTarget& target);
    Frame withEffects(const Frame& frame, int timeMs);
    Frame drawnOn(const Frame& frame, int timeMs);
    Frame withInsets(const Frame& frame, int timeMs);
    cv::Mat& nextPicture();
    void noteLoss(const VideoFileEntry& entry, int firstFrame, int lastFrame);
    Status statusOf(const ExportTarget& target, const Status& finished) const;
    int placeOf(double timelineMs) const;

    const VideoBackend& m_backend;
    VideoTimeline& m_timeline;
    Hooks m_hooks;
    double m_fps = 0.0;
    double m_leftOutMs = 0.0; // of the timeline so far, for which there is nothing in the video
    Frame m_held;             // written last, effects included
    LateFrame m_late;
    QStringList m_losses;
    bool m_isDiskFull = false;
    // Used alternately: one is encoded while the other is drawn into.
    std::array<cv::Mat, 2> m_pictures;
    size_t m_turn = 0;
};

} // namespace corv
