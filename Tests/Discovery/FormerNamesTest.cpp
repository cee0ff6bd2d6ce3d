#include "Discovery/flightNames.h"
#include "Discovery/flightPairing.h"
#include "pairingFiles.h"

#include <QtTest>
#include <utility>

using namespace corv;
using namespace corv::test;

/// Files that were renamed take their places among those of their card by the order of the times.
class FormerNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void renamedFileGetsANumberThatIsLeftOut_data();
    void renamedFileGetsANumberThatIsLeftOut();
    void otherNamesStay_data();
    void otherNamesStay();
    void cardsPutTogetherGetTheirOwnFilesBack_data();
    void cardsPutTogetherGetTheirOwnFilesBack();
    void severalOfAPlaceKeepTheOrderOfTheirTimes();
    void renamedFilesOfEqualLengthKeepTheirOrder();
    void renamedPartStaysInItsFlight();
    void renamedLogKeepsItsPlace();
};

namespace {

using Files = QList<QPair<QString, qint64>>; // names and times in seconds

std::vector<FlightName> formerNamesOf(const Files& files)
{
    QStringList paths;
    std::vector<qint64> timesMs;
    for (const auto& [name, second] : files) {
        paths.append("/card/" + name);
        timesMs.push_back(second < 0 ? -1 : second * 1000);
    }
    return formerNames(flightNames(paths), timesMs);
}

QString baseOf(const FlightName& name)
{
    return name.before + name.number;
}

const Files cardWithAGap = {
    {"CORV0008.MOV", 100}, {"CORV0009.MOV", 200}, {"CORV0011.MOV", 400}, {"CORV0012.MOV", 500}};

// A copy wrote all files within seconds, the logs after the videos.
struct FlightsOfEqualLength
{
    FlightsOfEqualLength()
    {
        for (int i = 0; i < 6; ++i) {
            videos.push_back(video(QStringLiteral("CORV%1.MOV").arg(11 + 2 * i), 600'000, 0, i));
            logs.push_back(logOf(QStringLiteral("LOG%1.log").arg(21 + i), {601'000}, 10 + i));
        }
    }

    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
};

} // namespace

void FormerNamesTest::renamedFileGetsANumberThatIsLeftOut_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("second");
    QTest::addColumn<QString>("former");
    QTest::newRow("between two") << "north wall.mov" << qint64(300) << "CORV0010";
    QTest::newRow("with a number of its own") << "roof 7.mov" << qint64(300) << "CORV0010";
    QTest::newRow("after the last") << "north wall.mov" << qint64(600) << "CORV0013";
    QTest::newRow("before the first") << "north wall.mov" << qint64(50) << "CORV0007";
}

void FormerNamesTest::renamedFileGetsANumberThatIsLeftOut()
{
    QFETCH(QString, name);
    QFETCH(qint64, second);
    Files files = cardWithAGap;
    if (second != 300)
        files.append({"gate.mov", 300});
    const std::vector<FlightName> names = formerNamesOf(files + Files{{name, second}});
    QTEST(baseOf(names.back()), "former");
    QCOMPARE(names.back().suffix, QString("MOV"));
    for (int i = 0; i < cardWithAGap.size(); ++i)
        QCOMPARE(baseOf(names[static_cast<size_t>(i)]) + ".MOV", cardWithAGap[i].first);
}

void FormerNamesTest::otherNamesStay_data()
{
    QTest::addColumn<Files>("others");
    QTest::addColumn<qint64>("second");
    QTest::newRow("no number is left out at its time") << cardWithAGap << qint64(450);
    QTest::newRow("the time of another") << cardWithAGap << qint64(400);
    QTest::newRow("copied after all others") << cardWithAGap << qint64(600);
    QTest::newRow("copied before all others") << cardWithAGap << qint64(50);
    QTest::newRow("unknown time") << cardWithAGap << qint64(-1);
    Files swapped = cardWithAGap;
    std::swap(swapped[0].second, swapped[3].second);
    QTest::newRow("times that do not follow the numbers") << swapped << qint64(300);
    Files unknown = cardWithAGap;
    unknown[0].second = -1;
    QTest::newRow("a time of the others is unknown") << unknown << qint64(300);
    QTest::newRow("two make no card")
        << Files{{"CORV0009.MOV", 200}, {"CORV0011.MOV", 400}} << qint64(300);
    QTest::newRow("numbers that no card gives")
        << Files{{"CORV9.MOV", 100}, {"CORV311.MOV", 200}, {"CORV4000.MOV", 400}} << qint64(300);
    QTest::newRow("another folder")
        << Files{{"b/CORV0008.MOV", 100}, {"b/CORV0009.MOV", 200}, {"b/CORV0011.MOV", 400}}
        << qint64(300);
    QTest::newRow("gaps of two cards at its time")
        << cardWithAGap + Files{{"B_0001.MOV", 110}, {"B_0002.MOV", 210}, {"B_0004.MOV", 410}}
        << qint64(300);
    QTest::newRow("no number before the first")
        << Files{{"CORV0000.MOV", 100}, {"CORV0001.MOV", 200}, {"CORV0002.MOV", 400}} << qint64(50);
}

void FormerNamesTest::otherNamesStay()
{
    QFETCH(Files, others);
    QFETCH(qint64, second);
    QCOMPARE(baseOf(formerNamesOf(others + Files{{"roof 7.MOV", second}}).back()),
             QString("roof 7"));
}

void FormerNamesTest::cardsPutTogetherGetTheirOwnFilesBack_data()
{
    QTest::addColumn<qint64>("second");
    QTest::addColumn<QString>("former");
    QTest::newRow("in the gap of the first") << qint64(30) << "A_0003";
    QTest::newRow("beyond the first, in the gap of the second") << qint64(130) << "B_0003";
    QTest::newRow("between the cards, nearer to the first") << qint64(60) << "A_0005";
    QTest::newRow("between the cards, nearer to the second") << qint64(105) << "B_0000";
}

void FormerNamesTest::cardsPutTogetherGetTheirOwnFilesBack()
{
    QFETCH(qint64, second);
    const Files cards = {{"A_0001.MOV", 10},  {"A_0002.MOV", 20},  {"A_0004.MOV", 40},
                         {"B_0001.MOV", 110}, {"B_0002.MOV", 120}, {"B_0004.MOV", 140},
                         {"B_0006.MOV", 160}, {"gate.mov", 150}};
    QTEST(baseOf(formerNamesOf(cards + Files{{"roof.mov", second}}).back()), "former");
}

void FormerNamesTest::severalOfAPlaceKeepTheOrderOfTheirTimes()
{
    const Files card = {{"LOG1.log", 10}, {"LOG2.log", 20}, {"LOG5.log", 50}};
    std::vector<FlightName> names = formerNamesOf(card + Files{{"a.log", 40}, {"b.log", 30}});
    QCOMPARE(baseOf(names[3]), QString("LOG4"));
    QCOMPARE(baseOf(names[4]), QString("LOG3"));
    // One more than the numbers that are left out: which of them is not of this card is not known.
    names = formerNamesOf(card + Files{{"a.log", 40}, {"b.log", 30}, {"c.log", 35}});
    for (const size_t renamed : {3, 4, 5})
        QVERIFY(names[renamed].number.isEmpty());
}

void FormerNamesTest::renamedFilesOfEqualLengthKeepTheirOrder()
{
    FlightsOfEqualLength card;
    card.videos[1].path = "/card/tower.mov";
    card.videos[4].path = "/card/roof.mov";
    const std::vector<Pairing> pairings = pairFlights(card.videos, card.logs);
    for (size_t i = 0; i < pairings.size(); ++i)
        QCOMPARE(pairings[i].log, static_cast<int>(i));
}

void FormerNamesTest::renamedPartStaysInItsFlight()
{
    const std::vector<Pairing> pairings =
        pairFlights({video("CORV0001.MOV", 300'000, 0, 1), video("roof.mov", 300'000, 0, 2),
                     video("CORV0003.MOV", 110'000, 0, 3), video("CORV0005.MOV", 200'000, 0, 4)},
                    {logOf("7.log", {201'000}, 10), logOf("8.log", {711'000}, 11)});
    for (const size_t part : {0, 1, 2}) {
        QCOMPARE(pairings[part].log, 1);
        QCOMPARE(pairings[part].files, std::vector<size_t>({0, 1, 2}));
    }
    QCOMPARE(pairings[3].log, 0);
}

void FormerNamesTest::renamedLogKeepsItsPlace()
{
    FlightsOfEqualLength card;
    card.logs[4].path = "/card/anna.log";
    const std::vector<Pairing> pairings = pairFlights(card.videos, card.logs);
    for (size_t i = 0; i < pairings.size(); ++i)
        QCOMPARE(pairings[i].log, static_cast<int>(i));
}

QTEST_GUILESS_MAIN(FormerNamesTest)
#include "FormerNamesTest.moc"
