#include "Batch/BatchRun.h"
#include "Batch/FlightJob.h"
#include "Batch/FlightRun.h"
#include "Batch/flightList.h"
#include "Cli/Command.h"
#include "Cli/ReviewProgress.h"
#include "Cli/folders.h"
#include "Cli/insets.h"
#include "Cli/memoryLimit.h"
#include "Cli/thermalClock.h"
#include "Log/printable.h"
#include "Project/ProjectFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStorageInfo>
#include <QThread>
#include <atomic>
#include <cstdio>

namespace corv::cli {
namespace {

const QString outOption = QStringLiteral("out");
const QString listOption = QStringLiteral("list");
const QString jsonOption = QStringLiteral("json");
const QString jobOption = QStringLiteral("job");
const QString gatherOption = QStringLiteral("gather");
const QString copyOption = QStringLiteral("copy");
const QString thermalOption = QStringLiteral("thermal");
const QString videoOption = QStringLiteral("video");
const QString columnsOption = QStringLiteral("columns");
const QString rateOption = QStringLiteral("rate");
const QString atOnceOption = QStringLiteral("at-once");

// A job is a few paths: a larger file is not a job.
constexpr qint64 largestJobBytes = qint64{1024} * 1024;

FlightOptions flightOptions(const QCommandLineParser& line)
{
    FlightOptions options;
    options.copiesMedia = line.isSet(copyOption);
    options.showsThermal = line.isSet(thermalOption);
    options.thermalAsOnScreen = line.value(thermalClockName) == QLatin1String("screen");
    options.writesVideo = line.isSet(videoOption);
    options.tables = line.values(columnsOption);
    options.tableRateHz = line.value(rateOption).toDouble();
    options.showsInstruments = line.isSet(instrumentsOption);
    options.showsThermalBar = line.isSet(thermalBarOption);
    options.imperialUnits = line.isSet(imperialOption);
    return options;
}

// The options of this line for the process of one flight.
QStringList wordsOf(const QCommandLineParser& line)
{
    QStringList words;
    for (const QString& option : {copyOption, thermalOption, videoOption, instrumentsOption,
                                  imperialOption, thermalBarOption})
        if (line.isSet(option))
            words << QStringLiteral("--") + option;
    for (const QString& option : {thermalClockName, columnsOption, rateOption})
        for (const QString& value : line.values(option))
            words << QStringLiteral("--") + option << value;
    return words;
}

ExitStatus statusOf(int failed, int partial, int done)
{
    if (failed == 0 && partial == 0)
        return Done;
    return done == 0 && partial == 0 ? Failed : PartlyDone;
}

Result<QByteArray> readJobText(const QString& path)
{
    QFile file(path);
    const bool isStandardInput = path == QLatin1String("-");
    if (const auto problem = fileProblem(QStringLiteral("The job"), path);
        problem && !isStandardInput)
        return *problem;
    if (!(isStandardInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly)))
        return Failure{
            Failure::Kind::unreadable,
            QStringLiteral("The job %1 cannot be read: %2.").arg(path, file.errorString())};
    return file.read(largestJobBytes);
}

ExitStatus runJob(const QCommandLineParser& line)
{
    const Result<QByteArray> text = readJobText(line.value(jobOption));
    if (!text)
        return fail(text.failure().sentence);
    const Result<FlightJob> job = FlightJob::fromJson(*text);
    if (!job)
        return fail(job.failure().sentence);
    ReviewProgress progress({*job}, line.isSet(videoOption));
    FlightRun run(*job, flightOptions(line), line.value(outOption),
                  [&progress](const QJsonObject& event) { progress.show(event); });
    const FlightRun::Summary summary = run.run();
    if (summary.failures.isEmpty())
        return Done;
    return summary.doneSteps > 0 ? PartlyDone : Failed;
}

ExitStatus listJobs(const FlightList& list, bool json)
{
    QByteArray text;
    for (const FlightJob& job : list.jobs) {
        if (json)
            text += printedJson(QJsonDocument(job.toJson()), QJsonDocument::Compact);
        else
            text += QStringList{printable(job.folder),
                                printable(QFileInfo(job.videos.first()).fileName()),
                                job.log.isEmpty() ? QStringLiteral("-")
                                                  : printable(QFileInfo(job.log).fileName())}
                        .join(QLatin1Char('\t'))
                        .toUtf8();
        text += '\n';
    }
    return writeOut(text);
}

// Why a flight may have no result. A full disk takes none.
Failure noResult(const QCommandLineParser& line)
{
    constexpr qint64 roomOfAResult = qint64{64} * 1024;
    const QString out = line.value(outOption);
    const QStorageInfo disk(out);
    if (disk.isValid() && disk.bytesAvailable() < roomOfAResult)
        return {Failure::Kind::noRoom,
                QStringLiteral("The disk of %1 is full: this flight has no result.").arg(out)};
    return {Failure::Kind::other,
            QStringLiteral("No machine has worked on this flight, or its work was ended before it "
                           "was done.")};
}

/// Reads the results of jobs that ran elsewhere: one line a flight, as on one machine.
ExitStatus gather(const QCommandLineParser& line)
{
    QFile file(line.value(gatherOption));
    if (!file.open(QIODevice::ReadOnly))
        return fail(fileProblem(QStringLiteral("The list"), file.fileName())
                        .value_or(Failure{Failure::Kind::unreadable,
                                          QStringLiteral("The list %1 cannot be read: %2.")
                                              .arg(file.fileName(), file.errorString())}));
    QList<FlightJob> jobs;
    while (!file.atEnd()) {
        const QByteArray text = file.readLine(largestJobBytes).trimmed();
        if (text.isEmpty())
            continue;
        const Result<FlightJob> job = FlightJob::fromJson(text);
        if (!job)
            return fail(job.failure().sentence);
        jobs << *job;
    }
    ReviewProgress progress(jobs, false);
    int counts[3] = {0, 0, 0}; // failed, partial, done
    for (const FlightJob& job : qAsConst(jobs)) {
        QJsonObject event = FlightRun::lastResult(line.value(outOption), job);
        if (event.isEmpty())
            event = finishedEvent(job.folder, {{QStringLiteral("start"), noResult(line)}});
        progress.show(event);
        const QString status = event.value(QLatin1String("status")).toString();
        ++counts[status == QLatin1String("done") ? 2 : status == QLatin1String("partial") ? 1 : 0];
    }
    return statusOf(counts[0], counts[1], counts[2]);
}

ExitStatus runAll(const QCommandLineParser& line, const FlightList& list, int atOnce)
{
    const QString program = QCoreApplication::applicationFilePath();
    const BatchRun::Command command{
        program,
        QStringList{QStringLiteral("review"), QStringLiteral("--out"), line.value(outOption)} +
            wordsOf(line) + QStringList{QStringLiteral("--job"), QStringLiteral("-")}};
    BatchRun run(command, list.jobs, atOnce);
    ReviewProgress progress(list.jobs, line.isSet(videoOption));
    QObject::connect(&run, &BatchRun::reported,
                     [&progress](const QJsonObject& event) { progress.show(event); });
    QEventLoop loop;
    QObject::connect(&run, &BatchRun::finished, &loop, &QEventLoop::quit);
    run.start();
    loop.exec();
    return statusOf(run.count(BatchRun::Outcome::failed), run.count(BatchRun::Outcome::partial),
                    run.count(BatchRun::Outcome::done));
}

ExitStatus review(const QCommandLineParser& line)
{
    const QStringList locations = line.positionalArguments();
    const bool hasLocations = !locations.isEmpty();
    int atOnce = 0;
    double rateHz = 0;
    bool asOnScreen = false;
    if (!line.isSet(outOption) ||
        !readNumber(line, atOnceOption, QThread::idealThreadCount(), 1, &atOnce) ||
        !readRate(line, rateOption, &rateHz) || !readThermalClock(line, &asOnScreen))
        return WrongUsage;
    for (const QString& option : {jobOption, gatherOption})
        if (line.isSet(option) && hasLocations)
            return wrongUsage(QStringLiteral("--%1 takes no locations.").arg(option));
    for (const QString& table : line.values(columnsOption))
        if (table.section(QLatin1Char(':'), 0, 0).isEmpty())
            return wrongUsage(QStringLiteral("--columns: \"%1\" names no group.").arg(table));
    if (line.isSet(gatherOption))
        return gather(line);
    if (const Status memory = enoughMemoryForVideos(); !memory && !line.isSet(listOption))
        return fail(memory.failure());
    if (line.isSet(jobOption))
        return runJob(line);
    if (!hasLocations)
        return WrongUsage;
    for (const QString& location : locations)
        if (const auto problem = folderProblem(location))
            return fail(*problem);
    const std::atomic<bool> abortFlag{false};
    const FlightList list = listFlights(locations, line.value(outOption), abortFlag);
    for (const QString& sentence : list.leftOut + list.unusedLogs)
        fail(sentence);
    if (list.jobs.isEmpty())
        return fail(QStringLiteral("no video was found"));
    const auto withSearch = [&list](ExitStatus status) {
        return status == Done && !list.leftOut.isEmpty() ? PartlyDone : status;
    };
    if (line.isSet(listOption))
        return withSearch(listJobs(list, line.isSet(jsonOption)));
    if (const Status made = makeFolder(line.value(outOption)); !made)
        return fail(made.failure());
    return withSearch(runAll(line, list, atOnce));
}

std::vector<Command> commands()
{
    return {
        {QStringLiteral("review"),
         QStringLiteral("(LOCATION... [--list [--json]] | --job FILE | --gather FILE) --out DIR "
                        "[--copy] [--thermal] [--thermal-clock file|screen] [--video] "
                        "[--instruments] [--imperial] [--thermal-bar] "
                        "[--columns GROUP:A,B,...]... [--rate HZ] "
                        "[--at-once N]"),
         QStringLiteral("the whole review of cards, one folder a flight"),
         QList<QCommandLineOption>{
             valued(outOption, QStringLiteral("DIR"), QStringLiteral("where the folders go")),
             flag(listOption, QStringLiteral("prints the flights and works on none")),
             flag(jsonOption, QStringLiteral("with --list: one job a line, as JSON")),
             valued(jobOption, QStringLiteral("FILE"),
                    QStringLiteral("works on one flight of such a list; - is standard input")),
             valued(gatherOption, QStringLiteral("FILE"),
                    QStringLiteral("prints how the flights of such a list ended")),
             flag(copyOption, QStringLiteral("copies video and log beside the project")),
             flag(thermalOption, QStringLiteral("shows the thermal overlay")), thermalClockOption(),
             flag(videoOption, QStringLiteral("writes the video as shown, too")),
             valued(columnsOption, QStringLiteral("GROUP:A,B,..."),
                    QStringLiteral("a table of these fields of the log, of all of them for GROUP "
                                   "alone; may be given again")),
             valued(rateOption, QStringLiteral("HZ"),
                    QStringLiteral("most lines of such a table for each second")),
             valued(atOnceOption, QStringLiteral("N"),
                    QStringLiteral("flights at once; as many as there are processors"))} +
             insetOptions(),
         review}};
}

const CommandSet registered(70, commands);

} // namespace
} // namespace corv::cli
