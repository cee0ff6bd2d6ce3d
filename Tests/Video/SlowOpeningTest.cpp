#include "PlayerFixture.h"
#include "Support/MediaDoubles.h"
#include "Video/AvFrameSource.h"

#include <QFileInfo>

using namespace corv;
using namespace corv::test;

namespace {

std::shared_ptr<const VideoBackend> backendOn(const std::shared_ptr<Medium>& medium)
{
    return std::make_shared<SourceBackend>(
        [medium](const QString& file) -> std::unique_ptr<FrameSource> {
            auto source = openAvFrameSource(file, Medium::factory(medium));
            return source ? std::move(*source) : nullptr;
        });
}

} // namespace

/// The player while a file that has no index in its head is being read through.
class SlowOpeningTest : public QObject, private PlayerFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }
    void theFirstPictureComesBeforeTheIndex();
    void aLaterFileIsWaitedFor();
    void closingEndsTheWaiting();
    void anotherVideoEndsTheWaiting();
    void theVideoBeforeAnswersNothingMeanwhile();
    void containersWithoutAnIndex_data();
    void containersWithoutAnIndex();
};

void SlowOpeningTest::theFirstPictureComesBeforeTheIndex()
{
    const auto file = addFile("a.avi");
    file->isRead = false;
    file->pixelAspectRatio = {4, 3};
    RecordingSurface surface;
    VideoPlayer player(m_files->factory());
    player.setVideoSurface(&surface);
    QSignalSpy progress(&player, &VideoPlayer::openingProgressChanged);
    player.setSource(path("a.avi"));
    QTRY_COMPARE(surface.numbers, QList<int>{0});
    QCOMPARE(player.openingProgress(), 0.5);
    QCOMPARE(surface.formats.last().pixelAspectRatio(), QSize(4, 3));
    QVERIFY(!player.hasVideoOpened());
    QVERIFY(!player.duration().isValid());
    QVERIFY(!player.play());
    file->isRead = true;
    QTRY_VERIFY(player.hasVideoOpened());
    QCOMPARE(player.openingProgress(), 1.0);
    QCOMPARE(progress.size(), 2);
    QCOMPARE(player.duration(), timeAt(300));
    QCOMPARE(player.frameCount(), 30);
    QTRY_COMPARE(surface.numbers, (QList<int>{0, 0}));
    QVERIFY(surface.isActive());
    QCOMPARE(surface.surfaceFormat().pixelAspectRatio(), QSize(4, 3));
    QVERIFY(player.goToFrame(7));
    QTRY_COMPARE(surface.lastNumber(), 7);
}

void SlowOpeningTest::aLaterFileIsWaitedFor()
{
    addFile("CORV0001.avi");
    const auto second = addFile("CORV0002.avi", 10);
    second->firstNumber = 30;
    second->isRead = false;
    RecordingSurface surface;
    VideoPlayer player(m_files->factory());
    player.setVideoSurface(&surface);
    player.setSource(path("CORV0001.avi"));
    QTRY_COMPARE(player.openingProgress(), 0.75);
    QTRY_COMPARE(surface.lastNumber(), 0);
    QVERIFY(!player.hasVideoOpened());
    second->isRead = true;
    QTRY_VERIFY(player.hasVideoOpened());
    QCOMPARE(player.frameCount(), 40);
    QCOMPARE(player.source(), path("CORV0001.avi"));
    QVERIFY(player.goToFrame(33));
    QTRY_COMPARE(surface.lastNumber(), 33);
}

void SlowOpeningTest::closingEndsTheWaiting()
{
    addFile("b.avi", 20)->firstNumber = 50;
    const auto file = addFile("a.avi");
    file->isRead = false;
    RecordingSurface surface;
    VideoPlayer player(m_files->factory());
    player.setVideoSurface(&surface);
    player.setSource(path("a.avi"));
    QTRY_COMPARE(surface.lastNumber(), 0);
    player.close();
    QVERIFY(!surface.isActive());
    QCOMPARE(player.openingProgress(), 1.0);
    file->isRead = true;
    // What opens next comes after all that the closed file could still lead to.
    player.setSource(path("b.avi"));
    QTRY_VERIFY(player.hasVideoOpened());
    QTRY_COMPARE(surface.numbers, (QList<int>{0, 50}));
}

void SlowOpeningTest::anotherVideoEndsTheWaiting()
{
    const auto slow = addFile("slow.avi");
    slow->isRead = false;
    addFile("quick.mp4", 20)->firstNumber = 100;
    RecordingSurface surface;
    VideoPlayer player(m_files->factory());
    player.setVideoSurface(&surface);
    player.setSource(path("slow.avi"));
    QTRY_COMPARE(surface.lastNumber(), 0);
    player.setSource(path("quick.mp4"));
    QTRY_COMPARE(surface.lastNumber(), 100);
    slow->isRead = true;
    QVERIFY(player.goToFrame(19));
    QTRY_COMPARE(surface.lastNumber(), 119);
    QCOMPARE(player.frameCount(), 20);
    QCOMPARE(player.openingProgress(), 1.0);
}

void SlowOpeningTest::theVideoBeforeAnswersNothingMeanwhile()
{
    addFile("before.mp4")->firstNumber = 200;
    const auto slow = addFile("slow.avi");
    slow->isRead = false;
    RecordingSurface surface;
    VideoPlayer player(m_files->factory());
    player.setVideoSurface(&surface);
    open(player, "before.mp4");
    player.setSource(path("slow.avi"));
    QVERIFY(player.goToFrame(5));
    QTRY_COMPARE(surface.lastNumber(), 0);
    QCOMPARE(surface.numbers.count(205) + surface.numbers.count(5), 0);
    slow->isRead = true;
    QTRY_COMPARE(player.openingProgress(), 1.0);
    QVERIFY(player.goToFrame(6));
    QTRY_COMPARE(surface.lastNumber(), 6);
}

void SlowOpeningTest::containersWithoutAnIndex_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("encoding");
    const QStringList h264{"-vf",      "noise=alls=40:allf=t",
                           "-c:v",     "libx264",
                           "-preset",  "ultrafast",
                           "-g",       "20",
                           "-qp",      "16",
                           "-pix_fmt", "yuv420p"};
    QTest::newRow("transport stream") << "a.ts" << h264;
    QTest::newRow("matroska") << "a.mkv" << h264;
    QTest::newRow("avi") << "a.avi"
                         << QStringList{"-c:v", "mjpeg", "-q:v", "2", "-pix_fmt", "yuvj420p"};
}

void SlowOpeningTest::containersWithoutAnIndex()
{
    QFETCH(QString, name);
    QFETCH(QStringList, encoding);
    const QString file = path(name);
    QVERIFY((TestVideo{400, "25", {320, 240}, 0, encoding}.write(file)));
    const auto medium = std::make_shared<Medium>();
    medium->heldAt = QFileInfo(file).size() / 2;
    RecordingSurface surface;
    VideoPlayer player(backendOn(medium));
    player.setVideoSurface(&surface);
    player.setSource(file);
    QTRY_COMPARE(surface.numbers.size(), 1);
    QTRY_VERIFY(player.openingProgress() > 0.1 && player.openingProgress() < 0.6);
    QVERIFY(!player.hasVideoOpened());
    medium->heldAt = -1;
    QTRY_VERIFY(player.hasVideoOpened());
    QCOMPARE(player.frameCount(), 400);
    QTRY_COMPARE(surface.numbers.size(), 2);
    QVERIFY(player.goToFrame(399));
    QTRY_COMPARE(player.currentFrameIndex(), 399);
}

QTEST_MAIN(SlowOpeningTest)
#include "SlowOpeningTest.moc"
