#include "Review/ExportJobs.h"

#include "Project/PoiReportExporter.h"
#include "Video/VideoPlayer.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

/// Exports in the list of jobs. The player and the exporter do nothing here: their signals are sent
/// in their place.
class ExportJobsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aSeriesIsAJob();
    void aSecondSeriesAddsToTheFirst();
    void aSeriesWithFailuresSaysHowMany();
    void aPictureThatCannotBeSavedIsAFailedJob();
    void aRefusedPictureIsAFailedJob();
    void aVideoIsAJob();
    void aVideoThatCannotBeginIsAFailedJob();
    void aReportIsAJob();
    void aSeriesSaysWhichThermalPicturesDiffer();
    void aReportSaysWhichThermalPicturesDiffer();

private:
    /// A flight whose second file begins after a second.
    class OtherThermal : public VideoPlayer
    {
    public:
        bool savesOtherThermal(QTime time) const override { return time >= QTime(0, 0, 1); }
        QString framesExportNote() const override
        {
            return otherThermalNote({"Frame001.jpg", "Frame002.jpg"});
        }
    };

    Job* job() const { return m_jobs->job(m_jobs->rowCount() - 1); }

    QTemporaryDir m_folder;
    std::unique_ptr<VideoPlayer> m_player;
    std::unique_ptr<PoiReportExporter> m_reports;
    std::unique_ptr<JobList> m_jobs;
    std::unique_ptr<ExportJobs> m_exports;
    std::unique_ptr<QSignalSpy> m_ended;
};

void ExportJobsTest::init()
{
    m_exports.reset();
    m_player = std::make_unique<VideoPlayer>();
    m_reports = std::make_unique<PoiReportExporter>();
    m_jobs = std::make_unique<JobList>();
    m_exports = std::make_unique<ExportJobs>();
    m_exports->setPlayer(m_player.get());
    m_exports->setReports(m_reports.get());
    m_exports->setJobs(m_jobs.get());
    m_ended = std::make_unique<QSignalSpy>(m_exports.get(), &ExportJobs::ended);
}

void ExportJobsTest::aSeriesIsAJob()
{
    emit m_player->framesExportStarted(12);
    QCOMPARE(m_jobs->running(), 1);
    emit m_player->framesExportProgress(5, 12);
    QCOMPARE(job()->done(), 5);
    QCOMPARE(job()->total(), 12);
    QVERIFY(job()->isCancellable());
    emit m_player->framesExportComplete(12, 0);
    QCOMPARE(job()->state(), Job::Succeeded);
    QCOMPARE(job()->resultText(), QString("12 pictures saved."));
    QCOMPARE(m_jobs->running(), 0);
    QCOMPARE(m_ended->count(), 1);
    QCOMPARE(m_ended->first().first().toString(), QString("12 pictures saved."));
}

void ExportJobsTest::aSecondSeriesAddsToTheFirst()
{
    emit m_player->framesExportStarted(10);
    emit m_player->framesExportProgress(4, 10);
    emit m_player->framesExportStarted(25);
    QCOMPARE(m_jobs->rowCount(), 1);
    QCOMPARE(job()->done(), 4);
    QCOMPARE(job()->total(), 25);
}

void ExportJobsTest::aSeriesWithFailuresSaysHowMany()
{
    emit m_player->framesExportStarted(10);
    emit m_player->framesExportComplete(7, 3);
    QCOMPARE(job()->resultText(), QString("7 of 10 pictures saved."));
    emit m_player->framesExportStarted(2);
    QCOMPARE(m_jobs->rowCount(), 2);
}

void ExportJobsTest::aPictureThatCannotBeSavedIsAFailedJob()
{
    emit m_player->frameSaveComplete("/card/a.jpg", true);
    QCOMPARE(m_jobs->rowCount(), 0);
    emit m_player->frameSaveComplete("/card/a.jpg", false);
    QCOMPARE(m_jobs->rowCount(), 1);
    QCOMPARE(job()->state(), Job::Failed);
    QCOMPARE(job()->resultText(), QString("The picture /card/a.jpg could not be saved."));
    QCOMPARE(m_ended->count(), 1);
    QCOMPARE(m_ended->first().first().toString(), job()->resultText());
}

void ExportJobsTest::aRefusedPictureIsAFailedJob()
{
    QVERIFY(!m_player->saveFrame(QTime(0, 0), QString(), true));
    m_exports->reportRefusedPicture(QString());
    QCOMPARE(job()->state(), Job::Failed);
    QCOMPARE(job()->resultText(), QString("No file name was given."));
    QCOMPARE(m_ended->first().first().toString(), job()->resultText());
}

void ExportJobsTest::aVideoIsAJob()
{
    emit m_player->videoExportProgress(1, 100);
    emit m_player->videoExportProgress(60, 100);
    QCOMPARE(m_jobs->rowCount(), 1);
    QCOMPARE(job()->done(), 60);
    emit m_player->videoExportComplete(true);
    QCOMPARE(job()->state(), Job::Succeeded);
}

void ExportJobsTest::aVideoThatCannotBeginIsAFailedJob()
{
    emit m_player->videoExportComplete(false);
    QCOMPARE(m_jobs->rowCount(), 1);
    QCOMPARE(job()->state(), Job::Failed);
    QVERIFY(!job()->resultText().isEmpty());
}

void ExportJobsTest::aReportIsAJob()
{
    emit m_reports->exportProgress(1, 3);
    QCOMPARE(job()->total(), 3);
    emit m_reports->exportComplete(true);
    QCOMPARE(job()->state(), Job::Succeeded);
    emit m_reports->exportComplete(false);
    QCOMPARE(job()->state(), Job::Failed);
    QCOMPARE(m_ended->count(), 2);
}

void ExportJobsTest::aSeriesSaysWhichThermalPicturesDiffer()
{
    OtherThermal player;
    ExportJobs exports;
    exports.setPlayer(&player);
    exports.setJobs(m_jobs.get());
    emit player.framesExportStarted(3);
    emit player.framesExportComplete(3, 0);
    QCOMPARE(job()->state(), Job::Succeeded);
    QVERIFY(job()->resultText().startsWith("3 pictures saved. Frame001.jpg to Frame002.jpg have"));
}

void ExportJobsTest::aReportSaysWhichThermalPicturesDiffer()
{
    OtherThermal player;
    m_reports->setVideoPlayer(&player);
    const auto poi = [](int timeMs, const char* name) {
        return QVariantMap{{"time", timeMs}, {"name", name}, {"comment", ""}};
    };
    m_reports->createPoiReport({poi(10, "Crack"), poi(1000, "Rust"), poi(2000, "")},
                               m_folder.filePath("report.docx"), {{"undefined", true}});
    QCOMPARE(m_reports->reportNote(),
             VideoPlayer::otherThermalNote({"\"Rust\"", "point of interest 3"}));
    m_reports->abortExportOperation();
    QTRY_VERIFY(!m_ended->isEmpty());
    emit m_reports->exportProgress(1, 3);
    emit m_reports->exportComplete(true);
    QVERIFY(job()->resultText().startsWith("The report is written. \"Rust\" to"));
}

QTEST_MAIN(ExportJobsTest)
#include "ExportJobsTest.moc"
