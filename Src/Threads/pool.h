#pragma once

#include <functional>
#include <memory>

namespace corv {

/// A task on the global thread pool, held by the code that started it. A copy refers to the same
/// task; a default-made one refers to none and is not running. It may be dropped while the task
/// runs.
class PoolTask
{
public:
    PoolTask() = default;

    /// True from the start of the task until its job has returned. Any thread.
    bool isRunning() const;

    /// Returns once the job has returned, with everything it did visible to the caller.
    void waitForDone() const;

    /// The same, but gives up after `ms` milliseconds; true if the job has returned.
    bool isDoneWithin(int ms) const;

    /// Gives the pool another thread in place of the one of this task, until its job returns: for a
    /// job that waits for a medium that does not answer. Any thread, once or more.
    void replaceThread() const;

private:
    struct State;
    friend PoolTask runOnPool(std::function<void()> job);
    friend class PoolRunnable;

    std::shared_ptr<State> m_state;
};

/// Starts `job` on the global thread pool with copies of whatever it captures. The job must not
/// throw and must not emit signals: it posts to the owner a closure that emits (`post`), so that
/// the signals come from the owner's thread and in their order.
PoolTask runOnPool(std::function<void()> job);

} // namespace corv
