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

/// The name of the option that shows the flight instruments in pictures. They have texts, so a line
/// with it needs an application that can draw them.
inline const QString instrumentsOption = QStringLiteral("instruments");

/// The name of the option that gives lengths in feet.
inline const QString imperialOption = QStringLiteral("imperial");

/// Both, for commands that write pictures, and how a usage shows them.
QList<QCommandLineOption> instrumentOptions();
inline const QString instrumentsUsage = QStringLiteral(" [--instruments [--imperial]]");

/// "--imperial" alone, for commands that write values.
QCommandLineOption imperialUnitsOption();

/// Shows the instruments in what the open flight exports, if the line asks for them. A failure if
/// the flight has no values for them.
Status showInstruments(const QCommandLineParser& line, OpenFlight& flight);

} // namespace corv::cli
