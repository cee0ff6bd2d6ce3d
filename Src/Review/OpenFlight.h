#pragma once

#include "Base/Result.h"
#include "Log/LogParser.h"
#include "Project/ProjectFileLoader.h"
#include "Project/ReportWriter.h"
#include "Review/Review.h"
#include "Video/VideoPlayer.h"

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>

namespace corv {

/// A review without a window, for commands and jobs: the objects behind it, and the waiting for a
/// flight to open. Needs an event loop of the calling thread only while it opens.
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

    /// Opens exactly these files as one flight, with its log; an empty path for none. A log that
    /// cannot be read is no failure here: `review().openProblem()` says what is wrong with it.
    Status openParts(const QStringList& videos, const QString& log);

    /// Opens a project. A log that cannot be read is no failure, as with `openParts`.
    Status openProject(const QString& path);

    /// Writes the report of these points of interest, in list form. Returns once it is written,
    /// with the writer's result; `progress` is called on this thread, whose event loop runs
    /// meanwhile.
    Status writeReport(const QString& path, const QVariantList& pois,
                       const ReportWriter::Progress& progress);

    VideoPlayer& player() { return m_player; }
    LogParser& logParser() { return m_logParser; }
    Review& review() { return m_review; }
    ProjectFileLoader& projectFiles() { return m_projectFiles; }

private:
    Status openFiles(const QStringList& files);
    Status waitForOpening(const std::function<void()>& begin);

    LogParser m_logParser;
    VideoPlayer m_player;
    ProjectFileLoader m_projectFiles;
    Review m_review;
};

} // namespace corv
