#include "Cli/thermalClock.h"

#include "Cli/Command.h"

namespace corv::cli {

QCommandLineOption thermalClockOption()
{
    QCommandLineOption option =
        valued(thermalClockName, QStringLiteral("file|screen"),
               QStringLiteral("the moment of a picture's thermal picture: the time in its file, or "
                              "the one on screen"));
    option.setDefaultValue(QStringLiteral("file"));
    return option;
}

bool readThermalClock(const QCommandLineParser& line, bool* asOnScreen)
{
    const QString clock = line.value(thermalClockName);
    *asOnScreen = clock == QLatin1String("screen");
    if (*asOnScreen || clock == QLatin1String("file"))
        return true;
    wrongUsage(
        QStringLiteral("--thermal-clock: \"%1\" is neither \"file\" nor \"screen\".").arg(clock));
    return false;
}

} // namespace corv::cli
