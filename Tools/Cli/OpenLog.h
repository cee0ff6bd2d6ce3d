#pragma once

#include "Base/Result.h"
#include "Log/LogDecoder.h"

#include <atomic>
#include <memory>

namespace corv::cli {

/// What a log holds, without its values.
struct SurveyedLog
{
    QString path;
    int version = 0;
    LogDecodeCounters counters;
    LogSurvey survey;
};

/// Reads what a file holds. Shows the progress on a terminal.
Result<SurveyedLog> surveyLog(const QString& path);

/// A decoded log, with the decoder and its counters. Shows the progress on a terminal.
class OpenLog
{
public:
    /// Decodes the file. Once per object.
    Status open(const QString& path);

    const LogFile& log() const { return *m_log; }
    std::shared_ptr<const LogFile> shared() const { return m_log; }
    const LogDecoder& decoder() const { return m_decoder; }

private:
    const std::atomic<bool> m_abortFlag{false};
    LogDecoder m_decoder{&m_abortFlag};
    std::shared_ptr<const LogFile> m_log;
};

} // namespace corv::cli
