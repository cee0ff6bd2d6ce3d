#include "Discovery/flightPairing.h"
#include "Discovery/flightNames.h"
#include "Discovery/flightSegments.h"
#include "GeneratedCards.h"
#include "Support/trustRow.h"
#include "pairingFiles.h"

#include <QHash>
#include <QtTest>
#include <cmath>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::PairingEvidence)

namespace {

QList<int> logsOf(const std::vector<Pairing>& pairings)
{
    QList<int> logs;
    for (const Pairing& pairing : pairings)
        logs.append(pairing.log);
    return logs;
}

} // namespace

class FlightPairingTest : public QObject
{
    Q_OBJECT

private slots:
    void oneVideoAndOneLogArePairedByTimeOrLength_data();
    void oneVideoAndOneLogArePairedByTimeOrLength();
    void lengthsAgreeBelowThreeSeconds_data();
    void lengthsAgreeBelowThreeSeconds();
    void recordingWithoutAStartIsNone();
    void equalLengthsLeaveNoDoubtWhereTimesAgree();
    void oneWrongPairLeavesTheOthersCertain();
    void lostTimesAreReplacedByLengths();
    void orderOfNamesDecidesBetweenEqualLengths();
    void equalFlightsOfACopyGetALogEach();
    void equalFlightsKeepTheLogsOfTheirTimes();
    void equalRecordingsOfALogAreToldApartByTime();
    void foldersComeBeforeCopiesInTheOrderOfNames();
    void gapInTimesIsFilledByLength();
    void contradictedPairGetsTheBetterLog();
    void sharedLogKeepsOnlyTheVideosItHolds();
    void partsOfOneFlightAreOneRecording();
    void cardsPutTogetherKeepTheirFlights_data();
    void cardsPutTogetherKeepTheirFlights();
    void consecutiveNumbersCanBeSeparateFlights();
    void nothingIsGuessedWhereNothingFits();
    void cardsInSeveralBlocksAreAligned();
    void namesAreOrderedAsPeopleReadThem_data();
    void namesAreOrderedAsPeopleReadThem();
    void nextPartHasTheNextNumber_data();
    void nextPartHasTheNextNumber();
    void copiesAreKnownByTheNameBesideThem_data();
    void copiesAreKnownByTheNameBesideThem();
    void claimsAreShares();
    void manyFlightsStayInTheRangeOfNumbers();
    void generatedCardsArePairedRight_data();
    void generatedCardsArePairedRight();
    void cleanupTestCase();

private:
    int m_cards = 0;
    int m_videos = 0; // only those that have a log and all their parts on the card
    int m_right = 0;
    int m_rightWithoutDoubt = 0;
    int m_torn = 0; // videos of flights that lack others
    int m_tornRight = 0;
    int m_wrongWithoutDoubt = 0;
};

void FlightPairingTest::oneVideoAndOneLogArePairedByTimeOrLength_data()
{
    QTest::addColumn<qint64>("videoMs");
    QTest::addColumn<int>("logByTime");
    QTest::addColumn<QList<qint64>>("recordingsMs");
    QTest::addColumn<PairingEvidence>("evidence");
    QTest::addColumn<bool>("doubtful");
    QTest::addColumn<qint64>("recordingMs");

    using Evidence = PairingEvidence;
    const QList<qint64> fitting = {35'000, 61'000};
    QTest::newRow("time and length")
        << qint64(60'000) << 0 << fitting << Evidence::TimeAndLength << false << qint64(61'000);
    QTest::newRow("length differs")
        << qint64(21'000) << 0 << fitting << Evidence::LengthDiffers << true << qint64(35'000);
    QTest::newRow("length alone") << qint64(60'000) << -1 << fitting << Evidence::Length << true
                                  << qint64(61'000);
    QTest::newRow("unknown length")
        << qint64(-1) << 0 << fitting << Evidence::Time << false << qint64(-1);
    QTest::newRow("no whole recording")
        << qint64(60'000) << 0 << QList<qint64>{} << Evidence::Time << false << qint64(-1);
    QTest::newRow("recording without a stop")
        << qint64(60'000) << 0 << QList<qint64>{0} << Evidence::Time << false << qint64(-1);
    QTest::newRow("nothing") << qint64(21'000) << -1 << fitting << Evidence::None << false
                             << qint64(-1);
    QTest::newRow("nothing of an unknown length")
        << qint64(0) << -1 << fitting << Evidence::None << false << qint64(-1);
}

void FlightPairingTest::oneVideoAndOneLogArePairedByTimeOrLength()
{
    QFETCH(qint64, videoMs);
    QFETCH(int, logByTime);
    QFETCH(QList<qint64>, recordingsMs);
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", videoMs, logByTime)},
                    {logOf("1.log", {recordingsMs.begin(), recordingsMs.end()})});
    QCOMPARE(pairings.size(), size_t(1));
    QTEST(pairings[0].evidence, "evidence");
    QTEST(pairings[0].doubtful, "doubtful");
    QTEST(pairings[0].recordingLengthMs, "recordingMs");
    QCOMPARE(pairings[0].log, pairings[0].evidence == PairingEvidence::None ? -1 : 0);
    QCOMPARE(pairings[0].flightLengthMs, videoMs > 0 ? videoMs : -1);
}

void FlightPairingTest::lengthsAgreeBelowThreeSeconds_data()
{
    QTest::addColumn<qint64>("recordingMs");
    QTest::addColumn<bool>("agree");
    QTest::newRow("equal") << qint64(60'000) << true;
    QTest::newRow("2999 ms longer") << qint64(62'999) << true;
    QTest::newRow("3000 ms longer") << qint64(63'000) << false;
    QTest::newRow("2999 ms shorter") << qint64(57'001) << true;
    QTest::newRow("3000 ms shorter") << qint64(57'000) << false;
}

void FlightPairingTest::lengthsAgreeBelowThreeSeconds()
{
    QFETCH(qint64, recordingMs);
    QTEST(lengthsAgree(60'000, recordingMs), "agree");
}

// A start of 0 is one that is not known.
void FlightPairingTest::recordingWithoutAStartIsNone()
{
    PairingLog log = logOf("1.log", {});
    log.recordings = {{0, 61'000}};
    const Pairing pairing = pairFlights({video("CORV0001.MOV", 60'000, 0)}, {log})[0];
    QCOMPARE(pairing.evidence, PairingEvidence::Time);
    QCOMPARE(pairing.recordingLengthMs, qint64(-1));
}

void FlightPairingTest::equalLengthsLeaveNoDoubtWhereTimesAgree()
{
    // All of a minute, the names in no order, one log missing.
    const std::vector<Pairing> pairings =
        pairFlights({video("morning.mp4", 60'000, 0, 0), video("noon.mp4", 60'000, -1, 5000),
                     video("evening.mp4", 60'000, 1, 10'000)},
                    {logOf("1.log", {61'000}, 100), logOf("2.log", {61'000}, 10'100)});
    QCOMPARE(logsOf(pairings), QList<int>({0, -1, 1}));
    for (const size_t i : {0, 2}) {
        QCOMPARE(pairings[i].evidence, PairingEvidence::TimeAndLength);
        QVERIFY(!pairings[i].doubtful);
    }
}

void FlightPairingTest::oneWrongPairLeavesTheOthersCertain()
{
    // The second video was cut short, the third has lost its log; times are as the camera set them.
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0001.MOV", 20'000, 0, 0), video("CORV0003.MOV", 21'000, 1, 3600),
         video("CORV0005.MOV", 90'000, -1, 9000), video("CORV0007.MOV", 47'000, 2, 12'000)},
        {logOf("1.log", {20'900}, 40), logOf("2.log", {35'900}, 3640),
         logOf("3.log", {47'900}, 12'040)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 1, -1, 2}));
    QVERIFY(!pairings[0].doubtful);
    QVERIFY(pairings[1].doubtful);
    QVERIFY(!pairings[3].doubtful);
}

void FlightPairingTest::lostTimesAreReplacedByLengths()
{
    // Logs copied after the videos: the first of them is the next one after every video.
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, 0, 0), video("CORV0002.MOV", 500'000, 0, 2),
                     video("CORV0003.MOV", 700'000, 0, 4)},
                    {logOf("a.log", {301'000}, 10), logOf("b.log", {501'000}, 11),
                     logOf("c.log", {701'000}, 12)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 1, 2}));
    QCOMPARE(pairings[0].evidence, PairingEvidence::TimeAndLength);
    QCOMPARE(pairings[1].evidence, PairingEvidence::Length);
    QCOMPARE(pairings[2].evidence, PairingEvidence::Length);
    QCOMPARE(pairings[2].flightLengthMs, qint64(700'000));
    QCOMPARE(pairings[2].recordingLengthMs, qint64(701'000));
}

void FlightPairingTest::orderOfNamesDecidesBetweenEqualLengths()
{
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    for (int i = 0; i < 6; ++i) {
        // In reverse, so that the order given is not the order of names.
        videos.push_back(video(QStringLiteral("CORV000%1.MOV").arg(6 - i), 600'000, -1));
        logs.push_back(logOf(QStringLiteral("LOG%1.log").arg(i + 8), {601'000}));
    }
    QCOMPARE(logsOf(pairFlights(videos, logs)), QList<int>({5, 4, 3, 2, 1, 0}));
}

// The copy wrote the logs after the videos: the first of them is the next one after every video.
void FlightPairingTest::equalFlightsOfACopyGetALogEach()
{
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0001.MOV", 90'000, 0, 0), video("CORV0003.MOV", 90'000, 0, 1),
         video("CORV0005.MOV", 90'000, 0, 2)},
        {logOf("1.log", {91'000}, 3), logOf("2.log", {91'000}, 4), logOf("3.log", {91'000}, 5)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 1, 2}));
}

// The order of names would pair one video more, if the times of the first two were wrong.
void FlightPairingTest::equalFlightsKeepTheLogsOfTheirTimes()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0004.MOV", 61'780, 1, 1738), video("CORV0005.MOV", 61'905, 2, 2271),
                     video("CORV0007.MOV", 62'117, -1, 3261)},
                    {logOf("1.log", {62'682}, 131), logOf("2.log", {63'496}, 1780),
                     logOf("3.log", {63'253}, 2316)});
    QCOMPARE(pairings[0].log, 1);
    QCOMPARE(pairings[1].log, 2);
}

void FlightPairingTest::equalRecordingsOfALogAreToldApartByTime()
{
    PairingLog log = logOf("1.log", {}, 643);
    log.recordings = {{49'000, 101'000}, {124'000, 176'000}};
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0018.MOV", 51'000, 0, 112), video("CORV0019.MOV", 51'000, 0, 611)}, {log});
    QCOMPARE(pairings[0].recording, 0);
    QCOMPARE(pairings[1].recording, 1);
}

// A card with two folders, in each a file of another card.
void FlightPairingTest::foldersComeBeforeCopiesInTheOrderOfNames()
{
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    for (const char* name :
         {"101_CORV/CORV0001.MOV", "101_CORV/CORV0001 (2).MOV", "101_CORV/CORV0002 (2).MOV",
          "102_CORV/CORV0001.MOV", "102_CORV/CORV0002.MOV", "102_CORV/CORV0002 (2).MOV"}) {
        videos.push_back(video(name, 600'000, -1));
        logs.push_back(logOf(QStringLiteral("LOG%1.log").arg(logs.size()), {601'000}));
    }
    QCOMPARE(logsOf(pairFlights(videos, logs)), QList<int>({0, 1, 2, 3, 4, 5}));
}

void FlightPairingTest::gapInTimesIsFilledByLength()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, 0, 0), video("CORV0002.MOV", 500'000, -1, 3000),
                     video("CORV0003.MOV", 700'000, 2, 10'000)},
                    {logOf("a.log", {301'000}, 60), logOf("b.log", {501'000}, 6000),
                     logOf("c.log", {701'000}, 10'060)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 1, 2}));
    QCOMPARE(pairings[0].evidence, PairingEvidence::TimeAndLength);
    QCOMPARE(pairings[1].evidence, PairingEvidence::Length);
}

void FlightPairingTest::contradictedPairGetsTheBetterLog()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, 1, 0), video("CORV0003.MOV", 900'000, 1, 20)},
                    {logOf("a.log", {301'000}, 4000), logOf("b.log", {701'000}, 60)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 1}));
    QCOMPARE(pairings[0].evidence, PairingEvidence::Length);
    // Nothing better for this one: it stays, to be looked at.
    QCOMPARE(pairings[1].evidence, PairingEvidence::LengthDiffers);
    QVERIFY(pairings[1].doubtful);
    QCOMPARE(pairings[1].flightLengthMs, qint64(900'000));
    QCOMPARE(pairings[1].recordingLengthMs, qint64(701'000));
}

void FlightPairingTest::sharedLogKeepsOnlyTheVideosItHolds()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, 0, 0), video("CORV0002.MOV", 500'000, 0, 600),
                     video("CORV0005.MOV", 200'000, 0, 900)},
                    {logOf("day.log", {301'000, 501'000}, 1200)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 0, 0}));
    QCOMPARE(pairings[0].evidence, PairingEvidence::TimeAndLength);
    QCOMPARE(pairings[0].recording, 0);
    QCOMPARE(pairings[1].recording, 1);
    QCOMPARE(pairings[2].evidence, PairingEvidence::LengthDiffers);
    QVERIFY(pairings[2].doubtful);
}

void FlightPairingTest::partsOfOneFlightAreOneRecording()
{
    const std::vector<Pairing> pairings = pairFlights(
        {video("CORV0007.MOV", 300'000, 0, 0), video("CORV0008.MOV", 300'000, 0, 300),
         video("CORV0009.MOV", 120'000, 0, 420), video("CORV0010.MOV", 90'000, 1, 2000)},
        {logOf("a.log", {721'000}, 480), logOf("b.log", {91'000}, 2060)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 0, 0, 1}));
    for (size_t part = 0; part < 3; ++part) {
        QCOMPARE(pairings[part].evidence, PairingEvidence::TimeAndLength);
        QVERIFY(!pairings[part].doubtful);
        QCOMPARE(pairings[part].files, std::vector<size_t>({0, 1, 2}));
        QCOMPARE(pairings[part].flightLengthMs, qint64(720'000));
        QCOMPARE(pairings[part].recordingLengthMs, qint64(721'000));
    }
    QCOMPARE(pairings[3].files, std::vector<size_t>({3}));
}

void FlightPairingTest::cardsPutTogetherKeepTheirFlights_data()
{
    QTest::addColumn<QStringList>("videoNames"); // each card's in order, of two cards in turn
    QTest::addColumn<QStringList>("logNames");
    QTest::newRow("prefixes") << QStringList{"A_CORV0001.MOV", "B_CORV0001.MOV", "A_CORV0002.MOV",
                                             "B_CORV0002.MOV", "A_CORV0003.MOV", "B_CORV0003.MOV"}
                              << QStringList{"A_1.log", "B_1.log", "A_2.log", "B_2.log"};
    for (const char* copy : {" (2)", "(2)", " 2", "-2", "_1"}) {
        QStringList videos;
        QStringList logs;
        for (const QString name : {"CORV0001", "CORV0002", "CORV0003"})
            videos << name + ".MOV" << name + copy + ".MOV";
        for (const QString name : {"LOG00001", "LOG00002"})
            logs << name + ".log" << name + copy + ".log";
        QTest::addRow("names that a file manager made different by \"%s\"", copy) << videos << logs;
    }
}

// Of each card a flight in two files and a shorter one; all times are lost.
void FlightPairingTest::cardsPutTogetherKeepTheirFlights()
{
    QFETCH(QStringList, videoNames);
    QFETCH(QStringList, logNames);
    const QList<qint64> lengthsMs = {300'000, 300'000, 110'000, 190'000, 75'000, 95'000};
    std::vector<PairingVideo> videos;
    for (int i = 0; i < videoNames.size(); ++i)
        videos.push_back(video(videoNames[i], lengthsMs[i], 0, 0));
    const std::vector<Pairing> pairings =
        pairFlights(videos, {logOf(logNames[0], {411'000}, 5), logOf(logNames[1], {491'000}, 5),
                             logOf(logNames[2], {76'000}, 5), logOf(logNames[3], {96'000}, 5)});
    QCOMPARE(logsOf(pairings), QList<int>({0, 1, 0, 1, 2, 3}));
    QCOMPARE(pairings[2].files, std::vector<size_t>({0, 2}));
    QCOMPARE(pairings[3].files, std::vector<size_t>({1, 3}));
}

void FlightPairingTest::consecutiveNumbersCanBeSeparateFlights()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, 0, 0), video("CORV0002.MOV", 500'000, 1, 2000)},
                    {logOf("a.log", {301'000}, 60), logOf("b.log", {501'000}, 2060)});
    QCOMPARE(pairings[0].files, std::vector<size_t>({0}));
    QCOMPARE(pairings[1].files, std::vector<size_t>({1}));
}

void FlightPairingTest::nothingIsGuessedWhereNothingFits()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, -1), video("CORV0003.MOV", 400'000, -1)},
                    {logOf("a.log", {350'000}), logOf("b.log", {})});
    QCOMPARE(logsOf(pairings), QList<int>({-1, -1}));
    QCOMPARE(pairings[0].evidence, PairingEvidence::None);
    QVERIFY(pairings[0].files.empty());
}

void FlightPairingTest::cardsInSeveralBlocksAreAligned()
{
    // Two cards in one folder, the logs of the second first by name.
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    QList<int> truth;
    for (int i = 0; i < 12; ++i) {
        const qint64 lengthMs = 600'000 + (i * 7919) % 120'000;
        videos.push_back(
            video(QStringLiteral("CORV%1.MOV").arg(i * 2, 4, 10, QLatin1Char('0')), lengthMs, -1));
        const int log = (i + 6) % 12;
        logs.push_back(logOf(QStringLiteral("LOG%1.log").arg(log, 2, 10, QLatin1Char('0')),
                             {lengthMs + 1000}));
        truth.append(i);
    }
    QCOMPARE(logsOf(pairFlights(videos, logs)), truth);
}

void FlightPairingTest::namesAreOrderedAsPeopleReadThem_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::newRow("numbers by value") << "LOG9.log"
                                      << "LOG10.log";
    QTest::newRow("leading zeros") << "LOG009.log"
                                   << "LOG10.log";
    QTest::newRow("letters without case") << "a.log"
                                          << "B.log";
    QTest::newRow("shorter first") << "flight"
                                   << "flight 2";
    QTest::newRow("folder by folder") << "/a/z.mov"
                                      << "/a b/c.mov";
    QTest::newRow("long numbers") << "20180601120000123456789"
                                  << "20180601120000123456790";
}

void FlightPairingTest::namesAreOrderedAsPeopleReadThem()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QVERIFY(namesInOrder(first, second));
    QVERIFY(!namesInOrder(second, first));
    QVERIFY(!namesInOrder(first, first));
}

void FlightPairingTest::nextPartHasTheNextNumber_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("next");
    QTest::addColumn<bool>("continues");
    QTest::newRow("next") << "/a/CORV0001.MOV"
                          << "/a/CORV0002.MOV" << true;
    QTest::newRow("next with a longer name") << "/a/CORVB_0099.MOV"
                                             << "/a/CORVB_0100.MOV" << true;
    QTest::newRow("one is missing") << "/a/CORV0001.MOV"
                                    << "/a/CORV0003.MOV" << false;
    QTest::newRow("more are missing than an int counts") << "/a/CORV1.MOV"
                                                         << "/a/CORV4294967298.MOV" << false;
    QTest::newRow("the same") << "/a/CORV0001.MOV"
                              << "/a/CORV0001.MOV" << false;
    QTest::newRow("other folder") << "/a/CORV0001.MOV"
                                  << "/b/CORV0002.MOV" << false;
    QTest::newRow("other suffix") << "/a/CORV0001.MOV"
                                  << "/a/CORV0002.mp4" << false;
    QTest::newRow("other name") << "/a/VID_0001.MOV"
                                << "/a/CORV0002.MOV" << false;
    QTest::newRow("renamed, card by card") << "/a/B_CORV0001.MOV"
                                           << "/a/B_CORV0002.MOV" << true;
    QTest::newRow("more digits") << "/a/roof 9.MOV"
                                 << "/a/roof 10.MOV" << true;
    QTest::newRow("both of a second card") << "/a/CORV0001 (2).MOV"
                                           << "/a/CORV0002 (2).MOV" << true;
    QTest::newRow("of two cards") << "/a/CORV0001.MOV"
                                  << "/a/CORV0002 (2).MOV" << false;
    QTest::newRow("no number") << "/a/CORVxxxx.MOV"
                               << "/a/CORVxxxy.MOV" << false;
}

void FlightPairingTest::nextPartHasTheNextNumber()
{
    QFETCH(QString, path);
    QFETCH(QString, next);
    const std::vector<FlightName> names = flightNames({path, next});
    QTEST(isNextPart(names[0], names[1]), "continues");
}

void FlightPairingTest::copiesAreKnownByTheNameBesideThem_data()
{
    QTest::addColumn<QStringList>("beside");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("number");
    QTest::addColumn<int>("copy");
    const QStringList none;
    QTest::newRow("no copy") << none << "/a/CORV0012.MOV"
                             << "0012" << 0;
    QTest::newRow("in brackets") << none << "/a/CORV0012 (3).MOV"
                                 << "0012" << 3;
    QTest::newRow("the name is there") << QStringList{"/a/CORV0012.MOV"} << "/a/CORV0012_2.MOV"
                                       << "0012" << 2;
    QTest::newRow("the name is there in other case")
        << QStringList{"/a/corv0012.mov"} << "/a/CORV0012_2.MOV"
        << "0012" << 2;
    QTest::newRow("the name is not there") << none << "/a/CORV0012_2.MOV"
                                           << "2" << 0;
    QTest::newRow("the name is in another folder")
        << QStringList{"/b/CORV0012.MOV"} << "/a/CORV0012_2.MOV"
        << "2" << 0;
    QTest::newRow("the name is that of another kind of file")
        << QStringList{"/a/CORV0012.log"} << "/a/CORV0012_2.MOV"
        << "2" << 0;
    QTest::newRow("its own name is missing, but not those of most")
        << QStringList{"/a/CORV0010.MOV", "/a/CORV0010_2.MOV", "/a/CORV0011.MOV",
                       "/a/CORV0011_2.MOV"}
        << "/a/CORV0012_2.MOV"
        << "0012" << 2;
    QTest::newRow("most are numbers in a row that only their own card has")
        << QStringList{"/a/CORV0009.MOV",   "/a/CORV0010.MOV",   "/a/CORV0009_2.MOV",
                       "/a/CORV0010_2.MOV", "/a/CORV0011_2.MOV", "/a/CORV0013_2.MOV"}
        << "/a/CORV0012_2.MOV"
        << "0012" << 2;
    QTest::newRow("the names of most are missing")
        << QStringList{"/a/CORV0010_2.MOV", "/a/CORV0011_2.MOV", "/a/CORV0012.MOV"}
        << "/a/CORV0012_2.MOV"
        << "2" << 0;
    QTest::newRow("most are named with another sign")
        << QStringList{"/a/CORV0010.MOV", "/a/CORV0010-2.MOV", "/a/CORV0011.MOV",
                       "/a/CORV0011-2.MOV"}
        << "/a/CORV0012_2.MOV"
        << "2" << 0;
    QTest::newRow("a number that people give")
        << QStringList{"/a/roof 12.MOV"} << "/a/roof 12-2.MOV"
        << "2" << 0;
    QTest::newRow("a date") << QStringList{"/a/2018-06.MOV"} << "/a/2018-06-01.MOV"
                            << "01" << 0;
    QTest::newRow("a day without a break") << QStringList{"/a/20180601.MOV"} << "/a/20180601_2.MOV"
                                           << "2" << 0;
    QTest::newRow("a long number") << QStringList{"/a/CORV0012.MOV"} << "/a/CORV0012_200.MOV"
                                   << "200" << 0;
    QTest::newRow("a number alone") << none << "/a/12.MOV"
                                    << "12" << 0;
}

void FlightPairingTest::copiesAreKnownByTheNameBesideThem()
{
    QFETCH(QStringList, beside);
    QFETCH(QString, path);
    const FlightName name = flightNames(beside + QStringList(path)).back();
    QTEST(name.number, "number");
    QTEST(name.copy, "copy");
}

void FlightPairingTest::claimsAreShares()
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        const GeneratedCard card = generateCard(seed, drawHistory(seed));
        AlignmentInput input;
        for (const PairingVideo& file : card.videos)
            input.videos.push_back({file.lengthMs, false});
        for (const PairingLog& log : card.logs)
            for (const RecEvent& event : log.recordings)
                input.recordingsMs.push_back(qint64(event.stopTime) - qint64(event.startTime));
        std::vector<double> shared(input.recordingsMs.size(), 0.0);
        for (const std::vector<AlignmentClaim>& claims : alignFlights(input)) {
            double all = 0;
            for (const AlignmentClaim& claim : claims) {
                QVERIFY(claim.probability >= 0 && std::isfinite(claim.probability));
                all += claim.probability;
                shared[static_cast<size_t>(claim.recording)] += claim.probability;
            }
            QVERIFY(all <= 1 + 1e-9);
        }
        for (const double share : shared)
            QVERIFY(share <= 1 + 1e-9);
    }
}

void FlightPairingTest::manyFlightsStayInTheRangeOfNumbers()
{
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    for (int i = 0; i < 700; ++i) {
        const qint64 lengthMs = 120'000 + (i * 7919) % 1'080'000;
        videos.push_back(
            video(QStringLiteral("CORV%1.MOV").arg(i * 2, 4, 10, QLatin1Char('0')), lengthMs, -1));
        logs.push_back(logOf(QStringLiteral("%1.log").arg(i), {lengthMs + 1000}));
    }
    const std::vector<Pairing> pairings = pairFlights(videos, logs);
    for (int i = 0; i < 700; ++i)
        QCOMPARE(pairings[static_cast<size_t>(i)].log, i);
}

void FlightPairingTest::generatedCardsArePairedRight_data()
{
    QTest::addColumn<unsigned>("first");
    for (unsigned set = 0; set < 8; ++set)
        QTest::addRow("cards from %u", set * 1000) << set * 1000;
}

// A thousand cards for each row. Others by hand: VISTREL_SEED=7 ./FlightPairingTest
void FlightPairingTest::generatedCardsArePairedRight()
{
    QFETCH(unsigned, first);
    first += static_cast<unsigned>(qEnvironmentVariableIntValue("VISTREL_SEED")) * 100'000U;
    for (unsigned number = first; number < first + 1000; ++number) {
        const CardHistory history = drawHistory(number);
        const GeneratedCard card = generateCard(number, history);
        const std::vector<Pairing> pairings = pairFlights(card.videos, card.logs);
        for (size_t i = 0; i < pairings.size(); ++i) {
            const Pairing& pairing = pairings[i];
            const bool isRight = pairing.log == card.truth[i];
            const bool isWrongWithoutDoubt = !isRight && pairing.log >= 0 && !pairing.doubtful;
            m_wrongWithoutDoubt += isWrongWithoutDoubt;
            QVERIFY2(!isWrongWithoutDoubt, qPrintable(QStringLiteral("card %1, %2 with log %3")
                                                          .arg(number)
                                                          .arg(card.videos[i].path)
                                                          .arg(pairing.log)));
            if (card.truth[i] < 0)
                continue;
            if (!card.whole[i]) {
                ++m_torn;
                m_tornRight += isRight;
                continue;
            }
            ++m_videos;
            m_right += isRight;
            m_rightWithoutDoubt += isRight && !pairing.doubtful;
        }
        ++m_cards;
    }
}

void FlightPairingTest::cleanupTestCase()
{
    if (m_cards == 0)
        return;
    qInfo("%d cards, %d videos, %d right, %d of them without a doubt; %d of %d of torn flights",
          m_cards, m_videos, m_right, m_rightWithoutDoubt, m_tornRight, m_torn);
    const QString subject =
        QStringLiteral("Pairing of videos with logs, %1 generated cards").arg(m_cards);
    trustRow(subject, QStringLiteral("paired right"),
             QStringLiteral("%1 of %2 videos").arg(m_right).arg(m_videos));
    trustRow(subject, QStringLiteral("paired wrong without a word of doubt"),
             QString::number(m_wrongWithoutDoubt));
    trustRow(subject, QStringLiteral("paired right, of flights that lack a file"),
             QStringLiteral("%1 of %2 videos").arg(m_tornRight).arg(m_torn));
    QVERIFY(m_right >= 0.99 * m_videos);
    QVERIFY(m_tornRight >= 0.95 * m_torn);
    QVERIFY(m_rightWithoutDoubt >= 0.7 * m_videos);
}

QTEST_GUILESS_MAIN(FlightPairingTest)
#include "FlightPairingTest.moc"
