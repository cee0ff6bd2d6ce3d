#include "Cli/logReport.h"

#include "Log/printable.h"

#include <QDir>
#include <QJsonArray>
#include <algorithm>
#include <optional>

namespace corv::cli {
namespace {

QString text(const std::string& narrow)
{
    return QString::fromStdString(narrow);
}

QString shown(const std::string& narrow)
{
    return printable(text(narrow));
}

QJsonObject packetsJson(const LogDecodeCounters& counters)
{
    return {{QStringLiteral("total"), counters.total},
            {QStringLiteral("valid"), counters.valid},
            {QStringLiteral("wrongCrc"), counters.wrongCrc},
            {QStringLiteral("wrongSize"), counters.wrongSize},
            {QStringLiteral("wrongId"), counters.wrongId},
            {QStringLiteral("incompleteLast"), counters.incompleteLast}};
}

QJsonArray groupsJson(const LogFile& log)
{
    QJsonArray groups;
    for (const LogGroup& group : log.getGroups()) {
        QJsonArray vars;
        for (const LogVar& var : group.getVars()) {
            vars.append(QJsonObject{
                {QStringLiteral("name"), text(var.getName())},
                {QStringLiteral("type"), QLatin1String(LogVar::typeName(var.getType()))},
                {QStringLiteral("nb"), var.getNb()},
                {QStringLiteral("elementSize"), var.getElementSize()}});
        }
        groups.append(QJsonObject{{QStringLiteral("name"), text(group.getName())},
                                  {QStringLiteral("id"), group.getId()},
                                  {QStringLiteral("packets"), group.getNbPackets()},
                                  {QStringLiteral("packetSize"), group.getPacketSize()},
                                  {QStringLiteral("vars"), vars}});
    }
    return groups;
}

// An undefined naming still holds the names of the one before it; they are not its own.
QJsonObject namingJson(const FlightNamingEvent& naming)
{
    const FlightNamingEvent own = naming.undefined ? FlightNamingEvent() : naming;
    return {{QStringLiteral("undefined"), own.undefined},
            {QStringLiteral("missionName"), own.missionName},
            {QStringLiteral("flightName"), own.flightName},
            {QStringLiteral("flightNumber"), own.flightNumber}};
}

QString namingText(const FlightNamingEvent& naming)
{
    return naming.undefined ? QStringLiteral("undefined")
                            : QStringLiteral("mission \"%1\", flight \"%2\", number %3")
                                  .arg(printable(naming.missionName), printable(naming.flightName),
                                       QString::number(naming.flightNumber));
}

// A naming with the time of its own packet, which an undefined one does not keep.
struct TimedNaming
{
    FlightNamingEvent naming;
    quint32 timeMs = 0;
};

std::vector<TimedNaming> namingsOf(const LogSurvey& survey)
{
    std::vector<TimedNaming> namings;
    const LogGroup* group = survey.log->getGroup(std::string("mission_info"));
    const LogVar* times = group ? group->getVar("time") : nullptr;
    for (const FlightNamingEvent& event : survey.digest.namings) {
        TimedNaming timed{event, 0};
        if (times)
            times->getU32(0, static_cast<int>(namings.size()), &timed.timeMs);
        namings.push_back(timed);
    }
    return namings;
}

// A time that the log does not have is null.
QJsonValue timeJson(quint32 timeMs)
{
    return timeMs == 0 ? QJsonValue() : QJsonValue(qint64(timeMs));
}

QString recordingText(const RecEvent& event)
{
    const QString start = event.startTime == 0 ? QStringLiteral("at an unknown time")
                                               : QStringLiteral("%1 ms").arg(event.startTime);
    if (event.stopTime == 0)
        return QStringLiteral("recording from %1, a start without a stop\n").arg(start);
    return QStringLiteral("recording from %1 to %2 ms\n").arg(start).arg(event.stopTime);
}

QString countersText(const SurveyedLog& log)
{
    const LogDecodeCounters& counters = log.counters;
    return QStringLiteral("Log version %1, %2 packets: %3 valid, %4 with wrong checksum, "
                          "%5 with wrong size, %6 with wrong id%7\n")
        .arg(log.version)
        .arg(counters.total)
        .arg(counters.valid)
        .arg(counters.wrongCrc)
        .arg(counters.wrongSize)
        .arg(counters.wrongId)
        .arg(counters.incompleteLast ? QStringLiteral(", the last incomplete") : QString());
}

QString fieldText(const LogVar& var)
{
    const QString type = QLatin1String(LogVar::typeName(var.getType()));
    const QString typed = shown(var.getName()) + QLatin1Char(' ') + type;
    return var.getNb() == 1 ? typed : typed + QStringLiteral("[%1]").arg(var.getNb());
}

QString groupsText(const LogFile& log)
{
    QString table = QStringLiteral("%1 %2 %3 %4  fields\n")
                        .arg(QStringLiteral("group"), -28)
                        .arg(QStringLiteral("id"), 5)
                        .arg(QStringLiteral("packets"), 10)
                        .arg(QStringLiteral("bytes"), 8);
    for (const LogGroup& group : log.getGroups()) {
        QStringList fields;
        for (const LogVar& var : group.getVars())
            fields += fieldText(var);
        table += shown(group.getName()).leftJustified(28) +
                 QStringLiteral(" %1 %2 %3  ")
                     .arg(group.getId(), 5)
                     .arg(group.getNbPackets(), 10)
                     .arg(group.getPacketSize(), 8) +
                 fields.join(QStringLiteral(", ")) + QLatin1Char('\n');
    }
    return table;
}

QString durationText(quint32 ms)
{
    return QStringLiteral("%1:%2:%3.%4")
        .arg(ms / 3'600'000)
        .arg(ms / 60'000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(ms % 1000, 3, 10, QLatin1Char('0'));
}

} // namespace

QJsonObject failureJson(const QString& path, const Failure& failure)
{
    return {{QStringLiteral("file"), path}, {QStringLiteral("error"), failure.sentence}};
}

QJsonObject logJson(const SurveyedLog& log)
{
    QJsonArray recordings;
    for (const RecEvent& event : log.survey.digest.recordings) {
        recordings.append(QJsonObject{{QStringLiteral("startMs"), timeJson(event.startTime)},
                                      {QStringLiteral("stopMs"), timeJson(event.stopTime)}});
    }
    QJsonArray namings;
    for (const TimedNaming& timed : namingsOf(log.survey)) {
        QJsonObject naming = namingJson(timed.naming);
        naming.insert(QStringLiteral("timeMs"), qint64(timed.timeMs));
        namings.append(naming);
    }
    const std::optional<LogTimeSpan>& span = log.survey.span;
    return {{QStringLiteral("file"), log.path},
            {QStringLiteral("version"), log.version},
            {QStringLiteral("startMs"), span ? QJsonValue(qint64(span->startMs)) : QJsonValue()},
            {QStringLiteral("endMs"), span ? QJsonValue(qint64(span->endMs)) : QJsonValue()},
            {QStringLiteral("packets"), packetsJson(log.counters)},
            {QStringLiteral("groups"), groupsJson(*log.survey.log)},
            {QStringLiteral("recordings"), recordings},
            {QStringLiteral("namings"), namings},
            {QStringLiteral("thermalCamera"),
             LogDecoder::knownThermalCamera(log.survey.digest.thermalCameraHwVersion)}};
}

QString logText(const SurveyedLog& log, bool named)
{
    QString result;
    if (named)
        result += QStringLiteral("==> %1 <==\n").arg(printable(log.path));
    else
        result += printable(log.path) + QLatin1Char('\n');
    result += countersText(log);
    if (const std::optional<LogTimeSpan>& span = log.survey.span) {
        result += QStringLiteral("Log time from %1 ms to %2 ms (%3)\n")
                      .arg(span->startMs)
                      .arg(span->endMs)
                      .arg(durationText(span->endMs - span->startMs));
    }
    result += QLatin1Char('\n') + groupsText(*log.survey.log) + QLatin1Char('\n');
    for (const RecEvent& event : log.survey.digest.recordings)
        result += recordingText(event);
    for (const TimedNaming& timed : namingsOf(log.survey))
        result += QStringLiteral("named at %1 ms: ").arg(timed.timeMs) + namingText(timed.naming) +
                  QLatin1Char('\n');
    const int camera = LogDecoder::knownThermalCamera(log.survey.digest.thermalCameraHwVersion);
    result += camera < 0 ? QStringLiteral("no known thermal camera\n")
                         : QStringLiteral("thermal camera %1\n").arg(camera);
    return named ? result + QLatin1Char('\n') : result;
}

SyncedLog syncedLog(const OpenLog& open, int durationMs)
{
    SyncedLog synced;
    synced.match = open.decoder().syncLogToVideo(&open.log(), durationMs);
    synced.naming = open.decoder().findNamingForRecording(
        open.decoder().readFlightNamingEvents(&open.log()), synced.match.logTimeOffset, durationMs);
    return synced;
}

QJsonObject syncJson(const SyncedLog& synced)
{
    return {{QStringLiteral("found"), synced.match.found},
            {QStringLiteral("probablyNotMatching"), synced.match.probablyNotMatching},
            {QStringLiteral("videoDurationMs"), synced.match.videoDuration},
            {QStringLiteral("matchedDurationMs"), synced.match.matchedDuration},
            {QStringLiteral("logTimeOffsetMs"),
             qint64(static_cast<quint32>(synced.match.logTimeOffset))},
            {QStringLiteral("naming"), namingJson(synced.naming)}};
}

QString syncText(const SyncedLog& synced)
{
    return QStringLiteral("The video of %1 ms begins at %2 ms of the log; the recording has "
                          "%3 ms%4\nNaming: %5\n")
        .arg(synced.match.videoDuration)
        .arg(static_cast<quint32>(synced.match.logTimeOffset))
        .arg(synced.match.matchedDuration)
        .arg(synced.match.probablyNotMatching
                 ? QStringLiteral(" and probably belongs to another video")
                 : QString(),
             namingText(synced.naming));
}

} // namespace corv::cli
