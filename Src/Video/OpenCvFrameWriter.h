#pragma once

#include "Threads/pool.h"
#include "Video/FrameWriter.h"

#include <QString>
#include <memory>
#include <opencv2/videoio.hpp>

namespace corv {

/// Writes a video beside the thread that decodes it: each frame is handed over to a task on the
/// pool. One frame is written while the next is read; a longer queue only drives the frames out of
/// the processor's cache before they are encoded (measured: a tenth slower at 1080p). While there
/// is a writer, the global pool has one thread more.
class OpenCvFrameWriter final : public FrameWriter
{
public:
    OpenCvFrameWriter();
    ~OpenCvFrameWriter() override;
    OpenCvFrameWriter(const OpenCvFrameWriter&) = delete;
    OpenCvFrameWriter& operator=(const OpenCvFrameWriter&) = delete;

    /// Starts the file; its suffix picks the container. False if it cannot be written.
    bool open(const QString& file, double fps, QSize size);

    void write(const Frame& frame) override;
    Status finish() override;

private:
    struct Target;

    std::shared_ptr<Target> m_target;
    PoolTask m_task;
};

} // namespace corv
