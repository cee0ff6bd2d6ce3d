#include "Cli/insets.h"

#include "Cli/Command.h"
#include "Review/OpenFlight.h"
#include "Timeline/ExportInsets.h"

namespace corv::cli {
namespace {

Status instrumentsOf(OpenFlight& flight)
{
    if (!flight.logParser().log())
        return Failure{Failure::Kind::notPossible,
                       QStringLiteral("--instruments needs a flight log.")};
    if (!flight.logParser().isSynced())
        return Failure{
            Failure::Kind::notPossible,
            QStringLiteral("--instruments: the log has no recording that fits the video.")};
    return {};
}

Status thermalBarOf(OpenFlight& flight)
{
    if (!flight.player().showIR())
        return Failure{Failure::Kind::notPossible,
                       QStringLiteral("--thermal-bar: the flight does not show the thermal "
                                      "overlay.")};
    const QString reason = whyNoOverlay(flight, thermalBarOption);
    return reason.isEmpty() ? Status() : Failure{Failure::Kind::notPossible, reason};
}

} // namespace

QCommandLineOption imperialUnitsOption()
{
    return flag(imperialOption, QStringLiteral("gives lengths in feet"));
}

QList<QCommandLineOption> insetOptions()
{
    return {flag(instrumentsOption, QStringLiteral("shows the flight instruments in a corner")),
            imperialUnitsOption(),
            flag(thermalBarOption,
                 QStringLiteral("shows the thermal colours with the ends of their range"))};
}

QString whyNoOverlay(OpenFlight& flight, const QString& option)
{
    if (!flight.logParser().log())
        return QStringLiteral("--%1 needs a log with thermal pictures").arg(option);
    if (!flight.player().thermalStatus())
        return flight.player().thermalStatus().failure().sentence;
    if (!flight.logParser().isSynced())
        return QStringLiteral("no thermal pictures: the log holds no recording of the video");
    return {};
}

Status showInsets(const QCommandLineParser& line, OpenFlight& flight)
{
    const bool hasInstruments = line.isSet(instrumentsOption);
    const bool hasThermalBar = line.isSet(thermalBarOption);
    Status status = hasInstruments ? instrumentsOf(flight) : Status();
    if (status && hasThermalBar)
        status = thermalBarOf(flight);
    if (!status)
        return status;
    ExportInsets insets;
    insets.setImperialUnits(line.isSet(imperialOption));
    insets.setShowsInstruments(hasInstruments);
    insets.setShowsThermalBar(hasThermalBar);
    insets.setLogParser(&flight.logParser());
    insets.setPlayer(&flight.player());
    return {};
}

} // namespace corv::cli
