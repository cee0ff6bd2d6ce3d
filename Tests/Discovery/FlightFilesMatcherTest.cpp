#include "Discovery/FlightFilesMatcher.h"
#include "Discovery/flightSearch.h"
#include "Support/MessageLog.h"
#include "flightLogs.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>

using namespace corv;
using namespace corv::test;

namespace {

const QDateTime kStart(QDate(2018, 6, 1), QTime(12, 0));

// Videos and logs with the times and durations that the test gives them.
struct Card
{
    QTemporaryDir folder;
    QHash<QString, int> seconds;
    QHash<QString, int> durations;
    QList<QFileInfo> videos;
    QList<QFileInfo> logs;
    std::atomic<bool> abort{false};
    mutable QStringList logsRead; ///< names of the logs that the matcher asked for

    void addVideo(const QString& name, int second, int durationMs)
    {
        seconds[name] = second;
        durations[name] = durationMs;
        videos.append(QFileInfo(folder.filePath(name)));
    }

    void addLog(const QString& name, int second, const LogBuilder& log)
    {
        seconds[name] = second;
        QVERIFY(log.save(folder.filePath(name)));
        logs.append(QFileInfo(folder.filePath(name)));
    }

    FlightFilesMatcher::FileFacts facts() const
    {
        FlightFilesMatcher::FileFacts facts;
        facts.state = [this](const QFileInfo& file) {
            return kStart.addSecs(seconds[file.fileName()]);
        };
        facts.videoLength = [this](const QString& path) {
            const int durationMs = durations[QFileInfo(path).fileName()];
            return VideoLength{durationMs, durationMs};
        };
        facts.log = [this, read = facts.log](const QString& path,
                                             const std::atomic<bool>* abortFlag,
                                             const FlightFilesMatcher::LogStages& stages) {
            logsRead.append(QFileInfo(path).fileName());
            return read(path, abortFlag, stages);
        };
        facts.readers = 1; // so that a list needs no lock
        return facts;
    }

    QList<FlightMatchData> match(bool quickMode = false,
                                 const FlightFilesMatcher::Progress& progress = {})
    {
        return FlightFilesMatcher(&abort, facts())
            .matchFlightFiles(videos, logs, quickMode, progress);
    }
};

// One recording of 60 s, named.
LogBuilder oneFlight(const QByteArray& flight)
{
    return flightLog({{10'000, 71'000}}, {{5000, "Mission", flight, 1}});
}

void addThreeFlights(Card& card)
{
    for (const int i : {1, 2, 3}) {
        const QString number = QString::number(i);
        card.addVideo("v" + number + ".mp4", i * 2000, 60'000);
        card.addLog("l" + number + ".log", i * 2000 + 100, oneFlight("Flight " + number.toUtf8()));
    }
}

QStringList flightNames(const QList<FlightMatchData>& matches)
{
    QStringList names;
    for (const FlightMatchData& match : matches)
        names.append(match.naming.undefined ? QStringLiteral("-") : match.naming.flightName);
    return names;
}

Card* g_abortedCard = nullptr;
int g_namingsSeen = 0;
int g_abortMessages = 0;

void abortAtTheFirstNaming(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (message.contains("Correct event")) {
        ++g_namingsSeen;
        g_abortedCard->abort = true;
    }
    if (message.contains("flightFilesMatcher"))
        ++g_abortMessages;
}

} // namespace

class FlightFilesMatcherTest : public QObject
{
    Q_OBJECT

private slots:
    void namesTheFlightsOfASharedLog();
    void quickModeOpensNothing();
    void flightsKeepTheNamesOfTheirOwnLog_data();
    void flightsKeepTheNamesOfTheirOwnLog();
    void aVideoThatWillNotOpenStays();
    void aVideoWithoutALogStays();
    void aLogThatVanishesLeavesItsFlightPaired();
    void twoNamesOfOneLogAreReadOnce();
    void filesThatAreGoneAreLost_data();
    void filesThatAreGoneAreLost();
    void pairOfALostFileIsDoubted_data();
    void pairOfALostFileIsDoubted();
    void rowsComeInTheOrderOfTime();
    void progressCountsLogs();
    void anAbortGivesNothing_data();
    void anAbortGivesNothing();
    void anAbortWhileNamingGivesNothingWithoutAWord();
    void takesTimesAndDurationsFromTheFiles();
    void pairsByTheTimeOfTheLastWrite();
    void rowsTakeTheSizeThatCameWithTheTime();
    void logThatSawNoRecordingIsDoubted();
    void lengthsReplaceLostTimes();
    void logsOfOtherVideosAreReadOnlyWhereNeeded_data();
    void logsOfOtherVideosAreReadOnlyWhereNeeded();
    void logsOfACopyMakeItsOnlyVideoDoubtful_data();
    void logsOfACopyMakeItsOnlyVideoDoubtful();
    void partsOfOneFlightAreNamedAsOne();
    void severalReadersGiveTheSameResult();
};

void FlightFilesMatcherTest::namesTheFlightsOfASharedLog()
{
    Card card;
    card.addVideo("first.mp4", 0, 60'000);
    card.addVideo("second.mp4", 200, 120'000);
    card.addLog("day.log", 400,
                flightLog({{10'000, 71'000}, {100'000, 221'000}},
                          {{5000, "Line", "North", 3}, {90'000, "Line", "South", 4}}));
    const MessageLog messages;
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(matches.size(), 2);
    for (const FlightMatchData& match : matches) {
        QVERIFY(match.matchFound);
        QCOMPARE(match.logFile.fileName(), QString("day.log"));
        QVERIFY(!match.naming.undefined);
        QCOMPARE(match.naming.missionName, QString("Line"));
    }
    QCOMPARE(matches[0].videoDuration, 60'000);
    QCOMPARE(matches[0].naming.flightName, QString("North"));
    QCOMPARE(matches[0].naming.flightNumber, 3);
    QCOMPARE(matches[1].naming.flightName, QString("South"));
    QCOMPARE(matches[1].naming.flightNumber, 4);
    QCOMPARE(card.logsRead, QStringList("day.log"));
    QVERIFY(messages.contains("Start analyzing..."));
    const QStringList logged = messages.messages(QtInfoMsg);
    QCOMPARE(logged[0], QString("Logs:  1  entries"));
    QCOMPARE(logged[1], QString("Videos:  2  entries"));
    QVERIFY(logged.contains("Getting time for video 0"));
    QVERIFY(logged.contains("Duration: 60000 msecs"));
    QVERIFY(logged.contains("Getting time for video 1"));
    QVERIFY(logged.contains("Duration: 120000 msecs"));
    QVERIFY(messages.contains("Reference start 10690 end 70690"));
    QVERIFY(messages.contains("Reference start 101279 end 221279"));
}

void FlightFilesMatcherTest::quickModeOpensNothing()
{
    Card card;
    addThreeFlights(card);
    const MessageLog messages;
    const QList<FlightMatchData> matches = card.match(true);
    QCOMPARE(matches.size(), 3);
    for (const FlightMatchData& match : matches) {
        QVERIFY(match.matchFound);
        QVERIFY(match.naming.undefined);
        QCOMPARE(match.videoDuration, 0);
        QVERIFY(!match.checked);
    }
    QVERIFY(!messages.contains("Getting time"));
    QVERIFY(!messages.contains("Start analyzing"));
}

void FlightFilesMatcherTest::flightsKeepTheNamesOfTheirOwnLog_data()
{
    QTest::addColumn<QStringList>("broken");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("none broken") << QStringList{}
                                 << QStringList{"Flight 1", "Flight 2", "Flight 3"};
    QTest::newRow("the first") << QStringList{"l1.log"} << QStringList{"-", "Flight 2", "Flight 3"};
    QTest::newRow("between good ones")
        << QStringList{"l2.log"} << QStringList{"Flight 1", "-", "Flight 3"};
    QTest::newRow("the last") << QStringList{"l3.log"} << QStringList{"Flight 1", "Flight 2", "-"};
    QTest::newRow("all") << QStringList{"l1.log", "l2.log", "l3.log"} << QStringList{"-", "-", "-"};
}

void FlightFilesMatcherTest::flightsKeepTheNamesOfTheirOwnLog()
{
    QFETCH(QStringList, broken);
    QFETCH(QStringList, names);
    Card card;
    addThreeFlights(card);
    for (const QString& name : broken) {
        QFile log(card.folder.filePath(name));
        QVERIFY(log.open(QIODevice::WriteOnly));
        QVERIFY(log.write("<main><groups>no end") > 0);
    }
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(flightNames(matches), names);
    for (const FlightMatchData& match : matches)
        QVERIFY(match.matchFound);
}

void FlightFilesMatcherTest::aVideoThatWillNotOpenStays()
{
    Card card;
    addThreeFlights(card);
    card.durations["v2.mp4"] = -1;
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(flightNames(matches), QStringList({"Flight 1", "-", "Flight 3"}));
    QCOMPARE(matches[1].videoDuration, -1);
    QVERIFY(matches[1].matchFound);
}

void FlightFilesMatcherTest::aVideoWithoutALogStays()
{
    Card card;
    card.addVideo("late.mp4", 5000, 60'000);
    card.addVideo("early.mp4", 0, 60'000);
    card.addLog("only.log", 1800 + 100, oneFlight("Flight"));
    card.addVideo("good.mp4", 101, 60'000);
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(matches.size(), 3);
    QCOMPARE(matches[0].videoFile.fileName(), QString("early.mp4"));
    QVERIFY(!matches[0].matchFound);
    QCOMPARE(matches[0].videoDuration, 60'000);
    QVERIFY(matches[1].matchFound);
    QVERIFY(!matches[2].matchFound);
    QCOMPARE(flightNames(matches), QStringList({"-", "Flight", "-"}));
}

void FlightFilesMatcherTest::aLogThatVanishesLeavesItsFlightPaired()
{
    Card card;
    addThreeFlights(card);
    FlightFilesMatcher::FileFacts facts = card.facts();
    facts.videoLength = [&card](const QString& path) {
        QFile::remove(card.folder.filePath("l1.log"));
        const int durationMs = card.durations[QFileInfo(path).fileName()];
        return VideoLength{durationMs, durationMs};
    };
    const MessageLog messages;
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&card.abort, facts).matchFlightFiles(card.videos, card.logs, false, {});
    QCOMPARE(flightNames(matches), QStringList({"-", "Flight 2", "Flight 3"}));
    QVERIFY(matches[0].matchFound);
    QVERIFY(messages.contains("ERROR: Unable to read file."));
}

void FlightFilesMatcherTest::twoNamesOfOneLogAreReadOnce()
{
    Card card;
    card.addVideo("v1.mp4", 0, 60'000);
    card.addVideo("v2.mp4", 5000, 60'000);
    card.addLog("real.log", 10, oneFlight("Flight"));
    QVERIFY(QFile::link("real.log", card.folder.filePath("other.log")));
    card.seconds["other.log"] = 5010;
    card.logs.append(QFileInfo(card.folder.filePath("other.log")));
    QCOMPARE(flightNames(card.match()), QStringList({"Flight", "Flight"}));
    QCOMPARE(card.logsRead.size(), 1);
}

void FlightFilesMatcherTest::filesThatAreGoneAreLost_data()
{
    QTest::addColumn<bool>("isThere");
    QTest::newRow("gone since they were listed") << false;
    QTest::newRow("there, but no video and no log") << true;
}

void FlightFilesMatcherTest::filesThatAreGoneAreLost()
{
    QFETCH(bool, isThere);
    const QTemporaryDir folder;
    const QStringList paths = {folder.filePath("v.mp4"), folder.filePath("l.log")};
    for (const QString& path : paths) {
        QFile file(path);
        QVERIFY(!isThere || (file.open(QIODevice::WriteOnly) && file.write("text") == 4));
    }
    FlightFilesMatcher::FileFacts facts;
    facts.state = [](const QFileInfo&) { return kStart; };
    const std::atomic<bool> abort{false};
    FlightFilesMatcher matcher(&abort, facts);
    const auto matches =
        matcher.matchFlightFiles({QFileInfo(paths[0])}, {QFileInfo(paths[1])}, false, {});
    QCOMPARE(matches.size(), 1);
    QVERIFY(matches[0].matchFound);
    QCOMPARE(matcher.lostFiles(), isThere ? QStringList() : paths);
}

void FlightFilesMatcherTest::pairOfALostFileIsDoubted_data()
{
    QTest::addColumn<QString>("lost");
    QTest::newRow("none") << QString();
    QTest::newRow("video") << "v1.mp4";
    QTest::newRow("log") << "l1.log";
}

// A card is pulled out while it is read: who looks at the doubt alone takes no such pair for sure.
void FlightFilesMatcherTest::pairOfALostFileIsDoubted()
{
    QFETCH(QString, lost);
    Card card;
    card.addVideo("v1.mp4", 0, 60'000);
    card.addVideo("v2.mp4", 5000, 60'000);
    card.addLog("l1.log", 10, oneFlight("Flight 1"));
    card.addLog("l2.log", 5010, oneFlight("Flight 2"));
    FlightFilesMatcher::FileFacts facts = card.facts();
    facts.videoLength = [&lost, read = facts.videoLength](const QString& path) {
        return QFileInfo(path).fileName() == lost ? VideoLength{-1, -1, true} : read(path);
    };
    if (lost.endsWith(".log"))
        QVERIFY(QFile::remove(card.folder.filePath(lost)));
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&card.abort, facts).matchFlightFiles(card.videos, card.logs, false, {});
    QVERIFY(matches[0].matchFound);
    QCOMPARE(matches[0].doubtful, !lost.isEmpty());
}

void FlightFilesMatcherTest::rowsComeInTheOrderOfTime()
{
    Card card;
    card.addVideo("a.mp4", 300, 0);
    card.addVideo("b.mp4", 100, 0);
    card.addVideo("c.mp4", 200, 0);
    card.addLog("x.log", 250, oneFlight("Flight"));
    const QList<FlightMatchData> matches = card.match(true);
    QCOMPARE(matches[0].videoFile.fileName(), QString("b.mp4"));
    QCOMPARE(matches[1].videoFile.fileName(), QString("c.mp4"));
    QCOMPARE(matches[2].videoFile.fileName(), QString("a.mp4"));
    QVERIFY(matches[0].matchFound);
    QVERIFY(matches[1].matchFound);
    QVERIFY(!matches[2].matchFound);
}

void FlightFilesMatcherTest::progressCountsLogs()
{
    Card card;
    addThreeFlights(card);
    card.addVideo("v0.mp4", 1999, -1);
    card.addLog("unused.log", 50'000, oneFlight("Nobody"));
    QList<int> files;
    QList<int> stages;
    card.match(false, [&](int file, int total, int stage, int done, int ofTotal) {
        QCOMPARE(total, 3);
        QVERIFY(done <= ofTotal);
        files.append(file);
        stages.append(stage);
    });
    QCOMPARE(files.first(), 1);
    QCOMPARE(files.last(), 3);
    QVERIFY(std::is_sorted(files.begin(), files.end()));
    QCOMPARE(stages.first(), 0);
    QCOMPARE(stages.last(), 2);
}

void FlightFilesMatcherTest::anAbortGivesNothing_data()
{
    QTest::addColumn<QString>("when");
    QTest::addColumn<bool>("quickMode");
    QTest::newRow("while pairing") << "time" << false;
    QTest::newRow("while pairing quickly") << "time" << true;
    QTest::newRow("while asking for durations") << "duration" << false;
    QTest::newRow("while reading the structure of a log") << "0" << false;
    QTest::newRow("while counting packets") << "1" << false;
    QTest::newRow("while storing packets") << "2" << false;
}

void FlightFilesMatcherTest::anAbortGivesNothing()
{
    QFETCH(QString, when);
    QFETCH(bool, quickMode);
    Card card;
    addThreeFlights(card);
    FlightFilesMatcher::FileFacts facts = card.facts();
    const auto abortAt = [&card, &when](const QString& moment) {
        if (when == moment)
            card.abort = true;
    };
    facts.state = [&](const QFileInfo& file) {
        abortAt("time");
        return kStart.addSecs(card.seconds[file.fileName()]);
    };
    int lengthsRead = 0;
    facts.videoLength = [&](const QString&) {
        ++lengthsRead;
        abortAt("duration");
        return VideoLength{60'000, 60'000};
    };
    const MessageLog messages;
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&card.abort, facts)
            .matchFlightFiles(
                card.videos, card.logs, quickMode,
                [&](int, int, int stage, int, int) { abortAt(QString::number(stage)); });
    QVERIFY(matches.isEmpty());
    QVERIFY(messages.contains("Aborted. (flightFilesMatcher)"));
    // No other file is opened after it.
    QCOMPARE(lengthsRead, when == "time" ? 0 : when == "duration" ? 1 : 3);
    QVERIFY(card.logsRead.size() <= 1);
}

void FlightFilesMatcherTest::anAbortWhileNamingGivesNothingWithoutAWord()
{
    Card card;
    addThreeFlights(card);
    g_abortedCard = &card;
    g_namingsSeen = 0;
    g_abortMessages = 0;
    const QtMessageHandler before = qInstallMessageHandler(abortAtTheFirstNaming);
    const QList<FlightMatchData> matches = card.match();
    qInstallMessageHandler(before);
    QVERIFY(matches.isEmpty());
    QCOMPARE(g_namingsSeen, 1);
    QCOMPARE(g_abortMessages, 0);
}

void FlightFilesMatcherTest::takesTimesAndDurationsFromTheFiles()
{
    QTemporaryDir folder;
    const QString video = folder.filePath("v.mp4");
    const QString log = folder.filePath("l.log");
    QVERIFY(oneFlight("Video").save(video)); // no video at all
    QVERIFY(oneFlight("Flight").save(log));
    const std::atomic<bool> abort{false};
    const MessageLog messages;
    const QList<FlightMatchData> matches = FlightFilesMatcher(&abort).matchFlightFiles(
        {QFileInfo(video)}, {QFileInfo(log)}, false, {});
    QCOMPARE(matches.size(), 1);
    QVERIFY(matches[0].matchFound);
    QCOMPARE(matches[0].videoDuration, -1);
    QVERIFY(matches[0].naming.undefined);
    QVERIFY(messages.contains("Failed to open video file"));
}

void FlightFilesMatcherTest::pairsByTheTimeOfTheLastWrite()
{
    Card card;
    addThreeFlights(card);
    const QStringList names = {"l1.log", "l2.log", "l3.log", "v1.mp4", "v2.mp4", "v3.mp4"};
    for (const QString& name : names) { // as a copy that keeps the times leaves them
        QFile file(card.folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadWrite));
        if (name.startsWith("v"))
            QVERIFY(file.resize(name.mid(1, 1).toInt()));
        QVERIFY(file.setFileTime(kStart.addSecs(card.seconds[name]),
                                 QFileDevice::FileModificationTime));
    }
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&card.abort).matchFlightFiles(card.videos, card.logs, true, {});
    QCOMPARE(matches.size(), 3);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(matches[i].videoFile.fileName(), QStringLiteral("v%1.mp4").arg(i + 1));
        QVERIFY(matches[i].matchFound);
        QCOMPARE(matches[i].logFile.fileName(), QStringLiteral("l%1.log").arg(i + 1));
        QCOMPARE(matches[i].videoBytes, qint64(i + 1));
    }
}

void FlightFilesMatcherTest::rowsTakeTheSizeThatCameWithTheTime()
{
    Card card;
    card.addVideo("with.mp4", 0, 60'000);
    card.addVideo("without.mp4", 1, 60'000);
    card.addLog("day.log", 400, flightLog({{10'000, 71'000}}, {}));
    FlightFilesMatcher::FileFacts facts = card.facts();
    facts.state = [time = facts.state](const QFileInfo& file) {
        const qint64 bytes = file.fileName() == "with.mp4" ? 4711 : -1;
        return FileState(time(file).time, bytes);
    };
    const QVariantList rows = matchingRows(
        FlightFilesMatcher(&card.abort, facts).matchFlightFiles(card.videos, card.logs, true, {}));
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows[0].toMap().value("videoSize"), QVariant(4711));
    QCOMPARE(rows[1].toMap().value("videoSize"), QVariant(0)); // asked for: it is not known
}

void FlightFilesMatcherTest::logThatSawNoRecordingIsDoubted()
{
    Card card;
    card.addVideo("v.mp4", 0, 60'000);
    card.addLog("l.log", 100, flightLog({}, {{5000, "Line", "North", 1}}));
    const QList<FlightMatchData> matches = card.match();
    QVERIFY(matches[0].matchFound);
    QCOMPARE(matches[0].evidence, PairingEvidence::Time);
    QVERIFY(matches[0].doubtful);
}

void FlightFilesMatcherTest::lengthsReplaceLostTimes()
{
    Card card; // copied logs first, then videos: no log is written after its video
    card.addLog("a.log", 0, flightLog({{10'000, 311'000}}, {{5000, "Line", "North", 1}}));
    card.addLog("b.log", 1, flightLog({{10'000, 511'000}}, {{5000, "Line", "South", 2}}));
    card.addVideo("CORV0001.MOV", 10, 300'000);
    card.addVideo("CORV0002.MOV", 20, 500'000);
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(flightNames(matches), QStringList({"North", "South"}));
    QCOMPARE(matches[0].logFile.fileName(), QString("a.log"));
    QCOMPARE(matches[0].evidence, PairingEvidence::Length);
    QCOMPARE(matches[1].logFile.fileName(), QString("b.log"));
    QCOMPARE(matches[1].recordingLengthMs, qint64(501'000));
    QCOMPARE(card.match(true)[0].matchFound, false);
}

void FlightFilesMatcherTest::logsOfOtherVideosAreReadOnlyWhereNeeded_data()
{
    QTest::addColumn<int>("videoMs");
    QTest::addColumn<int>("logsRead");
    QTest::newRow("settled by time and length") << 60'000 << 1;
    QTest::newRow("length contradicts") << 90'000 << 2;
}

void FlightFilesMatcherTest::logsOfOtherVideosAreReadOnlyWhereNeeded()
{
    QFETCH(int, videoMs);
    QFETCH(int, logsRead);
    Card card;
    card.addVideo("v.mp4", 0, videoMs);
    card.addLog("l.log", 10, oneFlight("Flight"));
    card.addLog("other.log", 50'000, flightLog({{10'000, 101'000}}, {}));
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(card.logsRead.size(), logsRead);
    QCOMPARE(matches[0].logFile.fileName(), QString(logsRead == 1 ? "l.log" : "other.log"));
}

void FlightFilesMatcherTest::logsOfACopyMakeItsOnlyVideoDoubtful_data()
{
    QTest::addColumn<int>("secondsApart");
    QTest::addColumn<bool>("doubtful");
    QTest::newRow("written by a copy") << 1 << true;
    QTest::newRow("written after flights") << 600 << false;
}

// Three flights of a minute, of which one video is left.
void FlightFilesMatcherTest::logsOfACopyMakeItsOnlyVideoDoubtful()
{
    QFETCH(int, secondsApart);
    QFETCH(bool, doubtful);
    Card card;
    card.addVideo("v.mp4", 0, 60'000);
    for (int i = 0; i < 3; ++i)
        card.addLog(QString("l%1.log").arg(i), 10 + i * secondsApart, oneFlight("Flight"));
    const QList<FlightMatchData> matches = card.match();
    QVERIFY(matches[0].matchFound);
    QCOMPARE(matches[0].doubtful, doubtful);
}

void FlightFilesMatcherTest::partsOfOneFlightAreNamedAsOne()
{
    Card card;
    card.addVideo("CORV0001.MOV", 0, 300'000);
    card.addVideo("CORV0002.MOV", 200, 200'000);
    card.addLog("day.log", 300,
                flightLog({{10'000, 61'000}, {100'000, 601'000}},
                          {{5000, "Line", "Short", 1}, {90'000, "Line", "Long", 2}}));
    const QList<FlightMatchData> matches = card.match();
    QCOMPARE(flightNames(matches), QStringList({"Long", "Long"}));
    for (const FlightMatchData& match : matches) {
        QCOMPARE(match.evidence, PairingEvidence::TimeAndLength);
        QCOMPARE(match.flightLengthMs, qint64(500'000));
        QCOMPARE(match.flightFiles.size(), 2);
    }
    QCOMPARE(matches[0].part, 1);
    QCOMPARE(matches[1].part, 2);
    QCOMPARE(matches[1].videoDuration, 200'000);
    QCOMPARE(matches[0].partStartMs, qint64(0));
    QCOMPARE(matches[1].partStartMs, qint64(300'000));
}

void FlightFilesMatcherTest::severalReadersGiveTheSameResult()
{
    Card card;
    addThreeFlights(card);
    FlightFilesMatcher::FileFacts facts = card.facts();
    facts.log = FlightFilesMatcher::FileFacts().log;
    facts.readers = 3;
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&card.abort, facts).matchFlightFiles(card.videos, card.logs, false, {});
    QCOMPARE(flightNames(matches), flightNames(card.match()));
}

QTEST_GUILESS_MAIN(FlightFilesMatcherTest)
#include "FlightFilesMatcherTest.moc"
