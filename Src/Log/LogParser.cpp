#include "Log/LogParser.h"

#include "Log/LogDecoder.h"
#include "Log/logCategory.h"
#include "Threads/post.h"

#include <QDebug>
#include <QPointer>
#include <algorithm>
#include <utility>

namespace corv {

// What a pool task is given; shared with the parser, which raises the abort flag.
struct LogParser::Parse
{
    LogParser* owner;
    QString filename;
    bool ignoreNaming;
    std::shared_ptr<const FlightClock> clock;
    std::shared_ptr<const std::atomic<int>> durationMs;
    std::atomic<bool> abort{false};
};

// What a pool task found. Without a log, which has a failure then, the rest has no meaning.
struct LogParser::Outcome
{
    std::shared_ptr<const LogFile> log;
    std::optional<Failure> failure;
    LogSyncResult sync;
    FlightNamingEvent naming;
    int thermalCameraVersion = -1;
};

LogParser::LogParser(QObject* parent) : QObject(parent) {}

LogParser::~LogParser()
{
    overtake();
    for (const PoolTask& task : m_tasks)
        task.waitForDone();
}

bool LogParser::parseLog(const QString& filename, bool ignoreNaming)
{
    overtake();
    m_parse = std::make_shared<Parse>();
    m_parse->owner = this;
    m_parse->filename = filename;
    m_parse->ignoreNaming = ignoreNaming;
    m_parse->clock = m_clock;
    m_parse->durationMs = m_durationMs;
    m_tasks.erase(std::remove_if(m_tasks.begin(), m_tasks.end(),
                                 [](const PoolTask& task) { return !task.isRunning(); }),
                  m_tasks.end());
    // A caller that parses when a video opens sets the duration only after this call: even the
    // shortest log must not be read before that.
    post(this, [this, parse = m_parse] {
        if (isCurrent(parse))
            m_tasks.push_back(runOnPool([parse] { run(parse); }));
    });
    return true;
}

// On the pool. The parser outlives its tasks, so it can be posted to.
void LogParser::run(const std::shared_ptr<Parse>& parse)
{
    qCInfo(lcLog) << "Parsing log in separate thread";
    LogParser* const owner = parse->owner;
    post(owner, [owner, parse] { owner->begin(parse); });
    const std::shared_ptr<Outcome> outcome = parseLogConcurrently(parse);
    post(owner, [owner, parse, outcome] { owner->publish(parse, *outcome); });
}

std::shared_ptr<LogParser::Outcome>
LogParser::parseLogConcurrently(const std::shared_ptr<Parse>& parse)
{
    auto outcome = std::make_shared<Outcome>();
    LogDecoder decoder(&parse->abort);
    const LogDecoder::Progress progress = [&parse](int stage, int done, int total) {
        LogParser* const owner = parse->owner;
        post(owner, [owner, parse, stage, done, total] {
            if (owner->isCurrent(parse))
                emit owner->logParsingProgress(stage, done, total);
        });
    };
    if (auto decoded = decoder.decode(parse->filename, progress))
        outcome->log = *decoded;
    else
        outcome->failure = decoded.failure();
    const LogFile* const log = outcome->log.get();
    if (!log) {
        qCInfo(lcLog) << "Log decoding returned null";
        return outcome;
    }
    // The player may have learnt the duration while the log was being decoded.
    const int durationMs = parse->durationMs->load(std::memory_order_relaxed);
    outcome->sync = decoder.syncLogToVideo(log, durationMs);
    const int offset = outcome->sync.found
                           ? outcome->sync.logTimeOffset
                           : parse->clock->logTimeOffset.load(std::memory_order_relaxed);
    outcome->naming =
        decoder.findNamingForRecording(decoder.readFlightNamingEvents(log), offset, durationMs);
    outcome->thermalCameraVersion =
        LogDecoder::knownThermalCamera(decoder.findThermalCameraHwVersion(log));
    qCInfo(lcLog) << "Thermal camera HW version:" << outcome->thermalCameraVersion;
    return outcome;
}

// Whatever still runs publishes nothing from here on, and ends soon.
void LogParser::overtake()
{
    if (m_parse)
        m_parse->abort.store(true, std::memory_order_relaxed);
    m_parse.reset();
}

// The parse has started: the log of the one before goes.
void LogParser::begin(const std::shared_ptr<Parse>& parse)
{
    if (!isCurrent(parse))
        return;
    m_clock->synced = false;
    dropLog();
    m_source = parse->filename;
    const QPointer<LogParser> self(this);
    emit sourceChanged();
    if (self && isCurrent(parse))
        setFailure(std::nullopt);
}

void LogParser::publish(const std::shared_ptr<Parse>& parse, const Outcome& outcome)
{
    if (!isCurrent(parse))
        return;
    const bool decoded = outcome.log != nullptr;
    if (decoded) {
        adopt(*parse, outcome);
        // A receiver of one signal may close the log or the parser before the next is emitted.
        const QPointer<LogParser> self(this);
        if (!parse->ignoreNaming)
            emit flightNamingChanged();
        if (!self || !isCurrent(parse))
            return;
        emit sourceDataParsed();
        if (!self || !isCurrent(parse))
            return;
    }
    m_parse.reset();
    const QPointer<LogParser> self(this);
    m_failure = outcome.failure;
    emit logParsingComplete(decoded);
    if (self && !decoded)
        emit failureChanged();
}

void LogParser::adopt(const Parse& parse, const Outcome& outcome)
{
    m_log = outcome.log;
    if (outcome.sync.found) {
        m_clock->logTimeOffset = outcome.sync.logTimeOffset;
        m_clock->synced = true;
        m_matchedLogDuration = outcome.sync.videoDuration;
        m_logProbablyNotMatching = outcome.sync.probablyNotMatching;
    }
    if (!parse.ignoreNaming)
        m_flightNaming = outcome.naming;
    m_thermalCameraVersion = outcome.thermalCameraVersion;
}

void LogParser::closeLog()
{
    const bool wasRunning = m_parse != nullptr;
    overtake();
    dropLog();
    m_clock->synced = false;
    m_clock->logTimeOffset = 0;
    m_source.clear();
    m_thermalCameraVersion = -1;
    m_flightNaming = {};
    const QPointer<LogParser> self(this);
    emit sourceChanged();
    if (self)
        emit flightNamingChanged();
    // The overtaken parse will not emit its end.
    if (self && wasRunning && !m_parse)
        setIsParsing(false);
    if (self && !m_parse)
        setFailure(std::nullopt);
}

void LogParser::setFailure(std::optional<Failure> failure)
{
    if (!m_failure && !failure)
        return;
    m_failure = std::move(failure);
    emit failureChanged();
}

// Freeing a large log takes a while: a pool thread does it where no other reader keeps the log.
void LogParser::dropLog()
{
    if (m_log)
        runOnPool([log = std::exchange(m_log, nullptr)] {});
}

void LogParser::setDuration(const QTime& duration)
{
    m_duration = duration;
    m_durationMs->store(duration.msecsSinceStartOfDay(), std::memory_order_relaxed);
}

QVariantMap LogParser::flightNaming() const
{
    return {{QStringLiteral("undefined"), m_flightNaming.undefined},
            {QStringLiteral("missionName"), m_flightNaming.missionName},
            {QStringLiteral("flightName"), m_flightNaming.flightName},
            {QStringLiteral("flightNumber"), m_flightNaming.flightNumber}};
}

void LogParser::setFlightNaming(const QVariantMap& naming)
{
    // The time of the event is no part of the map.
    m_flightNaming.undefined = naming.value(QStringLiteral("undefined")).toBool();
    const bool defined = !m_flightNaming.undefined;
    m_flightNaming.missionName =
        defined ? naming.value(QStringLiteral("missionName")).toString() : QString();
    m_flightNaming.flightName =
        defined ? naming.value(QStringLiteral("flightName")).toString() : QString();
    m_flightNaming.flightNumber =
        defined ? naming.value(QStringLiteral("flightNumber")).toInt() : 0;
    emit flightNamingChanged();
}

void LogParser::setIsParsing(bool isParsing)
{
    if (m_isParsing == isParsing)
        return;
    m_isParsing = isParsing;
    emit isParsingChanged(isParsing);
}

void LogParser::setManualLogTimeOffset(int offset)
{
    if (m_clock->manualLogTimeOffset == offset)
        return;
    m_clock->manualLogTimeOffset = offset;
    emit manualLogTimeOffsetChanged(offset);
}

} // namespace corv
