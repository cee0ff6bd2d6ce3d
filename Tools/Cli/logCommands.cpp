#include "Cli/Command.h"
#include "Cli/OpenLog.h"
#include "Cli/logFiles.h"
#include "Cli/logReport.h"
#include "Log/LogTable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cstdio>
#include <memory>

namespace corv::cli {
namespace {

const QString jsonOption = QStringLiteral("json");
const QString columnsOption = QStringLiteral("columns");
const QString rateOption = QStringLiteral("rate");
const QString bytesOption = QStringLiteral("bytes");
const QString durationOption = QStringLiteral("duration-ms");

// Prints what each log holds. A log or a folder that cannot be read stops no other.
ExitStatus logInfo(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    const bool json = line.isSet(jsonOption);
    if (arguments.isEmpty())
        return WrongUsage;
    const LogFiles logs = logFilesOf(arguments);
    QJsonArray all;
    int read = 0;
    int failed = 0;
    const auto addFailure = [&](const QString& path, const Failure& failure) {
        ++failed;
        fail(failure.sentence);
        all.append(failureJson(path, failure));
    };
    for (const auto& [folder, failure] : logs.unreadFolders)
        addFailure(folder, failure);
    if (logs.paths.isEmpty() && failed == 0)
        return fail(QStringLiteral("There is no log in \"%1\".").arg(arguments.join("\", \"")));
    for (const QString& path : logs.paths) {
        const Result<SurveyedLog> log = surveyLog(path);
        if (!log) {
            addFailure(path, log.failure());
            continue;
        }
        ++read;
        if (json)
            all.append(logJson(*log));
        else if (writeOut(logText(*log, !logs.isOneFile).toUtf8()) != Done)
            return Failed;
    }
    if (json && !(logs.isOneFile && read == 0)) {
        const QJsonDocument document =
            logs.isOneFile ? QJsonDocument(all[0].toObject()) : QJsonDocument(all);
        if (writeOut(printedJson(document)) != Done)
            return Failed;
    }
    return failed == 0 ? Done : read == 0 ? Failed : PartlyDone;
}

// Decodes the log and finds its group; null, and what is wrong is printed, if there is none.
const LogGroup* openGroup(OpenLog* open, const QString& path, const QString& name)
{
    if (const Status status = open->open(path); !status) {
        fail(status.failure().sentence);
        return nullptr;
    }
    const LogGroup* group = findGroup(open->log(), name);
    if (!group)
        fail(QStringLiteral("The log \"%1\" has no group \"%2\".").arg(path, name));
    return group;
}

bool writeBytes(const char* bytes, size_t size)
{
    return std::fwrite(bytes, 1, size, stdout) == size;
}

// The columns and the rate that the line asks for; false, and it is reported, for what is neither.
bool readTableOptions(const QCommandLineParser& line, LogTableOptions* options)
{
    options->textAsText = !line.isSet(bytesOption);
    options->columns = line.value(columnsOption).split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (line.isSet(columnsOption) && options->columns.isEmpty()) {
        wrongUsage(
            QStringLiteral("--columns: \"%1\" names no field.").arg(line.value(columnsOption)));
        return false;
    }
    return readRate(line, rateOption, &options->rateHz);
}

ExitStatus logCsv(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    LogTableOptions options;
    if (arguments.size() != 2 || !readTableOptions(line, &options))
        return WrongUsage;
    OpenLog open;
    const LogGroup* group = openGroup(&open, arguments[0], arguments[1]);
    if (!group)
        return Failed;
    const Result<LogTable> table = LogTable::make(open.shared(), *group, options);
    if (!table)
        return fail(table.failure().sentence);
    if (!table->write(writeBytes))
        return fail(QStringLiteral("Cannot write to standard output."));
    return writeOut({});
}

ExitStatus logRaw(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    if (arguments.size() != 3)
        return WrongUsage;
    OpenLog open;
    const LogGroup* group = openGroup(&open, arguments[0], arguments[1]);
    if (!group)
        return Failed;
    const LogVar* var = group->getVar(arguments[2].toStdString());
    if (!var) {
        return fail(QStringLiteral("The group \"%1\" of the log \"%2\" has no field \"%3\".")
                        .arg(arguments[1], arguments[0], arguments[2]));
    }
    const size_t size = var->getDataSize();
    if (size > 0 && !writeBytes(static_cast<const char*>(var->getData()), size))
        return fail(QStringLiteral("Cannot write to standard output."));
    return writeOut({});
}

ExitStatus sync(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    const bool json = line.isSet(jsonOption);
    int durationMs = 0;
    if (arguments.size() != 1 || !line.isSet(durationOption) ||
        !readNumber(line, durationOption, 0, 0, &durationMs))
        return WrongUsage;
    OpenLog open;
    if (const Status status = open.open(arguments[0]); !status)
        return fail(status.failure().sentence);
    const SyncedLog synced = syncedLog(open, durationMs);
    const QByteArray shown =
        json ? printedJson(QJsonDocument(syncJson(synced))) : syncText(synced).toUtf8();
    if ((json || synced.match.found) && writeOut(shown) != Done)
        return Failed;
    if (!synced.match.found || synced.match.probablyNotMatching)
        return fail(QStringLiteral("No recording of the log \"%1\" fits a video of %2 ms.")
                        .arg(arguments[0], QString::number(durationMs)));
    return Done;
}

std::vector<Command> commands()
{
    const QCommandLineOption json = flag(jsonOption, QStringLiteral("writes JSON"));
    return {
        {QStringLiteral("log-info"),
         QStringLiteral("FILE|FOLDER... [--json]"),
         QStringLiteral("what flight logs hold"),
         {json},
         logInfo},
        {QStringLiteral("log-csv"),
         QStringLiteral("FILE GROUP [--columns A,B,...] [--rate HZ] [--bytes]"),
         QStringLiteral("the packets of a group as a table"),
         {valued(columnsOption, QStringLiteral("A,B,..."),
                 QStringLiteral("fields, or elements as angles[2], in this order")),
          valued(rateOption, QStringLiteral("HZ"), QStringLiteral("most lines for each second")),
          flag(bytesOption, QStringLiteral("writes the bytes of texts"))},
         logCsv},
        {QStringLiteral("log-raw"),
         QStringLiteral("FILE GROUP VAR"),
         QStringLiteral("the values of a field as they are in memory"),
         {},
         logRaw},
        {QStringLiteral("sync"),
         QStringLiteral("FILE --duration-ms N [--json]"),
         QStringLiteral("where a video of N ms is on the clock of a log"),
         {valued(durationOption, QStringLiteral("N"), QStringLiteral("length of the video")), json},
         sync}};
}

const CommandSet registered(10, commands);

} // namespace
} // namespace corv::cli
