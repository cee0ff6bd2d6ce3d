#include "Discovery/flightPairing.h"
#include "pairingFiles.h"

#include <QtTest>
#include <utility>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::PairingEvidence)

/// Which pairs of videos and logs a person should look at.
class FlightDoubtTest : public QObject
{
    Q_OBJECT

private slots:
    void timeAloneIsDoubtedWhereTimesAreLost();
    void logOfAFlightWithoutVideoIsDoubted();
    void logWithoutARecordingIsDoubtedAloneToo_data();
    void logWithoutARecordingIsDoubtedAloneToo();
    void lostTimesAddNothingToALength();
    void onePairAmongTimesThatSayNothingIsDoubted();
    void partsWithABreakBetweenThemAreDoubted_data();
    void partsWithABreakBetweenThemAreDoubted();
    void aLogWrittenSoonAfterLeavesNoDoubt_data();
    void aLogWrittenSoonAfterLeavesNoDoubt();
    void aLogOfALaterFlightIsDoubtedAmongSoundTimes();
    void laterFlightsOfALogExplainItsDelay();
    void oneFlightIsSureAfterACopy();
    void aSingleVideoIsSureUnlessTheLogsShowACopy_data();
    void aSingleVideoIsSureUnlessTheLogsShowACopy();
    void timeAloneIsDoubtedWhereALengthFindsAnotherLog();
    void partsAmongVideosThatALogDoesNotHoldAreDoubted();
    void pairByALogOfOtherLengthsIsDoubtedAsByLength();
    void aPairThatCannotBeComparedLeavesTheOtherSure_data();
    void aPairThatCannotBeComparedLeavesTheOtherSure();
    void equalFlightsOfACopyWithoutTheirLogsAreDoubted_data();
    void equalFlightsOfACopyWithoutTheirLogsAreDoubted();
    void lostTimesDoNotConfirmALength();
    void logLeftOutBetweenNeighboursIsDoubted_data();
    void logLeftOutBetweenNeighboursIsDoubted();
    void completeCardsAreDoubtedLess();
    void lengthAloneIsDoubtedWhereFilesAreMissing_data();
    void lengthAloneIsDoubtedWhereFilesAreMissing();
};

void FlightDoubtTest::timeAloneIsDoubtedWhereTimesAreLost()
{
    // No camera ends four long videos within seconds. The log by time cannot be read.
    std::vector<PairingVideo> videos;
    for (int i = 0; i < 4; ++i)
        videos.push_back(video(QStringLiteral("CORV000%1.MOV").arg(i), 300'000 + i, 0, i));
    const std::vector<Pairing> pairings = pairFlights(videos, {logOf("1.log", {}, 10)});
    for (const Pairing& pairing : pairings) {
        QCOMPARE(pairing.log, 0);
        QCOMPARE(pairing.evidence, PairingEvidence::Time);
        QVERIFY(pairing.doubtful);
    }
}

void FlightDoubtTest::logOfAFlightWithoutVideoIsDoubted()
{
    // The second video has lost its log; the next one to be written knows of no recording at all.
    const std::vector<PairingVideo> videos = {video("CORV0001.MOV", 60'000, 0, 0),
                                              video("CORV0002.MOV", 90'000, 1, 3600)};
    std::vector<PairingLog> logs = {logOf("1.log", {61'000}, 30), logOf("2.log", {}, 4800)};
    Pairing pairing = pairFlights(videos, logs)[1];
    QCOMPARE(pairing.log, 1);
    QCOMPARE(pairing.evidence, PairingEvidence::Time);
    QVERIFY(pairing.doubtful);
    logs[1].isRead = false; // what it holds is not known
    pairing = pairFlights(videos, logs)[1];
    QCOMPARE(pairing.evidence, PairingEvidence::Time);
    QVERIFY(!pairing.doubtful);
}

void FlightDoubtTest::logWithoutARecordingIsDoubtedAloneToo_data()
{
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<bool>("describesRecordings");
    QTest::addColumn<bool>("doubtful");
    QTest::newRow("described, none") << true << true << true;
    QTest::newRow("not described") << true << false << false;
    QTest::newRow("not read") << false << true << false;
}

// The only log of the card. One whose model does not log recordings says nothing against the time.
void FlightDoubtTest::logWithoutARecordingIsDoubtedAloneToo()
{
    QFETCH(bool, isRead);
    QFETCH(bool, describesRecordings);
    PairingLog log = logOf("1.log", {}, 1200);
    log.isRead = isRead;
    log.describesRecordings = describesRecordings;
    const Pairing pairing = pairFlights({video("CORV0001.MOV", 600'000, 0, 0)}, {log})[0];
    QCOMPARE(pairing.log, 0);
    QCOMPARE(pairing.evidence, PairingEvidence::Time);
    QTEST(pairing.doubtful, "doubtful");
}

void FlightDoubtTest::lostTimesAddNothingToALength()
{
    // Both files and all logs have the second of their copy; two recordings fit the second video.
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0252.MOV", 548'960, 0), video("CORV0254.MOV", 465'240, 0)},
                    {logOf("368.log", {548'529, 466'565}, 0), logOf("369.log", {467'775}, 0)});
    QVERIFY(pairings[1].log >= 0);
    QVERIFY(pairings[1].doubtful);
}

void FlightDoubtTest::onePairAmongTimesThatSayNothingIsDoubted()
{
    // Times at random: the last video has a log of its length within half an hour by accident.
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0321.MOV", 602'280, -1, 306), video("CORV0322.MOV", 701'040, -1, 1432),
         video("CORV0324.MOV", 606'200, -1, 11'875), video("CORV0325.MOV", 692'520, -1, 0),
         video("CORV0329.MOV", 700'040, -1, 12'520), video("CORV0323.MOV", 652'120, 0, 14'785)},
        {logOf("632.log", {685'043, 689'331, 654'354}, 14'890), logOf("631.log", {691'403}, 8088),
         logOf("628.log", {603'410}, 8217)});
    QCOMPARE(pairings[5].log, 0);
    QCOMPARE(pairings[5].evidence, PairingEvidence::TimeAndLength);
    QVERIFY(pairings[5].doubtful);
}

void FlightDoubtTest::partsWithABreakBetweenThemAreDoubted_data()
{
    QTest::addColumn<qint64>("lastEnd");
    QTest::addColumn<bool>("doubtful");
    QTest::newRow("goes on at once") << qint64(2421) << false;
    QTest::newRow("goes on after two seconds") << qint64(2423) << false;
    QTest::newRow("ends sooner than it is long") << qint64(2395) << false;
    QTest::newRow("goes on after a quarter of an hour") << qint64(3321) << true;
}

// The third file makes the three as long as the recording, and a flight before them keeps the
// times.
void FlightDoubtTest::partsWithABreakBetweenThemAreDoubted()
{
    QFETCH(qint64, lastEnd);
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0001.MOV", 90'000, 0, 90), video("CORV0007.MOV", 180'000, 1, 2180),
         video("CORV0008.MOV", 180'000, 1, 2360), video("CORV0009.MOV", 60'000, 1, lastEnd)},
        {logOf("a.log", {91'000}, 120), logOf("b.log", {421'000}, lastEnd + 30)});
    for (const size_t i : {1, 2, 3}) {
        QCOMPARE(pairings[i].log, 1);
        QTEST(pairings[i].doubtful, "doubtful");
    }
    QVERIFY(!pairings[0].doubtful);
}

void FlightDoubtTest::aLogWrittenSoonAfterLeavesNoDoubt_data()
{
    QTest::addColumn<int>("secondsAfter");
    QTest::addColumn<bool>("doubtful");
    QTest::newRow("as soon as the others") << 35 << false;
    QTest::newRow("before another flight could have ended") << 590 << false;
    QTest::newRow("late enough for another flight") << 1500 << true;
}

// All flights are of ten minutes and their names say nothing; logs are written after half a minute.
void FlightDoubtTest::aLogWrittenSoonAfterLeavesNoDoubt()
{
    QFETCH(int, secondsAfter);
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    for (const char* name : {"tower", "roof", "wall", "yard", "mast"}) {
        const int log = static_cast<int>(logs.size());
        const int end = 4000 * log;
        videos.push_back(video(QStringLiteral("%1.MOV").arg(name), 600'000, log, end));
        logs.push_back(logOf(QStringLiteral("%1.log").arg(log), {601'000},
                             end + (log == 2 ? secondsAfter : 30)));
    }
    const std::vector<Pairing> pairings = pairFlights(videos, logs);
    QCOMPARE(pairings[2].log, 2);
    QTEST(pairings[2].doubtful, "doubtful");
}

// The first video has lost its log; the next one is that of a flight of about its length, whose
// video is missing. All times are as the camera and the drone set them.
void FlightDoubtTest::aLogOfALaterFlightIsDoubtedAmongSoundTimes()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0031.MOV", 651'818, 0, 0), video("CORV0033.MOV", 679'362, 1, 3656)},
                    {logOf("244.log", {653'196}, 1485), logOf("245.log", {680'880}, 3703)});
    QCOMPARE(pairings[0].log, 0);
    QVERIFY(pairings[0].doubtful);
    QCOMPARE(pairings[1].log, 1);
    QVERIFY(!pairings[1].doubtful);
}

// The log of the last two videos was written more than half an hour after the first of them, but
// half a minute after its own last recording, as the other logs were.
void FlightDoubtTest::laterFlightsOfALogExplainItsDelay()
{
    const std::vector<Pairing> pairings = pairFlights(
        {video("tower.MOV", 310'000, 0, 0), video("roof.MOV", 505'000, 1, 4000),
         video("wall.MOV", 250'000, 2, 8000), video("yard.MOV", 420'000, -1, 12'000),
         video("mast.MOV", 1'900'000, 3, 13'961)},
        {logOf("1.log", {311'000}, 30), logOf("2.log", {506'000}, 4030),
         logOf("3.log", {251'000}, 8030), logOf("4.log", {421'000, 1'901'000}, 13'991)});
    QCOMPARE(pairings[3].log, 3);
    QCOMPARE(pairings[3].evidence, PairingEvidence::Length);
    for (const Pairing& pairing : pairings)
        QVERIFY(!pairing.doubtful);
}

// A copy gave all files the time at which it wrote them.
void FlightDoubtTest::oneFlightIsSureAfterACopy()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 5000, 0, 1), video("CORV0002.MOV", 5000, 0, 2)},
                    {logOf("1.log", {11'000}, 2)});
    for (const Pairing& pairing : pairings) {
        QCOMPARE(pairing.log, 0);
        QCOMPARE(pairing.evidence, PairingEvidence::TimeAndLength);
        QVERIFY(!pairing.doubtful);
    }
}

void FlightDoubtTest::aSingleVideoIsSureUnlessTheLogsShowACopy_data()
{
    QTest::addColumn<qint64>("secondsApart"); // of the logs
    QTest::addColumn<bool>("doubtful");
    QTest::newRow("at one time") << qint64(0) << true;
    QTest::newRow("too soon after each other for such flights") << qint64(20) << true;
    QTest::newRow("as after flights") << qint64(900) << false;
}

void FlightDoubtTest::aSingleVideoIsSureUnlessTheLogsShowACopy()
{
    QFETCH(qint64, secondsApart);
    const std::vector<PairingLog> logs = {logOf("1.log", {61'000}, 10),
                                          logOf("2.log", {61'000}, 10 + secondsApart),
                                          logOf("3.log", {61'000}, 10 + 2 * secondsApart)};
    const Pairing pairing = pairFlights({video("CORV0005.MOV", 60'000, 0, 0)}, logs)[0];
    QCOMPARE(pairing.log, 0);
    QCOMPARE(pairing.evidence, PairingEvidence::TimeAndLength);
    QTEST(pairing.doubtful, "doubtful");
}

// The log by time cannot be read, and lengths find others, not surely enough to replace it.
void FlightDoubtTest::timeAloneIsDoubtedWhereALengthFindsAnotherLog()
{
    std::vector<PairingVideo> videos;
    for (const auto& [number, lengthMs] : std::vector<std::pair<int, qint64>>{
             {47, 44'713}, {49, 44'785}, {52, 45'092}, {53, 45'470}})
        videos.push_back(
            video(QStringLiteral("CORV00%1.MOV").arg(number), lengthMs, 0, 15 * (number - 46)));
    std::vector<PairingLog> logs = {logOf("26.log", {}, 105),       logOf("27.log", {}, 120),
                                    logOf("28.log", {46'386}, 135), logOf("29.log", {46'927}, 150),
                                    logOf("30.log", {46'223}, 165), logOf("31.log", {47'289}, 180)};
    logs[0].isRead = false;
    logs[1].isRead = false;
    for (const Pairing& pairing : pairFlights(videos, logs)) {
        QCOMPARE(pairing.log, 0);
        QCOMPARE(pairing.evidence, PairingEvidence::Time);
        QVERIFY(pairing.doubtful);
    }
}

// A copy took the videos as slowly as they were recorded, and left one log of all. By accident it
// is as long as three of them, and the times give it the other two as well.
void FlightDoubtTest::partsAmongVideosThatALogDoesNotHoldAreDoubted()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV1040.MOV", 12'925, 0, 30), video("CORV1041.MOV", 12'925, 0, 45),
                     video("CORV1042.MOV", 12'927, 0, 60), video("CORV1043.MOV", 12'501, 0, 75),
                     video("CORV1045.MOV", 12'501, 0, 105)},
                    {logOf("1254.log", {38'984}, 120)});
    for (const Pairing& pairing : pairings) {
        QCOMPARE(pairing.log, 0);
        QVERIFY(pairing.doubtful);
    }
}

// The first log is the next one after both videos and holds one of them at most.
void FlightDoubtTest::pairByALogOfOtherLengthsIsDoubtedAsByLength()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV1011.MOV", 35'000, 0, 15), video("CORV1017.MOV", 83'000, 0, 60)},
                    {logOf("1112.log", {36'000}, 105), logOf("1114.log", {84'000}, 135),
                     logOf("1115.log", {47'000}, 150)});
    QCOMPARE(pairings[0].log, 0);
    QCOMPARE(pairings[0].evidence, PairingEvidence::TimeAndLength);
    QVERIFY(pairings[0].doubtful);
    QCOMPARE(pairings[1].log, 1);
}

void FlightDoubtTest::aPairThatCannotBeComparedLeavesTheOtherSure_data()
{
    QTest::addColumn<qint64>("otherMs");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("log that cannot be read") << qint64(37'894) << false;
    QTest::newRow("video of unknown length") << qint64(-1) << true;
}

void FlightDoubtTest::aPairThatCannotBeComparedLeavesTheOtherSure()
{
    QFETCH(qint64, otherMs);
    QFETCH(bool, isRead);
    std::vector<PairingLog> logs = {logOf("1.log", {38'453}, 120), logOf("2.log", {}, 516)};
    logs[1].isRead = isRead;
    if (isRead)
        logs[1].recordings = logOf("2.log", {38'300}).recordings;
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0003.MOV", 36'988, 0, 98), video("CORV0004.MOV", otherMs, 1, 470)}, logs);
    QVERIFY(!pairings[0].doubtful);
    QCOMPARE(pairings[1].log, 1);
    QCOMPARE(pairings[1].evidence, PairingEvidence::Time);
}

void FlightDoubtTest::equalFlightsOfACopyWithoutTheirLogsAreDoubted_data()
{
    QTest::addColumn<int>("videos");
    QTest::addColumn<qint64>("secondsApart"); // by which the copy took the videos
    QTest::newRow("two at once") << 2 << qint64(0);
    QTest::newRow("two as slow as they were taken") << 2 << qint64(30);
    QTest::newRow("four at once") << 4 << qint64(0);
    QTest::newRow("four as slow as they were taken") << 4 << qint64(30);
}

// The one log that is left is the next one after every video and as long as each: at most one of
// them is its own.
void FlightDoubtTest::equalFlightsOfACopyWithoutTheirLogsAreDoubted()
{
    QFETCH(int, videos);
    QFETCH(qint64, secondsApart);
    std::vector<PairingVideo> equal;
    for (int i = 0; i < videos; ++i)
        equal.push_back(
            video(QStringLiteral("CORV%1.MOV").arg(2 * i + 1), 60'000, 0, i * secondsApart));
    for (const Pairing& pairing :
         pairFlights(equal, {logOf("1.log", {61'000}, videos * secondsApart + 1)}))
        QVERIFY(pairing.log < 0 || pairing.doubtful);
}

// All files have the time of their copy: what doubt the lengths leave counts as with lengths alone.
void FlightDoubtTest::lostTimesDoNotConfirmALength()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0160.MOV", 561'528, 0, 0), video("CORV0161.MOV", 392'292, 0, 0)},
                    {logOf("88.log", {562'695, 393'303}, 0)});
    QCOMPARE(pairings[1].log, 0);
    QCOMPARE(pairings[1].evidence, PairingEvidence::TimeAndLength);
    QVERIFY(pairings[1].doubtful);
}

void FlightDoubtTest::logLeftOutBetweenNeighboursIsDoubted_data()
{
    QTest::addColumn<int>("lastVideo");
    QTest::addColumn<int>("lastLog");
    QTest::addColumn<bool>("doubtful");
    QTest::newRow("neighbours with logs that are neighbours") << 52 << 691 << false;
    QTest::newRow("neighbours, and a log between theirs is missing") << 52 << 692 << true;
    QTest::newRow("a video and a log are missing") << 53 << 692 << false;
}

// Times are lost; the last video may be that of the log that is missing.
void FlightDoubtTest::logLeftOutBetweenNeighboursIsDoubted()
{
    QFETCH(int, lastVideo);
    QFETCH(int, lastLog);
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    const auto add = [&](int number, int log, qint64 lengthMs) {
        videos.push_back(video(QStringLiteral("CORV00%1.MOV").arg(number), lengthMs, 0));
        logs.push_back(logOf(QStringLiteral("LOG%1.log").arg(log), {lengthMs + 1000}, 5));
    };
    add(46, 686, 659'676);
    add(47, 687, 888'121);
    add(48, 688, 762'195);
    add(50, 689, 805'972);
    add(51, 690, 147'230);
    add(lastVideo, lastLog, 992'525);
    const std::vector<Pairing> pairings = pairFlights(videos, logs);
    QCOMPARE(pairings[5].log, 5);
    QTEST(pairings[4].doubtful, "doubtful");
    QTEST(pairings[5].doubtful, "doubtful");
    for (const size_t sure : {1, 2, 3})
        QVERIFY(!pairings[sure].doubtful);
}

// Every recording has its video: a length that agrees by accident would leave one without.
void FlightDoubtTest::completeCardsAreDoubtedLess()
{
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0356.MOV", 874'140, 0, 0), video("CORV0357.MOV", 597'464, 0, 45),
         video("CORV0358.MOV", 955'154, 0, 101), video("CORV0359.MOV", 214'381, 0, 131),
         video("CORV0361.MOV", 667'567, 0, 154), video("CORV0362.MOV", 727'327, 0, 185)},
        {logOf("108.log", {874'261, 597'967, 955'591, 214'604}, 185),
         logOf("109.log", {668'281, 728'300}, 186)});
    QCOMPARE(pairings[5].log, 1);
    QCOMPARE(pairings[5].evidence, PairingEvidence::Length);
    QVERIFY(!pairings[5].doubtful);
}

void FlightDoubtTest::lengthAloneIsDoubtedWhereFilesAreMissing_data()
{
    QTest::addColumn<bool>("complete");
    QTest::newRow("a video and a log without each other") << false;
    QTest::newRow("nothing missing") << true;
}

// Times are lost. Where others lack their log or their video, the second one may have found a log
// of its length by accident.
void FlightDoubtTest::lengthAloneIsDoubtedWhereFilesAreMissing()
{
    QFETCH(bool, complete);
    std::vector<PairingVideo> videos;
    for (const auto& [number, lengthMs] : std::vector<std::pair<int, qint64>>{
             {1, 176'126}, {2, 225'375}, {4, 410'143}, {10, 610'543}, {11, 556'239}})
        videos.push_back(
            video(QStringLiteral("CORV%1.MOV").arg(number, 4, 10, QChar('0')), lengthMs, -1));
    std::vector<PairingLog> logs = {logOf("1.log", {177'156}), logOf("2.log", {225'685, 410'705}),
                                    logOf("4.log", {611'356}), logOf("5.log", {557'091})};
    if (!complete) {
        videos.push_back(video("CORV0018.MOV", 831'030, -1));
        logs.push_back(logOf("8.log", {1'038'744}));
    }
    const std::vector<Pairing> pairings = pairFlights(videos, logs);
    QCOMPARE(pairings[1].log, 1);
    QCOMPARE(pairings[1].evidence, PairingEvidence::Length);
    QCOMPARE(pairings[1].doubtful, !complete);
}

QTEST_GUILESS_MAIN(FlightDoubtTest)
#include "FlightDoubtTest.moc"
