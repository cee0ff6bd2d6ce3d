#include "Review/JobList.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace corv;

/// Pieces of work and their list.
class JobTest : public QObject
{
    Q_OBJECT

private slots:
    void endsOnceAndKeepsItsReason()
    {
        Job job(Job::Kind::copying, "Copy", Job::Unit::bytes, {});
        QSignalSpy states(&job, &Job::stateChanged);
        job.report(3, 12);
        job.fail({Failure::Kind::noRoom, "The disk is full."});
        job.succeed("done");
        job.report(4, 12);
        QCOMPARE(states.size(), 1);
        QCOMPARE(job.state(), Job::Failed);
        QCOMPARE(job.resultText(), QString("The disk is full."));
        QCOMPARE(job.done(), qint64(3));
    }

    void asksItsMakerToStopOnce()
    {
        int asked = 0;
        Job job(Job::Kind::video, "Export", Job::Unit::steps, [&asked] { ++asked; });
        QVERIFY(job.isCancellable());
        job.cancel();
        job.cancel();
        QCOMPARE(asked, 1);
        QVERIFY(job.isRunning());
        job.fail({Failure::Kind::cancelled, "Cancelled."});
        QCOMPARE(job.state(), Job::Cancelled);
        job.cancel();
        QCOMPARE(asked, 1);
    }

    void transfersReadAsPeopleSayThem_data()
    {
        QTest::addColumn<qint64>("done");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<qint64>("elapsedMs");
        QTest::addColumn<QString>("text");
        QTest::newRow("just begun")
            << qint64(0) << qint64(4'000'000'000) << qint64(10) << "0 bytes of 4.0 GB";
        QTest::newRow("under way") << qint64(400'000'000) << qint64(4'000'000'000) << qint64(10'000)
                                   << "400 MB of 4.0 GB, 40 MB/s, 1 min 30 s left";
        QTest::newRow("hours") << qint64(1'000'000) << qint64(12'000'000'000) << qint64(1000)
                               << "1.0 MB of 12 GB, 1.0 MB/s, 3 h 19 min left";
        QTest::newRow("stuck") << qint64(0) << qint64(900) << qint64(60'000)
                               << "0 bytes of 900 bytes";
    }

    void transfersReadAsPeopleSayThem()
    {
        QFETCH(qint64, done);
        QFETCH(qint64, total);
        QFETCH(qint64, elapsedMs);
        QTEST(textOfTransfer(done, total, elapsedMs), "text");
    }

    void stepsReadAsPeopleSayThem_data()
    {
        QTest::addColumn<qint64>("done");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<qint64>("elapsedMs");
        QTest::addColumn<QString>("text");
        QTest::newRow("just begun") << qint64(3) << qint64(1260) << qint64(1999) << "3 of 1260";
        QTest::newRow("under way") << qint64(300) << qint64(1260) << qint64(25'000)
                                   << "300 of 1260, 12/s, 1 min 20 s left";
        QTest::newRow("slow") << qint64(2) << qint64(12) << qint64(4000)
                              << "2 of 12, 0.5/s, 20 s left";
        QTest::newRow("stuck") << qint64(0) << qint64(12) << qint64(60'000) << "0 of 12";
        QTest::newRow("at the end")
            << qint64(12) << qint64(12) << qint64(6000) << "12 of 12, 2.0/s, 0 s left";
    }

    void stepsReadAsPeopleSayThem()
    {
        QFETCH(qint64, done);
        QFETCH(qint64, total);
        QFETCH(qint64, elapsedMs);
        QTEST(textOfSteps(done, total, elapsedMs), "text");
    }

    void theListFollowsItsJobsAndDropsOldOnes()
    {
        JobList list;
        QAbstractItemModelTester tester(&list,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        Job* const running = list.start(Job::Kind::report, "Report");
        QCOMPARE(list.running(), 1);
        running->report(1, 3);
        QCOMPARE(list.index(0).data(JobList::ProgressTextRole).toString(), QString("1 of 3"));
        for (int i = 0; i < 2 * JobList::keptJobs; ++i)
            list.start(Job::Kind::saving, QString::number(i))->succeed();
        QCOMPARE(list.rowCount(), JobList::keptJobs);
        QCOMPARE(list.job(0), running);
        QCOMPARE(list.running(), 1);
        QVERIFY(!list.job(JobList::keptJobs));
    }
};

QTEST_GUILESS_MAIN(JobTest)
#include "JobTest.moc"
