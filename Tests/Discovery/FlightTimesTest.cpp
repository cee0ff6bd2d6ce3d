#include "Discovery/flightPairing.h"
#include "pairingFiles.h"

#include <QtTest>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::PairingEvidence)

/// What the clocks of cameras and logs say of videos whose length fits to no recording, as it is
/// with the files of a flight that lacks one of them.
class FlightTimesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void videoTakenDuringALaterLogGetsIt_data();
    void videoTakenDuringALaterLogGetsIt();
    void ofSeveralLogsAtATimeNoneIsGuessed();
    void oneImpossibleTimeIsNoLostCard();
    void aFileOfUnknownLengthJoinsNoOthers();
    void neighboursThatOnlyTogetherFitAreNoEvidence();
    void runningLogReplacesOneThatWasNotRunning();
    void anUnreadLogOfTheTimesStays();
    void lengthThatAgreesByAccidentGivesWayToTheRunningLog();
    void filesWithABreakBetweenThemAreHardlyOneFlight();

private:
    std::vector<PairingVideo> m_videos;
    std::vector<PairingLog> m_logs;
};

// Four flights whose lengths and times agree: the times are the camera's.
void FlightTimesTest::init()
{
    m_videos = {video("CORV0001.MOV", 300'000, 0, 0), video("CORV0003.MOV", 410'000, 1, 4000),
                video("CORV0005.MOV", 220'000, 2, 8000), video("CORV0007.MOV", 370'000, 3, 12'000)};
    m_logs = {logOf("1.log", {301'000}, 30), logOf("2.log", {411'000}, 4030),
              logOf("3.log", {221'000}, 8030), logOf("4.log", {371'000}, 12'030)};
}

void FlightTimesTest::videoTakenDuringALaterLogGetsIt_data()
{
    QTest::addColumn<qint64>("end");
    QTest::addColumn<int>("log");
    // Its first recording begins at 16070 and ends at 17060 at the latest, half a minute sooner
    // after the delay of the card.
    QTest::newRow("in the middle of the recording") << qint64(16'500) << 4;
    QTest::newRow("at its end") << qint64(17'030) << 4;
    QTest::newRow("before it") << qint64(16'000) << -1;
    QTest::newRow("after it") << qint64(17'070) << -1;
}

// The log was written more than half an hour after the video, as two more flights came before.
void FlightTimesTest::videoTakenDuringALaterLogGetsIt()
{
    QFETCH(qint64, end);
    QFETCH(int, log);
    m_videos.push_back(video("CORV0009.MOV", 180'000, -1, end));
    m_logs.push_back(logOf("5.log", {990'000, 1'000'000, 900'000}, 17'060 + 60 + 1000 + 60 + 900));
    const Pairing pairing = pairFlights(m_videos, m_logs).back();
    QCOMPARE(pairing.log, log);
    QCOMPARE(pairing.evidence, log < 0 ? PairingEvidence::None : PairingEvidence::LengthDiffers);
    QCOMPARE(pairing.doubtful, log >= 0);
    QVERIFY(pairing.files.empty());
}

void FlightTimesTest::ofSeveralLogsAtATimeNoneIsGuessed()
{
    m_videos.push_back(video("CORV0009.MOV", 180'000, -1, 16'500));
    m_logs.push_back(logOf("5.log", {990'000, 1'000'000, 900'000}, 19'080));
    m_logs.push_back(logOf("of-another-card-7.log", {980'000, 1'010'000, 910'000}, 19'100));
    QCOMPARE(pairFlights(m_videos, m_logs).back().log, -1);
}

// One file was copied again: it ends sooner after the one before than it is long.
void FlightTimesTest::oneImpossibleTimeIsNoLostCard()
{
    for (const int number : {2, 3, 4}) {
        const qint64 end = 4000 * (number + 2);
        m_videos.push_back(video(QStringLiteral("CORV001%1.MOV").arg(2 * number),
                                 200'000 + 50'000 * number, 2 + number, end));
        m_logs.push_back(
            logOf(QStringLiteral("1%1.log").arg(number), {201'000 + 50'000 * number}, end + 30));
    }
    m_videos.push_back(video("CORV0020.MOV", 630'000, 4, 12'001));
    m_videos.push_back(video("CORV0030.MOV", 180'000, -1, 36'500));
    m_logs.push_back(logOf("20.log", {990'000, 1'000'000, 900'000}, 39'080));
    QCOMPARE(pairFlights(m_videos, m_logs).back().log, 7);
}

// The first and the last are together as long as the recording.
void FlightTimesTest::aFileOfUnknownLengthJoinsNoOthers()
{
    m_videos.push_back(video("CORV0009.MOV", 177'000, 4, 16'177));
    m_videos.push_back(video("CORV0010.MOV", 0, 4, 16'178));
    m_videos.push_back(video("CORV0011.MOV", 94'000, 4, 16'271));
    m_logs.push_back(logOf("5.log", {272'000}, 16'300));
    const std::vector<Pairing> pairings = pairFlights(m_videos, m_logs);
    for (const size_t file : {4, 5, 6})
        QVERIFY(pairings[file].files.empty());
    QCOMPARE(pairings[5].evidence, PairingEvidence::Time);
}

// Each has a log of its own by time that is about as long as both together; lengths that differ are
// all that is known of them.
void FlightTimesTest::neighboursThatOnlyTogetherFitAreNoEvidence()
{
    m_videos.push_back(video("CORV0009.MOV", 40'000, 4, 16'000));
    m_videos.push_back(video("CORV0010.MOV", 300'000, 5, 20'000));
    m_logs.push_back(logOf("5.log", {342'800}, 16'400));
    m_logs.push_back(logOf("6.log", {301'000}, 20'030));
    const std::vector<Pairing> pairings = pairFlights(m_videos, m_logs);
    QCOMPARE(pairings[4].log, 4);
    QCOMPARE(pairings[4].evidence, PairingEvidence::LengthDiffers);
    QCOMPARE(pairings[5].evidence, PairingEvidence::TimeAndLength);
}

// Two cards in one folder: the next log to be written is of the other one, and was begun after the
// video.
void FlightTimesTest::runningLogReplacesOneThatWasNotRunning()
{
    m_videos.push_back(video("CORV0009.MOV", 180'000, 4, 16'500));
    m_logs.push_back(logOf("of-another-card-7.log", {90'000}, 16'900));
    m_logs.push_back(logOf("5.log", {990'000}, 17'060));
    const Pairing pairing = pairFlights(m_videos, m_logs).back();
    QCOMPARE(pairing.log, 5);
    QCOMPARE(pairing.evidence, PairingEvidence::LengthDiffers);
    QVERIFY(pairing.doubtful);
}

void FlightTimesTest::anUnreadLogOfTheTimesStays()
{
    m_videos.push_back(video("CORV0009.MOV", 180'000, 4, 16'500));
    m_logs.push_back(logOf("of-another-card-7.log", {}, 16'900));
    m_logs.back().isRead = false;
    m_logs.push_back(logOf("5.log", {990'000}, 17'060));
    const Pairing pairing = pairFlights(m_videos, m_logs).back();
    QCOMPARE(pairing.log, 4);
    QCOMPARE(pairing.evidence, PairingEvidence::Time);
}

// Three files of a flight that lacks its first ones are together as long as the recording of a log
// that was written hours later.
void FlightTimesTest::lengthThatAgreesByAccidentGivesWayToTheRunningLog()
{
    m_videos.push_back(video("CORV0009.MOV", 177'000, 4, 16'500));
    m_videos.push_back(video("CORV0010.MOV", 177'000, 4, 16'677));
    m_videos.push_back(video("CORV0011.MOV", 94'000, 4, 16'771));
    m_logs.push_back(logOf("5.log", {990'000}, 16'801));
    m_logs.push_back(logOf("6.log", {447'900}, 30'000));
    const std::vector<Pairing> pairings = pairFlights(m_videos, m_logs);
    for (const size_t part : {4, 5, 6}) {
        QCOMPARE(pairings[part].log, 4);
        QCOMPARE(pairings[part].evidence, PairingEvidence::LengthDiffers);
        QVERIFY(pairings[part].doubtful);
    }
}

// The first two and the next two are of two flights that lack a file each; together they are as
// long as the recording of the first.
void FlightTimesTest::filesWithABreakBetweenThemAreHardlyOneFlight()
{
    for (const auto& [name, end] : {std::pair<const char*, qint64>{"CORV0009.MOV", 16'177},
                                    {"CORV0010.MOV", 16'354},
                                    {"CORV0011.MOV", 17'200},
                                    {"CORV0012.MOV", 17'377}})
        m_videos.push_back(video(name, 177'000, end < 17'000 ? 4 : 5, end));
    m_logs.push_back(logOf("5.log", {709'000}, 16'740));
    m_logs.push_back(logOf("6.log", {900'000}, 17'950));
    const std::vector<Pairing> pairings = pairFlights(m_videos, m_logs);
    QCOMPARE(pairings[4].log, 4);
    QCOMPARE(pairings[5].log, 4);
    QCOMPARE(pairings[6].log, 5);
    QCOMPARE(pairings[7].log, 5);
}

QTEST_GUILESS_MAIN(FlightTimesTest)
#include "FlightTimesTest.moc"
