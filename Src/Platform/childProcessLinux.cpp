#include "Platform/childProcess.h"

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace corv::platform {

void endWithParent(qint64 parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // A parent that ended before the line above is not noticed by it.
    if (getppid() != parent)
        raise(SIGKILL);
}

} // namespace corv::platform
