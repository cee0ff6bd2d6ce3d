#include "Platform/childProcess.h"

#include <csignal>
#include <sys/prctl.h>

namespace corv::platform {

void endWithParent()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace corv::platform
