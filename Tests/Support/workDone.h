#pragma once

#include <QtGlobal>
#include <time.h>

namespace corv::test {

/// How much the processor has worked so far, in milliseconds. Unlike the time that passes it does
/// not depend on what else the machine does, so a test can hold work against a limit.
inline qint64 workDoneMs(clockid_t whose)
{
    timespec time{};
    clock_gettime(whose, &time);
    return qint64{1000} * time.tv_sec + time.tv_nsec / 1'000'000;
}

/// Of the calling thread.
inline qint64 threadWorkMs()
{
    return workDoneMs(CLOCK_THREAD_CPUTIME_ID);
}

/// Of all threads of the process.
inline qint64 processWorkMs()
{
    return workDoneMs(CLOCK_PROCESS_CPUTIME_ID);
}

} // namespace corv::test
