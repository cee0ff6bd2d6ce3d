#pragma once

#include "Threads/pool.h"

#include <QSize>
#include <QString>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <vector>

namespace corv {

/// Writes a video beside the thread that decodes it: each frame is handed over to a task on the
/// pool, and comes back as a buffer for a frame to follow. One frame is written while the next is
/// read; a longer queue only drives the frames out of the processor's cache before they are
/// encoded (measured: a tenth slower at 1080p).
///
/// Used by one thread. What was handed over is written when the object dies.
class FrameWriter
{
public:
    FrameWriter();
    ~FrameWriter();
    FrameWriter(const FrameWriter&) = delete;
    FrameWriter& operator=(const FrameWriter&) = delete;

    /// Starts the file; its suffix picks the container. False if it cannot be written.
    bool open(const QString& file, double fps, QSize size);

    /// A buffer to read the next frame into, possibly an empty one.
    cv::Mat takeBuffer();

    /// Gives back a buffer that will not be written.
    void giveBack(cv::Mat buffer);

    /// Appends a frame of the size of the video. Its buffer belongs to the writer from here on.
    void write(cv::Mat frame);

private:
    void finishTask();

    std::shared_ptr<cv::VideoWriter> m_writer;
    cv::Mat m_writing;
    std::vector<cv::Mat> m_buffers;
    PoolTask m_task;
};

} // namespace corv
