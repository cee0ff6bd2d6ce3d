#pragma once

#include <QCommandLineParser>

namespace corv {
class VideoPlayer;
}

namespace corv::cli {

/// "--thermal-clock", for commands that save pictures: which moment their thermal picture is of.
QCommandLineOption thermalClockOption();

/// Sets the player to the thermal clock that the line asks for. False for a word that is none.
bool takeThermalClock(const QCommandLineParser& line, VideoPlayer& player);

} // namespace corv::cli
