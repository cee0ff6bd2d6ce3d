#include "FakeFrameSource.h"
#include "PlayerBench.h"
#include "Threads/pool.h"

#include <QFile>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <random>
#include <thread>

using namespace corv;
using namespace corv::test;

// Everything at once and in any order, for ThreadSanitizer and AddressSanitizer to look at.
class VideoThreadsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void survivesCallsInAnyOrder_data();
    void survivesCallsInAnyOrder();
    void survivesItsEndInTheMiddleOfAnything();
    void aThreadWithoutAnEventLoopGetsPictures();
    void picturesForManyTasks();
    void rangeCanBeReadWhileItIsWritten();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    void doSomething(VideoPlayer& player, std::mt19937& random);

    QTemporaryDir m_folder;
    FakeFiles m_files;
};

void VideoThreadsTest::initTestCase()
{
    for (const char* name : {"CORV0001.MP4", "CORV0002.MP4", "other.mp4"}) {
        QFile file(path(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const auto fake = m_files.add(file.fileName());
        fake->size = QSize(128, 96);
        fake->frames = 200;
        fake->fps = 500.0;
    }
    QFile broken(path("broken.mp4"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
}

void VideoThreadsTest::doSomething(VideoPlayer& player, std::mt19937& random)
{
    const auto number = [&random](int below) {
        return static_cast<int>(random() % static_cast<unsigned>(below));
    };
    switch (number(21)) {
    case 0:
        player.setSource(path("CORV0001.MP4"));
        break;
    case 1:
        player.setSource(path("other.mp4"));
        break;
    case 2:
        player.setSource(path(number(2) ? "broken.mp4" : "missing.mp4"));
        break;
    case 3:
        player.close();
        break;
    case 4:
    case 5:
        player.play();
        break;
    case 6:
        player.pause();
        break;
    case 7:
    case 8:
        player.seekAtFrame(number(450) - 10);
        break;
    case 9:
        player.seekAtTime(timeAt(number(900)));
        break;
    case 10:
        player.setContrast(0.5 + number(10) / 10.0);
        break;
    case 11:
        player.setPlaySpeed(1 + number(5));
        break;
    case 12:
    case 13:
        player.getFrameAsync(timeAt(number(900)), [](const QImage& image) {
            if (!image.isNull() && image.width() != 128)
                qFatal("a picture of another size");
        });
        break;
    case 14:
        if (number(4) == 0)
            player.exportVideo(path("out.mp4"));
        else
            player.cancelExportVideo();
        break;
    case 15:
        player.goToTime(timeAt(number(900)));
        break;
    case 16:
        player.step(number(40) - 20);
        break;
    case 17:
        player.redraw();
        break;
    case 18:
        player.exportFrames(number(300), number(600), 5, m_folder.path(), "Frame");
        player.cancelExportFrames();
        break;
    case 19:
        player.forgetLastFrame();
        break;
    default:
        QCoreApplication::processEvents();
        break;
    }
}

void VideoThreadsTest::survivesCallsInAnyOrder_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 8; ++seed)
        QTest::addRow("%u", seed) << seed;
}

void VideoThreadsTest::survivesCallsInAnyOrder()
{
    QFETCH(unsigned, seed);
    std::mt19937 random(seed);
    VideoPlayer player(m_files.factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    for (int i = 0; i < 300; ++i)
        doSomething(player, random);
    player.cancelExportVideo();
    player.close();
    surface.numbers.clear();
    player.setSource(path("other.mp4"));
    QTRY_VERIFY(!surface.numbers.isEmpty());
    QVERIFY(player.seekAtFrame(123));
    QTRY_COMPARE(surface.lastNumber(), 123);
    QCOMPARE(player.source(), path("other.mp4"));
}

void VideoThreadsTest::survivesItsEndInTheMiddleOfAnything()
{
    for (unsigned round = 0; round < 200; ++round) {
        std::mt19937 random(round);
        VideoPlayer player(m_files.factory());
        RecordingSurface surface;
        player.setVideoSurface(&surface);
        player.setSource(path("CORV0001.MP4"));
        if (round % 3)
            QTRY_VERIFY(player.hasVideoOpened());
        for (unsigned i = 0; i < round % 13; ++i)
            doSomething(player, random);
    }
}

void VideoThreadsTest::aThreadWithoutAnEventLoopGetsPictures()
{
    VideoPlayer player(m_files.factory());
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    player.setSource(path("other.mp4"));
    QTRY_VERIFY(!opened.isEmpty());
    QList<int> numbers;
    std::thread asker([&player, &numbers] {
        for (int i = 0; i < 5; ++i) {
            auto answered = std::make_shared<QSemaphore>();
            auto number = std::make_shared<std::atomic<int>>(-2);
            player.getFrameAsync(timeAt(i * 20), [answered, number](const QImage& image) {
                *number = numberIn(image);
                answered->release();
            });
            answered->acquire();
            numbers << *number;
        }
    });
    asker.join();
    QCOMPARE(numbers, (QList<int>{0, 10, 20, 30, 40}));
}

void VideoThreadsTest::picturesForManyTasks()
{
    VideoPlayer player(m_files.factory());
    QSignalSpy opened(&player, &VideoPlayer::hasVideoOpenedChanged);
    player.setSource(path("other.mp4"));
    QTRY_VERIFY(!opened.isEmpty());
    auto answers = std::make_shared<std::atomic<int>>(0);
    std::vector<PoolTask> tasks;
    for (int i = 0; i < 20; ++i) {
        tasks.push_back(runOnPool([&player, answers, i] {
            while (!player.hasVideoOpened())
                QThread::yieldCurrentThread();
            player.getFrameAsync(timeAt(i * 2), [answers, i](const QImage& image) {
                *answers += numberIn(image) == i ? 1 : 0;
            });
        }));
    }
    for (const PoolTask& task : tasks)
        task.waitForDone();
    QTRY_COMPARE(answers->load(), 20);
}

void VideoThreadsTest::rangeCanBeReadWhileItIsWritten()
{
    VideoPlayer player(m_files.factory());
    RecordingSurface surface;
    player.setVideoSurface(&surface);
    player.setSource(path("CORV0001.MP4"));
    QTRY_VERIFY(player.hasVideoOpened());
    LogParser parser;
    player.setLogParser(&parser);
    player.setShowIR(true);
    player.play();
    while (surface.numbers.size() < 100) {
        player.updateLogData();
        parser.setManualLogTimeOffset(surface.numbers.size());
        QVERIFY(player.irDataMin() <= player.irDataMax());
        QCoreApplication::processEvents();
    }
}

QTEST_MAIN(VideoThreadsTest)
#include "VideoThreadsTest.moc"
