#pragma once

#include <QCommandLineParser>
#include <QString>

namespace corv::cli {

/// "--thermal-clock", for commands that save pictures: which moment their thermal picture is of.
/// How a usage shows it, too.
inline const QString thermalClockName = QStringLiteral("thermal-clock");
inline const QString thermalClockUsage = QStringLiteral(" [--thermal-clock file|screen]");
QCommandLineOption thermalClockOption();

/// Whether saved pictures get the thermal picture of the screen. False, and the value is reported,
/// if the line has a word that is no thermal clock.
bool readThermalClock(const QCommandLineParser& line, bool* asOnScreen);

} // namespace corv::cli
