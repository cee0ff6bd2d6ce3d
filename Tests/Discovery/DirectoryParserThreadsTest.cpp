#include "Discovery/PersistentData.h"
#include "Support/MessageLog.h"
#include "Threads/pool.h"
#include "searchSetup.h"

#include <QScopeGuard>
#include <QThread>
#include <QThreadPool>
#include <QtTest>
#include <thread>

using namespace corv;
using namespace corv::test;

/// Searches that are held, refused, aborted and left, on the thread of the parser and the pool.
class DirectoryParserThreadsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aCardMayVanishDuringTheSearch();
    void signalsComeOnTheThreadOfTheParser();
    void aSecondSearchIsRefused();
    void theNextSearchMayStartFromTheResult();
    void anAbortedSearchEndsInSilence();
    void nothingOfAnAbortedSearchReachesTheNext();
    void searchingLastsUntilAnotherSearchCanStart();
    void countsVideosWhileTheirLengthsAreRead();
    void abortWithoutASearchOnlyEmits();
    void theEndOfTheParserWaitsForTheSearch_data();
    void theEndOfTheParserWaitsForTheSearch();
    void searchAbortSearchRecallClose();
    void theEndOfTheParserDoesNotWaitForAMedium_data();
    void theEndOfTheParserDoesNotWaitForAMedium();
    void anAbortedSearchKeepsNoThreadFromOthers();
};

void DirectoryParserThreadsTest::init()
{
    PersistentData::instance()->setDirectoryList({});
}

void DirectoryParserThreadsTest::aCardMayVanishDuringTheSearch()
{
    Setup s;
    const QString card = s.machine.addDrive("CARD", "CARD", true);
    s.addVideo(card + "/DCIM/100HDDVR/a.mp4", 0);
    s.addVideo(card + "/DCIM/100HDDVR/b.mp4", 100);
    s.addLog(card + "/l.log", 200);
    s.held = true;
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy remarked(s.parser.get(), &DirectoryParser::searchRemarks);
    const MessageLog messages;
    s.parser->parseDirectories(card, card, true, true, false);
    s.reached.acquire(); // the files have been listed
    s.machine.pullDrive(card);
    s.release();
    QVERIFY(complete.wait());
    QCOMPARE(column(rowsOf(complete), "videoFilename"), QStringList({"a", "b"}));
    QCOMPARE(column(rowsOf(complete), "videoDuration"), QStringList({"-1", "-1"}));
    QCOMPARE(column(rowsOf(complete), "logFile"), QStringList({"no_match", "no_match"}));
    QVERIFY(messages.contains("No time for file"));
    QVERIFY(s.parser->getDrives().isEmpty());
    QCOMPARE(remarked.size(), 1);
    QVERIFY(remarked[0][0].toStringList().first().contains(card));
}

void DirectoryParserThreadsTest::signalsComeOnTheThreadOfTheParser()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    QStringList order;
    bool onOwnThread = true;
    const auto note = [&](const QString& what) {
        order.append(what);
        onOwnThread = onOwnThread && QThread::currentThread() == s.parser->thread();
    };
    connect(
        s.parser.get(), &DirectoryParser::matchingProgress, s.parser.get(),
        [&](int file, int files, int step, int, int) {
            note(QString("%1/%2 %3").arg(file).arg(files).arg(step));
        },
        Qt::DirectConnection);
    connect(
        s.parser.get(), &DirectoryParser::matchingComplete, s.parser.get(),
        [&] { note("complete"); }, Qt::DirectConnection);
    s.searchFolders();
    QTRY_VERIFY(order.contains("complete"));
    QVERIFY(onOwnThread);
    QCOMPARE(order.first(), QString("1/1 0"));
    QVERIFY(order.contains("1/1 2"));
    QCOMPARE(order.last(), QString("complete"));
}

void DirectoryParserThreadsTest::aSecondSearchIsRefused()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    s.held = true;
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.searchFolders();
    s.reached.acquire();
    s.parser->parseDirectories(s.path("elsewhere"), s.path("elsewhere"), false, false, true);
    QCOMPARE(messages.messages(QtWarningMsg), QStringList({"Previous parsing didn't finish!"}));
    s.release();
    QVERIFY(complete.wait());
    QCOMPARE(column(rowsOf(complete), "videoFilename"), QStringList({"v"}));
    QCOMPARE(column(rowsOf(complete), "flightName"), QStringList({"Flight"}));
    QCoreApplication::processEvents();
    QCOMPARE(complete.size(), 1);
}

void DirectoryParserThreadsTest::theNextSearchMayStartFromTheResult()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    connect(s.parser.get(), &DirectoryParser::matchingComplete, s.parser.get(), [&] {
        if (complete.size() < 20)
            s.searchFolders(true);
    });
    const MessageLog messages;
    s.searchFolders(true);
    QTRY_COMPARE(complete.size(), 20);
    QVERIFY(!messages.contains("Previous parsing"));
}

void DirectoryParserThreadsTest::anAbortedSearchEndsInSilence()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy progress(s.parser.get(), &DirectoryParser::matchingProgress);
    s.searchFolders();
    QVERIFY(complete.wait());
    complete.clear();
    progress.clear();
    s.held = true;
    const MessageLog messages;
    s.searchFolders();
    s.reached.acquire();
    s.parser->abortParsing();
    QVERIFY(messages.contains("Aborting..."));
    s.searchFolders();
    QVERIFY(messages.contains("Previous parsing didn't finish!"));
    s.release();
    QTRY_VERIFY(messages.contains("Aborted (directoryParser)"));
    QVERIFY(messages.contains("Aborted. (flightFilesMatcher)"));
    QCOMPARE(complete.size(), 0);
    QCOMPARE(progress.size(), 0);
    // What an aborted search leaves behind is the empty list of the matcher.
    QVERIFY(s.parser->recallPersistentDirectoryList().isEmpty());
    s.searchFolders();
    QVERIFY(complete.wait());
    QCOMPARE(rowsOf(complete).size(), 1);
}

void DirectoryParserThreadsTest::nothingOfAnAbortedSearchReachesTheNext()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy progress(s.parser.get(), &DirectoryParser::matchingProgress);
    const MessageLog messages;
    s.searchFolders();
    // All signals of the search are on their way, and nothing of it has arrived.
    QThreadPool::globalInstance()->waitForDone();
    s.parser->abortParsing();
    s.searchFolders();
    QVERIFY(messages.contains("Previous parsing didn't finish!"));
    QTRY_VERIFY(messages.contains("Aborted (directoryParser)"));
    QCOMPARE(progress.size(), 0);
    s.searchFolders();
    QVERIFY(complete.wait());
    QCOMPARE(complete.size(), 1);
    QCOMPARE(rowsOf(complete).size(), 1);
}

void DirectoryParserThreadsTest::searchingLastsUntilAnotherSearchCanStart()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy changed(s.parser.get(), &DirectoryParser::searchingChanged);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QVERIFY(!s.parser->isSearching());
    s.held = true;
    s.searchFolders();
    QVERIFY(s.parser->isSearching());
    QCOMPARE(changed.size(), 1);
    s.reached.acquire();
    s.parser->abortParsing();
    QVERIFY(s.parser->isSearching());
    // What a window does that was asked for the next search too early.
    connect(s.parser.get(), &DirectoryParser::searchingChanged, s.parser.get(), [&s, &changed] {
        if (!s.parser->isSearching() && changed.size() == 2)
            s.searchFolders();
    });
    s.release();
    QVERIFY(complete.wait());
    QCOMPARE(complete.size(), 1);
    QCOMPARE(rowsOf(complete).size(), 1);
    QTRY_COMPARE(changed.size(), 4);
    QVERIFY(!s.parser->isSearching());
}

void DirectoryParserThreadsTest::countsVideosWhileTheirLengthsAreRead()
{
    Setup s;
    s.addVideo(s.path("videos/a.mp4"), 0);
    s.addVideo(s.path("videos/b.mp4"), 1);
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy counted(s.parser.get(), &DirectoryParser::videoProgress);
    s.searchFolders();
    QVERIFY(complete.wait());
    QCOMPARE(counted.size(), 2);
    QCOMPARE(counted[0], QVariantList({1, 2}));
    QCOMPARE(counted[1], QVariantList({2, 2}));
}

void DirectoryParserThreadsTest::abortWithoutASearchOnlyEmits()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    const MessageLog messages;
    s.parser->abortParsing();
    QCOMPARE(messages.messages(), QStringList({"Aborting..."}));
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    QCOMPARE(rowsOf(complete).size(), 1);
}

void DirectoryParserThreadsTest::theEndOfTheParserWaitsForTheSearch_data()
{
    QTest::addColumn<bool>("aborted");
    QTest::newRow("of a running search") << false;
    QTest::newRow("of an aborted search") << true;
}

void DirectoryParserThreadsTest::theEndOfTheParserWaitsForTheSearch()
{
    QFETCH(bool, aborted);
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    s.held = true;
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.searchFolders();
    s.reached.acquire();
    if (aborted)
        s.parser->abortParsing();
    std::thread opener([&s] { s.release(); });
    s.parser.reset();
    opener.join();
    QThreadPool::globalInstance()->waitForDone(); // a slow machine is like a slow medium
    // The worker has come to an end of its own, by the flag or just before it was set.
    QVERIFY(messages.contains("Aborted. (flightFilesMatcher)") ||
            (!aborted && messages.contains("Correct event")));
    QCoreApplication::processEvents();
    QCOMPARE(complete.size(), 0);
}

void DirectoryParserThreadsTest::searchAbortSearchRecallClose()
{
    Setup s;
    for (int i = 0; i < 5; ++i) {
        s.addVideo(s.path(QString("videos/v%1.mp4").arg(i)), i * 100);
        s.addLog(s.path(QString("logs/l%1.log").arg(i)), i * 100 + 50);
    }
    const MessageLog messages;
    for (int round = 0; round < 30; ++round) {
        const auto parser = s.makeParser();
        QSignalSpy complete(parser.get(), &DirectoryParser::matchingComplete);
        const auto search = [&] {
            parser->parseDirectories(s.path("videos"), s.path("logs"), false, false, false);
        };
        search();
        for (int turn = 0; turn < round * 100; ++turn)
            std::this_thread::yield();
        parser->abortParsing();
        QTRY_VERIFY((search(), parser->recallPersistentDirectoryList(), complete.size() > 0));
        QCOMPARE(rowsOf(complete).size(), 5);
        search();
    }
}

void DirectoryParserThreadsTest::theEndOfTheParserDoesNotWaitForAMedium_data()
{
    QTest::addColumn<QString>("hungIn");
    QTest::newRow("time of a file") << "time";
    QTest::newRow("length of a video") << "length";
    QTest::newRow("reading a log") << "log";
}

void DirectoryParserThreadsTest::theEndOfTheParserDoesNotWaitForAMedium()
{
    QFETCH(QString, hungIn);
    FlightCards cards;
    cards.addVideo(cards.path("videos/v.mp4"), 0);
    cards.addLog(cards.path("logs/l.log"), 10);
    DirectoryParser::Machine machine = cards.parserMachine();
    const auto hang = [&cards, hungIn](const QString& what) {
        if (hungIn != what)
            return;
        cards.reached.release();
        cards.gate.acquire();
    };
    const FlightFilesMatcher::FileFacts real = machine.files;
    machine.files.state = [=](const QFileInfo& file) {
        hang("time");
        return real.state(file);
    };
    machine.files.videoLength = [=](const QString& path) {
        hang("length");
        return real.videoLength(path);
    };
    machine.files.log = [=](const QString& path, const std::atomic<bool>* abort,
                            const FlightFilesMatcher::LogStages& stages) {
        hang("log");
        return real.log(path, abort, stages);
    };
    auto parser = std::make_unique<DirectoryParser>(machine);
    QSignalSpy complete(parser.get(), &DirectoryParser::matchingComplete);
    parser->parseDirectories(cards.path("videos"), cards.path("logs"), false, false, false);
    cards.reached.acquire();
    parser.reset();  // would never return if it waited: the medium answers only after it
    cards.release(); // nobody listens any more
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(complete.size(), 0);
}

void DirectoryParserThreadsTest::anAbortedSearchKeepsNoThreadFromOthers()
{
    QThreadPool* pool = QThreadPool::globalInstance();
    const int threads = pool->maxThreadCount();
    const auto restore = qScopeGuard([=] { pool->setMaxThreadCount(threads); });
    pool->setMaxThreadCount(1);
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    s.held = true;
    s.searchFolders();
    s.reached.acquire();
    s.parser->abortParsing();
    std::atomic<bool> ran{false};
    const PoolTask other = runOnPool([&ran] { ran = true; });
    QTRY_VERIFY(ran);
    QVERIFY(s.parser->isSearching());
    s.release();
    QTRY_VERIFY(!s.parser->isSearching());
    QCOMPARE(pool->activeThreadCount(), 0);
    QCOMPARE(pool->maxThreadCount(), 1);
}

QTEST_GUILESS_MAIN(DirectoryParserThreadsTest)
#include "DirectoryParserThreadsTest.moc"
