#include "Threads/pool.h"

#include "Threads/annotate.h"

#include <QRunnable>
#include <QSemaphore>
#include <QThreadPool>
#include <atomic>
#include <utility>

namespace corv {

struct PoolTask::State
{
    enum class Thread { own, replaced, returned };

    std::atomic<bool> running{true};
    std::atomic<Thread> thread{Thread::own};
    QSemaphore done;
};

// Not the pool's own wrapper of a function: that one reads its tables before any acquire could
// order them.
class PoolRunnable : public QRunnable
{
public:
    PoolRunnable(std::function<void()> job, std::shared_ptr<PoolTask::State> state)
        : m_job(std::move(job)), m_state(std::move(state))
    {
    }

    ~PoolRunnable() override { annotateAcquire(this); }

    void run() override
    {
        annotateAcquire(this);
        m_job();
        m_job = nullptr; // what the job held dies before the task counts as ended
        const std::shared_ptr<PoolTask::State> state = std::move(m_state);
        if (state->thread.exchange(PoolTask::State::Thread::returned) ==
            PoolTask::State::Thread::replaced)
            QThreadPool::globalInstance()->reserveThread();
        annotateRelease(state.get());
        state->running.store(false, std::memory_order_release);
        state->done.release();
    }

private:
    std::function<void()> m_job;
    std::shared_ptr<PoolTask::State> m_state;
};

bool PoolTask::isRunning() const
{
    return m_state && m_state->running.load(std::memory_order_acquire);
}

void PoolTask::waitForDone() const
{
    if (!m_state)
        return;
    m_state->done.acquire();
    m_state->done.release(); // the next one who waits finds it done as well
    annotateAcquire(m_state.get());
}

bool PoolTask::isDoneWithin(int ms) const
{
    if (!m_state)
        return true;
    if (!m_state->done.tryAcquire(1, ms))
        return false;
    m_state->done.release();
    annotateAcquire(m_state.get());
    return true;
}

void PoolTask::replaceThread() const
{
    State::Thread expected = State::Thread::own;
    if (m_state && m_state->thread.compare_exchange_strong(expected, State::Thread::replaced))
        QThreadPool::globalInstance()->releaseThread();
}

PoolTask runOnPool(std::function<void()> job)
{
    PoolTask task;
    task.m_state = std::make_shared<PoolTask::State>();
    auto* runnable = new PoolRunnable(std::move(job), task.m_state);
    annotateRelease(runnable);
    QThreadPool::globalInstance()->start(runnable);
    return task;
}

} // namespace corv
