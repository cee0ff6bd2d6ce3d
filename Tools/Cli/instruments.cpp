#include "Cli/instruments.h"

#include "Cli/Command.h"
#include "Review/OpenFlight.h"
#include "Timeline/ExportInstruments.h"

namespace corv::cli {

QCommandLineOption imperialUnitsOption()
{
    return flag(imperialOption, QStringLiteral("gives lengths in feet"));
}

QList<QCommandLineOption> instrumentOptions()
{
    return {flag(instrumentsOption, QStringLiteral("shows the flight instruments in a corner")),
            imperialUnitsOption()};
}

Status showInstruments(const QCommandLineParser& line, OpenFlight& flight)
{
    if (!line.isSet(instrumentsOption))
        return {};
    if (!flight.logParser().log())
        return Failure{Failure::Kind::notPossible,
                       QStringLiteral("--instruments needs a flight log.")};
    if (!flight.logParser().isSynced())
        return Failure{
            Failure::Kind::notPossible,
            QStringLiteral("--instruments: the log has no recording that fits the video.")};
    ExportInstruments instruments;
    instruments.setImperialUnits(line.isSet(imperialOption));
    instruments.setShown(true);
    instruments.setLogParser(&flight.logParser());
    instruments.setPlayer(&flight.player());
    return {};
}

} // namespace corv::cli
