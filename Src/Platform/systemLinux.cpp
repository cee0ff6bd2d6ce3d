#include "Platform/Platform.h"

#include <sys/resource.h>
#include <sys/sysinfo.h>

namespace corv::platform {

quint64 installedMemoryKb()
{
    struct sysinfo info = {};
    if (::sysinfo(&info) != 0)
        return 0;
    return static_cast<quint64>(info.totalram) * info.mem_unit / 1024;
}

quint64 addressSpaceLimitBytes()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return 0;
    return limit.rlim_cur;
}

QString longPath(const QString& path)
{
    return path;
}

} // namespace corv::platform
