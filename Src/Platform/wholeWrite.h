#pragma once

#include <QtGlobal>

namespace corv::platform {

/// Writes `size` bytes to an open file descriptor, in one system call unless the system takes less.
/// On a descriptor in append mode, lines of different threads therefore never mix. Gives up on the
/// first error, such as a full disk. Any thread, and signal handlers.
void wholeWrite(int descriptor, const char* bytes, qint64 size);

} // namespace corv::platform
