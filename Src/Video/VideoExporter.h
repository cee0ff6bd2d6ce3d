#pragma once

#include "Video/VideoTimeline.h"

#include <QString>
#include <array>
#include <functional>
#include <opencv2/core.hpp>

namespace corv {

class FrameWriter;
class VideoBackend;

/// Writes all frames of a timeline as one new video, in one go on the worker's thread.
class VideoExporter
{
public:
    /// What the export asks of its surroundings while it runs.
    struct Hooks
    {
        std::function<void(cv::Mat& frame, int timeMs)> applyEffects;
        std::function<void(int exportedFrames, int totalFrames)> reportProgress;
        std::function<bool()> isCancelled;
    };

    VideoExporter(const VideoBackend& backend, VideoTimeline& timeline, Hooks hooks);

    /// Size and rate come from the file at `currentFile`, whose position is put back at the end;
    /// frames of another size are left out. True if that position could be put back, whatever
    /// became of single frames or files; false as well if the target cannot be begun. What the disk
    /// had no place for is told in the log.
    bool exportTo(const QString& target, int currentFile);

private:
    int exportFile(VideoFileEntry& entry, FrameWriter& writer, QSize size, int done);
    void applyEffects(cv::Mat& picture, int timeMs);
    void tellOfLostFrames(const QString& target, int written) const;
    int writeAll(FrameWriter& writer, QSize size);

    const VideoBackend& m_backend;
    VideoTimeline& m_timeline;
    Hooks m_hooks;
    // In turn: one is filled while the writer has the other.
    std::array<cv::Mat, 2> m_pictures;
    size_t m_turn = 0;
};

/// Whether `target` is one of `files` under any name: relative, or through a link of either kind.
bool isOneOfFiles(const QString& target, const QStringList& files);

} // namespace corv
