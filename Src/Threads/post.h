#pragma once

#include <functional>

class QObject;

namespace corv {

/// Runs `job` on the thread that `target` lives on, from that thread's event loop, after all that
/// was posted to it before from the calling thread. Callable from any thread, also from one without
/// an event loop. A job whose target has died is dropped without running. The job must not throw.
///
/// What the job captures is handed over: the caller keeps no reference into it that it writes to.
void post(QObject* target, std::function<void()> job);

} // namespace corv
