#include "Log/clocks.h"

#include <QtTest>
#include <limits>

using namespace corv;

class ClocksTest : public QObject
{
    Q_OBJECT

private slots:
    void bothDirectionsAddTheirOffsets_data();
    void bothDirectionsAddTheirOffsets();
    void theCorrectionCountsOnlyOnTheWayToTheLog();
    void aClockStartsUnsynchronised();
};

void ClocksTest::bothDirectionsAddTheirOffsets_data()
{
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("correction");
    QTest::addColumn<int>("videoMs");
    QTest::addColumn<int>("logMs");
    QTest::newRow("nothing known") << 0 << 0 << 1234 << 1234;
    QTest::newRow("offset") << 10690 << 0 << 500 << 11190;
    QTest::newRow("correction") << 10690 << -200 << 500 << 10990;
    QTest::newRow("wraps upwards") << kMost << 1 << 0 << kLeast;
    QTest::newRow("wraps downwards") << kLeast << -1 << 0 << kMost;
}

void ClocksTest::bothDirectionsAddTheirOffsets()
{
    QFETCH(int, offset);
    QFETCH(int, correction);
    QFETCH(int, videoMs);
    FlightClock clock;
    clock.logTimeOffset = offset;
    clock.manualLogTimeOffset = correction;
    QTEST(logTimeOfVideo(videoMs, clock), "logMs");
}

void ClocksTest::theCorrectionCountsOnlyOnTheWayToTheLog()
{
    FlightClock clock;
    clock.logTimeOffset = 10690;
    clock.manualLogTimeOffset = 3000;
    QCOMPARE(videoTimeOfLog(11190, clock), 500);
    QCOMPARE(videoTimeOfLog(690, clock), -10000);
    QCOMPARE(videoTimeOfLog(0xffffffffU, clock), -10691);
}

void ClocksTest::aClockStartsUnsynchronised()
{
    const FlightClock clock;
    QVERIFY(!clock.synced);
    QCOMPARE(clock.logTimeOffset.load(), 0);
    QCOMPARE(clock.manualLogTimeOffset.load(), 0);
}

QTEST_GUILESS_MAIN(ClocksTest)
#include "ClocksTest.moc"
