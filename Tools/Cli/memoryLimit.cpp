#include "Cli/memoryLimit.h"

#include "Platform/Platform.h"

namespace corv::cli {
namespace {

// More than is used at once: each thread reserves addresses, most of which it never uses.
constexpr quint64 leastBytesToLoad = 400'000'000;
constexpr quint64 leastBytesForVideos = 1'500'000'000;

Status enoughMemory(quint64 leastBytes)
{
    constexpr quint64 megabyte = 1'000'000;
    const quint64 limit = platform::addressSpaceLimitBytes();
    if (limit == 0 || limit >= leastBytes)
        return {};
    return Failure{Failure::Kind::noMemory,
                   QStringLiteral("There is not enough memory: this program's is limited to %1 MB "
                                  "(ulimit -v), and it needs %2 MB at least. Raise the limit.")
                       .arg(limit / megabyte)
                       .arg(leastBytes / megabyte)};
}

} // namespace

Status enoughMemoryToLoad()
{
    return enoughMemory(leastBytesToLoad);
}

Status enoughMemoryForVideos()
{
    return enoughMemory(leastBytesForVideos);
}

} // namespace corv::cli
