#pragma once

#include "Base/Result.h"
#include "Review/JobList.h"

#include <QObject>
#include <QPointer>
#include <QString>

namespace corv {

class PoiReportExporter;
class VideoPlayer;

/// Puts what is written out of a flight into the list of jobs: series of pictures, whole videos and
/// reports, and a single picture that could not be saved. Player, exporter and list are set once
/// and not owned. Interface thread only.
class ExportJobs : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* player READ player WRITE setPlayer)
    Q_PROPERTY(corv::PoiReportExporter* reports READ reports WRITE setReports)
    Q_PROPERTY(corv::JobList* jobs READ jobs WRITE setJobs)
    Q_PROPERTY(bool attended READ isAttended WRITE setAttended)

public:
    explicit ExportJobs(QObject* parent = nullptr);

    VideoPlayer* player() const;
    void setPlayer(VideoPlayer* player);
    PoiReportExporter* reports() const;
    void setReports(PoiReportExporter* reports);
    JobList* jobs() const { return m_jobs; }
    void setJobs(JobList* jobs) { m_jobs = jobs; }

    /// Whether the pilot is looking at the program. While nobody is, the desktop shows how a job
    /// ended.
    bool isAttended() const { return m_isAttended; }
    void setAttended(bool attended) { m_isAttended = attended; }

    /// Makes a failed job of a picture that the player refused to save: what the player says of it
    /// is its result.
    Q_INVOKABLE void reportRefusedPicture(const QString& file) { endPicture(file, false); }

signals:
    /// How a piece of work ended, in a sentence.
    void ended(const QString& text);

private:
    void beginSeries(int total);
    void endSeries(int saved, int failed);
    void endPicture(const QString& file, bool isSaved);
    void reportVideo(int done, int total);
    void endVideo(bool result);
    void reportDocument(int done, int total);
    void endDocument(bool result);
    void end(QPointer<Job>& job, const Status& status, const QString& success,
             const QString& note = {});

    QPointer<VideoPlayer> m_player;
    QPointer<PoiReportExporter> m_reports;
    QPointer<JobList> m_jobs;
    QPointer<Job> m_series;
    QPointer<Job> m_video;
    QPointer<Job> m_document;
    bool m_isAttended = true;
};

} // namespace corv
