#include "Cli/Command.h"
#include "Cli/OpenLog.h"
#include "Cli/logReport.h"
#include "Log/LogTable.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
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

// The logs that the arguments name: files, and all logs in folders and the folders below them.
struct LogArguments
{
    QStringList files;
    bool isOneFile = false;
};

LogArguments logsOf(const QStringList& arguments)
{
    LogArguments logs;
    for (const QString& argument : arguments) {
        if (!QFileInfo(argument).isDir()) {
            logs.files += argument;
            continue;
        }
        QStringList found;
        // Those that cannot be read, too: that is said of each.
        QDirIterator each(argument, {QStringLiteral("*.log")}, QDir::Files,
                          QDirIterator::Subdirectories);
        while (each.hasNext())
            found += each.next();
        found.sort();
        logs.files += found;
    }
    logs.isOneFile = arguments.size() == 1 && !QFileInfo(arguments[0]).isDir();
    return logs;
}

// Prints what each log holds. A log that cannot be read stops no other.
ExitStatus logInfo(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    const bool json = line.isSet(jsonOption);
    if (arguments.isEmpty())
        return WrongUsage;
    const LogArguments logs = logsOf(arguments);
    if (logs.files.isEmpty())
        return fail(QStringLiteral("There is no log in \"%1\".").arg(arguments.join("\", \"")));
    QJsonArray all;
    int failed = 0;
    for (const QString& path : logs.files) {
        const Result<SurveyedLog> log = surveyLog(path);
        if (!log) {
            ++failed;
            fail(log.failure().sentence);
            all.append(failureJson(path, log.failure()));
        } else if (json) {
            all.append(logJson(*log));
        } else if (writeOut(logText(*log, !logs.isOneFile).toUtf8()) != Done) {
            return Failed;
        }
    }
    const bool noneRead = failed == logs.files.size();
    if (json && !(logs.isOneFile && noneRead)) {
        const QJsonDocument document =
            logs.isOneFile ? QJsonDocument(all[0].toObject()) : QJsonDocument(all);
        if (writeOut(printedJson(document)) != Done)
            return Failed;
    }
    return noneRead ? Failed : failed > 0 ? PartlyDone : Done;
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

// The columns and the rate that the line asks for; false for what is neither.
bool readTableOptions(const QCommandLineParser& line, LogTableOptions* options)
{
    options->textAsText = !line.isSet(bytesOption);
    options->columns = line.value(columnsOption).split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (line.isSet(columnsOption) && options->columns.isEmpty())
        return false;
    bool isNumber = true;
    if (line.isSet(rateOption))
        options->rateHz = line.value(rateOption).toDouble(&isNumber);
    return isNumber && (!line.isSet(rateOption) || options->rateHz > 0);
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
        !readNumber(line, durationOption, 0, &durationMs) || durationMs < 0)
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
