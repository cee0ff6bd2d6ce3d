#include "Cli/JobLine.h"
#include "Cli/flightExports.h"
#include "Cli/insets.h"
#include "Cli/memoryLimit.h"
#include "Cli/thermalClock.h"
#include "Review/OpenFlight.h"

namespace corv::cli {
namespace {

ExitStatus report(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    const QString path = line.value(QStringLiteral("out"));
    if (path.isEmpty() || !OpenFlight::isFlight(arguments))
        return WrongUsage;
    if (!path.endsWith(QLatin1String(".docx"), Qt::CaseInsensitive))
        return wrongUsage(QStringLiteral("--out: \"%1\" does not end in .docx.").arg(path));
    if (const Status memory = enoughMemoryForVideos(); !memory)
        return fail(memory.failure());
    OpenFlight flight;
    const JobLine progress(*flight.review().jobs());
    bool asOnScreen = false;
    if (!readThermalClock(line, &asOnScreen))
        return WrongUsage;
    flight.player().setThermalAsOnScreen(asOnScreen);
    const Status opened = flight.open(arguments, path);
    if (!opened)
        return fail(opened.failure());
    if (const Status shown = showInsets(line, flight); !shown)
        return fail(shown.failure());
    return showResult(flight.writeReport(path, flight.review().allPois()), flight);
}

std::vector<Command> commands()
{
    return {{QStringLiteral("report"),
             QStringLiteral("(PROJECT | VIDEO [LOG])") + insetsUsage + thermalClockUsage +
                 QStringLiteral(" --out FILE.docx"),
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
