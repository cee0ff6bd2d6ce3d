#include "Cli/Command.h"
#include "Cli/folders.h"
#include "Discovery/FlightFilesMatcher.h"
#include "Discovery/flightSearch.h"
#include "Log/printable.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <unistd.h>

namespace corv::cli {
namespace {

const QString cardOption = QStringLiteral("card");
const QString quickOption = QStringLiteral("quick");
const QString jsonOption = QStringLiteral("json");

// In the order of the search result.
const char* const kKeys[] = {"videoFile",      "videoFilename",     "logFile",     "logFilename",
                             "matchFound",     "namingDefined",     "missionName", "flightName",
                             "flightNumber",   "videoDurationMs",   "evidence",    "doubtful",
                             "flightLengthMs", "recordingLengthMs", "checked"};

// The rows of the search. Only "videoDuration" has no unit in its name.
QVariantList rowsToPrint(const QVariantList& found)
{
    QVariantList rows;
    for (const QVariant& entry : found) {
        QVariantMap row = entry.toMap();
        row.insert(QStringLiteral("videoDurationMs"), row.take(QStringLiteral("videoDuration")));
        rows.append(row);
    }
    return rows;
}

// A name may hold anything; a field of the table ends at a tab, a row at a line feed.
QString field(QString text)
{
    for (QChar& character : text)
        if (character < QLatin1Char(' '))
            character = QLatin1Char(' ');
    return printable(text);
}

QByteArray table(const QVariantList& rows)
{
    QStringList line;
    for (const char* key : kKeys)
        line.append(QLatin1String(key));
    QString text = line.join(QLatin1Char('\t')) + QLatin1Char('\n');
    for (const QVariant& entry : rows) {
        const QVariantMap row = entry.toMap();
        line.clear();
        for (const char* key : kKeys)
            line.append(field(row[QLatin1String(key)].toString()));
        text += line.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return text.toUtf8();
}

void showProgress(int file, int files, int, int, int)
{
    std::fprintf(stderr, "\rreading log %d/%d", file, files);
}

bool isSettled(const FlightMatchData& match)
{
    return match.matchFound && !match.doubtful;
}

ExitStatus match(const QCommandLineParser& line)
{
    const bool json = line.isSet(jsonOption);
    const bool quickMode = line.isSet(quickOption);
    const bool videoFromCard = line.isSet(cardOption);
    const QStringList arguments = line.positionalArguments();
    if (arguments.size() != 2)
        return WrongUsage;
    for (const QString& folder : arguments)
        if (const auto problem = folderProblem(folder))
            return fail(*problem);
    const SearchLocations locations{arguments[0], arguments[1], videoFromCard, videoFromCard};
    const FlightFiles files = gatherFlightFiles(locations);
    QList<FlightMatchData> matches;
    QStringList lostFiles;
    if (!files.videos.isEmpty() && !files.logs.isEmpty()) {
        const bool onTerminal = isatty(STDERR_FILENO) == 1;
        const std::atomic<bool> abortFlag{false};
        FlightFilesMatcher matcher(&abortFlag);
        matches = matcher.matchFlightFiles(files.videos, files.logs, quickMode,
                                           onTerminal ? FlightFilesMatcher::Progress(showProgress)
                                                      : nullptr);
        lostFiles = matcher.lostFiles();
        if (onTerminal)
            std::fputs("\r                              \r", stderr);
    }
    const QStringList remarks = searchRemarks(locations, files, lostFiles);
    for (const QString& remark : remarks)
        fail(remark);
    if (files.videos.isEmpty())
        fail(QStringLiteral("There is no video in \"%1\".").arg(arguments[0]));
    if (files.logs.isEmpty())
        fail(QStringLiteral("There is no log in \"%1\".").arg(arguments[1]));
    const QVariantList rows = rowsToPrint(matchingRows(matches));
    const ExitStatus written = writeOut(
        json ? printedJson(QJsonDocument(QJsonArray::fromVariantList(rows))) : table(rows));
    if (written != Done)
        return written;
    const bool allSettled = matches.size() == files.videos.size() && remarks.isEmpty() &&
                            std::all_of(matches.begin(), matches.end(), isSettled);
    return allSettled ? Done : PartlyDone;
}

std::vector<Command> commands()
{
    return {{QStringLiteral("match"),
             QStringLiteral("VIDEO_DIR LOG_DIR [--card] [--quick] [--json]"),
             QStringLiteral("which log belongs to which video"),
             {flag(cardOption, QStringLiteral("VIDEO_DIR is the root of a drone's card")),
              flag(quickOption, QStringLiteral("pairs by time alone, without reading the logs")),
              flag(jsonOption, QStringLiteral("writes JSON"))},
             match}};
}

const CommandSet registered(20, commands);

} // namespace
} // namespace corv::cli
