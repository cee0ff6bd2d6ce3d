#include "Video/PlaybackClock.h"

#include <QTest>
#include <cmath>
#include <vector>

using namespace corv;

// When frames are due, on a clock that the test moves.
class PlaybackClockTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsTruePace_data();
    void keepsTruePace();
    void aGapHoldsThePicture();
    void speedDividesTheGaps();
    void smallDelayIsMadeUpFor();
    void longDelayStartsThePaceAnew();
    void withoutAStartEverythingIsDue();
};

namespace {

/// Plays frames at these times with a timer that comes when asked for, but never earlier than the
/// next whole millisecond. Returns the times at which they are shown.
std::vector<double> play(const std::vector<int>& frameTimesMs, int speed = 1)
{
    PlaybackClock clock;
    std::vector<double> shownMs;
    double nowMs = 1000.0;
    for (const int frameMs : frameTimesMs) {
        while (clock.msUntilDue(frameMs, speed, nowMs) > 0)
            nowMs = std::floor(nowMs) + clock.msUntilDue(frameMs, speed, nowMs);
        clock.frameShown(frameMs, speed, nowMs);
        shownMs.push_back(nowMs - 1000.0);
        nowMs += 0.3;
    }
    return shownMs;
}

std::vector<int> constantRate(int frames, double fps)
{
    std::vector<int> times;
    for (int i = 0; i < frames; ++i)
        times.push_back(static_cast<int>(i * 1000.0 / fps));
    return times;
}

} // namespace

void PlaybackClockTest::keepsTruePace_data()
{
    QTest::addColumn<double>("fps");
    for (const double fps : {23.976, 25.0, 29.97, 30.0, 59.94, 60.0, 120.0})
        QTest::addRow("%g", fps) << fps;
}

void PlaybackClockTest::keepsTruePace()
{
    QFETCH(double, fps);
    const int frames = static_cast<int>(fps * 60.0);
    const std::vector<double> shown = play(constantRate(frames + 1, fps));
    for (int i = 0; i <= frames; ++i)
        QVERIFY(std::abs(shown.at(static_cast<size_t>(i)) - i * 1000.0 / fps) < 2.0);
}

void PlaybackClockTest::aGapHoldsThePicture()
{
    const std::vector<double> shown = play({0, 33, 66, 1400, 1433});
    QVERIFY(std::abs(shown.at(2) - 66.0) < 2.0);
    QVERIFY(std::abs(shown.at(3) - 1400.0) < 2.0);
    QVERIFY(std::abs(shown.at(4) - 1433.0) < 2.0);
}

void PlaybackClockTest::speedDividesTheGaps()
{
    const std::vector<double> shown = play({0, 132, 264, 2264}, 4);
    QVERIFY(std::abs(shown.at(2) - 66.0) < 2.0);
    QVERIFY(std::abs(shown.at(3) - 566.0) < 2.0);
}

void PlaybackClockTest::smallDelayIsMadeUpFor()
{
    PlaybackClock clock;
    clock.frameShown(0, 1, 0.0);
    clock.frameShown(40, 1, 100.0); // 60 ms late
    QCOMPARE(clock.msUntilDue(80, 1, 100.0), 0);
    QCOMPARE(clock.msUntilDue(120, 1, 100.0), 20);
}

void PlaybackClockTest::longDelayStartsThePaceAnew()
{
    PlaybackClock clock;
    clock.frameShown(0, 1, 0.0);
    clock.frameShown(40, 1, 1000.0);
    QCOMPARE(clock.msUntilDue(80, 1, 1000.0), 40);
}

void PlaybackClockTest::withoutAStartEverythingIsDue()
{
    PlaybackClock clock;
    QCOMPARE(clock.msUntilDue(5000, 1, 0.0), 0);
    clock.frameShown(5000, 1, 0.0);
    QCOMPARE(clock.msUntilDue(5100, 1, 0.0), 100);
    clock.reset();
    QCOMPARE(clock.msUntilDue(90000, 1, 0.0), 0);
}

QTEST_APPLESS_MAIN(PlaybackClockTest)
#include "PlaybackClockTest.moc"
