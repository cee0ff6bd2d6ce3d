#include "PlayerFixture.h"
#include "Support/MessageLog.h"

using namespace corv;
using namespace corv::test;

// What a pilot does with the picture: going somewhere, stepping, drawing anew. No wish is lost and
// the newest wins.
class PlayerVerbsTest : public QObject, private ShownPlayerFixture
{
    Q_OBJECT

private slots:
    void init();
    void timePastTheEndIsTheLastFrame();
    void theNewestTimeWins();
    void stepsCrossJoins();
    void stepsEndAtTheEnds();
    void stepsDuringASeekAddUp();
    void aStepGoesOnFromTheTimeOnItsWay();
    void goToFrameFindsTheFirstOfALaterFile();
    void aTimeOnAJoinIsTheLaterFilesFirstFrame();
    void theLastSettingOfADragIsDrawn();
    void aSettingDuringASeekIsDrawn();
    void redrawAfterPlaybackKeepsTheFrame();
    void redrawShowsAutoRange();
    void aForgottenFrameIsNotShownAgain();
    void aSettingAtAnOpeningLeavesItAtTheStart();
    void exactTimeIsSignalledForEachFrame();
    void aSeekIntoDamageIsAnswered();
    void damageIsPassedOverWithTrueNumbers();
    void stepsBackPassLostFrames_data();
    void stepsBackPassLostFrames();
    void keyframeIsShownUntilThePointerRests();
    void whileThePointerMovesKeyframesAreShown();
    void shortWaysNeedNoPreview();
    void framesAtUnevenTimesAreFoundByTheirTime();
    void closedTheyRefuse();
};

void PlayerVerbsTest::init()
{
    makeFolder();
}

void PlayerVerbsTest::timePastTheEndIsTheLastFrame()
{
    openJoined();
    for (const int ms : {450, 451, 100000}) {
        QVERIFY(m_player->goToTime(timeAt(ms)));
        QTRY_COMPARE(m_surface.lastNumber(), 44);
        QCOMPARE(m_player->currentFrameIndex(), 44);
        QCOMPARE(m_player->timePosition(), timeAt(440));
        QVERIFY(m_player->goToTime(timeAt(0)));
        QTRY_COMPARE(m_surface.lastNumber(), 0);
    }
    QVERIFY(m_player->seekAtTime(timeAt(100))); // nothing is left hanging
    QTRY_COMPARE(m_surface.lastNumber(), 10);
    QVERIFY(!m_player->goToTime(QTime()));
}

void PlayerVerbsTest::theNewestTimeWins()
{
    const auto file = addFile("a.mp4", 1000);
    openPlayer("a.mp4");
    file->blocked = true;
    for (int ms = 1000; ms <= 9000; ms += 10)
        QVERIFY(m_player->goToTime(timeAt(ms)));
    const int reads = file->reads;
    file->blocked = false;
    QTRY_COMPARE(m_surface.lastNumber(), 900);
    QVERIFY(int(file->reads) - reads <= 2);
    QCOMPARE(m_player->timePosition(), timeAt(9000));
}

void PlayerVerbsTest::stepsCrossJoins()
{
    openJoined();
    QVERIFY(m_player->goToFrame(18));
    QTRY_COMPARE(m_surface.lastNumber(), 18);
    for (const int wanted : {19, 20, 21, 20, 19, 18}) {
        const int step = wanted - m_surface.lastNumber();
        QVERIFY(m_player->step(step));
        QTRY_COMPARE(m_surface.lastNumber(), wanted);
        QCOMPARE(m_player->currentFrameIndex(), wanted);
        QCOMPARE(m_player->timePosition(), timeAt(wanted * 10));
    }
    QCOMPARE(m_player->source(), path("CORV0001.MP4"));
}

void PlayerVerbsTest::stepsEndAtTheEnds()
{
    openJoined();
    QVERIFY(m_player->step(-1));
    QVERIFY(m_player->step(std::numeric_limits<int>::max()));
    QVERIFY(m_player->step(std::numeric_limits<int>::max()));
    QTRY_COMPARE(m_surface.lastNumber(), 44);
    QVERIFY(m_player->step(std::numeric_limits<int>::min()));
    QTRY_COMPARE(m_surface.lastNumber(), 0);
}

void PlayerVerbsTest::stepsDuringASeekAddUp()
{
    const auto file = addFile("a.mp4", 100);
    openPlayer("a.mp4");
    file->blocked = true;
    for (int i = 0; i < 10; ++i)
        QVERIFY(m_player->step(1));
    QVERIFY(m_player->step(-3));
    file->blocked = false;
    QTRY_COMPARE(m_surface.lastNumber(), 7);
}

void PlayerVerbsTest::aStepGoesOnFromTheTimeOnItsWay()
{
    const auto file = addFile("a.mp4", 100);
    openPlayer("a.mp4");
    file->blocked = true;
    QVERIFY(m_player->goToTime(timeAt(300)));
    QVERIFY(m_player->goToTime(timeAt(500)));
    QVERIFY(m_player->step(2));
    file->blocked = false;
    QTRY_COMPARE(m_surface.lastNumber(), 52);
}

void PlayerVerbsTest::goToFrameFindsTheFirstOfALaterFile()
{
    openJoined();
    for (const int frame : {20, 35, 19, 34, 0, 44}) {
        QVERIFY(m_player->goToFrame(frame));
        QTRY_COMPARE(m_surface.lastNumber(), frame);
    }
    QCOMPARE(m_player->source(), path("CORV0003.MP4"));
}

void PlayerVerbsTest::aTimeOnAJoinIsTheLaterFilesFirstFrame()
{
    openJoined();
    for (const int ms : {200, 350}) {
        QVERIFY(m_player->goToTime(timeAt(ms)));
        QTRY_COMPARE(m_surface.lastNumber(), ms / 10);
        StillFrame still(*m_player, timeAt(ms));
        QTRY_COMPARE(still.number(), ms / 10);
    }
}

namespace {

int lumaAt(QVideoFrame frame, int x, int y)
{
    if (!frame.map(QAbstractVideoBuffer::ReadOnly))
        return -1;
    const int luma = frame.bits()[y * frame.bytesPerLine() + x];
    frame.unmap();
    return luma;
}

} // namespace

void PlayerVerbsTest::theLastSettingOfADragIsDrawn()
{
    addFile("a.mp4", 30);
    openPlayer("a.mp4");
    const int before = lumaAt(m_surface.last, 310, 230);
    for (int i = 0; i < 100; ++i)
        m_player->setBrightness(i / 2.0);
    QTRY_VERIFY(lumaAt(m_surface.last, 310, 230) > before + 38);
    QCOMPARE(m_surface.lastNumber(), 0);
}

void PlayerVerbsTest::aSettingDuringASeekIsDrawn()
{
    const auto file = addFile("a.mp4", 30);
    openPlayer("a.mp4");
    const int before = lumaAt(m_surface.last, 310, 230);
    file->blocked = true;
    QVERIFY(m_player->seekAtTime(timeAt(100)));
    m_player->setBrightness(60.0);
    file->blocked = false;
    QTRY_COMPARE(m_surface.lastNumber(), 10);
    QTRY_VERIFY(lumaAt(m_surface.last, 310, 230) > before + 40);
}

// The worker has read on by then, over a join as well.
void PlayerVerbsTest::redrawAfterPlaybackKeepsTheFrame()
{
    openJoined();
    QVERIFY(m_player->goToFrame(12));
    QTRY_COMPARE(m_surface.lastNumber(), 12);
    m_player->play();
    QTRY_VERIFY(m_player->currentFrameIndex() >= 17);
    m_player->pause();
    const int shown = m_player->currentFrameIndex();
    const auto pictures = m_surface.numbers.size();
    m_player->setContrast(0.8);
    QTRY_VERIFY(m_surface.numbers.size() > pictures);
    QCOMPARE(m_surface.lastNumber(), shown);
    QCOMPARE(m_player->currentFrameIndex(), shown);
    // And playback goes on from there.
    m_surface.numbers.clear();
    m_player->play();
    QTRY_VERIFY(m_surface.numbers.size() > 3);
    QCOMPARE(m_surface.numbers.at(0), shown);
    QCOMPARE(m_surface.numbers.at(1), shown + 1);
}

void PlayerVerbsTest::redrawShowsAutoRange()
{
    addFile("a.mp4", 30);
    openPlayer("a.mp4");
    m_player->setAutoIRMapping(true);
    m_player->redraw();
    QTRY_COMPARE(m_surface.numbers, (QList<int>{0, 0}));
    for (int i = 0; i < 20; ++i)
        m_player->redraw();
    QVERIFY(m_player->seekAtFrame(5));
    QTRY_COMPARE(m_surface.lastNumber(), 5);
    QVERIFY(m_surface.numbers.size() <= 5); // those that waited were one
}

void PlayerVerbsTest::aForgottenFrameIsNotShownAgain()
{
    addFile("a.mp4", 30);
    addFile("b.mp4", 30)->firstNumber = 500;
    openPlayer("a.mp4");
    m_player->close();
    m_surface.numbers.clear();
    m_player->forgetLastFrame();
    open(*m_player, "b.mp4");
    QCOMPARE(m_surface.numbers, QList<int>{500});
}

// The number of the frame on screen is still that of the flight before then.
void PlayerVerbsTest::aSettingAtAnOpeningLeavesItAtTheStart()
{
    addFile("CORV0101.MP4", 20);
    addFile("CORV0102.MP4", 15)->firstNumber = 20;
    const auto last = addFile("CORV0103.MP4", 10);
    last->firstNumber = 35;
    openJoined();
    QVERIFY(m_player->goToFrame(40));
    QTRY_COMPARE(m_surface.lastNumber(), 40);
    connect(m_player.get(), &VideoPlayer::hasVideoOpenedChanged, this,
            [this] { m_player->setContrast(0.8); });
    m_player->forgetLastFrame();
    m_player->setSource(path("CORV0101.MP4"));
    QTRY_COMPARE(m_surface.lastNumber(), 0);
    // An answered wish of a later turn: all that the opening asked for is done.
    QVERIFY(m_player->goToFrame(1));
    QTRY_COMPARE(m_surface.lastNumber(), 1);
    QCOMPARE(m_player->source(), path("CORV0101.MP4"));
    QCOMPARE(int(last->reads), 0);
}

void PlayerVerbsTest::exactTimeIsSignalledForEachFrame()
{
    addFile("a.mp4", 30);
    openPlayer("a.mp4");
    QSignalSpy exact(m_player.get(), &VideoPlayer::exactTimePositionChanged);
    for (int i = 1; i <= 4; ++i) {
        QVERIFY(m_player->step(1));
        QTRY_COMPARE(m_surface.lastNumber(), i);
    }
    QCOMPARE(exact.count(), 4);
    QCOMPARE(m_player->property("exactTimePosition").toTime(), timeAt(40));
    m_player->redraw();
    QTRY_COMPARE(m_surface.numbers.size(), 6);
    QCOMPARE(exact.count(), 4);
}

void PlayerVerbsTest::aSeekIntoDamageIsAnswered()
{
    addFile("a.mp4", 30)->unreadable = {12};
    openPlayer("a.mp4");
    MessageLog log;
    QVERIFY(m_player->seekAtFrame(12));
    QTRY_VERIFY(log.contains("Read failed in"));
    bool begun = false;
    QTRY_VERIFY(begun || (begun = m_player->seekAtTime(timeAt(50))));
    QTRY_COMPARE(m_surface.lastNumber(), 5);
    log.clear();
    QVERIFY(m_player->goToTime(timeAt(120)));
    QTRY_VERIFY(log.contains("Read failed in"));
    QVERIFY(m_player->goToTime(timeAt(200)));
    QTRY_COMPARE(m_surface.lastNumber(), 20);
}

void PlayerVerbsTest::damageIsPassedOverWithTrueNumbers()
{
    addFile("a.mp4", 60)->damaged = {10, 11, 12, 13};
    openPlayer("a.mp4");
    QVERIFY(m_player->goToFrame(11));
    QTRY_COMPARE(m_surface.lastNumber(), 14);
    QCOMPARE(m_player->currentFrameIndex(), 14);
    QCOMPARE(m_player->timePosition(), timeAt(140));
    QVERIFY(m_player->goToFrame(8));
    QTRY_COMPARE(m_surface.lastNumber(), 8);
    m_player->play();
    QTRY_VERIFY(m_surface.lastNumber() >= 16);
    m_player->pause();
    QCOMPARE(m_player->currentFrameIndex(), m_surface.lastNumber());
    QVERIFY(!m_surface.numbers.contains(11));
}

void PlayerVerbsTest::stepsBackPassLostFrames_data()
{
    QTest::addColumn<int>("firstLost");
    QTest::addColumn<int>("lastLost");
    QTest::addColumn<int>("shown");
    QTest::newRow("inside a group") << 13 << 16 << 12;
    QTest::newRow("whole groups") << 12 << 34 << 11;
    QTest::newRow("from the start of the file") << 0 << 7 << -1;
}

// In the second of two files, with ten frames from one keyframe to the next.
void PlayerVerbsTest::stepsBackPassLostFrames()
{
    QFETCH(int, firstLost);
    QFETCH(int, lastLost);
    QFETCH(int, shown);
    constexpr int start = 20;
    addFile("CORV0001.MP4", start);
    const auto second = addFile("CORV0002.MP4", 60);
    second->firstNumber = start;
    second->keyframeSpacing = 10;
    for (int frame = firstLost; frame <= lastLost; ++frame)
        second->damaged.insert(frame);
    openPlayer("CORV0001.MP4");
    QVERIFY(m_player->goToFrame(start + lastLost + 2));
    QTRY_COMPARE(m_surface.lastNumber(), start + lastLost + 2);
    for (const int wanted : {lastLost + 1, shown, shown - 1}) {
        QVERIFY(m_player->step(-1));
        QTRY_COMPARE(m_surface.lastNumber(), start + wanted);
        QTRY_COMPARE(m_player->currentFrameIndex(), start + wanted);
        QCOMPARE(m_player->timePosition(), timeAt((start + wanted) * 10));
    }
    QVERIFY(m_player->step(1));
    QTRY_COMPARE(m_surface.lastNumber(), start + shown);
}

// 4K frames, of which thirty are taken to cost half a second.
void PlayerVerbsTest::keyframeIsShownUntilThePointerRests()
{
    const auto file = addFile("a.mp4", 1000);
    file->size = QSize(3840, 2160);
    file->keyframeSpacing = 50;
    openPlayer("a.mp4");
    m_surface.numbers.clear();
    QVERIFY(m_player->goToTime(timeAt(3300)));
    QTRY_COMPARE_WITH_TIMEOUT(m_surface.numbers, (QList<int>{300, 330}), 30000);
    QCOMPARE(m_player->timePosition(), timeAt(3300));
}

void PlayerVerbsTest::whileThePointerMovesKeyframesAreShown()
{
    const auto file = addFile("a.mp4", 1000);
    file->size = QSize(3840, 2160);
    file->keyframeSpacing = 50;
    openPlayer("a.mp4");
    m_surface.numbers.clear();
    QList<int> positions;
    connect(m_player.get(), &VideoPlayer::currentFrameIndexChanged, this,
            [this, &positions](int index) {
                positions << index;
                if (index == 620 || index == 730)
                    m_player->goToTime(timeAt(index * 10 + 1100));
            });
    QVERIFY(m_player->goToTime(timeAt(6200)));
    QTRY_COMPARE_WITH_TIMEOUT(m_surface.lastNumber(), 840, 30000);
    QCOMPARE(m_surface.numbers, (QList<int>{600, 700, 800, 840}));
    QCOMPARE(positions, (QList<int>{620, 730, 840})); // those of the pointer
}

void PlayerVerbsTest::shortWaysNeedNoPreview()
{
    const auto file = addFile("a.mp4", 1000);
    file->keyframeSpacing = 30;
    openPlayer("a.mp4");
    QVERIFY(m_player->goToTime(timeAt(500)));
    QTRY_COMPARE(m_surface.lastNumber(), 50);
    QCOMPARE(m_surface.numbers, (QList<int>{0, 50}));
}

// A gap, a rate that halves, and frames that come too soon.
void PlayerVerbsTest::framesAtUnevenTimesAreFoundByTheirTime()
{
    const std::vector<double> timesMs{0, 33.4, 66.7, 700, 733.4, 800, 866.7, 870.1, 933.4, 1000.7};
    const auto file = addFile("CORV0001.MP4", static_cast<int>(timesMs.size()) - 1, 30.0);
    file->timesMs = timesMs;
    addFile("CORV0002.MP4", 5, 30.0)->firstNumber = 9;
    openPlayer("CORV0001.MP4");
    QCOMPARE(m_player->frameCount(), 14);
    QCOMPARE(m_player->duration(), timeAt(1167));
    for (const int frame : {4, 3, 8, 0, 7, 9, 2, 10, 13}) {
        const int ms = static_cast<int>(frame < 9 ? timesMs.at(static_cast<size_t>(frame))
                                                  : 1000.7 + (frame - 9) * 1000.0 / 30.0);
        QVERIFY(m_player->goToTime(timeAt(ms)));
        QTRY_COMPARE(m_surface.lastNumber(), frame);
        QCOMPARE(m_player->currentFrameIndex(), frame);
        QCOMPARE(m_player->timePosition(), timeAt(ms));
        StillFrame still(*m_player, m_player->timePosition());
        QTRY_COMPARE(still.number(), frame);
    }
    QVERIFY(m_player->goToTime(timeAt(400))); // in the gap the frame before is on screen
    QTRY_COMPARE(m_surface.lastNumber(), 2);
    QVERIFY(m_player->step(1));
    QTRY_COMPARE(m_surface.lastNumber(), 3);
    QCOMPARE(m_player->timePosition(), timeAt(700));
}

void PlayerVerbsTest::closedTheyRefuse()
{
    addFile("a.mp4");
    VideoPlayer player(m_files->factory());
    QVERIFY(!player.goToTime(timeAt(0)));
    QVERIFY(!player.goToFrame(0));
    QVERIFY(!player.step(1));
    player.redraw();
    player.forgetLastFrame();
    QCOMPARE(player.frameCount(), 0);
}

QTEST_MAIN(PlayerVerbsTest)
#include "PlayerVerbsTest.moc"
