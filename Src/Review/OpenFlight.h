#pragma once

#include "Base/Result.h"
#include "Log/LogParser.h"
#include "Project/PoiReportExporter.h"
#include "Project/ProjectFileLoader.h"
#include "Review/ExportJobs.h"
#include "Review/Review.h"
#include "Video/VideoPlayer.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>

namespace corv {

/// A picture of a flight that is to be saved, in the format of its file's suffix.
struct PictureFile
{
    int timeMs;
    QString file;
};

/// A review without a window, for commands and jobs: the objects behind it, and the waiting for a
/// flight to open and for what is written out of it. While it waits, an event loop of the calling
/// thread runs.
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

    // What is written out is a job in `review().jobs()`, where its progress can be followed. These
    // return once the job has ended.

    /// Fetches all pictures at once, as the window does, and saves each on the thread that makes
    /// it. Gives what is wrong with each; `exportResult` sums up.
    QList<Status> savePictures(const QList<PictureFile>& pictures);

    /// Writes the whole flight as a new video.
    Status writeVideo(const QString& path);

    /// Writes the report of these points of interest, in list form.
    Status writeReport(const QString& path, const QVariantList& pois);

    /// Why the last of these was not done, or what it lacks (`incomplete`).
    const Status& exportResult() const { return m_exportResult; }

    /// Which of the last pictures or pages have another thermal picture than the screen, in a
    /// sentence; empty if none has.
    QString exportNote() const { return m_exportNote; }

    VideoPlayer& player() { return m_player; }
    LogParser& logParser() { return m_logParser; }
    Review& review() { return m_review; }
    ProjectFileLoader& projectFiles() { return m_projectFiles; }

private:
    Status openFiles(const QStringList& files);
    Status waitForOpening(const std::function<void()>& begin);
    void endPictures(Job* job, const QList<Status>& results);

    LogParser m_logParser;
    VideoPlayer m_player;
    ProjectFileLoader m_projectFiles;
    Review m_review;
    PoiReportExporter m_reports;
    ExportJobs m_exports;
    Status m_exportResult;
    QString m_exportNote;
};

} // namespace corv
