#include "Base/videoTime.h"
#include "Cli/JobLine.h"
#include "Cli/flightExports.h"
#include "Cli/folders.h"
#include "Cli/insets.h"
#include "Cli/thermalClock.h"

#include <QDir>
#include <algorithm>
#include <limits>

namespace corv::cli {
namespace {

constexpr int standardSpacing = 10;
const QString timeOption = QStringLiteral("at-ms");
const QString outOption = QStringLiteral("out");
const QString prefixOption = QStringLiteral("prefix");
const QString poiOption = QStringLiteral("poi");
const QString fromOption = QStringLiteral("from-ms");
const QString toOption = QStringLiteral("to-ms");
const QString spacingOption = QStringLiteral("spacing");

ExitStatus frame(const QCommandLineParser& line)
{
    int timeMs = 0;
    const QString out = line.value(outOption);
    if (!line.isSet(timeOption) || !readNumber(line, timeOption, 0, 0, &timeMs) || out.isEmpty())
        return WrongUsage;
    OpenFlight flight;
    const JobLine progress(*flight.review().jobs());
    const ExitStatus status = openForPictures(flight, line, out);
    if (status != Done)
        return status;
    const Status saved = flight.savePictures({{timeMs, out}}).first();
    return saved ? Done : fail(saved.failure());
}

QList<int> positionsOfRange(const VideoPlayer& player, int fromMs, int toMs, int spacing)
{
    const int endMs = msOfTime(player.duration()) - 1;
    const qint64 stepMs = qint64(spacing) * player.frameDurationMs();
    QList<int> positions;
    for (qint64 ms = fromMs; ms <= std::min(toMs, endMs) && stepMs > 0; ms += stepMs)
        positions << static_cast<int>(ms);
    return positions;
}

ExitStatus frames(const QCommandLineParser& line)
{
    const QString out = line.value(outOption);
    const QString prefix = line.value(prefixOption);
    const bool ofPois = line.isSet(poiOption);
    const bool ofRange =
        line.isSet(fromOption) || line.isSet(toOption) || line.isSet(spacingOption);
    int fromMs = 0;
    int toMs = 0;
    int spacing = 0;
    if (!readNumber(line, fromOption, 0, 0, &fromMs) ||
        !readNumber(line, toOption, std::numeric_limits<int>::max(), 0, &toMs) ||
        !readNumber(line, spacingOption, standardSpacing, 1, &spacing) || out.isEmpty())
        return WrongUsage;
    if (ofPois && ofRange)
        return wrongUsage(QStringLiteral("--poi takes no range."));
    if (toMs < fromMs)
        return wrongUsage(
            QStringLiteral("--to-ms %1 is before --from-ms %2.").arg(toMs).arg(fromMs));
    OpenFlight flight;
    const JobLine progress(*flight.review().jobs());
    const ExitStatus status = openForPictures(flight, line, out);
    if (status != Done)
        return status;
    if (const Status made = makeFolder(out); !made)
        return fail(made.failure());
    const QList<int> positions =
        ofPois ? positionsOfPois(flight) : positionsOfRange(flight.player(), fromMs, toMs, spacing);
    if (positions.isEmpty())
        return fail(ofPois ? QStringLiteral("the flight has no points of interest")
                           : QStringLiteral("no frame lies in the range"));
    flight.savePictures(numbered(positions, out, prefix));
    return showResult(flight.exportResult(), flight);
}

ExitStatus video(const QCommandLineParser& line)
{
    const QString out = line.value(outOption);
    if (out.isEmpty())
        return WrongUsage;
    OpenFlight flight;
    const JobLine progress(*flight.review().jobs());
    const ExitStatus status = openFlight(flight, line, out);
    if (status != Done)
        return status;
    return showResult(flight.writeVideo(out), flight);
}

std::vector<Command> commands()
{
    const QString flight = QStringLiteral("(PROJECT | VIDEO [LOG]) [--thermal]") + insetsUsage;
    const QCommandLineOption thermal =
        flag(thermalOption, QStringLiteral("draws the thermal overlay in any case"));
    const auto out = [](const char* valueName, const char* description) {
        return valued(outOption, QString::fromLatin1(valueName), QString::fromLatin1(description));
    };
    const auto number = [](const QString& name, const char* description) {
        return valued(name, QStringLiteral("N"), QString::fromLatin1(description));
    };
    QCommandLineOption prefix = valued(prefixOption, QStringLiteral("P"),
                                       QStringLiteral("beginning of the file names: Frame"));
    prefix.setDefaultValue(QStringLiteral("Frame"));
    const QString pictures = flight + thermalClockUsage;
    return {
        {QStringLiteral("frame"), pictures + QStringLiteral(" --at-ms N --out IMAGE"),
         QStringLiteral("one picture, in the format of its suffix"),
         QList<QCommandLineOption>{thermal, thermalClockOption(),
                                   number(timeOption, "time in the flight, in milliseconds"),
                                   out("IMAGE", "the picture to write")} +
             insetOptions(),
         frame},
        {QStringLiteral("frames"),
         pictures + QStringLiteral(" --out FOLDER [--prefix P] "
                                   "[--poi | --from-ms N --to-ms N --spacing FRAMES]"),
         QStringLiteral("a series of pictures, or one of each point of interest"),
         QList<QCommandLineOption>{
             thermal, thermalClockOption(), out("FOLDER", "where to write the pictures"), prefix,
             flag(poiOption, QStringLiteral("one picture of each point of interest")),
             number(fromOption, "start of the range, in milliseconds: 0"),
             number(toOption, "end of the range, in milliseconds: that of the flight"),
             number(spacingOption, "a picture every N frames: 10")} +
             insetOptions(),
         frames},
        {QStringLiteral("video"), flight + QStringLiteral(" --out VIDEO"),
         QStringLiteral("the whole flight as a new video"),
         QList<QCommandLineOption>{thermal, out("VIDEO", "the video to write")} + insetOptions(),
         video}};
}

const CommandSet registered(40, commands);

} // namespace
} // namespace corv::cli
