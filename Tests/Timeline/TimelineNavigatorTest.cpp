#include "Timeline/TimelineNavigator.h"
#include "timelineStrip.h"

using namespace corv;
using namespace corv::test;

/// What keys do with the strip.
class TimelineNavigatorTest : public QObject
{
    Q_OBJECT

private slots:
    void jumpsStayWithinTheVideo_data();
    void jumpsStayWithinTheVideo();
    void poisFollowEachOther();
    void theOneThatIsMovedStaysSelected();
    void zoomKeepsTheCursorInItsPlace();
    void zoomToFitShowsTheWholeVideo();
    void zoomToSelectionShowsTenSecondsAroundIt();
    void knowsTheTimeAtAPlace();
    void withoutATimelineNothingHappens();
};

void TimelineNavigatorTest::jumpsStayWithinTheVideo_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("by");
    QTest::addColumn<int>("to");
    QTest::newRow("ahead") << 5000 << 1000 << 6000;
    QTest::newRow("back") << 5000 << -1000 << 4000;
    QTest::newRow("before the start") << 5000 << -10000 << 0;
    QTest::newRow("past the end") << 55000 << 10000 << 60000;
}

void TimelineNavigatorTest::jumpsStayWithinTheVideo()
{
    QFETCH(int, from);
    QFETCH(int, by);
    QFETCH(int, to);
    Strip strip;
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    strip.timeline.setCursorPosition(timeAt(from));
    strip.taken();
    navigator.jump(by);
    QCOMPARE(strip.taken(), QStringList(QString("seek %1").arg(to)));
}

void TimelineNavigatorTest::poisFollowEachOther()
{
    Strip strip;
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    strip.addPois({1000, 20000, 40000});
    strip.timeline.setCursorPosition(timeAt(20000));
    strip.taken();
    navigator.selectNextPoi();
    QCOMPARE(strip.taken(), (QStringList{"select 40000", "seek 40000"}));
    strip.timeline.setCursorPosition(timeAt(40000));
    strip.taken();
    navigator.selectNextPoi();
    QCOMPARE(strip.taken(), QStringList());
    navigator.selectPreviousPoi();
    QCOMPARE(strip.taken(), (QStringList{"select 20000", "seek 20000"}));
}

// Or another one would be moved to the place that was looked for.
void TimelineNavigatorTest::theOneThatIsMovedStaysSelected()
{
    Strip strip;
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    strip.addPois({1000, 20000, 40000});
    strip.timeline.selectPoi(timeAt(1000));
    strip.timeline.enterMovePOIMode();
    strip.taken();
    navigator.selectNextPoi();
    QCOMPARE(strip.taken(), QStringList("seek 1000"));
    strip.timeline.setCursorPosition(timeAt(1000));
    strip.taken();
    navigator.selectNextPoi();
    QCOMPARE(strip.taken(), QStringList("seek 20000"));
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(1000));
    strip.timeline.exitMovePOIMode();
    strip.taken();
    navigator.goToPoi(timeAt(40000));
    QCOMPARE(strip.taken(), (QStringList{"select 40000", "seek 40000"}));
}

void TimelineNavigatorTest::zoomKeepsTheCursorInItsPlace()
{
    Strip strip(2000);
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    strip.timeline.setCursorPosition(timeAt(30000));
    const auto x = [&] {
        return qRound(30000 / static_cast<double>(strip.timeline.msPerPx())) -
               strip.timeline.contentX();
    };
    const int before = x();
    navigator.zoomIn();
    QCOMPARE(strip.timeline.contentWidth(), 2400);
    QVERIFY(qAbs(x() - before) <= 1);
    navigator.zoomOut();
    QCOMPARE(strip.timeline.contentWidth(), 2000);
    QVERIFY(qAbs(x() - before) <= 1);
}

void TimelineNavigatorTest::zoomToFitShowsTheWholeVideo()
{
    Strip strip(9000);
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    strip.timeline.setContentX(4000);
    navigator.zoomToFit();
    QCOMPARE(strip.timeline.contentWidth(), 720);
    QCOMPARE(strip.timeline.contentX(), 0);
}

void TimelineNavigatorTest::zoomToSelectionShowsTenSecondsAroundIt()
{
    Strip strip;
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    strip.addPois({20000});
    strip.select(20000);
    navigator.zoomToSelection();
    const double msPerPx = static_cast<double>(strip.timeline.msPerPx());
    const double leftMs = strip.timeline.contentX() * msPerPx;
    const double shownMs = 720 * msPerPx;
    QVERIFY2(qAbs(shownMs - 10000) < 20, qPrintable(QString::number(shownMs)));
    QVERIFY2(qAbs(leftMs + shownMs / 2 - 20000) < 20, qPrintable(QString::number(leftMs)));
}

void TimelineNavigatorTest::knowsTheTimeAtAPlace()
{
    Strip strip;
    TimelineNavigator navigator;
    navigator.setTimeline(&strip.timeline);
    QCOMPARE(navigator.timeAt(100), timeAt(10000));
    QCOMPARE(navigator.timeTextAt(105), QString("00:10.500"));
    QCOMPARE(navigator.timeAt(-50), timeAt(0));
    QCOMPARE(navigator.timeAt(700), timeAt(60000));
}

void TimelineNavigatorTest::withoutATimelineNothingHappens()
{
    TimelineNavigator navigator;
    navigator.jump(1000);
    navigator.selectNextPoi();
    navigator.selectPreviousPoi();
    navigator.goToPoi(timeAt(1));
    navigator.zoomIn();
    navigator.zoomOut();
    navigator.zoomToFit();
    navigator.zoomToSelection();
    QVERIFY(!navigator.timeline());
}

QTEST_MAIN(TimelineNavigatorTest)
#include "TimelineNavigatorTest.moc"
