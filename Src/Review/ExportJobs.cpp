#include "Review/ExportJobs.h"

#include "Platform/desktopNotification.h"
#include "Project/PoiReportExporter.h"
#include "Video/VideoPlayer.h"

namespace corv {

ExportJobs::ExportJobs(QObject* parent) : QObject(parent) {}

VideoPlayer* ExportJobs::player() const
{
    return m_player;
}

void ExportJobs::setPlayer(VideoPlayer* player)
{
    if (m_player || !player)
        return;
    m_player = player;
    connect(player, &VideoPlayer::framesExportStarted, this, &ExportJobs::beginSeries);
    connect(player, &VideoPlayer::framesExportProgress, this, [this](int done, int total) {
        if (m_series)
            m_series->report(done, total);
    });
    connect(player, &VideoPlayer::framesExportComplete, this, &ExportJobs::endSeries);
    connect(player, &VideoPlayer::frameSaveComplete, this, &ExportJobs::endPicture);
    connect(player, &VideoPlayer::videoExportProgress, this, &ExportJobs::reportVideo);
    connect(player, &VideoPlayer::videoExportComplete, this, &ExportJobs::endVideo);
}

PoiReportExporter* ExportJobs::reports() const
{
    return m_reports;
}

void ExportJobs::setReports(PoiReportExporter* reports)
{
    if (m_reports || !reports)
        return;
    m_reports = reports;
    connect(reports, &PoiReportExporter::exportProgress, this, &ExportJobs::reportDocument);
    connect(reports, &PoiReportExporter::exportComplete, this, &ExportJobs::endDocument);
}

void ExportJobs::beginSeries(int total)
{
    if (!m_jobs)
        return;
    // More pictures while a series is being saved belong to that series.
    if (!m_series)
        m_series = m_jobs->start(
            Job::Kind::series, tr("Save pictures"), Job::Unit::steps,
            [this] {
                if (m_player)
                    m_player->cancelExportFrames();
            },
            m_player->framesExportFolder());
    m_series->report(m_series->done(), total);
}

void ExportJobs::endSeries(int saved, int failed)
{
    const Status status = m_player ? m_player->framesExportResult() : Status();
    end(m_series, status,
        failed > 0 ? tr("%1 of %2 pictures saved.").arg(saved).arg(saved + failed)
                   : tr("%1 pictures saved.").arg(saved),
        m_player ? m_player->framesExportNote() : QString());
}

// It is saved within a moment: only a failure is worth a row.
void ExportJobs::endPicture(const QString& file, bool isSaved)
{
    if (isSaved || !m_jobs)
        return;
    QPointer<Job> job = m_jobs->start(Job::Kind::frames, tr("Save a picture"));
    Status status = m_player ? m_player->frameSaveResult() : Status();
    if (status.ok())
        status = Failure{Failure::Kind::other, tr("The picture %1 could not be saved.").arg(file)};
    end(job, status, {});
}

void ExportJobs::reportVideo(int done, int total)
{
    if (!m_jobs)
        return;
    if (!m_video)
        m_video = m_jobs->start(
            Job::Kind::video, tr("Write the video"), Job::Unit::steps,
            [this] {
                if (m_player)
                    m_player->cancelExportVideo();
            },
            m_player->videoExportFile());
    m_video->report(done, total);
}

void ExportJobs::endVideo(bool result)
{
    // Without a frame written there was no job yet, and its failure is still to be seen.
    if (!m_video && m_jobs && !result)
        m_video = m_jobs->start(Job::Kind::video, tr("Write the video"));
    Status status = m_player ? m_player->videoExportResult() : Status();
    if (status.ok() && !result)
        status = Failure{Failure::Kind::other, tr("The video could not be written.")};
    end(m_video, status, tr("The video is written."));
}

void ExportJobs::reportDocument(int done, int total)
{
    if (!m_jobs)
        return;
    if (!m_document)
        m_document = m_jobs->start(
            Job::Kind::report, tr("Write the report"), Job::Unit::steps,
            [this] {
                if (m_reports)
                    m_reports->abortExportOperation();
            },
            m_reports->reportFile());
    m_document->report(done, total);
}

void ExportJobs::endDocument(bool result)
{
    if (!m_document && m_jobs)
        m_document = m_jobs->start(Job::Kind::report, tr("Write the report"), Job::Unit::steps, {},
                                   m_reports ? m_reports->reportFile() : QString());
    Status status = m_reports && !result ? m_reports->exportResult() : Status();
    if (status.ok() && !result)
        status = Failure{Failure::Kind::other, tr("The report was not written.")};
    end(m_document, status, tr("The report is written."),
        m_reports && result ? m_reports->reportNote() : QString());
}

void ExportJobs::end(QPointer<Job>& job, const Status& status, const QString& success,
                     const QString& note)
{
    if (!job)
        return;
    QString text = status.ok() ? success : status.failure().sentence;
    if (!note.isEmpty())
        text += QLatin1Char(' ') + note + QLatin1Char(' ') +
                tr("The general settings can change that.");
    if (status.ok())
        job->succeed(text);
    else
        job->fail({status.failure().kind, text});
    if (!m_isAttended)
        platform::showDesktopNotification(job->title(), text);
    job = nullptr;
    emit ended(text);
}

} // namespace corv
