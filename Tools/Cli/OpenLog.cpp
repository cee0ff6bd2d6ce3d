#include "Cli/OpenLog.h"

#include <cstdio>
#include <unistd.h>

namespace corv::cli {
namespace {

// A line on a terminal that shows how far a reading is, until it has ended.
class ProgressLine
{
public:
    ~ProgressLine()
    {
        if (m_isTerminal)
            std::fputs("\r              \r", stderr);
    }

    LogDecoder::Progress callback() const
    {
        return [isTerminal = m_isTerminal](int stage, int done, int total) {
            if (isTerminal && stage == 2 && total > 0)
                std::fprintf(stderr, "\rreading %3d %%", int(qint64(done) * 100 / total));
        };
    }

private:
    const bool m_isTerminal = isatty(STDERR_FILENO) == 1;
};

} // namespace

Result<SurveyedLog> surveyLog(const QString& path)
{
    const ProgressLine progress;
    const std::atomic<bool> abortFlag{false};
    LogDecoder decoder(&abortFlag);
    const Result<LogSurvey> survey = decoder.survey(path, progress.callback());
    if (!survey)
        return survey.failure();
    return SurveyedLog{path, decoder.logVersion(), decoder.counters(), *survey};
}

Status OpenLog::open(const QString& path)
{
    const ProgressLine progress;
    const auto decoded = m_decoder.decode(path, progress.callback());
    if (!decoded)
        return decoded.failure();
    m_log = *decoded;
    return {};
}

} // namespace corv::cli
