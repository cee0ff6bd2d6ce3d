#include "PlayerFixture.h"
#include "Support/MessageLog.h"

using namespace corv;
using namespace corv::test;

// Single pictures fetched beside the playback.
class VideoStillsTest : public QObject, private PlayerFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }
    void stillFramesLeavePlaybackAlone();
    void stillFramesBorrowTheCaptureIfTheyMust();
    void stillFramesOfOneFrameAreDecodedOnce();
    void stillFramesThatFail();
    void closingAnswersWaitingStillFrames();
    void aPreviewComesBeforeWaitingStillFrames();
};

void VideoStillsTest::aPreviewComesBeforeWaitingStillFrames()
{
    addFile("a.mp4", 60);
    VideoPlayer player(m_files->factory());
    QVERIFY(!player.getPreviewAsync(timeAt(0), [](const QImage&) {}));
    open(player, "a.mp4");
    std::atomic<int> served{0};
    std::atomic<int> servedBefore{-1};
    std::atomic<bool> isShown{false};
    constexpr int waiting = 30;
    for (int i = 0; i < waiting; ++i)
        QVERIFY(player.getFrameAsync(timeAt(i * 10), [&](const QImage&) { ++served; }));
    QVERIFY(player.getPreviewAsync(timeAt(300), [&](const QImage& picture) {
        isShown = !picture.isNull();
        servedBefore = served.load();
    }));
    QTRY_COMPARE(served.load(), waiting);
    QVERIFY(isShown);
    QVERIFY2(servedBefore == 0, qPrintable(QString::number(servedBefore)));
}

void VideoStillsTest::stillFramesLeavePlaybackAlone()
{
    addFile("CORV0001.MP4", 60);
    // Far longer than the pictures take: at the end of the last file there are none.
    const auto second = addFile("CORV0002.MP4", 6000);
    second->firstNumber = 60;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    surface.numbers.clear();
    player.play();
    std::vector<StillFrame> stills;
    for (int i = 0; i < 40; ++i)
        stills.emplace_back(player, timeAt((i * 370) % 1200));
    for (int i = 0; i < 40; ++i)
        QTRY_COMPARE(stills.at(size_t(i)).number(), (i * 37) % 120);
    QTRY_VERIFY(surface.numbers.size() > 20);
    for (int i = 0; i < surface.numbers.size(); ++i)
        QCOMPARE(surface.numbers.at(i), i);
    QVERIFY(second->clones > 0);
}

void VideoStillsTest::stillFramesBorrowTheCaptureIfTheyMust()
{
    const auto file = addFile("a.mp4", 60);
    file->canBeCloned = false;
    file->unreachable = {41};
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    QVERIFY(player.seekAtFrame(10));
    QTRY_COMPARE(surface.lastNumber(), 10);
    StillFrame still(player, timeAt(300));
    QTRY_COMPARE(still.number(), 30);
    surface.numbers.clear();
    player.play();
    QTRY_VERIFY(surface.numbers.size() > 2);
    player.pause();
    QCOMPARE(surface.numbers.mid(0, 3), (QList<int>{10, 11, 12}));
    QVERIFY(!log.contains("Failed to set back"));
    QVERIFY(player.seekAtFrame(59));
    QTRY_COMPARE(surface.lastNumber(), 59);
    QVERIFY(player.seekAtFrame(40));
    QTRY_COMPARE(surface.lastNumber(), 40);
    StillFrame away(player, timeAt(500));
    QTRY_COMPARE(away.number(), 50);
    QVERIFY(log.contains("Failed to set back to original pos 410"));
}

// Marks lie closer than frames where a project has very many.
void VideoStillsTest::stillFramesOfOneFrameAreDecodedOnce()
{
    const auto file = addFile("a.mp4", 60);
    VideoPlayer player(m_files->factory());
    open(player, "a.mp4");
    const int before = file->reads;
    std::vector<StillFrame> stills;
    for (int i = 0; i < 40; ++i)
        stills.emplace_back(player, timeAt(300 + i / 2));
    for (int i = 0; i < 40; ++i)
        QTRY_COMPARE(stills.at(size_t(i)).number(), 30 + (i + 10) / 20);
    QCOMPARE(file->reads - before, 3);
}

void VideoStillsTest::stillFramesThatFail()
{
    const auto file = addFile("a.mp4", 60);
    file->unreadable = {30};
    file->unreachable = {40};
    MessageLog log;
    VideoPlayer player(m_files->factory());
    open(player, "a.mp4");
    StillFrame outside(player, timeAt(600));
    QTRY_VERIFY(outside.came());
    QVERIFY(outside.image().isNull());
    QVERIFY(log.contains("Out of bounds: 600"));
    StillFrame unreadable(player, timeAt(300));
    QTRY_VERIFY(unreadable.came());
    QVERIFY(unreadable.image().isNull());
    QVERIFY(log.contains("Read failed for frame  300"));
    log.clear();
    StillFrame unreachable(player, timeAt(400));
    QTRY_VERIFY(unreachable.came());
    QVERIFY(unreachable.image().isNull());
    QCOMPARE(log.messages(), QStringList());
    StillFrame last(player, timeAt(599));
    QTRY_VERIFY(last.came());
}

void VideoStillsTest::closingAnswersWaitingStillFrames()
{
    const auto file = addFile("a.mp4", 60);
    VideoPlayer player(m_files->factory());
    open(player, "a.mp4");
    file->blocked = true;
    std::vector<StillFrame> stills;
    for (int i = 0; i < 200; ++i)
        stills.emplace_back(player, timeAt(i));
    StillFrame first(player, timeAt(0));
    player.close();
    file->blocked = false;
    for (const StillFrame& still : stills) {
        QVERIFY(still.accepted);
        QTRY_VERIFY(still.came());
    }
    QVERIFY(stills.back().image().isNull());
}

QTEST_MAIN(VideoStillsTest)
#include "VideoStillsTest.moc"
