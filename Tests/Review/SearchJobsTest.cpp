#include "Review/SearchJobs.h"

#include "Discovery/DirectoryParser.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>
#include <memory>

using namespace corv;

namespace {

/// Two videos and a log that belongs to the first, and a gate at which the lengths are held.
class Card
{
public:
    Card()
    {
        for (const char* name : {"a.mp4", "b.mp4", "l.log"}) {
            QFile file(m_folder.filePath(QString::fromLatin1(name)));
            file.open(QIODevice::WriteOnly);
        }
    }

    DirectoryParser::Machine machine()
    {
        DirectoryParser::Machine made;
        made.hasDriveService = false;
        made.files.state = [](const QFileInfo& file) {
            const QDateTime noon(QDate(2018, 6, 1), QTime(12, 0));
            return file.fileName() == QLatin1String("b.mp4")   ? noon.addSecs(5000)
                   : file.fileName() == QLatin1String("l.log") ? noon.addSecs(70)
                                                               : noon;
        };
        made.files.videoLength = [this](const QString&) {
            reached.release();
            gate.acquire();
            return VideoLength{60'000, 60'000};
        };
        made.files.log = [](const QString&, const std::atomic<bool>*,
                            const FlightFilesMatcher::LogStages&) {
            LogFacts facts;
            facts.read = true;
            facts.recordings = {{10'000, 71'000}};
            return facts;
        };
        return made;
    }

    void search(DirectoryParser& parser) const
    {
        parser.parseDirectories(m_folder.path(), m_folder.path(), false, false, false);
    }

    QSemaphore reached;
    QSemaphore gate;

private:
    QTemporaryDir m_folder;
};

/// A search of such a card, and the list in which it is a job.
struct ListedSearch
{
    ListedSearch()
    {
        jobs.setJobs(&list);
        jobs.setParser(&parser);
    }

    Card card;
    JobList list;
    DirectoryParser parser{card.machine()};
    SearchJobs jobs;
};

} // namespace

class SearchJobsTest : public QObject
{
    Q_OBJECT

private slots:
    void aSearchIsAJobWithProgressAndResult();
    void cancellingTheJobAbortsTheSearch();
    void anAbortedSearchIsACancelledJob();
    void theJobEndsWithoutItsLister();
    void withoutAListNothingIsKept();
    void theResultIsASentence_data();
    void theResultIsASentence();
};

void SearchJobsTest::aSearchIsAJobWithProgressAndResult()
{
    ListedSearch s;
    QCOMPARE(s.list.rowCount(), 0);
    s.card.search(s.parser);
    QCOMPARE(s.list.rowCount(), 1);
    Job* job = s.list.job(0);
    QCOMPARE(job->kind(), Job::Kind::search);
    QVERIFY(!job->isWriting());
    QVERIFY(job->isCancellable());
    s.card.gate.release();
    QTRY_COMPARE(job->progressText(), QStringLiteral("1 of 2"));
    QVERIFY(job->isRunning());
    s.card.gate.release();
    QTRY_COMPARE(job->state(), Job::Succeeded);
    QCOMPARE(job->resultText(), QStringLiteral("2 videos found, 1 with a log."));
    QCOMPARE(s.list.running(), 0);
}

void SearchJobsTest::cancellingTheJobAbortsTheSearch()
{
    ListedSearch s;
    QSignalSpy complete(&s.parser, &DirectoryParser::matchingComplete);
    s.card.search(s.parser);
    s.card.reached.acquire();
    s.list.job(0)->cancel();
    QVERIFY(s.list.job(0)->isRunning()); // until the search has ended
    s.card.gate.release(2);
    QTRY_COMPARE(s.list.job(0)->state(), Job::Cancelled);
    QVERIFY(!s.parser.isSearching());
    QCOMPARE(complete.size(), 0);
}

void SearchJobsTest::anAbortedSearchIsACancelledJob()
{
    ListedSearch s;
    s.card.search(s.parser);
    s.card.reached.acquire();
    s.parser.abortParsing();
    s.card.gate.release(4);
    QTRY_COMPARE(s.list.job(0)->state(), Job::Cancelled);
    s.card.search(s.parser);
    QTRY_COMPARE(s.list.rowCount(), 2);
    QTRY_COMPARE(s.list.job(1)->state(), Job::Succeeded);
}

void SearchJobsTest::theJobEndsWithoutItsLister()
{
    Card card;
    JobList list;
    auto parser = std::make_unique<DirectoryParser>(card.machine());
    auto jobs = std::make_unique<SearchJobs>();
    jobs->setJobs(&list);
    jobs->setParser(parser.get());
    card.search(*parser);
    card.reached.acquire();
    jobs.reset();
    const Job::State state = list.job(0)->state();
    card.gate.release(4);
    parser.reset();
    list.job(0)->cancel(); // and reaches nobody
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(state, Job::Cancelled);
}

void SearchJobsTest::withoutAListNothingIsKept()
{
    Card card;
    DirectoryParser parser(card.machine());
    SearchJobs jobs;
    jobs.setParser(&parser);
    QSignalSpy complete(&parser, &DirectoryParser::matchingComplete);
    card.gate.release(2);
    card.search(parser);
    QVERIFY(complete.wait());
}

void SearchJobsTest::theResultIsASentence_data()
{
    QTest::addColumn<int>("videos");
    QTest::addColumn<int>("withLog");
    QTest::addColumn<int>("doubtful");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0 << 0 << 0 << "No flights found.";
    QTest::newRow("one") << 1 << 1 << 0 << "1 video found, 1 with a log.";
    QTest::newRow("doubts") << 12 << 10 << 3
                            << "12 videos found, 10 with a log, 3 of them not certain.";
}

void SearchJobsTest::theResultIsASentence()
{
    QFETCH(int, videos);
    QFETCH(int, withLog);
    QFETCH(int, doubtful);
    QVariantList rows;
    for (int i = 0; i < videos; ++i)
        rows.append(QVariantMap{{"matchFound", i < withLog}, {"doubtful", i < doubtful}});
    QTEST(textOfMatchings(rows), "text");
}

QTEST_GUILESS_MAIN(SearchJobsTest)
#include "SearchJobsTest.moc"
