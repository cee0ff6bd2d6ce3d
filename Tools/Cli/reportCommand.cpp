#include "Cli/Command.h"
#include "Cli/insets.h"
#include "Cli/thermalClock.h"
#include "Project/ReportWriter.h"
#include "Review/OpenFlight.h"
#include "Threads/pool.h"
#include "Threads/post.h"

#include <QEventLoop>
#include <cstdio>
#include <unistd.h>

namespace corv::cli {
namespace {

void showProgress(int done, int total)
{
    std::fprintf(stderr, "\rwriting page %d of %d%s", done, total, done == total ? "\n" : "");
}

/// The writer waits for each frame, so it has a thread of its own while this one keeps the event
/// loop going.
Status writeReport(OpenFlight& flight, const QString& path)
{
    const std::atomic<bool> abortFlag{false};
    const QVariantList pois = flight.review().allPois();
    const QVariantMap naming = flight.logParser().flightNaming();
    VideoPlayer* const player = &flight.player();
    const bool isOnTerminal = isatty(STDERR_FILENO) == 1;
    Status status;
    QEventLoop loop;
    const PoolTask task = runOnPool([&, pois, naming, player, isOnTerminal] {
        ReportWriter writer(&abortFlag);
        writer.writeWordReport(path, player, pois, naming,
                               isOnTerminal ? ReportWriter::Progress(showProgress)
                                            : ReportWriter::Progress());
        post(&loop, [&status, &loop, result = writer.result()] {
            status = result;
            loop.quit();
        });
    });
    loop.exec();
    task.waitForDone();
    return status;
}

ExitStatus report(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    const QString path = line.value(QStringLiteral("out"));
    if (path.isEmpty() || !OpenFlight::isFlight(arguments))
        return WrongUsage;
    if (!path.endsWith(QLatin1String(".docx"), Qt::CaseInsensitive))
        return wrongUsage(QStringLiteral("--out: \"%1\" does not end in .docx.").arg(path));
    OpenFlight flight;
    if (!takeThermalClock(line, flight.player()))
        return WrongUsage;
    const Status opened = flight.open(arguments, path);
    if (!opened)
        return fail(opened.failure());
    if (const Status shown = showInsets(line, flight); !shown)
        return fail(shown.failure());
    const Status written = writeReport(flight, path);
    return written ? Done : fail(written.failure());
}

std::vector<Command> commands()
{
    return {{QStringLiteral("report"),
             QStringLiteral("(PROJECT | VIDEO [LOG])") + insetsUsage +
                 QStringLiteral(" [--thermal-clock file|screen] --out FILE.docx"),
             QStringLiteral("a Word document with a page for each point of interest"),
             QList<QCommandLineOption>{thermalClockOption(),
                                       valued(QStringLiteral("out"), QStringLiteral("FILE.docx"),
                                              QStringLiteral("the document to write"))} +
                 insetOptions(),
             report}};
}

const CommandSet registered(60, commands);

} // namespace
} // namespace corv::cli
