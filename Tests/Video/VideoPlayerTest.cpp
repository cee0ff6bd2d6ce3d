#include "PlayerFixture.h"
#include "Support/MessageLog.h"

#include <array>

using namespace corv;
using namespace corv::test;

// The player with videos that exist only in memory: opening, closing, its settings and surfaces.
class VideoPlayerTest : public QObject, private PlayerFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }
    void beginsClosed();
    void endOfTheWorkerIsSignalled();
    void opensAndShowsTheFirstFrame();
    void fileThatDoesNotOpenShowsAMessage();
    void aFailedFileShortensTheTimeline();
    void aBrokenVideoIsAnError();
    void aMissingFileIsAnError();
    void answersOfAnOvertakenOpeningAreDropped();
    void aSecondVideoBeginsWithTheOldPicture();
    void closingResetsAll();
    void closedItRefuses();
    void settingsRedrawAPausedPicture();
    void overlaySettingsRedrawOnlyWithTheOverlayOn();
    void busyEndsASecondAfterTheLastChange();
    void aPictureThatCannotBeConvertedIsGivenUp();
    void surfacesAreStartedAndStopped();
    void logDataNeedsALog();
    void nextFilesReplaceThoseThatFollowByNumber();
    void nextFilesAreIgnoredForAnotherFirstFile();
};

void VideoPlayerTest::beginsClosed()
{
    VideoPlayer player;
    QCOMPARE(player.source(), QString());
    QVERIFY(!player.hasVideoOpened());
    QCOMPARE(player.timePosition(), QTime(0, 0, 0, 0));
    QCOMPARE(player.currentFrameIndex(), 0);
    QVERIFY(!player.duration().isValid());
    QVERIFY(!player.playing());
    QCOMPARE(player.playSpeed(), 1.0);
    QVERIFY(!player.isBusy());
    QVERIFY(!player.showIR());
    QVERIFY(!player.fullScreenIR());
    QVERIFY(!player.autoIRMapping());
    QVERIFY(!player.irOverlayTransparent());
    QCOMPARE(player.contrast(), 1.0);
    QCOMPARE(player.brightness(), 0.0);
    QCOMPARE(player.irMappingMinValue(), 0.0);
    QCOMPARE(player.irMappingMaxValue(), 65535.0);
    QCOMPARE(player.irOffsetX(), 0.0);
    QCOMPARE(player.irOffsetY(), 0.0);
    QCOMPARE(player.irDataMin(), 0.0);
    QCOMPARE(player.irDataMax(), 65535.0);
    QCOMPARE(player.logParser(), nullptr);
    QCOMPARE(player.videoSurface(), nullptr);
    QVERIFY(player.flags() & QQuickItem::ItemHasContents);
    QVERIFY(player.antialiasing());
}

void VideoPlayerTest::endOfTheWorkerIsSignalled()
{
    MessageLog log;
    auto player = std::make_unique<VideoPlayer>();
    QVERIFY(!log.contains("Joining worker thread..."));
    player.reset();
    QVERIFY(log.contains("Joining worker thread... true"));
}

void VideoPlayerTest::opensAndShowsTheFirstFrame()
{
    addFile("a.mp4", 125, 25.0);
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    QSignalSpy source(&player, &VideoPlayer::sourceChanged);
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    QSignalSpy duration(&player, &VideoPlayer::durationChanged);
    player.setSource(path("a.mp4"));
    player.setSource(path("a.mp4"));
    QCOMPARE(source.count(), 1);
    QTRY_COMPARE(surface.numbers, QList<int>{0});
    QCOMPARE(opened.count(), 1);
    QCOMPARE(opened.first().first().toBool(), true);
    QCOMPARE(duration.count(), 1);
    QCOMPARE(player.duration(), timeAt(5000));
    QCOMPARE(player.currentFrameIndex(), 0);
    QCOMPARE(source.count(), 1);
    QVERIFY(log.contains(QStringLiteral("(\"%1\")").arg(path("a.mp4"))));
    QVERIFY(log.contains(QStringLiteral("Info  \"%1\" ; FPS: 25 ; Total frames: 125 "
                                        "; Duration ms:  5000 ; Size: 320 240")
                             .arg(path("a.mp4"))));
}

void VideoPlayerTest::fileThatDoesNotOpenShowsAMessage()
{
    addFile("CORV0001.MP4", 10);
    QFile broken(path("CORV0002.MP4"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    MessageLog log;
    VideoPlayer player(m_files->factory());
    QSignalSpy errors(&player, &VideoPlayer::sourceOpenError);
    open(player, "CORV0001.MP4");
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.first().first().toString(), path("CORV0002.MP4"));
    QVERIFY(log.contains(QStringLiteral("Failed to open \"%1\"").arg(path("CORV0002.MP4"))));
}

void VideoPlayerTest::aFailedFileShortensTheTimeline()
{
    addFile("CORV0001.MP4", 20);
    QFile broken(path("CORV0002.MP4"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    addFile("CORV0003.MP4", 10)->firstNumber = 20;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    QCOMPARE(player.duration(), timeAt(300));
    QVERIFY(player.seekAtFrame(25));
    QTRY_COMPARE(surface.lastNumber(), 25);
    QCOMPARE(player.currentFrameIndex(), 25);
    QCOMPARE(player.timePosition(), timeAt(250));
}

void VideoPlayerTest::aBrokenVideoIsAnError()
{
    QFile broken(path("broken.mp4"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    MessageLog log;
    VideoPlayer player(m_files->factory());
    QSignalSpy errors(&player, &VideoPlayer::sourceOpenError);
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    player.setSource(path("broken.mp4"));
    QTRY_VERIFY(log.contains("Nothing do to; failed to open the videos"));
    QCOMPARE(errors.count(), 1);
    QVERIFY(opened.isEmpty());
    QVERIFY(!player.duration().isValid());
    QVERIFY(!player.play());
}

void VideoPlayerTest::aMissingFileIsAnError()
{
    VideoPlayer player(m_files->factory());
    QSignalSpy errors(&player, &VideoPlayer::sourceOpenError);
    player.setSource(path("missing.mp4"));
    QCOMPARE(errors.count(), 1);
    QCOMPARE(errors.first().first().toString(), path("missing.mp4"));
    QCOMPARE(player.source(), path("missing.mp4"));
    QVERIFY(player.isBusy());
}

void VideoPlayerTest::answersOfAnOvertakenOpeningAreDropped()
{
    addFile("a.mp4", 10);
    addFile("b.mp4", 40)->firstNumber = 100;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    player.setSource(path("a.mp4"));
    player.close();
    player.setSource(path("a.mp4"));
    player.setSource(path("b.mp4"));
    QTRY_COMPARE(surface.numbers, QList<int>{100});
    QCOMPARE(opened.count(), 1);
    QCOMPARE(player.source(), path("b.mp4"));
    QCOMPARE(player.duration(), timeAt(400));
}

void VideoPlayerTest::aSecondVideoBeginsWithTheOldPicture()
{
    addFile("a.mp4", 30);
    addFile("b.mp4", 30)->firstNumber = 500;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.close();
    surface.numbers.clear();
    open(player, "b.mp4");
    QCOMPARE(surface.numbers, QList<int>{0});
    QVERIFY(player.seekAtFrame(1));
    QTRY_COMPARE(surface.lastNumber(), 501);
}

void VideoPlayerTest::closingResetsAll()
{
    addFile("a.mp4", 300);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    QVERIFY(player.seekAtFrame(200));
    QTRY_COMPARE(surface.lastNumber(), 200);
    player.play();
    QSignalSpy source(&player, &VideoPlayer::sourceChanged);
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    QSignalSpy playing(&player, &VideoPlayer::playingChanged);
    QSignalSpy duration(&player, &VideoPlayer::durationChanged);
    QSignalSpy index(&player, &VideoPlayer::currentFrameIndexChanged);
    QSignalSpy time(&player, &VideoPlayer::timePositionChanged);
    player.close();
    for (const QSignalSpy* spy : {&source, &opened, &playing, &duration, &index, &time})
        QCOMPARE(spy->count(), 1);
    QCOMPARE(opened.first().first().toBool(), false);
    QCOMPARE(player.source(), QString());
    QCOMPARE(player.duration(), QTime(0, 0, 0, 0));
    QCOMPARE(player.timePosition(), QTime(0, 0, 0, 0));
    QCOMPARE(player.currentFrameIndex(), 0);
    QVERIFY(!player.playing());
    QVERIFY(!surface.isActive());
    player.close();
    for (const QSignalSpy* spy : {&source, &opened, &playing, &duration, &index, &time})
        QCOMPARE(spy->count(), 1);
}

void VideoPlayerTest::closedItRefuses()
{
    addFile("a.mp4");
    MessageLog log;
    VideoPlayer player(m_files->factory());
    QVERIFY(!player.play());
    QVERIFY(!player.pause());
    QVERIFY(!player.seekAtTime(timeAt(0)));
    QVERIFY(!player.seekAtFrame(0));
    StillFrame still(player, timeAt(0));
    QVERIFY(!still.accepted);
    QVERIFY(log.contains("!m_hasVideoOpened || !frameResultCallback"));
    open(player, "a.mp4");
    log.clear();
    QVERIFY(!player.getFrameAsync(timeAt(0), {}));
    QVERIFY(log.contains("!m_hasVideoOpened || !frameResultCallback"));
}

void VideoPlayerTest::settingsRedrawAPausedPicture()
{
    const auto file = addFile("a.mp4", 100);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    QSignalSpy showIR(&player, &VideoPlayer::showIRChanged);
    const int reads = file->reads;
    player.setContrast(1.0);
    player.setBrightness(1e-17);
    player.setShowIR(false);
    player.setContrast(1.2);
    QTRY_COMPARE(surface.numbers.size(), 2);
    player.setBrightness(-20.0);
    QTRY_COMPARE(surface.numbers.size(), 3);
    player.setShowIR(true);
    QTRY_COMPARE(surface.numbers.size(), 4);
    QCOMPARE(showIR.count(), 1);
    QCOMPARE(int(file->reads), reads);
    QVERIFY(player.seekAtFrame(5));
    QTRY_COMPARE(surface.numbers.size(), 5); // nothing more had been drawn
    QTRY_VERIFY(!player.isBusy());
    player.play();
    player.setContrast(1.5);
    QVERIFY(player.isBusy());
}

void VideoPlayerTest::overlaySettingsRedrawOnlyWithTheOverlayOn()
{
    addFile("a.mp4", 100);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    const std::array<std::function<void(int)>, 6> changes{
        [&player](int i) { player.setFullScreenIR(i % 2 == 0); },
        [&player](int i) { player.setIrOverlayTransparent(i % 2 == 0); },
        [&player](int i) { player.setIrMappingMinValue(10.0 + i); },
        [&player](int i) { player.setIrMappingMaxValue(20.0 + i); },
        [&player](int i) { player.setIrOffsetX(0.1 + i); },
        [&player](int i) { player.setIrOffsetY(0.1 + i); }};
    for (const auto& change : changes)
        change(0);
    player.setAutoIRMapping(true);
    player.setShowIR(true);
    QTRY_COMPARE(surface.numbers.size(), 2);
    int drawn = 2;
    for (const auto& change : changes) {
        change(1);
        ++drawn;
        QTRY_COMPARE(surface.numbers.size(), drawn);
        change(1);
    }
    player.setAutoIRMapping(false);
    QVERIFY(player.seekAtFrame(5));
    QTRY_COMPARE(surface.lastNumber(), 5);
    QCOMPARE(surface.numbers.size(), drawn + 1);
}

void VideoPlayerTest::busyEndsASecondAfterTheLastChange()
{
    addFile("CORV0001.MP4", 5);
    addFile("CORV0002.MP4", 5);
    VideoPlayer player(m_files->factory());
    QSignalSpy busy(&player, &VideoPlayer::isBusyChanged);
    open(player, "CORV0001.MP4");
    QVERIFY(player.isBusy());
    QCOMPARE(busy.count(), 1);
    QTRY_VERIFY(!player.isBusy());
    QCOMPARE(busy.count(), 2);
}

void VideoPlayerTest::aPictureThatCannotBeConvertedIsGivenUp()
{
    const auto file = addFile("a.mp4", 60);
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    file->throwsInPlay = true;
    QVERIFY(player.seekAtFrame(20));
    QTRY_VERIFY(log.contains("Giving up frame"));
    StillFrame still(player, timeAt(100));
    QTRY_VERIFY(still.came());
    QVERIFY(still.image().isNull());
    file->throwsInPlay = false;
    QVERIFY(player.seekAtFrame(30));
    QTRY_COMPARE(surface.lastNumber(), 30);
}

void VideoPlayerTest::surfacesAreStartedAndStopped()
{
    addFile("a.mp4", 60);
    RecordingSurface first;
    VideoPlayer player(m_files->factory());
    open(player, "a.mp4");
    player.setVideoSurface(&first);
    QVERIFY(first.isActive());
    QCOMPARE(first.surfaceFormat().frameSize(), QSize(320, 240));
    QCOMPARE(first.surfaceFormat().pixelFormat(), QVideoFrame::Format_YUV420P);
    {
        RecordingSurface second;
        player.setVideoSurface(&second);
        QVERIFY(!first.isActive());
        QVERIFY(second.isActive());
    }
    QCOMPARE(player.videoSurface(), nullptr);
    QVERIFY(player.seekAtFrame(10));
    seekOnceAnswered(player, 200);
    player.setVideoSurface(&first);
    QTRY_COMPARE(first.lastNumber(), 20);
    player.setVideoSurface(nullptr);
    QVERIFY(!first.isActive());
}

void VideoPlayerTest::logDataNeedsALog()
{
    addFile("a.mp4", 60);
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.updateLogData();
    QTRY_COMPARE(surface.numbers.size(), 2);
    QVERIFY(log.contains("No log parser"));
    LogParser parser;
    player.setLogParser(&parser);
    QCOMPARE(player.logParser(), &parser);
    player.updateLogData();
    QTRY_COMPARE(surface.numbers.size(), 3);
    QVERIFY(log.contains("No log file"));
    QVERIFY(!player.thermalStatus());
}

void VideoPlayerTest::nextFilesReplaceThoseThatFollowByNumber()
{
    for (const char* name : {"CORV0001.MP4", "CORV0002.MP4", "CORV0003.MP4"})
        addFile(name, 10);
    VideoPlayer player(m_files->factory());
    player.setNextFiles({path("CORV0001.MP4"), path("CORV0002.MP4")});
    open(player, "CORV0001.MP4");
    QCOMPARE(player.sourceFiles(), QStringList({path("CORV0001.MP4"), path("CORV0002.MP4")}));
    QTRY_COMPARE(player.duration(), timeAt(200));
    // Once: afterwards the numbers decide again.
    player.close();
    open(player, "CORV0001.MP4");
    QCOMPARE(player.sourceFiles().size(), 3);
}

void VideoPlayerTest::nextFilesAreIgnoredForAnotherFirstFile()
{
    addFile("CORV0001.MP4", 10);
    addFile("CORV0002.MP4", 10);
    VideoPlayer player(m_files->factory());
    player.setNextFiles({path("CORV0002.MP4")});
    open(player, "CORV0001.MP4");
    QCOMPARE(player.sourceFiles().size(), 2);
}

QTEST_MAIN(VideoPlayerTest)
#include "VideoPlayerTest.moc"
