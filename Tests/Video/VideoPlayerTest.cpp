#include "FakeFrameSource.h"
#include "PlayerBench.h"
#include "Support/MessageLog.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVector>
#include <array>

using namespace corv;
using namespace corv::test;

// The player with videos that exist only in memory: what is asked of the decoder, and when.
class VideoPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void beginsClosed();
    void theEndOfTheWorkerIsTold();
    void opensAndShowsTheFirstFrame();
    void tellsOfFilesThatDoNotOpen();
    void aFailedFileShortensTheTimeline();
    void nothingOpens();
    void aMissingFileIsAnError();
    void answersOfAnOvertakenOpeningAreDropped();
    void playsAcrossAJoinWithoutGap();
    void theEndRefusesUntilASeek();
    void aReadThatFailsPauses();
    void aNextFileThatDoesNotRewindPauses();
    void speedSkipsFrames();
    void aRefusedFrameIsTriedAgain();
    void seekingByTimeIsRefusedDuringASeek();
    void aSeekBehindTheEndStaysUnanswered();
    void aTimeOnAJoinBelongsToTheEarlierFile();
    void theEndIsTheLastFrame_data();
    void theEndIsTheLastFrame();
    void aSeekToThePictureShownDecodesNothing();
    void aSecondVideoBeginsWithTheOldPicture();
    void theSourceFollowsTheFileThatPlays();
    void theTimeIsToldInStepsOf100Ms();
    void closingResetsAll();
    void closedItRefuses();
    void settingsRedrawAPausedPicture();
    void overlaySettingsRedrawOnlyWithTheOverlayOn();
    void busyEndsASecondAfterTheLastChange();
    void stillFramesLeavePlaybackAlone();
    void stillFramesBorrowTheCaptureIfTheyMust();
    void stillFramesThatFail();
    void closingAnswersWaitingStillFrames();
    void aPictureThatCannotBeConvertedIsGivenUp();
    void surfacesAreStartedAndStopped();
    void logDataNeedsALog();
    void oneBurstAtATime();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    // An empty file under the name, so that it exists, and its content in memory.
    std::shared_ptr<FakeFile> addFile(const QString& name, int frames = 30, double fps = 100.0);
    void open(VideoPlayer& player, const QString& name);

    // A seek by time, as soon as the seek before it has been answered.
    void seekOnceAnswered(VideoPlayer& player, int ms);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeFiles> m_files;
};

void VideoPlayerTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_files = std::make_unique<FakeFiles>();
}

std::shared_ptr<FakeFile> VideoPlayerTest::addFile(const QString& name, int frames, double fps)
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly))
        return nullptr;
    auto fake = m_files->add(path(name));
    fake->frames = frames;
    fake->fps = fps;
    return fake;
}

void VideoPlayerTest::open(VideoPlayer& player, const QString& name)
{
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    player.setSource(path(name));
    QTRY_VERIFY(!opened.isEmpty());
    QTRY_VERIFY(!player.videoSurface() ||
                static_cast<RecordingSurface*>(player.videoSurface())->lastNumber() >= 0);
}

void VideoPlayerTest::seekOnceAnswered(VideoPlayer& player, int ms)
{
    bool begun = false;
    QTRY_VERIFY(begun || (begun = player.seekAtTime(timeAt(ms))));
}

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

void VideoPlayerTest::theEndOfTheWorkerIsTold()
{
    MessageLog log;
    auto player = std::make_unique<VideoPlayer>();
    QVERIFY(!log.contains("Joining worker thread..."));
    player.reset();
    QCOMPARE(log.count("Joining worker thread... true"), 1);
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

void VideoPlayerTest::tellsOfFilesThatDoNotOpen()
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
    // Once by the worker and once by the player.
    QCOMPARE(log.count(QStringLiteral("Failed to open \"%1\"").arg(path("CORV0002.MP4"))), 2);
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

void VideoPlayerTest::nothingOpens()
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

void VideoPlayerTest::playsAcrossAJoinWithoutGap()
{
    addFile("CORV0001.MP4", 20);
    addFile("CORV0002.MP4", 15)->firstNumber = 20;
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    QSignalSpy frames(&player, &VideoPlayer::currentFrameIndexChanged);
    QSignalSpy playing(&player, &VideoPlayer::playingChanged);
    QVERIFY(player.play());
    QVERIFY(player.play());
    QTRY_VERIFY(!player.playing());
    QCOMPARE(playing.count(), 2);
    QVERIFY(log.contains("Reached the end of stream"));
    // The end pauses at once; what was decoded ahead is shown by playing on.
    QVERIFY(player.play());
    QTRY_COMPARE(surface.lastNumber(), 34);
    QVERIFY(player.pause());
    for (int i = 0; i < frames.count(); ++i)
        QCOMPARE(frames.at(i).first().toInt(), i + 1);
    QCOMPARE(frames.count(), 34);
    QCOMPARE(player.timePosition(), timeAt(340));
    QList<int> shown;
    for (int number : surface.numbers) {
        if (shown.isEmpty() || shown.last() != number)
            shown << number;
    }
    for (int i = 0; i < shown.size(); ++i)
        QCOMPARE(shown.at(i), i);
}

void VideoPlayerTest::theEndRefusesUntilASeek()
{
    const auto file = addFile("a.mp4", 12);
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.play();
    QTRY_VERIFY(!player.playing());
    QTRY_VERIFY(log.contains("Invalid video capture"));
    log.clear();
    StillFrame refused(player, timeAt(20));
    QTRY_VERIFY(refused.came());
    QVERIFY(refused.image().isNull());
    QVERIFY(log.contains("Invalid video capture"));
    QVERIFY(player.seekAtFrame(3));
    QTRY_COMPARE(surface.lastNumber(), 3);
    StillFrame served(player, timeAt(20));
    QTRY_COMPARE(served.number(), 2);
    QVERIFY(player.play());
    QTRY_VERIFY(surface.numbers.contains(4));
}

void VideoPlayerTest::aReadThatFailsPauses()
{
    addFile("a.mp4", 30)->unreadable = {8};
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.play();
    QTRY_VERIFY(!player.playing());
    QVERIFY(log.contains(
        QStringLiteral("Read failed in \"%1\" for frame  8  at ms 80").arg(path("a.mp4"))));
}

void VideoPlayerTest::aNextFileThatDoesNotRewindPauses()
{
    addFile("CORV0001.MP4", 6);
    const auto second = addFile("CORV0002.MP4", 6);
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    QVERIFY(player.seekAtFrame(9));
    QTRY_COMPARE(surface.lastNumber(), 3);
    QVERIFY(player.seekAtFrame(2));
    QTRY_COMPARE(surface.lastNumber(), 2);
    second->positioning = false;
    player.play();
    QTRY_VERIFY(!player.playing());
    QVERIFY(log.contains(
        QStringLiteral("Failed to seek in the beginning for \"%1\"").arg(path("CORV0002.MP4"))));
}

void VideoPlayerTest::speedSkipsFrames()
{
    const auto file = addFile("a.mp4", 400);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.setPlaySpeed(0.5);
    QCOMPARE(player.playSpeed(), 1.0);
    player.setPlaySpeed(qQNaN());
    QCOMPARE(player.playSpeed(), 1.0);
    player.setPlaySpeed(4.9);
    QCOMPARE(player.playSpeed(), 4.0);

    // Three frames are at hand: the first picture and two of a burst that is held up after them.
    file->blocked = true;
    surface.numbers.clear();
    player.play();
    QTRY_COMPARE(surface.numbers.size(), 1);
    QCOMPARE(surface.numbers.first(), 0);
    file->blocked = false;
    QTRY_VERIFY(surface.numbers.size() > 20);
    player.pause();
    int skips = 0;
    for (int i = 1; i < surface.numbers.size(); ++i) {
        const int step = surface.numbers.at(i) - surface.numbers.at(i - 1);
        QVERIFY(step >= 1 && step <= 4);
        skips += step > 1 ? 1 : 0;
    }
    QVERIFY(skips > 0);
    player.setPlaySpeed(1e300);
    QCOMPARE(player.playSpeed(), double(std::numeric_limits<int>::max()));
}

void VideoPlayerTest::aRefusedFrameIsTriedAgain()
{
    addFile("a.mp4", 30);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    surface.refuses = true;
    QVERIFY(player.seekAtFrame(7));
    seekOnceAnswered(player, 90);
    QCOMPARE(player.currentFrameIndex(), 0);
    seekOnceAnswered(player, 100);
    surface.refuses = false;
    QTRY_COMPARE(surface.lastNumber(), 10);
    QCOMPARE(player.currentFrameIndex(), 10);
}

void VideoPlayerTest::seekingByTimeIsRefusedDuringASeek()
{
    const auto file = addFile("a.mp4", 100);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.play();
    QTRY_VERIFY(surface.numbers.size() > 2);
    player.pause();
    file->blocked = true;
    surface.numbers.clear();
    QVERIFY(player.seekAtTime(timeAt(500)));
    QVERIFY(!player.seekAtTime(timeAt(600)));
    QVERIFY(!player.seekAtTime(QTime()));
    QVERIFY(player.seekAtFrame(70));
    file->blocked = false;
    // Frames of bursts from before are dropped: the first one shown is a result of a seek.
    QTRY_COMPARE(surface.lastNumber(), 70);
    QCOMPARE(surface.numbers.first(), 50);
    QCOMPARE(surface.numbers.size(), 2);
    QVERIFY(!player.seekAtTime(QTime()));
}

void VideoPlayerTest::aSeekBehindTheEndStaysUnanswered()
{
    addFile("a.mp4", 30);
    MessageLog log;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    QVERIFY(player.seekAtTime(timeAt(301)));
    QTRY_VERIFY(log.contains("Seek at time QTime(\"00:00:00.301\") out of bounds"));
    QVERIFY(!player.seekAtTime(timeAt(10)));
    QVERIFY(player.seekAtFrame(31));
    QTRY_VERIFY(log.contains("Seek frame index  31 out of bounds: 30"));
    QVERIFY(!player.seekAtTime(timeAt(10)));
    QVERIFY(player.seekAtFrame(30));
    QTRY_COMPARE(surface.lastNumber(), 29);
    QVERIFY(player.seekAtTime(timeAt(10)));
    QTRY_COMPARE(surface.lastNumber(), 1);
    QVERIFY(player.seekAtFrame(std::numeric_limits<int>::min()));
    QTRY_COMPARE(surface.lastNumber(), 0);
}

void VideoPlayerTest::aTimeOnAJoinBelongsToTheEarlierFile()
{
    addFile("CORV0001.MP4", 20);
    addFile("CORV0002.MP4", 20)->firstNumber = 20;
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    QVERIFY(player.seekAtTime(timeAt(200)));
    QTRY_COMPARE(surface.lastNumber(), 19);
    QVERIFY(player.seekAtFrame(20)); // the earlier file's end counts as its last frame as well
    QTRY_COMPARE(surface.numbers.size(), 3);
    QCOMPARE(surface.lastNumber(), 19);
    QVERIFY(player.seekAtFrame(21));
    QTRY_COMPARE(surface.lastNumber(), 21);
    StillFrame onTheJoin(player, timeAt(200));
    QTRY_COMPARE(onTheJoin.number(), 20);
}

void VideoPlayerTest::theEndIsTheLastFrame_data()
{
    QTest::addColumn<QList<int>>("frames");
    QTest::addColumn<QList<double>>("rates");
    QTest::newRow("one") << QList<int>{301} << QList<double>{30.0};
    QTest::newRow("one 29.97") << QList<int>{299} << QList<double>{30000.0 / 1001.0};
    QTest::newRow("one 59.94") << QList<int>{100} << QList<double>{60000.0 / 1001.0};
    QTest::newRow("one 240") << QList<int>{241} << QList<double>{240.0};
    QTest::newRow("three 29.97") << QList<int>{29, 29, 29}
                                 << QVector<double>(3, 30000.0 / 1001.0).toList();
    QTest::newRow("five 24") << QList<int>{25, 25, 25, 25, 25} << QVector<double>(5, 24.0).toList();
    QTest::newRow("faster second") << QList<int>{25, 50} << QList<double>{25.0, 50.0};
    QTest::newRow("slower second") << QList<int>{50, 25} << QList<double>{50.0, 25.0};
}

void VideoPlayerTest::theEndIsTheLastFrame()
{
    QFETCH(QList<int>, frames);
    QFETCH(QList<double>, rates);
    int total = 0;
    for (int i = 0; i < frames.size(); ++i) {
        addFile(QStringLiteral("CORV000%1.MP4").arg(i + 1), frames.at(i), rates.at(i))
            ->firstNumber = total;
        total += frames.at(i);
    }
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    QVERIFY(player.seekAtTime(player.duration()));
    if (rates.first() > rates.last()) // the end by the first file's rate lies before the real one
        QTRY_VERIFY(surface.lastNumber() >= frames.first());
    else
        QTRY_COMPARE(surface.lastNumber(), total - 1);
}

void VideoPlayerTest::aSeekToThePictureShownDecodesNothing()
{
    const auto file = addFile("a.mp4", 30);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    QVERIFY(player.seekAtFrame(12));
    QTRY_COMPARE(surface.lastNumber(), 12);
    const int reads = file->reads;
    QVERIFY(player.seekAtFrame(12));
    QTRY_COMPARE(surface.numbers.size(), 3);
    QVERIFY(player.seekAtTime(timeAt(120)));
    QTRY_COMPARE(surface.numbers.size(), 4);
    QCOMPARE(surface.lastNumber(), 12);
    QCOMPARE(int(file->reads), reads);
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

void VideoPlayerTest::theSourceFollowsTheFileThatPlays()
{
    addFile("CORV0001.MP4", 6);
    addFile("CORV0002.MP4", 200);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "CORV0001.MP4");
    QSignalSpy source(&player, &VideoPlayer::sourceChanged);
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    player.play();
    QTRY_COMPARE(player.source(), path("CORV0002.MP4"));
    QCOMPARE(source.count(), 1);
    player.setSource(path("CORV0002.MP4"));
    QCOMPARE(source.count(), 1);
    const int index = player.currentFrameIndex();
    QTRY_VERIFY(player.currentFrameIndex() > index + 3);
    QVERIFY(opened.isEmpty());
}

void VideoPlayerTest::theTimeIsToldInStepsOf100Ms()
{
    addFile("a.mp4", 300);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    QSignalSpy times(&player, &VideoPlayer::timePositionChanged);
    QVERIFY(player.seekAtFrame(100));
    QTRY_COMPARE(surface.lastNumber(), 100);
    QCOMPARE(times.count(), 1);
    QVERIFY(player.seekAtFrame(109));
    QTRY_COMPARE(surface.lastNumber(), 109);
    QCOMPARE(times.count(), 1);
    QCOMPARE(player.timePosition(), timeAt(1090));
    QVERIFY(player.seekAtFrame(90));
    QTRY_COMPARE(surface.lastNumber(), 90);
    QCOMPARE(times.count(), 2);
    QCOMPARE(times.last().first().toTime(), timeAt(900));
    QVERIFY(player.seekAtFrame(0));
    QTRY_COMPARE(surface.lastNumber(), 0);
    QCOMPARE(times.count(), 3);

    // What was told last is remembered over a closing.
    player.close();
    surface.numbers.clear();
    times.clear();
    open(player, "a.mp4");
    QCOMPARE(surface.lastNumber(), 0);
    QVERIFY(times.isEmpty());
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
    QCOMPARE(log.count("!m_hasVideoOpened || !frameResultCallback"), 1);
    open(player, "a.mp4");
    QVERIFY(!player.getFrameAsync(timeAt(0), {}));
    QCOMPARE(log.count("!m_hasVideoOpened || !frameResultCallback"), 2);
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

void VideoPlayerTest::stillFramesLeavePlaybackAlone()
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

void VideoPlayerTest::stillFramesBorrowTheCaptureIfTheyMust()
{
    const auto file = addFile("a.mp4", 60);
    file->canBeCloned = false;
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
    QVERIFY(player.seekAtFrame(20));
    QTRY_COMPARE(surface.lastNumber(), 20);
    file->positioning = false;
    StillFrame atThePosition(player, timeAt(210)); // stands there already, and cannot go back
    QTRY_COMPARE(atThePosition.number(), 21);
    QVERIFY(log.contains("Failed to set back to original pos 210"));
}

void VideoPlayerTest::stillFramesThatFail()
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

void VideoPlayerTest::closingAnswersWaitingStillFrames()
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
    QCOMPARE(log.count("No log parser"), 1);
    LogParser parser;
    player.setLogParser(&parser);
    QCOMPARE(player.logParser(), &parser);
    player.updateLogData();
    QTRY_COMPARE(surface.numbers.size(), 3);
    QCOMPARE(log.count("No log file"), 1);
}

// However many ticks ask while the decoder is busy, one burst follows.
void VideoPlayerTest::oneBurstAtATime()
{
    const auto file = addFile("a.mp4", 1000);
    VideoPlayer player(m_files->factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    open(player, "a.mp4");
    player.play();
    QTRY_VERIFY(surface.numbers.size() > 10);
    file->blocked = true;
    QTRY_VERIFY(surface.numbers.size() > 12); // what was decoded ahead
    player.pause();
    const int reads = file->reads;
    file->blocked = false;
    QVERIFY(player.seekAtFrame(900));
    QTRY_COMPARE(surface.lastNumber(), 900);
    QVERIFY(int(file->reads) - reads <= 11);
}

QTEST_MAIN(VideoPlayerTest)
#include "VideoPlayerTest.moc"
