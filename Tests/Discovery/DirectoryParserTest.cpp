#include "Discovery/PersistentData.h"
#include "Discovery/flightSearch.h"
#include "Support/MessageLog.h"
#include "Support/PlainUser.h"
#include "searchSetup.h"

#include <QDir>
#include <QFile>
#include <QtTest>
#include <cstdio>

using namespace corv;
using namespace corv::test;

/// What a search of folders and drives finds, and what the drives are.
class DirectoryParserTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void rowShowsAllOfAFlight();
    void aVideoWithoutALogIsARow();
    void searchesWhereTheLayoutSays_data();
    void searchesWhereTheLayoutSays();
    void nothingToMatchIsAnEmptyResult_data();
    void nothingToMatchIsAnEmptyResult();
    void unreadableFoldersCountAsEmpty();
    void aFolderWithTheExtensionIsAVideoThatWillNotOpen();
    void evidenceIsPutInWords_data();
    void evidenceIsPutInWords();
    void missingFilesArePutInWords();
    void laterPartsNameTheFirst();
    void namesThatAreNoTextAreCounted();
    void aLocationThatIsGoneIsRemarked();
    void filesThatCouldNotBeReadAreRemarked_data();
    void filesThatCouldNotBeReadAreRemarked();
    void theResultIsRemembered();
    void allDrivesAreListed();
    void theMachinesOwnDrivesAreListed();
    void autodetectFindsCards_data();
    void autodetectFindsCards();
    void autodetectShowsWhatItDoes();
};

void DirectoryParserTest::init()
{
    PersistentData::instance()->setDirectoryList({});
}

void DirectoryParserTest::rowShowsAllOfAFlight()
{
    Setup s;
    s.addVideo(s.path("videos/a.b.mp4"), 0);
    s.addLog(s.path("logs/l.1.log"), 60, "Nördlich 1");
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    const MessageLog messages;
    s.searchFolders();
    QVERIFY(complete.wait());
    const QVariantMap expected = {
        {"videoFile", s.path("videos/a.b.mp4")},
        {"videoFilename", "a"},
        {"logFile", s.path("logs/l.1.log")},
        {"logFilename", "l"},
        {"matchFound", true},
        {"namingDefined", true},
        {"missionName", "Line 12"},
        {"flightName", "Nördlich 1"},
        {"flightNumber", 7},
        {"videoDuration", 60'000},
        {"evidence", "timeAndLength"},
        {"checked", true},
        {"doubtful", false},
        {"evidenceText", "Time and length agree"},
        {"flightLengthMs", qint64(60'000)},
        {"recordingLengthMs", qint64(61'000)},
        {"flightFiles", QStringList(s.path("videos/a.b.mp4"))},
        {"part", 1},
        {"partText", QString()},
        {"partStartMs", qint64(0)},
        {"videoTime", "2018-06-01T12:00:00"},
        {"videoSize", qint64(0)},
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
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 1800, "Flight", 35'000);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    const QVariantMap expected = {
        {"videoFile", s.path("videos/v.mp4")},
        {"videoFilename", "v"},
        {"logFile", "no_match"},
        {"logFilename", "No match"},
        {"matchFound", false},
        {"namingDefined", false},
        {"missionName", QString()},
        {"flightName", QString()},
        {"flightNumber", 0},
        {"videoDuration", 60'000},
        {"evidence", "none"},
        {"checked", true},
        {"doubtful", false},
        {"evidenceText", "No log found"},
        {"flightLengthMs", qint64(60'000)},
        {"recordingLengthMs", qint64(-1)},
        {"flightFiles", QStringList()},
        {"part", 1},
        {"partText", QString()},
        {"partStartMs", qint64(0)},
        {"videoTime", "2018-06-01T12:00:00"},
        {"videoSize", qint64(0)},
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
    const QString root = s.path("Meine Karte/Ä");
    for (const QString& video : videos)
        s.addVideo(root + "/" + video, 0);
    s.addLog(s.path("logs/l.log"), 0);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.parser->parseDirectories(root, s.path("logs"), fromDrive, !fromDrive, true);
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
        s.machine.addFile(s.path(file));
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
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 0);
    const QFile::Permissions open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                    QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther |
                                    QFile::ExeOther;
    QVERIFY(QFile::setPermissions(s.path("."), open));
    QVERIFY(QFile::setPermissions(s.path("videos"), open));
    QVERIFY(QFile::setPermissions(s.path("logs"), open));
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    {
        const PlainUser visitor;
        s.searchFolders(true);
        QVERIFY(complete.wait());
    }
    QCOMPARE(rowsOf(complete).size(), 1);
    QVERIFY(QFile::setPermissions(s.path("videos"), {}));
    {
        const PlainUser visitor;
        s.searchFolders(true);
        QVERIFY(complete.wait());
    }
    QVERIFY(rowsOf(complete, 1).isEmpty());
    QVERIFY(QFile::setPermissions(s.path("videos"), open));
}

void DirectoryParserTest::aFolderWithTheExtensionIsAVideoThatWillNotOpen()
{
    Setup s;
    QVERIFY(QDir().mkpath(s.path("videos/x.mp4")));
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    const QVariantMap row = rowsOf(complete).value(0).toMap();
    QCOMPARE(row["videoFilename"].toString(), QString("x"));
    QCOMPARE(row["videoDuration"].toInt(), -1);
    QVERIFY(row["matchFound"].toBool());
    QVERIFY(!row["namingDefined"].toBool());
}

void DirectoryParserTest::evidenceIsPutInWords_data()
{
    QTest::addColumn<int>("evidence");
    QTest::addColumn<bool>("doubtful");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    const auto row = [](PairingEvidence evidence, bool doubtful, const char* key,
                        const char* text) {
        QTest::newRow(text) << static_cast<int>(evidence) << doubtful << key << text;
    };
    row(PairingEvidence::None, false, "none", "No log found");
    row(PairingEvidence::Time, false, "time", "Paired by time alone, lengths not compared");
    row(PairingEvidence::LengthDiffers, true, "lengthDiffers",
        "Paired by time alone, length differs: 21 s against 35 s");
    row(PairingEvidence::Length, false, "length", "Length agrees");
    row(PairingEvidence::Length, true, "length", "Length agrees, but not for certain");
    row(PairingEvidence::TimeAndLength, false, "timeAndLength", "Time and length agree");
}

void DirectoryParserTest::evidenceIsPutInWords()
{
    QFETCH(int, evidence);
    FlightMatchData match;
    match.evidence = static_cast<PairingEvidence>(evidence);
    QFETCH(bool, doubtful);
    match.doubtful = doubtful;
    match.flightLengthMs = 20'600;
    match.recordingLengthMs = 35'400;
    const QVariantMap row = matchingRows({match}).first().toMap();
    QTEST(row["evidence"].toString(), "key");
    QTEST(row["evidenceText"].toString(), "text");
    QCOMPARE(row["doubtful"].toBool(), match.doubtful);
}

void DirectoryParserTest::missingFilesArePutInWords()
{
    FlightMatchData match;
    match.evidence = PairingEvidence::LengthDiffers;
    match.lacksFiles = true;
    match.flightLengthMs = 300'000;
    match.recordingLengthMs = 1'031'000;
    QCOMPARE(
        evidenceText(match),
        QString("Files of the flight seem to be missing, length differs: 300 s against 1031 s"));
}

void DirectoryParserTest::laterPartsNameTheFirst()
{
    FlightMatchData match;
    match.videoFile = QFileInfo("/card/CORV0002.MOV");
    match.flightFiles = QStringList({"/card/CORV0001.MOV", "/card/CORV0002.MOV"});
    match.part = 2;
    QCOMPARE(matchingRows({match}).first().toMap()["partText"].toString(),
             QString("part 2 of CORV0001"));
}

void DirectoryParserTest::namesThatAreNoTextAreCounted()
{
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    for (const char* name : {"videos/\xff\xfe.mp4", "videos/\xe4.MOV", "logs/\xe4.txt"}) {
        const QByteArray path = QFile::encodeName(s.path(".")) + '/' + name;
        FILE* file = std::fopen(path.constData(), "w");
        QVERIFY(file);
        std::fclose(file);
    }
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy remarked(s.parser.get(), &DirectoryParser::searchRemarks);
    s.searchFolders(true);
    QVERIFY(complete.wait());
    QCOMPARE(rowsOf(complete).size(), 1);
    QCOMPARE(remarked.size(), 1);
    const QStringList remarks = remarked[0][0].toStringList();
    QCOMPARE(remarks.size(), 1);
    QVERIFY2(remarks[0].startsWith("2 files are left out"), qPrintable(remarks[0]));
}

void DirectoryParserTest::aLocationThatIsGoneIsRemarked()
{
    Setup s;
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy remarked(s.parser.get(), &DirectoryParser::searchRemarks);
    s.parser->parseDirectories(s.path("gone"), s.path("logs"), true, false, true);
    QVERIFY(complete.wait());
    QVERIFY(rowsOf(complete).isEmpty());
    QCOMPARE(remarked.size(), 1);
    const QStringList remarks = remarked[0][0].toStringList();
    QCOMPARE(remarks.size(), 1);
    QVERIFY2(remarks[0].contains(s.path("gone")), qPrintable(remarks[0]));
}

void DirectoryParserTest::filesThatCouldNotBeReadAreRemarked_data()
{
    QTest::addColumn<bool>("isVideoLost");
    QTest::addColumn<bool>("isLogLost");
    QTest::addColumn<QString>("remark");
    const QString advice = " could not be read. The disk or card may be damaged or no longer "
                           "there. Check it and repeat the search.";
    QTest::newRow("the video") << true << false << "\"%1\"" + advice;
    QTest::newRow("the log") << false << true << "\"%1\"" + advice;
    QTest::newRow("both") << true << true << "\"%1\" and 1 more file" + advice;
}

// Their names and times are still there, as the system remembers those of a card that was pulled
// out.
void DirectoryParserTest::filesThatCouldNotBeReadAreRemarked()
{
    QFETCH(bool, isVideoLost);
    QFETCH(bool, isLogLost);
    QFETCH(QString, remark);
    Setup s;
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    DirectoryParser::Machine machine = s.parserMachine();
    machine.files.videoLength = [isVideoLost](const QString&) {
        VideoLength length{60'000, 60'000};
        length.isLost = isVideoLost;
        return length;
    };
    machine.files.log = [isLogLost](const QString&, const std::atomic<bool>*,
                                    const FlightFilesMatcher::LogStages&) {
        LogFacts facts;
        facts.isLost = isLogLost;
        return facts;
    };
    s.parser = std::make_unique<DirectoryParser>(machine);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    QSignalSpy remarked(s.parser.get(), &DirectoryParser::searchRemarks);
    s.searchFolders();
    QVERIFY(complete.wait());
    QCOMPARE(rowsOf(complete).size(), 1);
    QCOMPARE(remarked.size(), 1);
    const QString lost = s.path(isVideoLost ? "videos/v.mp4" : "logs/l.log");
    QCOMPARE(remarked[0][0].toStringList(), QStringList(remark.arg(lost)));
}

void DirectoryParserTest::theResultIsRemembered()
{
    Setup s;
    QVERIFY(s.parser->recallPersistentDirectoryList().isEmpty());
    s.addVideo(s.path("videos/v.mp4"), 0);
    s.addLog(s.path("logs/l.log"), 10);
    QSignalSpy complete(s.parser.get(), &DirectoryParser::matchingComplete);
    s.searchFolders();
    QVERIFY(complete.wait());
    s.parser.reset();
    const DirectoryParser other;
    QCOMPARE(const_cast<DirectoryParser&>(other).recallPersistentDirectoryList(), rowsOf(complete));
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
            QVERIFY(QDir().mkpath(s.path("media/" + file)));
        else
            s.machine.addFile(s.path("media/" + file));
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

void DirectoryParserTest::autodetectShowsWhatItDoes()
{
    Setup s;
    s.machine.addDrive("disk", "", false);
    const QString card = s.machine.addDrive("card", "", true);
    s.machine.addFile(card + "/a.log");
    const MessageLog messages;
    s.parser->autodetectDrivesWithData();
    const QStringList logged = messages.messages(QtInfoMsg);
    QCOMPARE(logged.size(), 3);
    QVERIFY(logged[0].startsWith("Skipping non-removable drive: QMap(("));
    QVERIFY(logged[0].contains("/disk"));
    QVERIFY(logged[1].startsWith("Analyzing QMap(("));
    QVERIFY(logged[1].contains("/card"));
    QVERIFY(logged[2].startsWith("\"Aviro/Aviro2\" eligible; files: (QFileInfo("));
}

QTEST_GUILESS_MAIN(DirectoryParserTest)
#include "DirectoryParserTest.moc"
