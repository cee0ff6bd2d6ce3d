#include "Batch/WorkEstimate.h"

#include "Batch/flightStatus.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

/// The time left of a review, from made-up events and a clock of its own.
class WorkEstimateTest : public QObject
{
    Q_OBJECT

private slots:
    void timeLeftIsKnownBeforeTheFirstFlightHasEnded();
    void longVideoCountsForMore();
    void flightsThatWereDoneBeforeSayNothingOfTheSpeed();
    void stepsWithoutAVideoCount();
    void noTimeIsEstimatedTooEarly();
    void strangeEventsAreHarmless();

private:
    FlightJob jobOf(const QString& name, int videoMb)
    {
        FlightJob job;
        job.folder = name;
        job.videos = QStringList{m_folder.filePath(name + ".MOV")};
        QFile video(job.videos[0]);
        if (!video.open(QIODevice::WriteOnly) || !video.resize(qint64(videoMb) * 1000 * 1000))
            qFatal("no room");
        return job;
    }

    QTemporaryDir m_folder;
};

void WorkEstimateTest::timeLeftIsKnownBeforeTheFirstFlightHasEnded()
{
    WorkEstimate estimate({jobOf("a", 1000), jobOf("b", 1000)}, true);
    estimate.take(progressEvent("a", "pictures", 0, 3), 0);
    QVERIFY(!estimate.leftMs(0));
    estimate.take(progressEvent("a", "video", 500, 1000), 60000);
    const std::optional<qint64> left = estimate.leftMs(60000);
    QVERIFY(left);
    // More than half of the first and none of the second took a minute.
    QVERIFY2(*left > 120000 && *left < 180000, qPrintable(QString::number(*left)));
    QVERIFY(estimate.share() > 0.25 && estimate.share() < 0.3);
    // Without an event it stays an estimate from now on.
    QVERIFY(*estimate.leftMs(90000) > *left);
}

void WorkEstimateTest::longVideoCountsForMore()
{
    WorkEstimate estimate({jobOf("short", 10), jobOf("long", 3000)}, true);
    estimate.take(progressEvent("short", "video", 0, 10), 0);
    estimate.take(finishedEvent("short", {}), 10000);
    QVERIFY(*estimate.leftMs(10000) > 500000);
    WorkEstimate withoutVideo({jobOf("short", 10), jobOf("long", 3000)}, false);
    withoutVideo.take(progressEvent("short", "pictures", 0, 10), 0);
    withoutVideo.take(finishedEvent("short", {}), 10000);
    QCOMPARE(*withoutVideo.leftMs(10000), 10000);
}

void WorkEstimateTest::flightsThatWereDoneBeforeSayNothingOfTheSpeed()
{
    WorkEstimate estimate({jobOf("a", 1), jobOf("b", 1), jobOf("c", 1)}, false);
    estimate.take(progressEvent("a", "open", 0, 0), 0);
    estimate.take(finishedEvent("a", {}), 100);
    QCOMPARE(estimate.share(), 1 / 3.0);
    estimate.take(progressEvent("b", "pictures", 0, 3), 5000);
    QVERIFY(!estimate.leftMs(5000));
    estimate.take(finishedEvent("b", {}), 25000);
    QCOMPARE(*estimate.leftMs(25000), 20000);
    estimate.take(finishedEvent("c", {}), 45000);
    QCOMPARE(*estimate.leftMs(45000), 0);
    QCOMPARE(estimate.share(), 1.0);
}

void WorkEstimateTest::stepsWithoutAVideoCount()
{
    WorkEstimate estimate({jobOf("a", 1)}, false);
    double before = -1;
    for (const QJsonObject& event :
         {progressEvent("a", "open", 0, 0), progressEvent("a", "pictures", 1, 3),
          progressEvent("a", "pictures", 3, 3), progressEvent("a", "tables", 0, 0),
          progressEvent("a", "report", 2, 3), progressEvent("a", "pdf", 0, 0),
          finishedEvent("a", {})}) {
        estimate.take(event, 0);
        QVERIFY(estimate.share() > before);
        before = estimate.share();
    }
    QCOMPARE(before, 1.0);
}

void WorkEstimateTest::noTimeIsEstimatedTooEarly()
{
    WorkEstimate estimate({jobOf("a", 1000)}, true);
    estimate.take(progressEvent("a", "video", 500, 1000), 1000);
    QVERIFY(!estimate.leftMs(1100));
    QVERIFY(estimate.leftMs(9000));
    WorkEstimate little({jobOf("a", 1000)}, true);
    little.take(progressEvent("a", "pictures", 0, 100), 0);
    QVERIFY2(little.leftMs(60000), "half a percent of the work is enough");
    QVERIFY(!WorkEstimate({}, true).leftMs(60000));
    QCOMPARE(WorkEstimate({}, true).share(), 1.0);
}

void WorkEstimateTest::strangeEventsAreHarmless()
{
    WorkEstimate estimate({jobOf("a", 1)}, true);
    for (const QJsonObject& event :
         {QJsonObject(), progressEvent("unknown", "video", 1, 2), progressEvent("a", "new", 1, 2),
          progressEvent("a", "video", 9, 2), progressEvent("a", "video", -9, 2)})
        estimate.take(event, 0);
    QCOMPARE(estimate.share(), 1.0);
    QCOMPARE(*estimate.leftMs(60000), 0);
}

QTEST_GUILESS_MAIN(WorkEstimateTest)
#include "WorkEstimateTest.moc"
