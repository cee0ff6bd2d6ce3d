#include "Video/FrameIndex.h"

#include <QTest>

using corv::FrameIndex;

namespace {

constexpr double fps = 25.0;

/// Times in milliseconds, in the order of decoding; the packets of `keys` are keyframes.
FrameIndex indexOf(const std::vector<int>& timesMs, const std::vector<int>& keys)
{
    FrameIndex index;
    for (size_t i = 0; i < timesMs.size(); ++i) {
        FrameIndex::Packet packet;
        packet.pts = timesMs[i];
        packet.dts = static_cast<qint64>(i) * 40 - 80;
        packet.position = static_cast<qint64>(i) * 100;
        packet.duration = 40;
        for (const int key : keys)
            packet.isKey = packet.isKey || key == static_cast<int>(i);
        index.add(packet);
    }
    index.finish(fps);
    return index;
}

} // namespace

class FrameIndexTest : public QObject
{
    Q_OBJECT

private slots:
    void jitterAtASeamStays();
    void framesAreNumberedByTime();
    void roundedTimesAreThoseOfTheRate();
    void timesOfAVariableRateAreTheTrueOnes();
    void aTimeIsThatOfTheNearestFrameOrOfTheHeldOne_data();
    void aTimeIsThatOfTheNearestFrameOrOfTheHeldOne();
    void decodingStartsBeforeTheFrameInBothOrders();
    void hiddenFramesHaveNoNumber();
    void packetsAreFoundByPosition();
    void aClockThatBeginsAnewGoesOn_data();
    void aClockThatBeginsAnewGoesOn();
    void timesOfDecodingAreGivenToFrames_data();
    void timesOfDecodingAreGivenToFrames();
    void timesOfDecodingAreKnownByThePictures_data();
    void timesOfDecodingAreKnownByThePictures();
    void aPartThatIsShownTwiceIsKnownByItsTimes();
    void theLastFrameEndsWhereTheContainerSays_data();
    void theLastFrameEndsWhereTheContainerSays();
    void hugeTimesDoNoHarm();
};

void FrameIndexTest::framesAreNumberedByTime()
{
    const FrameIndex index = indexOf({0, 120, 40, 80}, {0});
    QCOMPARE(index.frameCount(), 4);
    QCOMPARE(index.packet(1).frame, 3);
    QCOMPARE(index.packetOfFrame(1), 2);
    QVERIFY(index.isConstantRate());
    QCOMPARE(index.timeMs(4), 160.0);
}

void FrameIndexTest::roundedTimesAreThoseOfTheRate()
{
    FrameIndex index;
    for (const int ms : {0, 33, 67, 100}) {
        FrameIndex::Packet packet;
        packet.pts = ms;
        index.add(packet);
    }
    index.finish(30.0);
    QVERIFY(index.isConstantRate());
    QCOMPARE(index.timeMs(2), 2 * 1000.0 / 30.0);
}

void FrameIndexTest::timesOfAVariableRateAreTheTrueOnes()
{
    const FrameIndex index = indexOf({1000, 1040, 1080, 1400}, {0});
    QVERIFY(!index.isConstantRate());
    QCOMPARE(index.timeMs(-1), 0.0);
    QCOMPARE(index.timeMs(3), 400.0);
    QCOMPARE(index.timeMs(4), 440.0);
    QCOMPARE(index.timeMs(9), 440.0);
}

void FrameIndexTest::aTimeIsThatOfTheNearestFrameOrOfTheHeldOne_data()
{
    QTest::addColumn<double>("ms");
    QTest::addColumn<int>("frame");
    QTest::newRow("before the start") << -50.0 << 0;
    QTest::newRow("a little before a frame") << 39.0 << 1;
    QTest::newRow("after a frame") << 55.0 << 1;
    QTest::newRow("in the gap") << 300.0 << 2;
    QTest::newRow("at the end of the gap") << 385.0 << 3;
    QTest::newRow("behind the end") << 1e12 << 3;
}

void FrameIndexTest::aTimeIsThatOfTheNearestFrameOrOfTheHeldOne()
{
    QFETCH(double, ms);
    QFETCH(int, frame);
    QCOMPARE(indexOf({0, 40, 80, 400}, {0}).frameAtTime(ms), frame);
}

// The second keyframe is decoded before two frames that are shown before it.
void FrameIndexTest::decodingStartsBeforeTheFrameInBothOrders()
{
    const FrameIndex index = indexOf({0, 40, 160, 80, 120, 200}, {0, 2});
    QCOMPARE(index.startFor(1), 0);
    QCOMPARE(index.startFor(3), 0);
    QCOMPARE(index.startFor(4), 2);
    QCOMPARE(index.startFor(5), 2);
    QCOMPARE(index.firstFrameFrom(2), 4);
    QCOMPARE(index.startBefore(2), 0);
    QCOMPARE(index.keyframeAtOrBefore(5), 4);
    QCOMPARE(index.keyframeAtOrBefore(3), 0);
    QCOMPARE(index.keyPacketAfter(0), 2);
    QCOMPARE(index.keyPacketAfter(2), index.packetCount());
}

void FrameIndexTest::hiddenFramesHaveNoNumber()
{
    FrameIndex index;
    for (const int ms : {80, 0, 40, 120}) {
        FrameIndex::Packet packet;
        packet.pts = ms;
        index.add(packet);
    }
    index.hideFramesBefore(0);
    index.finish(fps);
    QCOMPARE(index.frameCount(), 2);
    QCOMPARE(index.packet(1).frame, -1);
    QCOMPARE(index.timeMs(1), 40.0);
}

void FrameIndexTest::packetsAreFoundByPosition()
{
    const FrameIndex index = indexOf({0, 120, 40, 80}, {0});
    QCOMPARE(index.find(200, 0, 40, 2), 2);
    QCOMPARE(index.find(300, 40, 80, 0), 3);
    QCOMPARE(index.find(150, 0, 0, 0), -1);
}

void FrameIndexTest::aClockThatBeginsAnewGoesOn_data()
{
    QTest::addColumn<QList<int>>("decodedMs");
    QTest::addColumn<QList<int>>("shownMs");
    constexpr int hourMs = 3600 * 1000;
    QTest::newRow("none") << QList<int>{0, 40, 80} << QList<int>{0, 40, 80};
    QTest::newRow("back") << QList<int>{900, 940, 0, 40} << QList<int>{0, 40, 80, 120};
    QTest::newRow("twice") << QList<int>{900, 940, 0, 400, 0, 40}
                           << QList<int>{0, 40, 80, 480, 880, 920};
    QTest::newRow("far ahead") << QList<int>{0, 40, 2 * hourMs, 2 * hourMs + 40}
                               << QList<int>{0, 40, 80, 120};
    QTest::newRow("a gap") << QList<int>{0, 40, hourMs / 2} << QList<int>{0, 40, hourMs / 2};
    QTest::newRow("a stumble") << QList<int>{0, 200, 160} << QList<int>{0, 160, 200};
}

void FrameIndexTest::aClockThatBeginsAnewGoesOn()
{
    QFETCH(QList<int>, decodedMs);
    QFETCH(QList<int>, shownMs);
    FrameIndex index;
    for (const int ms : decodedMs) {
        FrameIndex::Packet packet;
        packet.dts = ms;
        packet.pts = ms + 80;
        packet.isKey = true;
        index.add(packet);
    }
    index.joinClocks();
    index.finish(fps);
    QCOMPARE(index.frameCount(), shownMs.size());
    for (int i = 0; i < shownMs.size(); ++i)
        QCOMPARE(index.timeMs(i), static_cast<double>(shownMs[i]));
    // Packets are known by what the file says.
    for (int i = 0; i < decodedMs.size(); ++i) {
        QCOMPARE(index.packet(i).storedDts(), qint64(decodedMs[i]));
        QCOMPARE(index.packet(i).storedPts(), qint64(decodedMs[i] + 80));
    }
}

void FrameIndexTest::timesOfDecodingAreGivenToFrames_data()
{
    QTest::addColumn<QList<int>>("orders"); // on the screen, of each packet
    QTest::addColumn<QList<int>>("decodedMs");
    QTest::addColumn<QList<int>>("shownMs");
    QTest::newRow("in turn") << QList<int>{0, 1, 2, 3} << QList<int>{0, 40, 80, 120}
                             << QList<int>{0, 40, 80, 120};
    QTest::newRow("a gap") << QList<int>{0, 1, 2} << QList<int>{0, 40, 400}
                           << QList<int>{0, 40, 400};
    // The decoder gives the first frame when it has the second packet.
    QTest::newRow("one waits") << QList<int>{0, 3, 1, 2} << QList<int>{0, 40, 80, 120}
                               << QList<int>{0, 40, 80, 120};
    QTest::newRow("a gap, and one waits")
        << QList<int>{0, 2, 1, 4, 3, 5} << QList<int>{0, 40, 80, 280, 320, 360}
        << QList<int>{0, 40, 240, 280, 320, 360};
    QTest::newRow("a gap, and two wait")
        << QList<int>{0, 4, 2, 1, 3, 5} << QList<int>{0, 40, 80, 120, 320, 360}
        << QList<int>{0, 40, 240, 280, 320, 360};
}

void FrameIndexTest::timesOfDecodingAreGivenToFrames()
{
    QFETCH(QList<int>, orders);
    QFETCH(QList<int>, decodedMs);
    QFETCH(QList<int>, shownMs);
    FrameIndex index;
    for (const int ms : decodedMs) {
        FrameIndex::Packet packet;
        packet.dts = ms;
        index.add(packet);
    }
    index.giveTimes(std::vector<qint64>(orders.begin(), orders.end()));
    index.finish(fps);
    QVERIFY(index.hasTimes());
    QCOMPARE(index.frameCount(), shownMs.size());
    for (int i = 0; i < shownMs.size(); ++i)
        QCOMPARE(index.timeMs(i), static_cast<double>(shownMs[i]));
}

void FrameIndexTest::timesOfDecodingAreKnownByThePictures_data()
{
    QTest::addColumn<QList<int>>("orders");
    QTest::addColumn<QList<int>>("timesMs");
    QTest::addColumn<bool>("areOfDecoding");
    const QList<int> onAndOn{0, 40, 80, 120, 160};
    QTest::newRow("as they are decoded") << QList<int>{0, 1, 2, 3, 4} << onAndOn << false;
    QTest::newRow("some between others") << QList<int>{0, 3, 1, 2, 4} << onAndOn << true;
    QTest::newRow("with their own times")
        << QList<int>{0, 3, 1, 2, 4} << QList<int>{0, 120, 40, 80, 160} << false;
    QTest::newRow("two at one time")
        << QList<int>{0, 2, 1, 3, 4} << QList<int>{0, 40, 40, 80, 120} << true;
    // Where a keyframe was lost, the count of the pictures behind it begins anew.
    QList<int> lost;
    QList<int> timesMs;
    for (int i = 0; i < 60; ++i) {
        lost << i % 30;
        timesMs << i * 40;
    }
    QTest::newRow("a lost keyframe") << lost << timesMs << false;
}

void FrameIndexTest::timesOfDecodingAreKnownByThePictures()
{
    QFETCH(QList<int>, orders);
    QFETCH(QList<int>, timesMs);
    QFETCH(bool, areOfDecoding);
    FrameIndex index;
    for (const int ms : timesMs) {
        FrameIndex::Packet packet;
        packet.pts = packet.dts = ms;
        index.add(packet);
    }
    QCOMPARE(index.hasTimesOfDecoding(std::vector<qint64>(orders.begin(), orders.end())),
             areOfDecoding);
}

// An edit list can show a part of the file a second time, from the same place.
void FrameIndexTest::aPartThatIsShownTwiceIsKnownByItsTimes()
{
    FrameIndex index;
    for (int i = 0; i < 6; ++i) {
        FrameIndex::Packet packet;
        packet.position = 1000 + i % 3 * 100;
        packet.pts = packet.dts = i * 40;
        index.add(packet);
    }
    index.finish(fps);
    for (int i = 0; i < 6; ++i) {
        for (const int expected : {-1, 0, i, (i + 3) % 6})
            QCOMPARE(index.find(1000 + i % 3 * 100, i * 40, i * 40, expected), i);
    }
    QCOMPARE(index.find(1100, FrameIndex::noTime, FrameIndex::noTime, 4), 4);
}

void FrameIndexTest::theLastFrameEndsWhereTheContainerSays_data()
{
    QTest::addColumn<double>("statedMs");
    QTest::addColumn<double>("endMs");
    QTest::newRow("nothing stated") << 0.0 << 240.0;
    QTest::newRow("shorter than the frame before") << 230.0 << 230.0;
    QTest::newRow("longer") << 280.0 << 280.0;
    QTest::newRow("before the last frame") << 200.0 << 240.0;
    QTest::newRow("long after it") << 900.0 << 240.0;
}

void FrameIndexTest::theLastFrameEndsWhereTheContainerSays()
{
    QFETCH(double, statedMs);
    QFETCH(double, endMs);
    FrameIndex index;
    for (const int ms : {0, 40, 120, 200}) {
        FrameIndex::Packet packet;
        packet.pts = packet.dts = ms;
        index.add(packet);
    }
    index.setStatedLength(statedMs);
    index.finish(fps);
    QVERIFY(!index.isConstantRate());
    QCOMPARE(index.timeMs(4), endMs);
}

void FrameIndexTest::hugeTimesDoNoHarm()
{
    FrameIndex index;
    for (const qint64 pts :
         {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min() + 1, qint64(0)}) {
        FrameIndex::Packet packet;
        packet.pts = pts;
        packet.dts = pts;
        index.add(packet);
    }
    index.joinClocks();
    index.finish(fps);
    QCOMPARE(index.frameCount(), 3);
    QVERIFY(index.timeMs(3) >= index.timeMs(2));
    QCOMPARE(index.frameAtTime(-1.0), 0);
    FrameIndex none;
    none.finish(fps);
    QCOMPARE(none.frameCount(), 0);
}

// Two parts, each from a keyframe that is not shown: frames of the second one are shown less than
// half a frame earlier after their decoding.
void FrameIndexTest::jitterAtASeamStays()
{
    constexpr qint64 shorter = 12;
    FrameIndex index;
    index.setUnit(1.0);
    for (int part = 0; part < 2; ++part) {
        for (int i = 0; i < 10; ++i) {
            FrameIndex::Packet packet;
            packet.dts = part * 200 + (i - 5) * 40;
            packet.pts = packet.dts + 80 - part * shorter;
            packet.isKey = i == 0;
            packet.isShown = i >= 5;
            index.add(packet);
        }
    }
    QVERIFY(index.isAtSeam(10));
    index.alignParts();
    index.finish(25.0);
    QCOMPARE(index.frameCount(), 10);
    QCOMPARE(index.timeMs(5), 200.0 - shorter);
}

QTEST_APPLESS_MAIN(FrameIndexTest)
#include "FrameIndexTest.moc"
