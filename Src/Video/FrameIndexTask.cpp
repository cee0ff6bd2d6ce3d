#include "Video/FrameIndexTask.h"

#include "Video/AvInput.h"
#include "Video/packetIndex.h"

#include <QThreadPool>
#include <atomic>
#include <utility>

namespace corv {

// Written by the task alone, and read by others once it has ended; the atomics at any time.
struct FrameIndexTask::State
{
    explicit State(FrameIndex ready) : index(std::move(ready)) {}

    FrameIndex index;
    std::atomic<double> progress{0.0};
    std::atomic<bool> aborted{false};

    void read(std::unique_ptr<ByteSource> bytes, const QString& name, int firstPacket, double fps);
};

void FrameIndexTask::State::read(std::unique_ptr<ByteSource> bytes, const QString& name,
                                 int firstPacket, double fps)
{
    Result<std::unique_ptr<AvInput>> input = AvInput::open(std::move(bytes), name);
    if (input && (*input)->probe()) {
        if ((*input)->describesPackets()) {
            (*input)->takePacketsAsStored();
            index.setStatedLength((*input)->streamDurationMs());
        }
        (*input)->rewind();
        // What came before a failure counts.
        const Status status = readPacketIndex(**input, index, true, [this](double part) {
            progress.store(part, std::memory_order_relaxed);
            return aborted.load(std::memory_order_relaxed);
        });
        Q_UNUSED(status)
    }
    while (index.packetCount() <= firstPacket) // one frame has been seen
        index.add({});
    index.hideFramesBefore(firstPacket);
    index.finish(fps);
}

FrameIndexTask::FrameIndexTask(FrameIndex index)
    : m_state(std::make_shared<State>(std::move(index)))
{
}

FrameIndexTask::FrameIndexTask(std::unique_ptr<ByteSource> bytes, const QString& name,
                               int firstPacket, double fps)
    : m_state(std::make_shared<State>(FrameIndex()))
{
    // What waits for the index may be a task of the pool: one place more, so that the two
    // cannot wait for each other.
    QThreadPool::globalInstance()->releaseThread();
    m_task = runOnPool([state = m_state,
                        source = std::make_shared<std::unique_ptr<ByteSource>>(std::move(bytes)),
                        name, firstPacket, fps] {
        state->read(std::move(*source), name, firstPacket, fps);
        QThreadPool::globalInstance()->reserveThread();
    });
}

FrameIndexTask::~FrameIndexTask()
{
    m_state->aborted.store(true, std::memory_order_relaxed);
}

double FrameIndexTask::progress() const
{
    return isReady() ? 1.0 : m_state->progress.load(std::memory_order_relaxed);
}

const FrameIndex& FrameIndexTask::wait() const
{
    m_task.waitForDone();
    return m_state->index;
}

} // namespace corv
