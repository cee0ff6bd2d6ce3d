#include "Cli/Command.h"
#include "Log/LogDecoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace corv::cli {
namespace {

const QString jsonOption = QStringLiteral("json");
const QString durationOption = QStringLiteral("duration-ms");
constexpr int kFlushAtBytes = 1 << 20;

// No packet holds more elements than bytes; a description that promises more describes no table.
constexpr qint64 kMostColumns = 0xffff;

// A decoded log with the decoder that knows more of it than the model keeps.
class OpenLog
{
public:
    /// Decodes the file; false, with a message on standard error, when that fails.
    bool open(const QString& path)
    {
        const bool showProgress = isatty(STDERR_FILENO) == 1;
        const auto log = m_decoder.decode(path, [showProgress](int stage, int done, int total) {
            if (showProgress && stage == 2 && total > 0)
                std::fprintf(stderr, "\rdecoding %3d %%", int(qint64(done) * 100 / total));
        });
        if (showProgress)
            std::fputs("\r              \r", stderr);
        if (!log) {
            fail(log.failure().sentence);
            return false;
        }
        m_log = *log;
        return true;
    }

    const LogFile& log() const { return *m_log; }
    const LogDecoder& decoder() const { return m_decoder; }

private:
    const std::atomic<bool> m_abortFlag{false};
    LogDecoder m_decoder{&m_abortFlag};
    std::shared_ptr<const LogFile> m_log;
};

QString text(const std::string& narrow)
{
    return QString::fromStdString(narrow);
}

int knownThermalCamera(int hwVersion)
{
    return hwVersion == 30 || hwVersion == 35 ? hwVersion : -1;
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
            vars.append(QJsonObject{{QStringLiteral("name"), text(var.getName())},
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

QJsonObject namingJson(const FlightNamingEvent& naming)
{
    return {{QStringLiteral("undefined"), naming.undefined},
            {QStringLiteral("missionName"), naming.missionName},
            {QStringLiteral("flightName"), naming.flightName},
            {QStringLiteral("flightNumber"), naming.flightNumber}};
}

QByteArray infoJson(const OpenLog& open)
{
    QJsonArray recordings;
    for (const RecEvent& event : LogDecoder::readRecordingEvents(&open.log())) {
        recordings.append(QJsonObject{{QStringLiteral("startMs"), qint64(event.startTime)},
                                      {QStringLiteral("stopMs"), qint64(event.stopTime)}});
    }
    QJsonArray namings;
    for (const FlightNamingEvent& event : open.decoder().readFlightNamingEvents(&open.log())) {
        QJsonObject naming = namingJson(event);
        naming.insert(QStringLiteral("timeMs"), event.time);
        namings.append(naming);
    }
    const QJsonObject info{
        {QStringLiteral("version"), open.decoder().logVersion()},
        {QStringLiteral("packets"), packetsJson(open.decoder().counters())},
        {QStringLiteral("groups"), groupsJson(open.log())},
        {QStringLiteral("recordings"), recordings},
        {QStringLiteral("namings"), namings},
        {QStringLiteral("thermalCamera"),
         knownThermalCamera(open.decoder().findThermalCameraHwVersion(&open.log()))}};
    return QJsonDocument(info).toJson();
}

QString namingText(const FlightNamingEvent& naming)
{
    return naming.undefined ? QStringLiteral("undefined")
                            : QStringLiteral("mission \"%1\", flight \"%2\", number %3")
                                  .arg(naming.missionName, naming.flightName)
                                  .arg(naming.flightNumber);
}

QByteArray infoTable(const OpenLog& open)
{
    const LogDecodeCounters counters = open.decoder().counters();
    QString table =
        QStringLiteral("Log version %1, %2 packets: %3 valid, %4 with wrong checksum, "
                       "%5 with wrong size, %6 with wrong id%7\n\n")
            .arg(open.decoder().logVersion())
            .arg(counters.total)
            .arg(counters.valid)
            .arg(counters.wrongCrc)
            .arg(counters.wrongSize)
            .arg(counters.wrongId)
            .arg(counters.incompleteLast ? QStringLiteral(", the last incomplete") : QString());
    table += QStringLiteral("%1 %2 %3 %4  fields\n")
                 .arg(QStringLiteral("group"), -28)
                 .arg(QStringLiteral("id"), 5)
                 .arg(QStringLiteral("packets"), 10)
                 .arg(QStringLiteral("bytes"), 8);
    for (const LogGroup& group : open.log().getGroups()) {
        QStringList vars;
        for (const LogVar& var : group.getVars())
            vars += QStringLiteral("%1[%2]").arg(text(var.getName())).arg(var.getNb());
        table += QStringLiteral("%1 %2 %3 %4  ")
                     .arg(text(group.getName()), -28)
                     .arg(group.getId(), 5)
                     .arg(group.getNbPackets(), 10)
                     .arg(group.getPacketSize(), 8) +
                 vars.join(QLatin1Char(' ')) + QLatin1Char('\n');
    }
    table += QLatin1Char('\n');
    for (const RecEvent& event : LogDecoder::readRecordingEvents(&open.log())) {
        table += QStringLiteral("recording from %1 ms to %2 ms\n")
                     .arg(event.startTime)
                     .arg(event.stopTime);
    }
    for (const FlightNamingEvent& event : open.decoder().readFlightNamingEvents(&open.log()))
        table += QStringLiteral("named at %1 ms: ").arg(event.time) + namingText(event) +
                 QLatin1Char('\n');
    const int camera = knownThermalCamera(open.decoder().findThermalCameraHwVersion(&open.log()));
    table += camera < 0 ? QStringLiteral("no known thermal camera\n")
                        : QStringLiteral("thermal camera %1\n").arg(camera);
    return table.toUtf8();
}

ExitStatus logInfo(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    if (arguments.size() != 1)
        return WrongUsage;
    OpenLog open;
    if (!open.open(arguments[0]))
        return Failed;
    return writeOut(line.isSet(jsonOption) ? infoJson(open) : infoTable(open));
}

template <typename T>
void appendNumber(QByteArray* line, const unsigned char* from)
{
    T value;
    std::memcpy(&value, from, sizeof(value));
    char digits[32];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof(digits), value);
    line->append(digits, static_cast<int>(end.ptr - digits));
}

void appendElement(QByteArray* line, int type, const unsigned char* from)
{
    switch (type) {
    case LogVar::Int32:
        return appendNumber<qint32>(line, from);
    case LogVar::Uint32:
        return appendNumber<quint32>(line, from);
    case LogVar::Int16:
        return appendNumber<qint16>(line, from);
    case LogVar::Uint16:
        return appendNumber<quint16>(line, from);
    case LogVar::Int8:
        return appendNumber<qint8>(line, from);
    case LogVar::Float:
        return appendNumber<float>(line, from);
    case LogVar::Double:
        return appendNumber<double>(line, from);
    default:
        return appendNumber<quint8>(line, from);
    }
}

// A column of the table: where its first row lies, and how to read it.
struct CsvColumn
{
    QByteArray title;
    const unsigned char* rows = nullptr;
    int elementSize = 0;
    int type = 0;
};

QByteArray quoted(QByteArray field)
{
    if (field.contains(',') || field.contains('"') || field.contains('\n') || field.contains('\r'))
        field = '"' + field.replace("\"", "\"\"") + '"';
    return field;
}

std::vector<CsvColumn> csvColumns(const OpenLog& open, size_t groupIndex)
{
    std::vector<CsvColumn> columns;
    const auto& vars = open.log().getGroups()[groupIndex].getVars();
    for (size_t i = 0; i < vars.size(); ++i) {
        const QByteArray name = QByteArray::fromStdString(vars[i].getName());
        for (int column = 0; column < vars[i].getNb(); ++column) {
            void* rows = nullptr;
            vars[i].getColumn(column, &rows);
            const QByteArray title =
                vars[i].getNb() == 1 ? name : name + '[' + QByteArray::number(column) + ']';
            columns.push_back({quoted(title), static_cast<const unsigned char*>(rows),
                               vars[i].getElementSize(), vars[i].getType()});
        }
    }
    return columns;
}

ExitStatus writeCsv(const std::vector<CsvColumn>& columns, int rows)
{
    QByteArray lines;
    for (const CsvColumn& column : columns)
        lines += column.title + ',';
    for (int row = 0; row <= rows; ++row) {
        // Each line is begun with its separators behind the fields; the last one ends it.
        if (columns.empty())
            lines += '\n';
        else
            lines[lines.size() - 1] = '\n';
        if (lines.size() >= kFlushAtBytes || row == rows) {
            if (writeOut(lines) != Done)
                return Failed;
            lines.clear();
        }
        for (const CsvColumn& column : columns) {
            if (row == rows)
                break;
            appendElement(&lines, column.type,
                          column.rows +
                              static_cast<size_t>(row) * static_cast<size_t>(column.elementSize));
            lines += ',';
        }
    }
    return Done;
}

ExitStatus logCsv(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    if (arguments.size() != 2)
        return WrongUsage;
    OpenLog open;
    if (!open.open(arguments[0]))
        return Failed;
    const LogGroup* group = open.log().getGroup(arguments[1].toStdString());
    if (!group)
        return fail(QStringLiteral("no group \"%1\" in %2").arg(arguments[1], arguments[0]));
    qint64 columns = 0;
    for (const LogVar& var : group->getVars())
        columns += std::max(var.getNb(), 0);
    if (columns > kMostColumns)
        return fail(QStringLiteral("group \"%1\" has too many columns").arg(arguments[1]));
    const auto index = static_cast<size_t>(group - open.log().getGroups().data());
    return writeCsv(csvColumns(open, index), group->getNbPackets());
}

ExitStatus logRaw(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    if (arguments.size() != 3)
        return WrongUsage;
    OpenLog open;
    if (!open.open(arguments[0]))
        return Failed;
    const LogGroup* group = open.log().getGroup(arguments[1].toStdString());
    const LogVar* var = group ? group->getVar(arguments[2].toStdString()) : nullptr;
    if (!var)
        return fail(QStringLiteral("no field \"%1\" of a group \"%2\" in %3")
                        .arg(arguments[2], arguments[1], arguments[0]));
    const size_t size = var->getDataSize();
    if (size > 0 && std::fwrite(var->getData(), 1, size, stdout) != size)
        return fail(QStringLiteral("cannot write to standard output"));
    return writeOut({});
}

struct Synced
{
    LogSyncResult match;
    FlightNamingEvent naming;
};

QByteArray syncJson(const Synced& synced)
{
    const QJsonObject result{
        {QStringLiteral("found"), synced.match.found},
        {QStringLiteral("probablyNotMatching"), synced.match.probablyNotMatching},
        {QStringLiteral("videoDuration"), synced.match.videoDuration},
        {QStringLiteral("matchedDuration"), synced.match.matchedDuration},
        {QStringLiteral("logTimeOffset"), synced.match.logTimeOffset},
        {QStringLiteral("naming"), namingJson(synced.naming)}};
    return QJsonDocument(result).toJson();
}

QByteArray syncText(const Synced& synced)
{
    QString lines;
    if (synced.match.found) {
        lines = QStringLiteral("The video of %1 ms begins at %2 ms of the log; the recording has "
                               "%3 ms%4\n")
                    .arg(synced.match.videoDuration)
                    .arg(synced.match.logTimeOffset)
                    .arg(synced.match.matchedDuration)
                    .arg(synced.match.probablyNotMatching
                             ? QStringLiteral(" and probably belongs to another video")
                             : QString());
    } else {
        lines = QStringLiteral("No recording in the log to match the video with\n");
    }
    return (lines + QStringLiteral("Naming: ") + namingText(synced.naming) + QLatin1Char('\n'))
        .toUtf8();
}

ExitStatus sync(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    int durationMs = 0;
    if (arguments.size() != 1 || !line.isSet(durationOption) ||
        !readNumber(line, durationOption, 0, &durationMs))
        return WrongUsage;
    OpenLog open;
    if (!open.open(arguments[0]))
        return Failed;
    Synced synced;
    synced.match = open.decoder().syncLogToVideo(&open.log(), durationMs);
    const int begin = synced.match.logTimeOffset;
    const int end =
        static_cast<int>(static_cast<quint32>(begin) + static_cast<quint32>(durationMs));
    synced.naming = open.decoder().findNamingForFlight(
        open.decoder().readFlightNamingEvents(&open.log()), begin, end);
    return writeOut(line.isSet(jsonOption) ? syncJson(synced) : syncText(synced));
}

} // namespace

std::vector<Command> logCommands()
{
    const QCommandLineOption json = flag(jsonOption, QStringLiteral("writes JSON"));
    return {
        {QStringLiteral("log-info"),
         QStringLiteral("FILE [--json]"),
         QStringLiteral("what a flight log holds"),
         {json},
         logInfo},
        {QStringLiteral("log-csv"),
         QStringLiteral("FILE GROUP"),
         QStringLiteral("the packets of a group as a table"),
         {},
         logCsv},
        {QStringLiteral("log-raw"),
         QStringLiteral("FILE GROUP VAR"),
         QStringLiteral("the values of a field as they are in memory"),
         {},
         logRaw},
        {QStringLiteral("sync"),
         QStringLiteral("FILE --duration-ms N [--json]"),
         QStringLiteral("where a video of N ms sits on a log"),
         {valued(durationOption, QStringLiteral("N"), QStringLiteral("length of the video")), json},
         sync}};
}

} // namespace corv::cli
