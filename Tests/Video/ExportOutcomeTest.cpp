#include "ExportFixture.h"
#include "SampleFlight/frameStrip.h"
#include "Support/FullDisk.h"
#include "openVideo.h"

#include <QDir>
#include <QGuiApplication>

using namespace corv;
using namespace corv::test;

// Where frames are in an exported video, what it lacks, and how saving pictures ends.
class ExportOutcomeTest : public QObject, private ExportFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void framesAreAtTheirTrueTimes_data();
    void framesAreAtTheirTrueTimes();
    void filesOfTwoRatesKeepTheirLengths();
    void damageIsHeldAndNamed();
    void aMediumThatGivesNothingMoreIsNamed();
    void anEarlierVideoOutlivesAFailedOne();
    void aStoppedVideoSaysSo();
    void refusalsHaveAReason();
    void aSeriesReportsItsProgressAndEnd();
    void aSeriesSaysWhatFailed();
    void aSeriesCanBeStopped();
    void anEmptySeriesEnds();
    void aClosedFlightEndsASeries();
    void aSavedFrameReports();
    void aFrameOnAFullDiskSaysSo();
    void aCopiedFrameReports();

private:
    QList<int> exported();
};

QList<int> ExportOutcomeTest::exported()
{
    const ExportRecord record(*m_player);
    QList<int> numbers;
    if (!m_player->exportVideo(path("out.mp4")) ||
        !QTest::qWaitFor([&record] { return !record.results.isEmpty(); }, 60000))
        return numbers;
    const auto source = openVideo(path("out.mp4"));
    for (cv::Mat picture; source && !(picture = readPicture(*source)).empty();)
        numbers << readFrameNumber(picture);
    return numbers;
}

void ExportOutcomeTest::framesAreAtTheirTrueTimes_data()
{
    QTest::addColumn<QList<double>>("timesMs");
    QTest::addColumn<QList<int>>("numbers");
    // At 25 frames a second a place is 40 ms long. The last time is that of the end.
    QTest::newRow("even") << QList<double>{0, 40, 80, 120} << QList<int>{0, 1, 2};
    QTest::newRow("dropped") << QList<double>{0, 40, 160, 200, 240} << QList<int>{0, 1, 1, 1, 2, 3};
    QTest::newRow("half the rate")
        << QList<double>{0, 80, 160, 240} << QList<int>{0, 0, 1, 1, 2, 2};
    QTest::newRow("twice the rate")
        << QList<double>{0, 20, 40, 60, 80, 100, 120} << QList<int>{0, 2, 4};
    QTest::newRow("late before a gap")
        << QList<double>{0, 40, 55, 160, 200} << QList<int>{0, 1, 2, 2, 3};
    QTest::newRow("jitter") << QList<double>{0, 45, 76, 122, 160} << QList<int>{0, 1, 2, 3};
}

void ExportOutcomeTest::framesAreAtTheirTrueTimes()
{
    QFETCH(QList<double>, timesMs);
    QFETCH(QList<int>, numbers);
    const auto file = addFile("a.mp4", timesMs.size() - 1);
    file->timesMs.assign(timesMs.begin(), timesMs.end());
    open("a.mp4");
    QCOMPARE(m_player->duration(), timeAt(static_cast<int>(timesMs.last())));
    QCOMPARE(exported(), numbers);
    QVERIFY(m_player->videoExportResult().ok());
}

void ExportOutcomeTest::filesOfTwoRatesKeepTheirLengths()
{
    addFile("CORV0001.MP4", 5); // 200 ms
    const auto second = addFile("CORV0002.MP4", 10, 5);
    second->fps = 50.0; // 200 ms
    addFile("CORV0003.MP4", 2, 15);
    open("CORV0001.MP4");
    QCOMPARE(m_player->duration(), timeAt(480));
    QVERIFY(m_player->goToTime(timeAt(340)));
    QTRY_COMPARE(m_surface.lastNumber(), 12);
    QCOMPARE(m_player->timePosition(), timeAt(340));
    QVERIFY(m_player->goToFrame(15));
    QTRY_COMPARE(m_player->timePosition(), timeAt(400));
    QVERIFY(m_player->goToFrame(0));
    QTRY_COMPARE(m_surface.lastNumber(), 0);
    QCOMPARE(exported(), (QList<int>{0, 1, 2, 3, 4, 5, 7, 9, 11, 13, 15, 16}));
}

void ExportOutcomeTest::damageIsHeldAndNamed()
{
    addFile("a.mp4", 12)->damaged = {3, 4, 5, 8};
    open("a.mp4");
    QCOMPARE(exported(), (QList<int>{0, 1, 2, 2, 2, 2, 6, 7, 7, 9, 10, 11}));
    QVERIFY(!m_player->videoExportResult());
    const Failure failure = m_player->videoExportResult().failure();
    QCOMPARE(failure.kind, Failure::Kind::incomplete);
    QVERIFY(failure.sentence.contains("frames 3 to 5"));
    QVERIFY(failure.sentence.contains("frames 8 to 8"));
}

void ExportOutcomeTest::aMediumThatGivesNothingMoreIsNamed()
{
    addFile("CORV0001.MP4", 10)->unreadable = {4};
    addFile("CORV0002.MP4", 3, 10);
    open("CORV0001.MP4");
    QCOMPARE(exported(), (QList<int>{0, 1, 2, 3, 10, 11, 12}));
    const Failure failure = m_player->videoExportResult().failure();
    QCOMPARE(failure.kind, Failure::Kind::incomplete);
    QVERIFY(failure.sentence.contains("frames 4 to 9"));
    QVERIFY(failure.sentence.contains("CORV0001.MP4"));
}

void ExportOutcomeTest::anEarlierVideoOutlivesAFailedOne()
{
    addFile("a.mp4", 60);
    open("a.mp4");
    const QList<int> whole = exported();
    QCOMPARE(whole.size(), 60);
    const qint64 bytes = QFileInfo(path("out.mp4")).size();
    {
        const FullDisk disk(8192);
        QCOMPARE(exported(), whole);
    }
    QVERIFY(!m_player->videoExportResult());
    QCOMPARE(QFileInfo(path("out.mp4")).size(), bytes);
    QCOMPARE(QDir(m_folder->path()).entryList({"out*"}), QStringList{"out.mp4"});
}

void ExportOutcomeTest::aStoppedVideoSaysSo()
{
    addFile("a.mp4", 100000);
    open("a.mp4");
    const ExportRecord record(*m_player);
    connect(
        m_player.get(), &VideoPlayer::videoExportProgress, m_player.get(),
        [player = m_player.get()] { player->cancelExportVideo(); }, Qt::DirectConnection);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(!m_player->videoExportResult());
    QCOMPARE(m_player->videoExportResult().failure().kind, Failure::Kind::cancelled);
    m_player.reset();
}

void ExportOutcomeTest::refusalsHaveAReason()
{
    addFile("a.mp4", 5);
    open("a.mp4");
    const ExportRecord record(*m_player);
    for (const QString& target : {QString(), path("a.mp4"), path("no/folder/out.mp4")}) {
        const int before = record.results.size();
        m_player->exportVideo(target);
        QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), before + 1, 60000);
        QVERIFY(!m_player->videoExportResult());
        QVERIFY(!m_player->videoExportResult().failure().sentence.isEmpty());
    }
    m_player->close();
    m_player->exportVideo(path("out.mp4"));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 4, 60000);
    QCOMPARE(m_player->videoExportResult().failure().kind, Failure::Kind::notPossible);
}

void ExportOutcomeTest::aSeriesReportsItsProgressAndEnd()
{
    addFile("a.mp4");
    open("a.mp4");
    QSignalSpy started(m_player.get(), &VideoPlayer::framesExportStarted);
    QSignalSpy progress(m_player.get(), &VideoPlayer::framesExportProgress);
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    QVERIFY(QDir().mkpath(path("out")));
    QVERIFY(m_player->exportSpecificFrames({0, 40, 80}, path("out"), "Frame"));
    QCOMPARE(started.count(), 1);
    QCOMPARE(started.first().first().toInt(), 3);
    QTRY_COMPARE(complete.count(), 1);
    QCOMPARE(progress.count(), 3);
    QCOMPARE(progress.last(), (QVariantList{3, 3}));
}

void ExportOutcomeTest::aSeriesSaysWhatFailed()
{
    addFile("a.mp4");
    open("a.mp4");
    QVERIFY(QDir().mkpath(path("out")));
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    QVERIFY(m_player->exportSpecificFrames({0, 5000, 80}, path("out"), "Frame"));
    QTRY_COMPARE(complete.count(), 1);
    QCOMPARE(complete.first(), (QVariantList{2, 1}));
    QCOMPARE(m_player->framesExportResult().failure().kind, Failure::Kind::incomplete);
    QVERIFY(m_player->framesExportResult().failure().sentence.contains("00:05.000"));
    QVERIFY(m_player->exportSpecificFrames({0, 40}, path("out"), "Good"));
    QTRY_COMPARE(complete.count(), 2);
    QCOMPARE(complete.last(), (QVariantList{2, 0}));
    QVERIFY(m_player->framesExportResult().ok());
    QVERIFY(!m_player->exportSpecificFrames({0}, path("no/parent/out"), "Frame"));
    QCOMPARE(m_player->framesExportResult().failure().kind, Failure::Kind::notFound);
}

void ExportOutcomeTest::aSeriesCanBeStopped()
{
    const auto file = addFile("a.mp4", 500);
    open("a.mp4");
    QVERIFY(QDir().mkpath(path("out")));
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    connect(m_player.get(), &VideoPlayer::framesExportProgress, m_player.get(),
            [player = m_player.get()] { player->cancelExportFrames(); });
    const int reads = file->reads;
    QVERIFY(m_player->exportFrames(0, 19000, 1, path("out"), "Frame"));
    QTRY_COMPARE(complete.count(), 1);
    const int saved = complete.first().first().toInt();
    QVERIFY(saved >= 1 && saved < 400);
    QCOMPARE(complete.first().last().toInt(), 0);
    QVERIFY(int(file->reads) - reads < 450);
    QCOMPARE(QDir(path("out")).entryList(QDir::Files).size(), saved);
    QCOMPARE(m_player->framesExportResult().failure().kind, Failure::Kind::cancelled);
}

void ExportOutcomeTest::anEmptySeriesEnds()
{
    addFile("a.mp4");
    open("a.mp4");
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    QVERIFY(m_player->exportFrames(400, 0, 10, path("out"), "Frame"));
    QCOMPARE(complete.count(), 0);
    QTRY_COMPARE(complete.count(), 1);
    QVERIFY(m_player->framesExportResult().ok());
}

void ExportOutcomeTest::aClosedFlightEndsASeries()
{
    addFile("a.mp4", 500);
    open("a.mp4");
    QVERIFY(QDir().mkpath(path("out")));
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    QVERIFY(m_player->exportFrames(0, 19000, 1, path("out"), "Frame"));
    m_player->close();
    QTRY_COMPARE(complete.count(), 1);
    QVERIFY(!m_player->framesExportResult());
}

void ExportOutcomeTest::aSavedFrameReports()
{
    addFile("a.mp4");
    open("a.mp4");
    QSignalSpy saved(m_player.get(), &VideoPlayer::frameSaveComplete);
    QVERIFY(m_player->saveFrame(timeAt(0), path("shot.png"), false));
    QTRY_COMPARE(saved.count(), 1);
    QCOMPARE(saved.last(), (QVariantList{path("shot.png"), true}));
    QVERIFY(m_player->frameSaveResult().ok());
    QVERIFY(m_player->saveFrame(timeAt(0), path("shot.unknown"), false));
    QTRY_COMPARE(saved.count(), 2);
    QCOMPARE(saved.last(), (QVariantList{path("shot.unknown"), false}));
    QCOMPARE(m_player->frameSaveResult().failure().kind, Failure::Kind::notPossible);
    QVERIFY(!m_player->saveFrame(timeAt(0), path("a.mp4"), true));
    QVERIFY(m_player->frameSaveResult().failure().sentence.contains("a.mp4"));
    QCOMPARE(saved.count(), 2);
}

void ExportOutcomeTest::aFrameOnAFullDiskSaysSo()
{
    addFile("a.mp4");
    open("a.mp4");
    QSignalSpy saved(m_player.get(), &VideoPlayer::frameSaveComplete);
    const FullDisk disk(100);
    QVERIFY(m_player->saveFrame(timeAt(0), path("shot.png"), false));
    QTRY_COMPARE(saved.count(), 1);
    QVERIFY(!m_player->frameSaveResult());
    QVERIFY(m_player->frameSaveResult().failure().sentence.contains("shot.png"));
}

void ExportOutcomeTest::aCopiedFrameReports()
{
    addFile("a.mp4");
    open("a.mp4");
    QSignalSpy copied(m_player.get(), &VideoPlayer::frameCopyComplete);
    m_player->copyFrameToClipboard(timeAt(0));
    QTRY_COMPARE(copied.count(), 1);
    QVERIFY(m_player->frameCopyResult().ok());
    m_player->copyFrameToClipboard(timeAt(5000));
    QTRY_COMPARE(copied.count(), 2);
    QCOMPARE(m_player->frameCopyResult().failure().kind, Failure::Kind::unreadable);
    m_player->close();
    m_player->copyFrameToClipboard(timeAt(0));
    QTRY_COMPARE(copied.count(), 3);
    QCOMPARE(m_player->frameCopyResult().failure().kind, Failure::Kind::notPossible);
}

QTEST_MAIN(ExportOutcomeTest)
#include "ExportOutcomeTest.moc"
