#include "Cli/OpenLog.h"

#include "Cli/TerminalLine.h"
#include "Cli/diagnostics.h"

#include <cstdio>

namespace corv::cli {
namespace {

// Shows on a terminal how far a reading is.
LogDecoder::Progress progressOn(TerminalLine& line)
{
    return [&line](int stage, int done, int total) {
        if (line.isTerminal() && stage == 2 && total > 0)
            line.show(QStringLiteral("reading %1 %").arg(qint64(done) * 100 / total));
    };
}

} // namespace

Result<SurveyedLog> surveyLog(const QString& path)
{
    TerminalLine line(stderr);
    const std::atomic<bool> abortFlag{false};
    LogDecoder decoder(&abortFlag);
    const Result<LogSurvey> survey = decoder.survey(
        path, progressOn(line), showsDiagnostics() ? LogMessages::steps : LogMessages::failures);
    if (!survey)
        return survey.failure();
    return SurveyedLog{path, decoder.logVersion(), decoder.counters(), *survey};
}

Status OpenLog::open(const QString& path)
{
    TerminalLine line(stderr);
    const auto decoded = m_decoder.decode(path, progressOn(line));
    if (!decoded)
        return decoded.failure();
    m_log = *decoded;
    return {};
}

} // namespace corv::cli
