#include "PlayerFixture.h"
#include "Support/MessageLog.h"

#include <limits>

using namespace corv;
using namespace corv::test;

// Playing and seeking: which pictures are shown, and what is asked of the decoder for them.
class VideoTransportTest : public QObject, private PlayerFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }
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
    void theSourceFollowsTheFileThatPlays();
    void timeIsSignalledInStepsOf100Ms();
    void asksForOneBurstAtATime();
};

void VideoTransportTest::playsAcrossAJoinWithoutGap()
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
    // At the end the player pauses at once. Playing on shows the frames that were decoded ahead.
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

void VideoTransportTest::theEndRefusesUntilASeek()
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

void VideoTransportTest::aReadThatFailsPauses()
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

void VideoTransportTest::aNextFileThatDoesNotRewindPauses()
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

void VideoTransportTest::speedSkipsFrames()
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

void VideoTransportTest::aRefusedFrameIsTriedAgain()
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

void VideoTransportTest::seekingByTimeIsRefusedDuringASeek()
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

void VideoTransportTest::aSeekBehindTheEndStaysUnanswered()
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

void VideoTransportTest::aTimeOnAJoinBelongsToTheEarlierFile()
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

void VideoTransportTest::theEndIsTheLastFrame_data()
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

void VideoTransportTest::theEndIsTheLastFrame()
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

void VideoTransportTest::aSeekToThePictureShownDecodesNothing()
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

void VideoTransportTest::theSourceFollowsTheFileThatPlays()
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

void VideoTransportTest::timeIsSignalledInStepsOf100Ms()
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

    // The last value emitted is remembered over a closing.
    player.close();
    surface.numbers.clear();
    times.clear();
    open(player, "a.mp4");
    QCOMPARE(surface.lastNumber(), 0);
    QVERIFY(times.isEmpty());
}

// However many ticks ask while the decoder is busy, one burst follows.
void VideoTransportTest::asksForOneBurstAtATime()
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

QTEST_MAIN(VideoTransportTest)
#include "VideoTransportTest.moc"
