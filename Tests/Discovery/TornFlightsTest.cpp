#include "Discovery/flightPairing.h"
#include "pairingFiles.h"

#include <QtTest>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::PairingEvidence)

/// Flights in several files of which some are missing, after a copy that has lost the times: the
/// full length of a file and the numbers that are left out show their logs.
class TornFlightsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void remainingFilesGetTheLogOfTheirFlight_data();
    void remainingFilesGetTheLogOfTheirFlight();
    void filesOfOtherLengthsShowNothing();
    void noMoreFilesAreMissingThanNumbersAreLeftOut();
    void numbersOfLogsShowWhetherOneIsMissing_data();
    void numbersOfLogsShowWhetherOneIsMissing();
    void tornFlightKeepsItsLogFromOneOfItsLength();

private:
    void addFlight(int number, const QList<qint64>& lengthsMs);
    void addVideo(int number, qint64 lengthMs);
    void addLog(int number, qint64 recordingMs);
    std::vector<Pairing> tornOnes();

    std::vector<PairingVideo> m_videos;
    std::vector<PairingLog> m_logs;
};

// A flight before and one after; the first log is the next one after every video.
void TornFlightsTest::init()
{
    m_videos.clear();
    m_logs.clear();
    addFlight(1, {300'000, 300'000, 110'000});
    addFlight(30, {300'000, 95'000});
    addLog(10, 711'000);
    addLog(11, 1'031'000);
    addLog(12, 396'000);
}

void TornFlightsTest::addFlight(int number, const QList<qint64>& lengthsMs)
{
    for (const qint64 lengthMs : lengthsMs)
        addVideo(number++, lengthMs);
}

void TornFlightsTest::addVideo(int number, qint64 lengthMs)
{
    m_videos.push_back(
        video(QStringLiteral("CORV%1.MOV").arg(number, 4, 10, QLatin1Char('0')), lengthMs, 0));
}

void TornFlightsTest::addLog(int number, qint64 recordingMs)
{
    m_logs.push_back(logOf(QStringLiteral("LOG%1.log").arg(number), {recordingMs}, 5));
}

// The pairings of the videos that a test has added. The flights around them have theirs.
std::vector<Pairing> TornFlightsTest::tornOnes()
{
    std::vector<Pairing> pairings = pairFlights(m_videos, m_logs);
    for (const size_t i : {0, 1, 2})
        if (pairings[i].log != 0 || pairings[i].files.size() != 3)
            QTest::qFail("the flight before has lost its log", __FILE__, __LINE__);
    for (const size_t i : {3, 4})
        if (pairings[i].log != 2 || pairings[i].files.size() != 2)
            QTest::qFail("the flight after has lost its log", __FILE__, __LINE__);
    pairings.erase(pairings.begin(), pairings.begin() + 5);
    return pairings;
}

void TornFlightsTest::remainingFilesGetTheLogOfTheirFlight_data()
{
    QTest::addColumn<QList<int>>("numbers");
    QTest::newRow("the first is missing") << QList<int>{11, 12, 13};
    QTest::newRow("one in the middle") << QList<int>{10, 12, 13};
    QTest::newRow("the last") << QList<int>{10, 11, 12};
    QTest::newRow("two in the middle") << QList<int>{10, 13};
    QTest::newRow("the first and one in the middle") << QList<int>{11, 13};
    QTest::newRow("one in the middle and the last") << QList<int>{10, 12};
    QTest::newRow("all but the last") << QList<int>{13};
}

void TornFlightsTest::remainingFilesGetTheLogOfTheirFlight()
{
    QFETCH(QList<int>, numbers);
    for (const int number : numbers)
        addVideo(number, number == 13 ? 130'000 : 300'000);
    for (const Pairing& pairing : tornOnes()) {
        QCOMPARE(pairing.log, 1);
        QCOMPARE(pairing.evidence, PairingEvidence::LengthDiffers);
        QVERIFY(pairing.doubtful);
        QVERIFY(pairing.lacksFiles);
        // What is missing would shift the files that follow: each opens alone.
        QVERIFY(pairing.files.empty());
        QCOMPARE(pairing.recording, -1);
        QVERIFY(pairing.flightLengthMs <= 300'000);
        QCOMPARE(pairing.recordingLengthMs, qint64(1'031'000));
    }
}

// The three and one of their length are together as long as the recording, but a recorder splits at
// the full length.
void TornFlightsTest::filesOfOtherLengthsShowNothing()
{
    addVideo(10, 257'500);
    addVideo(12, 257'500);
    addVideo(13, 257'500);
    for (const Pairing& pairing : tornOnes()) {
        QCOMPARE(pairing.log, 0);
        QCOMPARE(pairing.evidence, PairingEvidence::LengthDiffers);
        QVERIFY(pairing.doubtful);
    }
}

// With one file more between them the two would be as long as the recording.
void TornFlightsTest::noMoreFilesAreMissingThanNumbersAreLeftOut()
{
    m_logs[1] = logOf("LOG11.log", {731'000}, 5);
    addVideo(4, 300'000);
    addVideo(5, 130'000);
    addVideo(6, 45'000); // of a flight whose log is missing
    addVideo(29, 50'000);
    const std::vector<Pairing> pairings = tornOnes();
    QVERIFY(pairings[0].log != 1);
    QVERIFY(pairings[1].log != 1);
}

void TornFlightsTest::numbersOfLogsShowWhetherOneIsMissing_data()
{
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<int>("log");
    QTest::newRow("none") << QList<int>{10, 11, 12} << 1;
    QTest::newRow("on both sides") << QList<int>{10, 15, 20} << 0;
}

// Any flight of more than ten minutes may be that of this file, also one that has lost its log.
void TornFlightsTest::numbersOfLogsShowWhetherOneIsMissing()
{
    QFETCH(QList<int>, numbers);
    for (size_t i = 0; i < 3; ++i)
        m_logs[i].path = QStringLiteral("/card/LOG%1.log").arg(numbers[static_cast<int>(i)]);
    addVideo(10, 300'000);
    QTEST(tornOnes()[0].log, "log");
}

// Two recordings are as long as the second flight. The first of them is that of a flight that lacks
// its second file.
void TornFlightsTest::tornFlightKeepsItsLogFromOneOfItsLength()
{
    m_logs.insert(m_logs.begin() + 2, logOf("LOG11b.log", {1'032'000}, 5));
    std::swap(m_logs[2], m_logs[3]); // the logs of the flights around keep their places
    m_logs[2].path = "/card/LOG13.log";
    m_logs[3].path = "/card/LOG12.log";
    addVideo(10, 300'000);
    addFlight(12, {300'000, 130'000});
    addFlight(14, {300'000, 300'000, 300'000, 130'500});
    const std::vector<Pairing> pairings = tornOnes();
    for (const size_t torn : {0, 1, 2})
        QCOMPARE(pairings[torn].log, 1);
    for (const size_t whole : {3, 4, 5, 6}) {
        QCOMPARE(pairings[whole].log, 3);
        QCOMPARE(pairings[whole].files.size(), size_t(4));
    }
}

QTEST_GUILESS_MAIN(TornFlightsTest)
#include "TornFlightsTest.moc"
