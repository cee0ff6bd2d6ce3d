#include "Batch/BatchRun.h"

#include <QFile>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

namespace {

using Outcome = BatchRun::Outcome;

FlightJob jobOf(const QString& folder)
{
    FlightJob job;
    job.folder = folder;
    job.videos = QStringList{"/card/" + folder + ".MOV"};
    return job;
}

QList<FlightJob> jobsOf(const QStringList& folders)
{
    QList<FlightJob> jobs;
    for (const QString& folder : folders)
        jobs << jobOf(folder);
    return jobs;
}

} // namespace

// The processes are those of a shell script, which does as the name of the flight says.
class BatchRunTest : public QObject
{
    Q_OBJECT

private:
    BatchRun::Command script(const QByteArray& body)
    {
        const QString path = m_folder.filePath("worker.sh");
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write("#!/bin/sh\nflight=$(sed -n 's/.*\"folder\": \"\\(.*\\)\",/\\1/p')\n" +
                       body);
        return {"/bin/sh", {path}};
    }

    QTemporaryDir m_folder;

private slots:
    void eachFlightEndsInItsOwnWay()
    {
        BatchRun run(script("case $flight in good) exit 0;; some) exit 3;; bad) exit 1;;\n"
                            "crash) kill -9 $$;; esac\n"),
                     jobsOf({"crash", "good", "some", "bad"}), 2);
        QSignalSpy finished(&run, &BatchRun::finished);
        QSignalSpy flights(&run, &BatchRun::flightFinished);
        QList<QJsonObject> events;
        connect(&run, &BatchRun::reported, this,
                [&events](const QJsonObject& event) { events << event; });
        run.start();
        QVERIFY(finished.wait());
        QCOMPARE(flights.count(), 4);
        QCOMPARE(run.count(Outcome::done), 1);
        QCOMPARE(run.count(Outcome::partial), 1);
        QCOMPARE(run.count(Outcome::failed), 2);
        // What the process could not report itself.
        QCOMPARE(events.size(), 1);
        QCOMPARE(events[0]["flight"].toString(), QStringLiteral("crash"));
        QCOMPARE(events[0]["status"].toString(), QStringLiteral("failed"));
        QVERIFY(events[0]["failures"].toArray()[0].toObject()["message"].toString().contains(
            "ended unexpectedly"));
    }

    void linesOfTheProcessesAreReported()
    {
        BatchRun run(
            script("printf '{\"event\":\"progress\",\"flight\":\"%s\",\"done\":1}\\n' $flight\n"
                   "echo no JSON\n"
                   "printf '{\"event\":\"finished\",'; sleep 0\n"
                   "printf '\"flight\":\"%s\"}\\n' $flight\n"),
            jobsOf({"a"}), 1);
        QSignalSpy finished(&run, &BatchRun::finished);
        QStringList events;
        connect(&run, &BatchRun::reported, this, [&events](const QJsonObject& event) {
            events << event["event"].toString() + event["flight"].toString();
        });
        run.start();
        QVERIFY(finished.wait());
        QCOMPARE(events, QStringList({"progressa", "finisheda"}));
    }

    void noMoreFlightsThanAllowedRunAtOnce()
    {
        // Each leaves a file while it runs and counts those of the others.
        BatchRun run(script("cd " + m_folder.path().toUtf8() +
                            "\ntouch run.$flight\nls run.* | wc -l >>counts\nrm run.$flight\n"),
                     jobsOf({"a", "b", "c", "d", "e", "f"}), 2);
        QSignalSpy finished(&run, &BatchRun::finished);
        run.start();
        QVERIFY(finished.wait());
        QFile counts(m_folder.filePath("counts"));
        QVERIFY(counts.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = counts.readAll().trimmed().split('\n');
        QCOMPARE(lines.size(), 6);
        for (const QByteArray& line : lines)
            QVERIFY(line.trimmed().toInt() <= 2);
    }

    void cancelEndsWhatRunsAndStartsNothingMore()
    {
        BatchRun run(script("echo '{\"event\":\"progress\",\"flight\":\"a\"}'\nexec sleep 300\n"),
                     jobsOf({"a", "b", "c"}), 1);
        QSignalSpy finished(&run, &BatchRun::finished);
        QSignalSpy flights(&run, &BatchRun::flightFinished);
        connect(&run, &BatchRun::reported, &run, &BatchRun::cancel);
        run.start();
        QVERIFY(finished.wait());
        QCOMPARE(flights.count(), 1);
        QVERIFY(run.isCancelled());
        QCOMPARE(run.count(Outcome::failed), 1);
    }

    void programThatIsMissingFailsEachFlight()
    {
        BatchRun run({m_folder.filePath("missing"), {}}, jobsOf({"a", "b"}), 2);
        QSignalSpy finished(&run, &BatchRun::finished);
        run.start();
        QVERIFY(finished.wait());
        QCOMPARE(run.count(Outcome::failed), 2);
    }

    void noFlightsEndAtOnce()
    {
        BatchRun run({"/bin/true", {}}, {}, 2);
        QSignalSpy finished(&run, &BatchRun::finished);
        run.start();
        QVERIFY(finished.wait());
        QCOMPARE(run.flightCount(), 0);
    }
};

QTEST_GUILESS_MAIN(BatchRunTest)
#include "BatchRunTest.moc"
