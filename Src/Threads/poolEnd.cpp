#include "Threads/poolEnd.h"

#include <QDeadlineTimer>
#include <QThreadPool>

namespace corv {

// A thread counts as active for a moment after its job has returned, so the pool is asked again.
bool isPoolDoneWithin(int ms)
{
    constexpr int stepMs = 10;
    QThreadPool* const pool = QThreadPool::globalInstance();
    const QDeadlineTimer deadline(ms);
    while (!pool->waitForDone(stepMs)) {
        // The last job may have ended since the wait.
        if (pool->activeThreadCount() <= 0 || deadline.hasExpired())
            return pool->waitForDone(0);
    }
    return true;
}

} // namespace corv
