#pragma once

#include "Base/Failure.h"
#include "Log/FlightNamingEvent.h"
#include "Log/LogFile.h"
#include "Log/clocks.h"
#include "Threads/pool.h"

#include <QObject>
#include <QTime>
#include <QVariantMap>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace corv {

/// The flight log of the open flight, as the interface and the video side see it: decodes a log on
/// the pool, ties it to the video and publishes what it says. Interface singleton; lives on the
/// interface thread, where all of its functions are called and all of its signals are emitted.
class LogParser : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QTime duration READ duration WRITE setDuration)
    Q_PROPERTY(int manualLogTimeOffset READ getManualLogTimeOffset WRITE setManualLogTimeOffset
                   NOTIFY manualLogTimeOffsetChanged)
    Q_PROPERTY(QString source READ source NOTIFY sourceChanged)
    Q_PROPERTY(
        QVariantMap flightNaming READ flightNaming WRITE setFlightNaming NOTIFY flightNamingChanged)
    Q_PROPERTY(int thermalCameraVersion READ thermalCameraVersion)
    Q_PROPERTY(int matchedLogDuration READ matchedLogDuration)
    Q_PROPERTY(bool isParsing READ isParsing WRITE setIsParsing NOTIFY isParsingChanged)
    Q_PROPERTY(bool logProbablyNotMatching READ logProbablyNotMatching)
    Q_PROPERTY(QString failureText READ failureText NOTIFY failureChanged)

public:
    explicit LogParser(QObject* parent = nullptr);

    /// Ends a running parse and waits for it.
    ~LogParser() override;

    /// Starts to decode a log and returns true at once; `logParsingComplete` is emitted at the end.
    /// With `ignoreNaming` the flight keeps the naming that it has. A parse that still runs is
    /// overtaken: it publishes nothing more.
    Q_INVOKABLE bool parseLog(const QString& filename, bool ignoreNaming);

    /// Forgets the log and all that came from it; the user's correction stays. Overtakes a running
    /// parse, and then `isParsing` turns false.
    Q_INVOKABLE void closeLog();

    /// The video's duration from midnight. Needed by the time the decoding has ended.
    QTime duration() const { return m_duration; }
    void setDuration(const QTime& duration);

    /// Path of the log, or empty.
    QString source() const { return m_source; }

    /// "undefined", "missionName", "flightName" and "flightNumber". Writing a map without
    /// "undefined" counts as defined, and always emits.
    QVariantMap flightNaming() const;
    void setFlightNaming(const QVariantMap& naming);

    /// 30, 35, or -1 for any other thermal camera or none.
    int thermalCameraVersion() const { return m_thermalCameraVersion; }

    /// The video duration, in milliseconds, that the last successful match was made for.
    int matchedLogDuration() const { return m_matchedLogDuration; }
    bool logProbablyNotMatching() const { return m_logProbablyNotMatching; }

    /// Why the last parse gave no log; nothing while a parse runs, after a success and after
    /// `closeLog`. Set before `logParsingComplete` is emitted. The text is the sentence of the
    /// failure, or empty.
    const std::optional<Failure>& failure() const { return m_failure; }
    QString failureText() const { return m_failure ? m_failure->sentence : QString(); }

    /// Whether the interface regards a parse as running: it sets and clears this itself.
    bool isParsing() const { return m_isParsing; }
    void setIsParsing(bool isParsing);

    /// The decoded log, or null. Code that keeps a pointer into it keeps `log()` too.
    const LogFile* getLogFile() const { return m_log.get(); }
    std::shared_ptr<const LogFile> log() const { return m_log; }

    /// The two offsets, in milliseconds, and whether the log is tied to the video. The clock holds
    /// the same three, is one object for the parser's whole life and may be read by any thread.
    int getLogTimeOffset() const { return m_clock->logTimeOffset; }
    int getManualLogTimeOffset() const { return m_clock->manualLogTimeOffset; }
    void setManualLogTimeOffset(int offset);
    bool isSynced() const { return m_clock->synced; }
    std::shared_ptr<const FlightClock> clock() const { return m_clock; }

signals:
    /// Of another log when its decoding begins, so before it is known whether that can be read.
    void sourceChanged();
    /// A log has been decoded, tied to the video if it can be, and is there to be read.
    void sourceDataParsed();
    void flightNamingChanged();
    void manualLogTimeOffsetChanged(int offset);
    /// The arguments are those of `LogDecoder::Progress`.
    void logParsingProgress(int stage, int done, int total);
    /// The last signal of a parse, unless a later parse has replaced it; false if the log could not
    /// be read.
    void logParsingComplete(bool result);
    void isParsingChanged(bool isParsing);
    void failureChanged();

private:
    struct Parse;
    struct Outcome;

    static std::shared_ptr<Outcome> parseLogConcurrently(const std::shared_ptr<Parse>& parse);
    static void run(const std::shared_ptr<Parse>& parse);

    void overtake();
    bool isCurrent(const std::shared_ptr<Parse>& parse) const { return m_parse == parse; }
    void adopt(const Parse& parse, const Outcome& outcome);
    void begin(const std::shared_ptr<Parse>& parse);
    void publish(const std::shared_ptr<Parse>& parse, const Outcome& outcome);
    void dropLog();
    void setFailure(std::optional<Failure> failure);

    std::shared_ptr<FlightClock> m_clock = std::make_shared<FlightClock>();
    std::shared_ptr<std::atomic<int>> m_durationMs = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<const LogFile> m_log;
    std::shared_ptr<Parse> m_parse; ///< the parse that may still publish, or null
    std::vector<PoolTask> m_tasks;
    std::optional<Failure> m_failure;
    QTime m_duration;
    QString m_source;
    FlightNamingEvent m_flightNaming;
    int m_matchedLogDuration = 0;
    int m_thermalCameraVersion = -1;
    bool m_isParsing = false;
    bool m_logProbablyNotMatching = false;
};

} // namespace corv
