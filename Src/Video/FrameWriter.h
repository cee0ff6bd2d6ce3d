#pragma once

#include "Threads/pool.h"

#include <QSize>
#include <QString>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <vector>

namespace corv {

/// Writes a video beside the thread that decodes it: frames are handed over in small batches to a
/// task on the pool, and come back as buffers for the frames to follow. So at most two batches are
/// in memory, and neither side waits for the other as long as both keep up.
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
    using Batch = std::vector<cv::Mat>;

    void handOver();
    void finishTask();

    std::shared_ptr<cv::VideoWriter> m_writer;
    std::shared_ptr<Batch> m_filling;
    std::shared_ptr<Batch> m_writing;
    Batch m_buffers;
    PoolTask m_task;
};

} // namespace corv
