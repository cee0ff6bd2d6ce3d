#include "Cli/thermalClock.h"

#include "Cli/Command.h"
#include "Video/VideoPlayer.h"

namespace corv::cli {

QCommandLineOption thermalClockOption()
{
    QCommandLineOption option =
        valued(QStringLiteral("thermal-clock"), QStringLiteral("file|screen"),
               QStringLiteral("the moment of a picture's thermal picture: the time in its file, or "
                              "the one on screen"));
    option.setDefaultValue(QStringLiteral("file"));
    return option;
}

bool takeThermalClock(const QCommandLineParser& line, VideoPlayer& player)
{
    const QString clock = line.value(QStringLiteral("thermal-clock"));
    player.setThermalAsOnScreen(clock == QLatin1String("screen"));
    if (clock == QLatin1String("screen") || clock == QLatin1String("file"))
        return true;
    wrongUsage(
        QStringLiteral("--thermal-clock: \"%1\" is neither \"file\" nor \"screen\".").arg(clock));
    return false;
}

} // namespace corv::cli
