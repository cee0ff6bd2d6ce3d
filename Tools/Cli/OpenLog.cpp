#include "Cli/OpenLog.h"

#include <cstdio>
#include <unistd.h>

namespace corv::cli {

Status OpenLog::open(const QString& path)
{
    m_path = path;
    const bool showProgress = isatty(STDERR_FILENO) == 1;
    const auto decoded = m_decoder.decode(path, [showProgress](int stage, int done, int total) {
        if (showProgress && stage == 2 && total > 0)
            std::fprintf(stderr, "\rdecoding %3d %%", int(qint64(done) * 100 / total));
    });
    if (showProgress)
        std::fputs("\r              \r", stderr);
    if (!decoded)
        return decoded.failure();
    m_log = *decoded;
    return {};
}

} // namespace corv::cli
