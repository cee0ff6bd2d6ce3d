#pragma once

#include "Log/LogParser.h"
#include "Video/VideoPlayer.h"

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace corv::cli {

/// A flight opened as the main window would open it, but without one: from a project, or from a
/// video and, if there is one, its log. Needs the program's event loop only while it opens.
class FlightSession
{
public:
    FlightSession();

    /// Whether these words can name a flight: one project, or a video and perhaps a log, and no
    /// option among them.
    static bool isFlight(const QStringList& files);

    /// Opens `files`: one project, or a video and perhaps a log. Returns once the video is open and
    /// the log decoded. Gives an empty text, or else what went wrong in one line; it is wrong, too,
    /// if `target`, which is to be written, is by any name a file of the flight.
    QString open(const QStringList& files, const QString& target);

    VideoPlayer& player() { return m_player; }
    LogParser& logParser() { return m_logParser; }

    /// The marks in list form, in ascending time: those of the project, and those of the log that
    /// lie inside the video and at whose time the project has none.
    QVariantList marks() const;

private:
    QString openFiles(const QStringList& files);
    QString openProject(const QString& projectFile);
    QString openVideo(const QString& videoFile);
    QString openLog(const QString& logFile, bool ignoreNaming);
    void restoreSettings(const QVariantMap& properties);

    LogParser m_logParser;
    VideoPlayer m_player;
    QVariantList m_projectMarks;
    QStringList m_files; ///< all that the flight was read from
};

/// "--thermal-clock", for commands that save pictures: which moment their thermal picture is of.
QCommandLineOption thermalClockOption();

/// Sets the player to the thermal clock that the line asks for. False for a word that is none.
bool takeThermalClock(const QCommandLineParser& line, VideoPlayer& player);

} // namespace corv::cli
