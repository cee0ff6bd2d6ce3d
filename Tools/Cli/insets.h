#pragma once

#include "Base/Result.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>

namespace corv {
class OpenFlight;
}

namespace corv::cli {

/// The names of the options that show the flight instruments and the colour bar of the thermal
/// overlay in pictures. Both have texts, so a line with them needs an application that can draw
/// texts.
inline const QString instrumentsOption = QStringLiteral("instruments");
inline const QString thermalBarOption = QStringLiteral("thermal-bar");

/// The name of the option that gives lengths in feet.
inline const QString imperialOption = QStringLiteral("imperial");

/// These three options, for commands that write pictures, and how a usage shows them.
QList<QCommandLineOption> insetOptions();
inline const QString insetsUsage = QStringLiteral(" [--instruments [--imperial]] [--thermal-bar]");

/// "--imperial" alone, for commands that write values.
QCommandLineOption imperialUnitsOption();

/// Adds the instruments and the colour bar that the line asks for to whatever the open flight
/// exports. Call it once the thermal overlay is set on or off. A failure if the flight has no
/// values for the instruments, or no overlay for the bar.
Status showInsets(const QCommandLineParser& line, OpenFlight& flight);

/// Why the pictures of the flight cannot have the thermal overlay that this option asks for; empty
/// if they can.
QString whyNoOverlay(OpenFlight& flight, const QString& option);

} // namespace corv::cli
