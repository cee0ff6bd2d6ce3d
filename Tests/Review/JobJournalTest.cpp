#include "Review/JobJournal.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

/// What a start says of the jobs that an earlier run did not finish.
class JobJournalTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void namesWhatRanWhenTheProgramEnded();
    void keepsNothingOfFinishedJobs();
    void readingIsNotKept();
    void aShortJobWritesNothing();
    void leavesTheJobsOfARunningProgramAlone();
    void saysItOnce();
    void survivesDamage_data();
    void survivesDamage();
    void worksWithoutAFolder();

private:
    QString path() const { return m_folder->path(); }
    QStringList files() const { return QDir(path()).entryList(QDir::Files); }
    Job* start(JobList& jobs, const QString& title, const QString& target)
    {
        return jobs.start(Job::Kind::video, title, Job::Unit::steps, {}, target);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void JobJournalTest::namesWhatRanWhenTheProgramEnded()
{
    {
        JobList jobs;
        JobJournal journal;
        journal.setJobs(&jobs);
        journal.setFolder(path());
        QCOMPARE(journal.unfinishedText(), QString());
        start(jobs, "Write the video", "/flights/<b>.mp4");
        start(jobs, "Write the report", QString());
        start(jobs, "Save pictures", "/flights/out")->succeed();
    }
    JobJournal next;
    next.setFolder(path());
    QCOMPARE(next.unfinishedText(),
             QString("Not finished when Vistrel last ended: Write the video (/flights/<b>.mp4); "
                     "Write the report"));
}

void JobJournalTest::keepsNothingOfFinishedJobs()
{
    {
        JobList jobs;
        JobJournal journal;
        journal.setJobs(&jobs);
        journal.setFolder(path());
        start(jobs, "one", "/a")->succeed();
        start(jobs, "two", "/b")->fail({Failure::Kind::noRoom, "The disk is full."});
    }
    QCOMPARE(files(), QStringList());
}

void JobJournalTest::readingIsNotKept()
{
    JobList jobs;
    JobJournal journal;
    journal.setJobs(&jobs);
    journal.setFolder(path());
    jobs.start(Job::Kind::log, "Read a log");
    QCOMPARE(files(), QStringList());
}

void JobJournalTest::aShortJobWritesNothing()
{
    const QDateTime before = QFileInfo(path()).lastModified();
    {
        JobList jobs;
        JobJournal journal;
        journal.setJobs(&jobs);
        journal.setFolder(path());
        for (int i = 0; i < 20; ++i)
            start(jobs, "Save the project", "/a.ecor")->succeed();
    }
    QCOMPARE(QFileInfo(path()).lastModified(), before);
}

void JobJournalTest::leavesTheJobsOfARunningProgramAlone()
{
    JobList jobs;
    JobJournal running;
    running.setJobs(&jobs);
    running.setFolder(path());
    Job* const job = start(jobs, "Write the video", "/a.mp4");
    QTRY_COMPARE(QDir(path()).entryList({"*.json"}).size(), 1);
    JobJournal other;
    other.setFolder(path());
    QCOMPARE(other.unfinishedText(), QString());
    QCOMPARE(QDir(path()).entryList({"*.json"}).size(), 1);
    job->succeed();
    QTRY_COMPARE(QDir(path()).entryList({"*.json"}).size(), 0);
}

void JobJournalTest::saysItOnce()
{
    {
        JobList jobs;
        JobJournal journal;
        journal.setJobs(&jobs);
        journal.setFolder(path());
        start(jobs, "Write the video", "/a.mp4");
    }
    JobJournal next;
    QSignalSpy changes(&next, &JobJournal::unfinishedTextChanged);
    next.setFolder(path());
    QVERIFY(!next.unfinishedText().isEmpty());
    next.forgetUnfinished();
    QCOMPARE(next.unfinishedText(), QString());
    QCOMPARE(changes.size(), 2);
    JobJournal after;
    after.setFolder(path());
    QCOMPARE(after.unfinishedText(), QString());
    QCOMPARE(files(), QStringList());
}

void JobJournalTest::survivesDamage_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut off") << QByteArray(R"({"format":1,"jobs":["Write)");
    QTest::newRow("other types") << QByteArray(R"({"format":1,"jobs":[1,{},null,""]})");
    QTest::newRow("no list") << QByteArray(R"({"format":1,"jobs":"all"})");
    QTest::newRow("huge") << QByteArray(3 << 20, '[');
}

void JobJournalTest::survivesDamage()
{
    QFETCH(QByteArray, contents);
    QFile file(path() + "/jobs-1.json");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
    file.close();
    JobJournal journal;
    journal.setFolder(path());
    QCOMPARE(journal.unfinishedText(), QString());
    QCOMPARE(files(), QStringList());
}

void JobJournalTest::worksWithoutAFolder()
{
    JobList jobs;
    JobJournal journal;
    journal.setJobs(&jobs);
    journal.setFolder("/proc/none");
    start(jobs, "Write the video", "/a.mp4")->succeed();
    QCOMPARE(journal.unfinishedText(), QString());
}

QTEST_GUILESS_MAIN(JobJournalTest)
#include "JobJournalTest.moc"
