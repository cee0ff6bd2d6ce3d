#include "Discovery/DirectoryParser.h"
#include "Discovery/PersistentData.h"
#include "FakeMachine.h"
#include "Support/MessageLog.h"
#include "flightLogs.h"

#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>
#include <QtTest>
#include <atomic>
#include <memory>
#include <thread>
#include <unistd.h>

using namespace corv;
using namespace corv::test;

namespace {

const QDateTime kStart(QDate(2018, 6, 1), QTime(12, 0));

// Reads folders as somebody who has to ask, also where the tests run as root.
class Unprivileged
{
public:
    Unprivileged() : m_before(::geteuid())
    {
        if (m_before == 0 && ::seteuid(65'534) != 0)
            qFatal("cannot give up privileges");
    }
    ~Unprivileged()
    {
        if (m_before == 0 && ::seteuid(0) != 0)
            qFatal("cannot take privileges back");
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    uid_t m_before;
};

// A parser on a machine of folders, with videos of 60 s, and a gate where a search can be held.
struct Setup
{
    FakeMachine machine;
    std::atomic<bool> held{false};
    QSemaphore reached;
    QSemaphore gate;
    QHash<QString, int> seconds;
    std::unique_ptr<DirectoryParser> parser;

    Setup() { parser = makeParser(); }

    std::unique_ptr<DirectoryParser> makeParser()
    {
        DirectoryParser::Machine made;
        made.volumes = [this] { return machine.volumes(); };
        made.sysfsRoot = machine.sysfsRoot();
        made.files.time = [this](const QFileInfo& file) {
            if (held) {
                reached.release();
                gate.acquire();
            }
            return QFile::exists(file.filePath()) ? kStart.addSecs(seconds.value(file.fileName()))
                                                  : QDateTime();
        };
        made.files.videoDurationMs = [](const QString& path) {
            return QFileInfo(path).isFile() ? 60'000 : -1;
        };
        return std::make_unique<DirectoryParser>(made);
    }

    QString folder(const QString& name) const { return machine.path(name); }

    void addVideo(const QString& path, int second)
    {
        machine.addFile(path);
        seconds[QFileInfo(path).fileName()] = second;
    }

    void addLog(const QString& path, int second, const QByteArray& flight = "Flight")
    {
        machine.addFile(path,
                        flightLog({{10'000, 71'000}}, {{5000, "Mission", flight, 7}}).bytes());
        seconds[QFileInfo(path).fileName()] = second;
    }

    void searchFolders(bool quickMode = false)
    {
        parser->parseDirectories(folder("videos"), folder("logs"), false, false, quickMode);
    }

    // Lets a held search go on to its end.
    void release()
    {
        held = false;
        gate.release(1000);
    }
};

QVariantList rowsOf(const QSignalSpy& spy, int emission = 0)
{
    return spy.at(emission).at(0).toList();
}

QStringList column(const QVariantList& rows, const QString& key)
{
    QStringList values;
    for (const QVariant& row : rows)
        values.append(row.toMap()[key].toString());
    return values;
}

} // namespace

class DirectoryParserTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aRowTellsAllOfAFlight();
    void aVideoWithoutALogIsARow();
    void searchesWhereTheLayoutSays_data();
    void searchesWhereTheLayoutSays();
    void nothingToMatchIsAnEmptyResult_data();
    void nothingToMatchIsAnEmptyResult();
    void unreadableFoldersCountAsEmpty();
    void aFolderWithTheExtensionIsAVideoThatWillNotOpen();
    void aCardMayVanishDuringTheSearch();
    void signalsComeOnTheThreadOfTheParser();
    void aSecondSearchIsRefused();
    void theNextSearchMayStartFromTheResult();
    void anAbortedSearchEndsInSilence();
    void nothingOfAnAbortedSearchReachesTheNext();
    void anAbortWithoutASearchOnlyTells();
    void theResultIsRemembered();
    void theEndOfTheParserWaitsForTheSearch_data();
    void theEndOfTheParserWaitsForTheSearch();
    void searchAbortSearchRecallClose();
    void allDrivesAreListed();
    void theMachinesOwnDrivesAreListed();
    void autodetectFindsCards_data();
    void autodetectFindsCards();
    void autodetectTellsWhatItDoes();
};

void DirectoryParserTest::init()
{
    PersistentData::instance()->setDirectoryList({});
}

void DirectoryParserTest::aRowTellsAllOfAFlight()
{
    Setup s;
    s.addVideo(s.folder("videos/a.b.mp4"), 0);
    s.addLog(s.folder("logs/l.1.log"), 60, "Nördlich 1");
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.searchFolders();
    QVERIFY(complete.wait());
    const QVariantMap expected = {
        {"videoFile", s.folder("videos/a.b.mp4")},
        {"videoFilename", "a"},
        {"logFile", s.folder("logs/l.1.log")},
        {"logFilename", "l"},
        {"matchFound", true},
        {"namingDefined", true},
        {"missionName", "Mission"},
        {"flightName", "Nördlich 1"},
        {"flightNumber", 7},
        {"videoDuration", 60'000},
    };
    QCOMPARE(rowsOf(complete).size(), 1);
    QCOMPARE(rowsOf(complete)[0].toMap(), expected);
    QVERIFY(messages.contains("Starting the directory parser"));
    QVERIFY(messages.contains("Videos files list: (QFileInfo("));
    QVERIFY(messages.contains("Log files list: (QFileInfo("));
}

void DirectoryParserTest::aVideoWithoutALogIsARow()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 1800);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    const QVariantMap expected = {
        {"videoFile", s.folder("videos/v.mp4")},
        {"videoFilename", "v"},
        {"logFile", "no_match"},
        {"logFilename", "No match"},
        {"matchFound", false},
        {"namingDefined", false},
        {"missionName", QString()},
        {"flightName", QString()},
        {"flightNumber", 0},
        {"videoDuration", 60'000},
    };
    QCOMPARE(rowsOf(complete).size(), 1);
    QCOMPARE(rowsOf(complete)[0].toMap(), expected);
}

void DirectoryParserTest::searchesWhereTheLayoutSays_data()
{
    QTest::addColumn<QStringList>("videos");
    QTest::addColumn<bool>("fromDrive");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("both kinds in a folder")
        << QStringList{"b.mp4", "a.mov", "c.avi"} << false << QStringList{"b.mp4", "a.mov"};
    QTest::newRow("a folder is not searched below")
        << QStringList{"x.mp4", "DCIM/100HDDVR/a.mp4"} << false << QStringList{"x.mp4"};
    QTest::newRow("a drive is not searched above")
        << QStringList{"x.mp4", "DCIM/y.mp4"} << true << QStringList{};
    QTest::newRow("both models on a drive")
        << QStringList{"DCIM/101_CORV/b.mov", "DCIM/100HDDVR/a.mp4", "DCIM/102_CORV/c.mov"} << true
        << QStringList{"DCIM/100HDDVR/a.mp4", "DCIM/101_CORV/b.mov", "DCIM/102_CORV/c.mov"};
    QTest::newRow("blanks and other letters")
        << QStringList{"DCIM/100HDDVR/Полёт №1 %20 #.mp4"} << true
        << QStringList{"DCIM/100HDDVR/Полёт №1 %20 #.mp4"};
}

void DirectoryParserTest::searchesWhereTheLayoutSays()
{
    QFETCH(QStringList, videos);
    QFETCH(bool, fromDrive);
    QFETCH(QStringList, found);
    Setup s;
    const QString root = s.folder("Meine Karte/Ä");
    for (const QString& video : videos)
        s.addVideo(root + "/" + video, 0);
    s.addLog(s.folder("logs/l.log"), 0);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.parser->parseDirectories(root, s.folder("logs"), fromDrive, !fromDrive, true);
    QVERIFY(complete.wait());
    QStringList expected;
    for (const QString& video : found)
        expected.append(root + "/" + video);
    QCOMPARE(column(rowsOf(complete), "videoFile"), expected);
}

void DirectoryParserTest::nothingToMatchIsAnEmptyResult_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::newRow("no log") << QStringList{"videos/a.mp4"};
    QTest::newRow("no video") << QStringList{"logs/a.log"};
    QTest::newRow("neither") << QStringList{};
}

void DirectoryParserTest::nothingToMatchIsAnEmptyResult()
{
    QFETCH(QStringList, files);
    Setup s;
    FlightMatchData remembered;
    remembered.videoFile = QFileInfo("/before.mp4");
    PersistentData::instance()->setDirectoryList({remembered});
    for (const QString& file : files)
        s.machine.addFile(s.folder(file));
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.searchFolders();
    QVERIFY(complete.wait());
    QVERIFY(rowsOf(complete).isEmpty());
    QVERIFY(!messages.contains(" entries"));
    QVERIFY(messages.messages(QtWarningMsg).isEmpty());
    QCOMPARE(column(s.parser->recallPersistentDirectoryList(), "videoFilename"),
             QStringList({"before"}));
}

void DirectoryParserTest::unreadableFoldersCountAsEmpty()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 0);
    const QFile::Permissions open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                    QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther |
                                    QFile::ExeOther;
    QVERIFY(QFile::setPermissions(s.folder("."), open));
    QVERIFY(QFile::setPermissions(s.folder("videos"), open));
    QVERIFY(QFile::setPermissions(s.folder("logs"), open));
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    {
        const Unprivileged visitor;
        s.searchFolders(true);
        QVERIFY(complete.wait());
    }
    QCOMPARE(rowsOf(complete).size(), 1);
    QVERIFY(QFile::setPermissions(s.folder("videos"), {}));
    {
        const Unprivileged visitor;
        s.searchFolders(true);
        QVERIFY(complete.wait());
    }
    QVERIFY(rowsOf(complete, 1).isEmpty());
    QVERIFY(QFile::setPermissions(s.folder("videos"), open));
}

void DirectoryParserTest::aFolderWithTheExtensionIsAVideoThatWillNotOpen()
{
    Setup s;
    QVERIFY(QDir().mkpath(s.folder("videos/x.mp4")));
    s.addLog(s.folder("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    const QVariantMap row = rowsOf(complete).value(0).toMap();
    QCOMPARE(row["videoFilename"].toString(), QString("x"));
    QCOMPARE(row["videoDuration"].toInt(), -1);
    QVERIFY(row["matchFound"].toBool());
    QVERIFY(!row["namingDefined"].toBool());
}

void DirectoryParserTest::aCardMayVanishDuringTheSearch()
{
    Setup s;
    const QString card = s.machine.addDrive("CARD", "CARD", true);
    s.addVideo(card + "/DCIM/100HDDVR/a.mp4", 0);
    s.addVideo(card + "/DCIM/100HDDVR/b.mp4", 100);
    s.addLog(card + "/l.log", 200);
    s.held = true;
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.parser->parseDirectories(card, card, true, true, false);
    s.reached.acquire(); // the files have been listed
    s.machine.pullDrive(card);
    s.release();
    QVERIFY(complete.wait());
    QCOMPARE(column(rowsOf(complete), "videoFilename"), QStringList({"a", "b"}));
    QCOMPARE(column(rowsOf(complete), "videoDuration"), QStringList({"-1", "-1"}));
    QCOMPARE(column(rowsOf(complete), "logFile"), QStringList({"no_match", "no_match"}));
    QCOMPARE(messages.count("No time for file"), 3);
    QVERIFY(s.parser->getDrives().isEmpty());
}

void DirectoryParserTest::signalsComeOnTheThreadOfTheParser()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
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

void DirectoryParserTest::aSecondSearchIsRefused()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
    s.held = true;
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.searchFolders();
    s.reached.acquire();
    s.parser->parseDirectories(s.folder("elsewhere"), s.folder("elsewhere"), false, false, true);
    QCOMPARE(messages.messages(QtWarningMsg), QStringList({"Previous parsing didn't finish!"}));
    s.release();
    QVERIFY(complete.wait());
    QCOMPARE(column(rowsOf(complete), "videoFilename"), QStringList({"v"}));
    QCOMPARE(column(rowsOf(complete), "flightName"), QStringList({"Flight"}));
    QCOMPARE(messages.count("Starting the directory parser"), 1);
    QCoreApplication::processEvents();
    QCOMPARE(complete.size(), 1);
}

void DirectoryParserTest::theNextSearchMayStartFromTheResult()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
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

void DirectoryParserTest::anAbortedSearchEndsInSilence()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
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

void DirectoryParserTest::nothingOfAnAbortedSearchReachesTheNext()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy progress(s.parser.get(), &DirectoryParser::matchingProgress);
    const MessageLog messages;
    s.searchFolders();
    // All that the search has to tell is on its way, and nothing of it has arrived.
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

void DirectoryParserTest::anAbortWithoutASearchOnlyTells()
{
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
    const MessageLog messages;
    s.parser->abortParsing();
    QCOMPARE(messages.messages(), QStringList({"Aborting..."}));
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    QCOMPARE(rowsOf(complete).size(), 1);
}

void DirectoryParserTest::theResultIsRemembered()
{
    Setup s;
    QVERIFY(s.parser->recallPersistentDirectoryList().isEmpty());
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    s.parser.reset();
    const DirectoryParser other;
    QCOMPARE(const_cast<DirectoryParser&>(other).recallPersistentDirectoryList(), rowsOf(complete));
}

void DirectoryParserTest::theEndOfTheParserWaitsForTheSearch_data()
{
    QTest::addColumn<bool>("aborted");
    QTest::newRow("of a running search") << false;
    QTest::newRow("of an aborted search") << true;
}

void DirectoryParserTest::theEndOfTheParserWaitsForTheSearch()
{
    QFETCH(bool, aborted);
    Setup s;
    s.addVideo(s.folder("videos/v.mp4"), 0);
    s.addLog(s.folder("logs/l.log"), 10);
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
    // The worker has come to an end of its own, by the flag or just before it was set.
    QVERIFY(messages.contains("Aborted. (flightFilesMatcher)") ||
            (!aborted && messages.contains("Correct event")));
    QCoreApplication::processEvents();
    QCOMPARE(complete.size(), 0);
}

void DirectoryParserTest::searchAbortSearchRecallClose()
{
    Setup s;
    for (int i = 0; i < 5; ++i) {
        s.addVideo(s.folder(QString("videos/v%1.mp4").arg(i)), i * 100);
        s.addLog(s.folder(QString("logs/l%1.log").arg(i)), i * 100 + 50);
    }
    const MessageLog messages;
    for (int round = 0; round < 30; ++round) {
        const auto parser = s.makeParser();
        QSignalSpy complete(parser.get(), &DirectoryParser::matchingComplete);
        const auto search = [&] {
            parser->parseDirectories(s.folder("videos"), s.folder("logs"), false, false, false);
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

void DirectoryParserTest::allDrivesAreListed()
{
    Setup s;
    const QString fixed = s.machine.addDrive("disk", "", false);
    const QString card = s.machine.addDrive("My Card", "KARTE Ä", true);
    s.machine.addFile(fixed + "/a.log");
    const QVariantList drives = s.parser->getDrives();
    QCOMPARE(drives.size(), 2);
    QCOMPARE(drives[0].toMap(),
             QVariantMap({{"name", ""}, {"path", fixed}, {"type", platform::driveFixed}}));
    QCOMPARE(drives[1].toMap(), QVariantMap({{"name", "KARTE Ä"}, {"path", card}, {"type", 2}}));
}

void DirectoryParserTest::theMachinesOwnDrivesAreListed()
{
    DirectoryParser parser;
    QStringList expected;
    for (const platform::Volume& volume : platform::mountedVolumes())
        expected.append(volume.rootPath);
    QCOMPARE(column(parser.getDrives(), "path"), expected);
}

void DirectoryParserTest::autodetectFindsCards_data()
{
    QTest::addColumn<QStringList>("files"); // "disk" is fixed, the others can be pulled
    QTest::addColumn<QStringList>("logs");
    QTest::addColumn<QStringList>("videos");
    const QString both = "Aviro/Aviro2";
    QTest::newRow("nothing") << QStringList{} << QStringList{} << QStringList{};
    QTest::newRow("a fixed disk with a perfect layout")
        << QStringList{"disk/a.log", "disk/DCIM/100HDDVR/a.mp4"} << QStringList{} << QStringList{};
    QTest::newRow("logs and an empty DCIM")
        << QStringList{"one/a.log", "one/DCIM/"} << QStringList{"one " + both} << QStringList{};
    QTest::newRow("a card of each kind") << QStringList{"one/a.log", "two/DCIM/100HDDVR/a.mp4"}
                                         << QStringList{"one " + both} << QStringList{"two Aviro"};
    QTest::newRow("both models on one card")
        << QStringList{"one/DCIM/100HDDVR/a.mp4", "one/DCIM/101_CORV/b.mov"} << QStringList{}
        << QStringList{"one Aviro", "one Aviro2"};
    QTest::newRow("everything on one card")
        << QStringList{"two/x.log", "two/DCIM/199_CORV/b.mov"} << QStringList{"two " + both}
        << QStringList{"two Aviro2"};
    QTest::newRow("logs on two cards")
        << QStringList{"two/b.log", "one/a.log"} << QStringList{"one " + both, "two " + both}
        << QStringList{};
    QTest::newRow("video in DCIM itself")
        << QStringList{"one/DCIM/a.mp4"} << QStringList{} << QStringList{};
    QTest::newRow("a folder outside the pattern")
        << QStringList{"one/DCIM/200_CORV/a.mov"} << QStringList{} << QStringList{};
}

void DirectoryParserTest::autodetectFindsCards()
{
    QFETCH(QStringList, files);
    QFETCH(QStringList, logs);
    QFETCH(QStringList, videos);
    Setup s;
    s.machine.addDrive("disk", "", false);
    s.machine.addDrive("one", "", true);
    s.machine.addDrive("two", "", true);
    for (const QString& file : files) {
        if (file.endsWith('/'))
            QVERIFY(QDir().mkpath(s.folder("media/" + file)));
        else
            s.machine.addFile(s.folder("media/" + file));
    }
    const QVariantMap result = s.parser->autodetectDrivesWithData();
    const auto described = [](const QVariantList& drives) {
        QStringList texts;
        for (const QVariant& drive : drives) {
            const QVariantMap map = drive.toMap();
            texts.append(QFileInfo(map["path"].toString()).fileName() + " " +
                         map["droneModel"].toString());
        }
        return texts;
    };
    QCOMPARE(result.keys(), QStringList({"logs", "videos"}));
    QCOMPARE(described(result["logs"].toList()), logs);
    QCOMPARE(described(result["videos"].toList()), videos);
}

void DirectoryParserTest::autodetectTellsWhatItDoes()
{
    Setup s;
    s.machine.addDrive("disk", "", false);
    const QString card = s.machine.addDrive("card", "", true);
    s.machine.addFile(card + "/a.log");
    const MessageLog messages;
    s.parser->autodetectDrivesWithData();
    const QStringList told = messages.messages(QtInfoMsg);
    QCOMPARE(told.size(), 3);
    QVERIFY(told[0].startsWith("Skipping non-removable drive: QMap(("));
    QVERIFY(told[0].contains("/disk"));
    QVERIFY(told[1].startsWith("Analyzing QMap(("));
    QVERIFY(told[1].contains("/card"));
    QVERIFY(told[2].startsWith("\"Aviro/Aviro2\" eligible; files: (QFileInfo("));
}

QTEST_GUILESS_MAIN(DirectoryParserTest)
#include "DirectoryParserTest.moc"
