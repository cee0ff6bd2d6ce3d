#include "Platform/wholeWrite.h"

#include <unistd.h>

namespace corv::platform {

void wholeWrite(int descriptor, const char* bytes, qint64 size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, static_cast<size_t>(size));
        if (written <= 0)
            return;
        bytes += written;
        size -= written;
    }
}

} // namespace corv::platform
