#include "Timeline/timelineGeometry.h"

#include <QtTest>
#include <limits>

using namespace corv;

namespace {

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

} // namespace

class TimelineGeometryTest : public QObject
{
    Q_OBJECT

private slots:
    void millisecondsOfTimes_data();
    void millisecondsOfTimes();
    void timesGoRoundTheClock_data();
    void timesGoRoundTheClock();
    void aStripSpreadsTheDurationOverItsWidth_data();
    void aStripSpreadsTheDurationOverItsWidth();
    void pixelOfATimeIsRounded_data();
    void pixelOfATimeIsRounded();
    void timeOfAPixelIsCut_data();
    void timeOfAPixelIsCut();
    void zoomingChangesTheWidthWithinItsLimits_data();
    void zoomingChangesTheWidthWithinItsLimits();
    void timeUnderThePointerStays_data();
    void timeUnderThePointerStays();
    void scrollsToTheCursor_data();
    void scrollsToTheCursor();
    void ticksKeepTheirLeastDistance_data();
    void ticksKeepTheirLeastDistance();
    void ticksCoverTheVisiblePart_data();
    void ticksCoverTheVisiblePart();
    void smallTicksDivideTheSpacing_data();
    void smallTicksDivideTheSpacing();
};

void TimelineGeometryTest::millisecondsOfTimes_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<int>("expected");
    QTest::newRow("start") << QTime(0, 0, 0, 0) << 0;
    QTest::newRow("a minute and a bit") << QTime(0, 1, 2, 3) << 62003;
    QTest::newRow("last of the day") << QTime(23, 59, 59, 999) << 86399999;
    QTest::newRow("none") << QTime() << 0;
}

void TimelineGeometryTest::millisecondsOfTimes()
{
    QFETCH(QTime, time);
    QFETCH(int, expected);
    QCOMPARE(msOfTime(time), expected);
}

void TimelineGeometryTest::timesGoRoundTheClock_data()
{
    QTest::addColumn<int>("ms");
    QTest::addColumn<QTime>("expected");
    QTest::newRow("start") << 0 << QTime(0, 0, 0, 0);
    QTest::newRow("one hour") << 3600000 << QTime(1, 0, 0, 0);
    QTest::newRow("just before the start") << -1 << QTime(23, 59, 59, 999);
    QTest::newRow("a day and a second") << 86401000 << QTime(0, 0, 1, 0);
    QTest::newRow("a day and a second before") << -86401000 << QTime(23, 59, 59, 0);
    // 2147483647 = 24 days and 73883647 ms; 2147483648 = 24 days and 73883648 ms
    QTest::newRow("greatest int") << intMax << QTime(20, 31, 23, 647);
    QTest::newRow("least int") << intMin << QTime(3, 28, 36, 352);
}

void TimelineGeometryTest::timesGoRoundTheClock()
{
    QFETCH(int, ms);
    QFETCH(QTime, expected);
    QCOMPARE(timeOfMs(ms), expected);
}

void TimelineGeometryTest::aStripSpreadsTheDurationOverItsWidth_data()
{
    QTest::addColumn<int>("durationMs");
    QTest::addColumn<int>("contentWidth");
    QTest::addColumn<float>("expected");
    QTest::newRow("a minute on 600 px") << 60000 << 720 << 100.0F;
    QTest::newRow("a third") << 1000 << 3120 << 1000.0F / 3000.0F;
    QTest::newRow("no room") << 60000 << 120 << infinity;
    QTest::newRow("less than no room") << 60000 << 0 << -500.0F;
    QTest::newRow("no flight") << 0 << 720 << 0.0F;
    QTest::newRow("narrowest int") << 86399999 << intMin << 86399999.0F / -2147483768.0F;
}

void TimelineGeometryTest::aStripSpreadsTheDurationOverItsWidth()
{
    QFETCH(int, durationMs);
    QFETCH(int, contentWidth);
    QFETCH(float, expected);
    QVERIFY(scaleOfStrip(durationMs, contentWidth, 120) == expected);
}

void TimelineGeometryTest::pixelOfATimeIsRounded_data()
{
    QTest::addColumn<int>("ms");
    QTest::addColumn<float>("msPerPx");
    QTest::addColumn<int>("contentX");
    QTest::addColumn<int>("expected");
    QTest::newRow("start") << 0 << 100.0F << 0 << 0;
    QTest::newRow("below the half") << 149 << 100.0F << 0 << 1;
    QTest::newRow("at the half, away from zero") << 150 << 100.0F << 0 << 2;
    QTest::newRow("scrolled") << 150 << 100.0F << 7 << -5;
    QTest::newRow("before the start, away from zero") << -150 << 100.0F << -7 << 5;
    QTest::newRow("single precision") << 16777217 << 1.0F << 0 << 16777216;
    QTest::newRow("scale 0") << 1 << 0.0F << 0 << intMax;
    QTest::newRow("scale 0, scrolled to the left") << 1 << 0.0F << -5 << intMax;
    QTest::newRow("scale 0 at 0") << 0 << 0.0F << 3 << -3;
    QTest::newRow("infinite scale") << 60000 << infinity << 3 << -3;
    QTest::newRow("negative scale") << 1000 << -500.0F << 0 << -2;
    QTest::newRow("wider than an int") << 86399999 << 0.005F << 0 << intMax;
}

void TimelineGeometryTest::pixelOfATimeIsRounded()
{
    QFETCH(int, ms);
    QFETCH(float, msPerPx);
    QFETCH(int, contentX);
    QFETCH(int, expected);
    QCOMPARE(pxOfMs(ms, {msPerPx, contentX}), expected);
}

void TimelineGeometryTest::timeOfAPixelIsCut_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<float>("msPerPx");
    QTest::addColumn<int>("contentX");
    QTest::addColumn<int>("expected");
    QTest::newRow("start") << 0 << 100.0F << 0 << 0;
    QTest::newRow("whole") << 7 << 100.0F << 3 << 1000;
    QTest::newRow("cut, not rounded") << 1 << 1.9F << 0 << 1;
    QTest::newRow("cut towards zero before the start") << -1 << 1.9F << 0 << -1;
    QTest::newRow("infinite scale") << 1 << infinity << 0 << intMax;
    QTest::newRow("infinite scale at the start") << 0 << infinity << 0 << 0;
    QTest::newRow("negative scale") << 2 << -500.0F << 0 << -1000;
    QTest::newRow("sum above the ints") << intMax << 1.0F << intMax << intMax;
    QTest::newRow("sum below the ints") << intMin << 1.0F << intMin << intMin;
}

void TimelineGeometryTest::timeOfAPixelIsCut()
{
    QFETCH(int, x);
    QFETCH(float, msPerPx);
    QFETCH(int, contentX);
    QFETCH(int, expected);
    QCOMPARE(msOfPx(x, {msPerPx, contentX}), expected);
}

void TimelineGeometryTest::zoomingChangesTheWidthWithinItsLimits_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("zoomedIn");
    QTest::addColumn<int>("zoomedOut");
    QTest::newRow("whole steps") << 1000 << 1200 << 834;
    QTest::newRow("rounded up") << 1001 << 1202 << 835;
    QTest::newRow("no narrower than the item") << 700 << 840 << 640;
    QTest::newRow("up to 200 px per ms") << 11000000 << 12000000 << 9166667;
    QTest::newRow("already wider than that") << 13000000 << 12000000 << 10833334;
}

void TimelineGeometryTest::zoomingChangesTheWidthWithinItsLimits()
{
    QFETCH(int, width);
    QFETCH(int, zoomedIn);
    QFETCH(int, zoomedOut);
    QCOMPARE(widthZoomedIn(width, 60000), zoomedIn);
    QCOMPARE(widthZoomedOut(width, 640.5), zoomedOut);
    QCOMPARE(widthZoomedIn(intMax, 86399999), intMax);
}

void TimelineGeometryTest::timeUnderThePointerStays_data()
{
    QTest::addColumn<int>("ms");
    QTest::addColumn<int>("x");
    QTest::addColumn<float>("msPerPx");
    QTest::addColumn<int>("expected");
    QTest::newRow("cut") << 1999 << 0 << 100.0F << 19;
    QTest::newRow("under the pointer") << 60000 << 50 << 100.0F << 550;
    QTest::newRow("left of the start, cut towards zero") << 50 << 2 << 100.0F << -1;
    QTest::newRow("scale 0") << 60000 << 50 << 0.0F << intMax;
    QTest::newRow("scale 0 at 0") << 0 << 50 << 0.0F << 0;
    QTest::newRow("no number") << 1000 << 50 << notANumber << 0;
}

void TimelineGeometryTest::timeUnderThePointerStays()
{
    QFETCH(int, ms);
    QFETCH(int, x);
    QFETCH(float, msPerPx);
    QFETCH(int, expected);
    QCOMPARE(contentXWithMsAt(ms, x, msPerPx), expected);
}

void TimelineGeometryTest::scrollsToTheCursor_data()
{
    QTest::addColumn<int>("cursorPx");
    QTest::addColumn<int>("contentX");
    QTest::addColumn<double>("itemWidth");
    QTest::addColumn<bool>("needed");
    QTest::addColumn<int>("expected");
    QTest::newRow("in view at the left") << 600 << 500 << 800.0 << false << 500;
    QTest::newRow("one pixel left of that") << 599 << 500 << 800.0 << true << 499;
    QTest::newRow("in view at the right") << 1200 << 500 << 800.0 << false << 500;
    QTest::newRow("one pixel right of that") << 1201 << 500 << 800.0 << true << 501;
    QTest::newRow("a fraction right of it, cut") << 1200 << 500 << 799.5 << true << 500;
    QTest::newRow("left of the strip's margin") << 0 << 0 << 800.0 << true << -100;
    QTest::newRow("item narrower than both margins") << 150 << 50 << 120.0 << true << 130;
    QTest::newRow("far to the left") << intMin << intMax << 800.0 << true << intMin;
    QTest::newRow("far to the right") << intMax << intMin << 800.0 << true << 2147482947;
}

void TimelineGeometryTest::scrollsToTheCursor()
{
    QFETCH(int, cursorPx);
    QFETCH(int, contentX);
    QFETCH(double, itemWidth);
    const ScrollToCursor scroll = scrollToCursor(cursorPx, contentX, itemWidth);
    QTEST(scroll.needed, "needed");
    QTEST(scroll.contentX, "expected");
}

void TimelineGeometryTest::ticksKeepTheirLeastDistance_data()
{
    QTest::addColumn<float>("neededMs");
    QTest::addColumn<int>("spacingMs");
    QTest::addColumn<int>("mediumCount");
    QTest::addColumn<int>("minorCount");
    QTest::newRow("row 0") << 0.9F << 1 << 0 << 9;
    QTest::newRow("row 1") << 1.0F << 2 << 1 << 9;
    QTest::newRow("row 2") << 2.0F << 5 << 4 << 9;
    QTest::newRow("row 3") << 5.0F << 10 << 0 << 9;
    QTest::newRow("row 4") << 10.0F << 20 << 1 << 9;
    QTest::newRow("row 5") << 20.0F << 50 << 4 << 9;
    QTest::newRow("row 6") << 50.0F << 100 << 0 << 9;
    QTest::newRow("row 7") << 100.0F << 200 << 1 << 9;
    QTest::newRow("row 8") << 200.0F << 500 << 4 << 9;
    QTest::newRow("row 9") << 500.0F << 1000 << 0 << 9;
    QTest::newRow("row 10") << 1000.0F << 2000 << 1 << 9;
    QTest::newRow("row 11") << 2000.0F << 5000 << 4 << 9;
    QTest::newRow("row 12") << 5000.0F << 10000 << 0 << 9;
    QTest::newRow("row 13") << 10000.0F << 20000 << 1 << 9;
    QTest::newRow("row 14") << 20000.0F << 60000 << 5 << 11;
    QTest::newRow("row 14, just under") << 59999.9F << 60000 << 5 << 11;
    QTest::newRow("row 15") << 60000.0F << 120000 << 1 << 11;
    QTest::newRow("row 16") << 120000.0F << 300000 << 4 << 9;
    QTest::newRow("row 17") << 300000.0F << 600000 << 0 << 9;
    QTest::newRow("row 18") << 600000.0F << 1200000 << 1 << 9;
    QTest::newRow("none is wider") << 1200000.0F << 1200000 << 1 << 9;
    QTest::newRow("infinite") << infinity << 1200000 << 1 << 9;
    QTest::newRow("no number") << notANumber << 1200000 << 1 << 9;
    QTest::newRow("negative") << -100.0F << 1 << 0 << 9;
}

void TimelineGeometryTest::ticksKeepTheirLeastDistance()
{
    QFETCH(float, neededMs);
    const TickSpacing& spacing = tickSpacingFor(neededMs);
    QTEST(spacing.spacingMs, "spacingMs");
    QTEST(spacing.mediumCount, "mediumCount");
    QTEST(spacing.minorCount, "minorCount");
}

void TimelineGeometryTest::ticksCoverTheVisiblePart_data()
{
    QTest::addColumn<float>("msPerPx");
    QTest::addColumn<int>("contentX");
    QTest::addColumn<int>("firstMs");
    QTest::addColumn<int>("lastMs");
    QTest::newRow("from the start") << 100.0F << 0 << 0 << 80000;
    QTest::newRow("round the view outward") << 100.0F << 199 << 0 << 100000;
    QTest::newRow("edge on a tick") << 100.0F << 200 << 20000 << 100000;
    QTest::newRow("before the start") << 100.0F << -1 << -20000 << 80000;
    QTest::newRow("scale 0") << 0.0F << 500 << 0 << 0;
    QTest::newRow("infinite scale") << infinity << 0 << 0 << intMax;
    QTest::newRow("negative scale") << -100.0F << 0 << 0 << -80000;
    QTest::newRow("no number") << notANumber << 100 << 0 << 0;
}

void TimelineGeometryTest::ticksCoverTheVisiblePart()
{
    QFETCH(float, msPerPx);
    QFETCH(int, contentX);
    const TickRange range = tickRange({msPerPx, contentX}, 800.0, 20000);
    QTEST(range.firstMs, "firstMs");
    QTEST(range.lastMs, "lastMs");
}

void TimelineGeometryTest::smallTicksDivideTheSpacing_data()
{
    QTest::addColumn<int>("spacingMs");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("k");
    QTest::addColumn<float>("msPerPx");
    QTest::addColumn<int>("expected");
    QTest::newRow("parts of a second") << 1000 << 9 << 3 << 10.0F << 130;
    QTest::newRow("parts of a millisecond") << 1 << 9 << 5 << 0.01F << 150;
    QTest::newRow("rounded") << 1000 << 9 << 1 << 40.0F << 103;
    QTest::newRow("rounded at the sum, not at each part") << 1000 << 9 << 2 << 40.0F << 105;
    QTest::newRow("twelfths") << 60000 << 11 << 6 << 500.0F << 160;
    QTest::newRow("scale 0") << 1 << 9 << 1 << 0.0F << intMax;
    QTest::newRow("infinite scale") << 1200000 << 9 << 1 << infinity << 100;
}

void TimelineGeometryTest::smallTicksDivideTheSpacing()
{
    QFETCH(int, spacingMs);
    QFETCH(int, count);
    QFETCH(int, k);
    QFETCH(float, msPerPx);
    QFETCH(int, expected);
    QCOMPARE(extraTickX(100, spacingMs, count, k, msPerPx), expected);
}

QTEST_APPLESS_MAIN(TimelineGeometryTest)
#include "TimelineGeometryTest.moc"
