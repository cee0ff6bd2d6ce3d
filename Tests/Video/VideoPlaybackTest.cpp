#include "PlayerBench.h"
#include "Support/MessageLog.h"
#include "openVideo.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <random>

using namespace corv;
using namespace corv::test;

namespace {

const QStringList h264{"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                       "3",    "-g",      "30",      "-pix_fmt",  "yuv420p"};

} // namespace

// The player with real files: the picture shown, its number and the picture fetched again for its
// time are one and the same frame.
class VideoPlaybackTest : public QObject
{
    Q_OBJECT

private slots:
    void theSurfaceKnowsTheColoursOfTheVideo_data();
    void theSurfaceKnowsTheColoursOfTheVideo();
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void everySeekShowsItsFrame_data();
    void everySeekShowsItsFrame();
    void joinsAreSeamless_data();
    void joinsAreSeamless();
    void stepsForthAndBack();
    void aCutFilePlaysToWhereItEnds();
    void fileThatIsNoVideoIsReported_data();
    void fileThatIsNoVideoIsReported();
    void aVanishedFileStillGivesPictures();
    void oddSidesAreCropped();
    void missingFramesHoldThePicture();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    void open(VideoPlayer& player, RecordingSurface& surface, const QString& name);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void VideoPlaybackTest::open(VideoPlayer& player, RecordingSurface& surface, const QString& name)
{
    player.setVideoSurface(&surface);
    player.setSource(path(name));
    QTRY_VERIFY(!surface.numbers.isEmpty());
}

void VideoPlaybackTest::everySeekShowsItsFrame_data()
{
    QTest::addColumn<QString>("fps");
    QTest::addColumn<QStringList>("encoding");
    QTest::newRow("h264 30") << "30" << h264;
    QTest::newRow("h264 29.97") << "30000/1001" << h264;
    QTest::newRow("h264 59.94 gop 250") << "60000/1001" << h264 + QStringList{"-g", "250"};
    QTest::newRow("h264 23.976") << "24000/1001" << h264;
    QTest::newRow("mpeg4 25") << "25" << QStringList{"-c:v", "mpeg4", "-q:v", "3"};
    QTest::newRow("hevc 50") << "50"
                             << QStringList{"-c:v",      "libx265",      "-preset",
                                            "ultrafast", "-x265-params", "log-level=none:bframes=3",
                                            "-pix_fmt",  "yuv420p"};
}

void VideoPlaybackTest::everySeekShowsItsFrame()
{
    QFETCH(QString, fps);
    QFETCH(QStringList, encoding);
    const QList<int> frames{47, 31, 60};
    int total = 0;
    for (int i = 0; i < frames.size(); ++i) {
        QVERIFY((TestVideo{frames.at(i), fps, {320, 240}, total, encoding}.write(
            path(QStringLiteral("CORV000%1.MOV").arg(i + 1)))));
        total += frames.at(i);
    }
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "CORV0001.MOV");
    std::mt19937 random(7);
    for (int round = 0; round < 12; ++round) {
        const int wanted = static_cast<int>(random() % static_cast<unsigned>(total));
        surface.numbers.clear();
        if (round % 2) {
            QVERIFY(player.seekAtFrame(wanted));
        } else {
            const int ms = static_cast<int>(
                random() % static_cast<unsigned>(timeAt(0).msecsTo(player.duration())));
            QVERIFY(player.seekAtTime(timeAt(ms)));
        }
        QTRY_COMPARE(surface.numbers.size(), 1);
        const int shown = surface.lastNumber();
        // The number behind a file's end still means its last frame.
        if (round % 2)
            QVERIFY(shown == wanted || (shown == wanted - 1 && (wanted == 47 || wanted == 78)));
        QCOMPARE(player.currentFrameIndex(), shown);
        StillFrame again(player, player.timePosition());
        QTRY_COMPARE(again.number(), shown);
    }
    surface.numbers.clear();
    QVERIFY(player.seekAtTime(player.duration()));
    QTRY_COMPARE(surface.lastNumber(), total - 1);
}

void VideoPlaybackTest::joinsAreSeamless_data()
{
    QTest::addColumn<bool>("promisesTooMany");
    QTest::newRow("plain") << false;
    QTest::newRow("a container that promises too many") << true;
}

void VideoPlaybackTest::joinsAreSeamless()
{
    QFETCH(bool, promisesTooMany);
    const QString first = path("CORV0001.MP4");
    if (promisesTooMany) {
        QVERIFY((TestVideo{80, "100", {320, 240}, 0, h264}.write(path("whole.mp4"))));
        QVERIFY(runFfmpeg({"-ss", "0.4", "-i", path("whole.mp4"), "-c", "copy", first}));
    } else {
        QVERIFY((TestVideo{80, "100", {320, 240}, 0, h264}.write(first)));
    }
    QVERIFY((TestVideo{40, "100", {320, 240}, 80, h264}.write(path("CORV0002.MP4"))));
    MessageLog log;
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "CORV0001.MP4");
    const int begin = surface.lastNumber();
    QCOMPARE(begin > 0, promisesTooMany);
    QSignalSpy frames(&player, &VideoPlayer::currentFrameIndexChanged);
    player.play();
    QTRY_VERIFY(!player.playing());
    QVERIFY(log.contains("Reached the end of stream"));
    QVERIFY(!log.contains("Read failed"));
    player.play();
    QTRY_COMPARE(surface.lastNumber(), 119);
    player.pause();
    QCOMPARE(player.source(), path("CORV0002.MP4"));
    QList<int> shown;
    for (int number : surface.numbers) {
        if (shown.isEmpty() || shown.last() != number)
            shown << number;
    }
    QCOMPARE(shown.size(), 120 - begin);
    for (int i = 0; i < shown.size(); ++i)
        QCOMPARE(shown.at(i), begin + i);
    for (int i = 0; i < frames.count(); ++i)
        QCOMPARE(frames.at(i).first().toInt(), i + 1);
}

void VideoPlaybackTest::stepsForthAndBack()
{
    QVERIFY((TestVideo{90, "30", {320, 240}, 0, h264}.write(path("a.mp4"))));
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "a.mp4");
    int at = 0;
    for (int step : {1, 1, 1, 1, 40, 1, 1, -1, -1, -1, 10, -30, 1}) {
        at += step;
        QVERIFY(player.seekAtFrame(at));
        QTRY_COMPARE(surface.lastNumber(), at);
        QCOMPARE(player.currentFrameIndex(), at);
    }
}

void VideoPlaybackTest::aCutFilePlaysToWhereItEnds()
{
    const QString file = path("cut.mp4");
    QVERIFY(
        (TestVideo{100, "100", {320, 240}, 0, h264 + QStringList{"-movflags", "+faststart"}}.write(
            file)));
    QFile cut(file);
    QVERIFY(cut.resize(cut.size() / 2));
    MessageLog log;
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "cut.mp4");
    player.play();
    QTRY_VERIFY(!player.playing());
    QVERIFY(log.contains("Reached the end of stream"));
    QVERIFY(player.seekAtTime(player.duration()));
    QTRY_VERIFY(surface.lastNumber() > 20);
    QVERIFY(player.seekAtFrame(5));
    QTRY_COMPARE(surface.lastNumber(), 5);
}

void VideoPlaybackTest::fileThatIsNoVideoIsReported_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"text", "directory", "empty", "header only"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void VideoPlaybackTest::fileThatIsNoVideoIsReported()
{
    QFETCH(QString, kind);
    const QString broken = path("broken.mp4");
    QVERIFY((TestVideo{10}.write(path("good.mp4"))));
    if (kind == "directory") {
        QVERIFY(QDir().mkpath(broken));
    } else if (kind == "header only") {
        QVERIFY((
            TestVideo{50, "30", {320, 240}, 0, h264 + QStringList{"-movflags", "+faststart"}}.write(
                broken)));
        QFile file(broken);
        QVERIFY(file.resize(2400));
    } else {
        QFile file(broken);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(kind == "text" ? QByteArray("not a video\n").repeated(1000) : QByteArray());
    }
    MessageLog log;
    VideoPlayer player;
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    QSignalSpy errors(&player, &VideoPlayer::sourceOpenError);
    player.setSource(broken);
    QTRY_COMPARE(errors.count(), 1);
    QCOMPARE(errors.first().first().toString(), broken);
    QVERIFY(log.contains(QStringLiteral("Failed to open \"%1\"").arg(broken)));
    QTRY_VERIFY(log.contains("Nothing do to; failed to open the videos"));
    QVERIFY(!player.hasVideoOpened());
    open(player, surface, "good.mp4");
    QCOMPARE(surface.lastNumber(), 0);
}

void VideoPlaybackTest::aVanishedFileStillGivesPictures()
{
    QVERIFY((TestVideo{90, "30", {320, 240}, 0, h264}.write(path("a.mp4"))));
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "a.mp4");
    QVERIFY(QFile::remove(path("a.mp4")));
    QVERIFY(player.seekAtFrame(50));
    QTRY_COMPARE(surface.lastNumber(), 50);
    StillFrame still(player, timeAt(1000));
    QTRY_COMPARE(still.number(), 30);
    surface.numbers.clear();
    player.play();
    QTRY_VERIFY(surface.numbers.size() > 5);
    QCOMPARE(surface.numbers.mid(0, 5), (QList<int>{50, 51, 52, 53, 54}));
}

void VideoPlaybackTest::oddSidesAreCropped()
{
    QVERIFY((TestVideo{20, "25", {321, 241}, 0, {"-c:v", "libx264", "-pix_fmt", "yuv444p"}}.write(
        path("odd.mp4"))));
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "odd.mp4");
    QCOMPARE(surface.surfaceFormat().frameSize(), QSize(320, 240));
    QVERIFY(player.seekAtFrame(11));
    QTRY_COMPARE(surface.lastNumber(), 11);
    QCOMPARE(surface.last.size(), QSize(320, 240));
    StillFrame still(player, player.timePosition());
    QTRY_COMPARE(still.number(), 11);
    QCOMPARE(still.image().size(), QSize(320, 240));
    QSignalSpy complete(&player, &VideoPlayer::videoExportComplete);
    QVERIFY(player.exportVideo(path("out.mp4")));
    QTRY_COMPARE(complete.count(), 1);
    const auto exported = openVideo(path("out.mp4"));
    QVERIFY(exported);
    QCOMPARE(exported->frameCount(), 20);
    QCOMPARE(exported->size(), QSize(320, 240));
}

void VideoPlaybackTest::theSurfaceKnowsTheColoursOfTheVideo_data()
{
    QTest::addColumn<QStringList>("encoding");
    QTest::addColumn<QVideoSurfaceFormat::YCbCrColorSpace>("colours");
    const QStringList h264{"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt"};
    QTest::newRow("not stated") << h264 + QStringList{"yuv420p"}
                                << QVideoSurfaceFormat::YCbCr_Undefined;
    QTest::newRow("bt.709") << h264 + QStringList{"yuv420p", "-colorspace", "bt709"}
                            << QVideoSurfaceFormat::YCbCr_BT709;
    QTest::newRow("full range") << h264 + QStringList{"yuvj420p"}
                                << QVideoSurfaceFormat::YCbCr_JPEG;
}

void VideoPlaybackTest::theSurfaceKnowsTheColoursOfTheVideo()
{
    QFETCH(QStringList, encoding);
    QFETCH(QVideoSurfaceFormat::YCbCrColorSpace, colours);
    QVERIFY((TestVideo{12, "25", {320, 240}, 0, encoding}.write(path("colours.mp4"))));
    VideoPlayer player;
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    player.setSource(path("colours.mp4"));
    QTRY_COMPARE(surface.lastNumber(), 0);
    QCOMPARE(surface.surfaceFormat().yCbCrColorSpace(), colours);
    // An effect does not change them.
    player.setContrast(0.9);
    QVERIFY(player.seekAtFrame(5));
    QTRY_COMPARE(surface.lastNumber(), 5);
    QCOMPARE(surface.surfaceFormat().yCbCrColorSpace(), colours);
    QVERIFY(surface.isActive());
}

// A camera that wrote nothing for more than a second: frames 40 to 79 are missing.
void VideoPlaybackTest::missingFramesHoldThePicture()
{
    const QStringList gap{"-vf", "select=not(between(n\\,40\\,79))", "-vsync", "vfr"};
    QVERIFY((TestVideo{120, "30", {320, 240}, 0, h264 + gap}.write(path("gap.mp4"))));
    VideoPlayer player;
    RecordingSurface surface;
    open(player, surface, "gap.mp4");
    QCOMPARE(player.frameCount(), 80);
    QCOMPARE(player.duration(), timeAt(4000));
    for (const int number : {80, 39, 81, 119, 0, 38}) {
        QVERIFY(player.goToTime(timeAt(number * 1000 / 30)));
        QTRY_COMPARE(surface.lastNumber(), number);
        QCOMPARE(player.timePosition(), timeAt(number * 1000 / 30));
        StillFrame still(player, player.timePosition());
        QTRY_COMPARE(still.number(), number);
    }
    QVERIFY(player.goToTime(player.duration()));
    QTRY_COMPARE(surface.lastNumber(), 119);
    QVERIFY(player.goToTime(timeAt(2000)));
    QTRY_COMPARE(surface.lastNumber(), 39);
    QVERIFY(player.step(1));
    QTRY_COMPARE(surface.lastNumber(), 80);

    QEventLoop loop;
    connect(&player, &VideoPlayer::videoExportComplete, &loop, &QEventLoop::quit,
            Qt::QueuedConnection);
    QVERIFY(player.exportVideo(path("out.mp4")));
    loop.exec();
    QVERIFY(player.videoExportResult().ok());
    const auto exported = openVideo(path("out.mp4"));
    QVERIFY(exported);
    QCOMPARE(exported->frameCount(), 120);
    for (int i = 0; i < 120; ++i)
        QCOMPARE(readFrameNumber(readPicture(*exported)), i < 40 || i >= 80 ? i : 39);
}

QTEST_MAIN(VideoPlaybackTest)
#include "VideoPlaybackTest.moc"
