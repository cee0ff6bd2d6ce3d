#pragma once

#include "Threads/pool.h"
#include "Video/ByteSource.h"
#include "Video/FrameIndex.h"

#include <memory>

namespace corv {

/// The index of a video's frames, read beside the caller where the container must be read through
/// for it. Shared by all sources on one file; any thread.
class FrameIndexTask
{
public:
    /// An index that is there already.
    explicit FrameIndexTask(FrameIndex index);

    /// Reads `bytes` through on the pool. The first packet whose frame arrives is `firstPacket`,
    /// and `fps` the stated rate. Frames before it are hidden.
    FrameIndexTask(std::unique_ptr<ByteSource> bytes, const QString& name, int firstPacket,
                   double fps);

    /// Ends the reading; does not wait for it.
    ~FrameIndexTask();
    FrameIndexTask(const FrameIndexTask&) = delete;
    FrameIndexTask& operator=(const FrameIndexTask&) = delete;

    bool isReady() const { return !m_task.isRunning(); }

    /// The part that has been read, from 0 to 1.
    double progress() const;

    /// The index; waits for it. Where the medium failed on the way, of the part that was read; at
    /// least one frame.
    const FrameIndex& wait() const;

private:
    struct State;

    std::shared_ptr<State> m_state;
    PoolTask m_task;
};

} // namespace corv
