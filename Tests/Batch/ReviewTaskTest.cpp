#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

using namespace corv::test;

namespace {

constexpr int flightCount = 4;

void writeProgram(const QString& path, const QByteArray& body)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("#!/bin/bash\n" + body) > 0);
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
}

} // namespace

/// One task of the array for a Slurm cluster, without the cluster: which flights it works on, and
/// which other tasks it ends.
class ReviewTaskTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void takesFlightsOfNobodyElse_data();
    void takesFlightsOfNobodyElse();
    void endsWithTheWorstStatus();
    void killedWorkerIsStartedThreeTimes();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    ProgramRun runTask(int number, const QString& secondsBefore = "0") const;
    QStringList wordsIn(const QString& name) const;
    void take(int flight, int task) const
    {
        QVERIFY(QFile::link(QString::number(task), path("taken/%1").arg(flight)));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

// The tool writes down the flight that it gets; the cluster's command, which tasks it ends.
void ReviewTaskTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(path("taken")) && QDir().mkpath(path("bin")));
    const QByteArray folder = m_folder->path().toUtf8();
    writeProgram(path("vistrel-cli"), "cat >>" + folder + "/worked\n");
    writeProgram(path("bin/scancel"), "printf '%s\\n' \"$@\" >>" + folder + "/ended\n");
    QFile jobs(path("jobs.jsonl"));
    QVERIFY(jobs.open(QIODevice::WriteOnly));
    for (int flight = 1; flight <= flightCount; ++flight)
        QVERIFY(jobs.write(QByteArray::number(flight) + '\n') > 0);
}

ProgramRun ReviewTaskTest::runTask(int number, const QString& secondsBefore) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", path("bin") + ":/usr/bin:/bin");
    environment.insert("SLURM_ARRAY_JOB_ID", "70");
    environment.insert("SLURM_ARRAY_TASK_ID", QString::number(number));
    environment.insert("SECONDS", secondsBefore); // where the shell begins to count
    return runProgram(VISTREL_BATCH "/review-task",
                      {path("vistrel-cli"), path("jobs.jsonl"), path("out"), path("taken")},
                      environment);
}

QStringList ReviewTaskTest::wordsIn(const QString& name) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

void ReviewTaskTest::takesFlightsOfNobodyElse_data()
{
    QTest::addColumn<QList<int>>("ownersBefore"); // of flights 1, 2 ...; 0 for nobody
    QTest::addColumn<int>("task");
    QTest::addColumn<QString>("secondsBefore");
    QTest::addColumn<QStringList>("worked");
    QTest::addColumn<QStringList>("ended");
    const QStringList idle{"--quiet", "--state=PENDING"};
    QTest::newRow("first task, alone")
        << QList<int>{} << 1 << "0" << QStringList{"1", "2", "3", "4"}
        << idle + QStringList{"70_2", "70_3", "70_4"};
    QTest::newRow("second task, one flight is taken")
        << QList<int>{1} << 2 << "0" << QStringList{"2", "3", "4"}
        << idle + QStringList{"70_3", "70_4"};
    QTest::newRow("last of all tasks")
        << QList<int>{1, 2, 3} << 4 << "0" << QStringList{"4"} << QStringList();
    QTest::newRow("nothing left") << QList<int>{1, 2, 1, 2} << 3 << "0" << QStringList()
                                  << QStringList();
    QTest::newRow("five minutes of work")
        << QList<int>{1} << 2 << "300" << QStringList{"2"} << QStringList();
    QTest::newRow("five minutes of work before the flight of its number")
        << QList<int>{1} << 3 << "300" << QStringList{"2"} << QStringList();
    QTest::newRow("back from a lost node")
        << QList<int>{1, 2, 1, 0} << 1 << "0" << QStringList{"1", "3", "4"}
        << idle + QStringList{"70_3", "70_4"};
    QTest::newRow("back from a lost node, five minutes of work")
        << QList<int>{1, 2, 1, 0} << 1 << "300" << QStringList{"1", "3"} << QStringList();
    QTest::newRow("no room for links")
        << QList<int>{-1} << 3 << "0" << QStringList{"3"} << QStringList();
}

void ReviewTaskTest::takesFlightsOfNobodyElse()
{
    QFETCH(QList<int>, ownersBefore);
    QFETCH(int, task);
    QFETCH(QString, secondsBefore);
    for (int i = 0; i < ownersBefore.size(); ++i)
        if (ownersBefore[i] > 0)
            take(i + 1, ownersBefore[i]);
    // A folder that is none takes no link, as a full disk.
    if (ownersBefore.contains(-1))
        QVERIFY(QDir(path("taken")).removeRecursively());
    const ProgramRun run = runTask(task, secondsBefore);
    QVERIFY2(run.status == 0, run.out + run.error);
    QTEST(wordsIn("worked"), "worked");
    QStringList ended = wordsIn("ended");
    ended.removeDuplicates();
    QTEST(ended, "ended");
    QCOMPARE(run.error, QByteArray());
}

void ReviewTaskTest::endsWithTheWorstStatus()
{
    writeProgram(path("vistrel-cli"), "exit $(($(cat) == 2 ? 3 : 0))\n");
    QCOMPARE(runTask(1).status, 3);
}

void ReviewTaskTest::killedWorkerIsStartedThreeTimes()
{
    writeProgram(path("vistrel-cli"), "flight=$(cat)\necho $flight >>" + m_folder->path().toUtf8() +
                                          "/worked\n[ $flight != 2 ] || kill -9 $$\n");
    const ProgramRun run = runTask(1);
    QCOMPARE(run.status, 128 + 9);
    QCOMPARE(wordsIn("worked"), QStringList({"1", "2", "2", "2", "3", "4"}));
    QVERIFY2(run.error.contains("the worker of flight 2 ended with 137 in attempt 3"), run.error);
}

QTEST_GUILESS_MAIN(ReviewTaskTest)
#include "ReviewTaskTest.moc"
