#pragma once

#include "Base/Result.h"
#include "Log/LogParser.h"
#include "Project/ProjectFileLoader.h"
#include "Review/Review.h"
#include "Video/VideoPlayer.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace corv::cli {

/// The review that the commands work on, without a window: the objects behind it, and the waiting
/// for a flight to open. Needs the program's event loop only while it opens.
class OpenFlight
{
public:
    OpenFlight();

    /// Whether these words can name a flight: one project, or a video and perhaps a log, and no
    /// option among them.
    static bool isFlight(const QStringList& files);

    /// Opens `files`: one project, or a video and perhaps a log. Returns once the video is open,
    /// the log decoded and its thermal pictures found. It is a failure, too, if a log is missing or
    /// cannot be read, and if `target`, which is to be written, is by any name a file of the
    /// flight.
    Status open(const QStringList& files, const QString& target);

    VideoPlayer& player() { return m_player; }
    LogParser& logParser() { return m_logParser; }
    Review& review() { return m_review; }

private:
    Status openFiles(const QStringList& files);

    LogParser m_logParser;
    VideoPlayer m_player;
    ProjectFileLoader m_projectFiles;
    Review m_review;
};

/// "--thermal-clock", for commands that save pictures: which moment their thermal picture is of.
QCommandLineOption thermalClockOption();

/// Sets the player to the thermal clock that the line asks for. False for a word that is none.
bool takeThermalClock(const QCommandLineParser& line, VideoPlayer& player);

} // namespace corv::cli
