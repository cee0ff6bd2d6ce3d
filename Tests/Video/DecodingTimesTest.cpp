#include "Support/TestVideo.h"
#include "Support/videoTruth.h"
#include "openVideo.h"

#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <vector>

using namespace corv;
using namespace corv::test;

/// Some programs write into a file, as the times at which frames are shown, those at which they are
/// decoded. Where frames are decoded in another order than they are shown, the frames say so, and
/// each one has its time all the same.
class DecodingTimesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFrameIsShownAtItsTime_data();
    void everyFrameIsShownAtItsTime();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QString m_lossless; // 90 frames, 30 a second: what the files are made from
    QSize m_size{160, 120};
};

void DecodingTimesTest::initTestCase()
{
    m_lossless = path("lossless.mkv");
    QVERIFY((TestVideo{90, "30", m_size, 0, {"-c:v", "ffv1"}}.write(m_lossless)));
}

void DecodingTimesTest::everyFrameIsShownAtItsTime_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("encoding");
    const QStringList h264{"-c:v", "libx264", "-preset", "veryfast", "-g", "24", "-bf"};
    const QStringList pyramid{"7", "-x264-params", "b-pyramid=normal:b-adapt=0"};
    const QStringList hevc{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params"};
    QTest::newRow("in the order of the file") << "a.mp4" << h264 + QStringList{"0"};
    QTest::newRow("two between") << "a.mp4" << h264 + QStringList{"2"};
    QTest::newRow("many between, on each other") << "a.mp4" << h264 + pyramid;
    QTest::newRow("open groups") << "a.mov"
                                 << h264 + QStringList{"3", "-x264-params", "open-gop=1"};
    QTest::newRow("dropped frames")
        << "a.mp4" << QStringList{"-vf", "select='mod(n,7)'", "-vsync", "vfr"} + h264 + pyramid;
    QTest::newRow("fragments") << "a.mp4"
                               << h264 + QStringList{"2", "-movflags", "frag_keyframe+empty_moov"};
    QTest::newRow("hevc") << "a.mp4" << hevc + QStringList{"log-level=none:keyint=24:bframes=3"};
    QTest::newRow("hevc, open groups")
        << "a.mp4" << hevc + QStringList{"log-level=none:keyint=24:open-gop=1:bframes=4"};
    QTest::newRow("hevc, pictures before each keyframe")
        << "a.mp4" << hevc + QStringList{"log-level=none:keyint=24:bframes=4:radl=2"};
    QTest::newRow("mpeg-4") << "a.mp4"
                            << QStringList{"-c:v", "mpeg4", "-bf", "2", "-g", "24", "-q:v", "3"};
    QTest::newRow("matroska") << "a.mkv" << h264 + QStringList{"2"};
    QTest::newRow("transport stream") << "a.ts" << h264 + QStringList{"2"};
}

void DecodingTimesTest::everyFrameIsShownAtItsTime()
{
    QFETCH(QString, name);
    QFETCH(QStringList, encoding);
    const QString right = path("right-" + name);
    const QString file = path(name);
    QVERIFY(runFfmpeg(QStringList{"-i", m_lossless} + encoding +
                      QStringList{"-pix_fmt", "yuv420p", right}));
    QVERIFY(runFfmpeg({"-i", right, "-c", "copy", "-bsf:v", "setts=ts=DTS-STARTDTS", file}));
    const std::vector<double> times = trueTimes(right);
    const std::vector<int> numbers = trueNumbers(right, m_size);
    QCOMPARE(times.size(), numbers.size());

    const auto source = openVideo(file);
    QVERIFY(source);
    const int frames = static_cast<int>(numbers.size());
    QCOMPARE(source->frameCount(), frames);
    for (int i = 0; i < frames; ++i) {
        QCOMPARE(readNumber(*source), numbers[static_cast<size_t>(i)]);
        QCOMPARE(source->nextFrame(), i + 1);
        QVERIFY(std::abs(source->frameTimeMs(i) - times[static_cast<size_t>(i)]) <= 1.0);
    }
    for (int i = frames - 1; i >= 0; i -= 1 + i % 3) {
        QVERIFY(source->seekToTime(std::floor(source->frameTimeMs(i))));
        QCOMPARE(readNumber(*source), numbers[static_cast<size_t>(i)]);
    }
}

QTEST_GUILESS_MAIN(DecodingTimesTest)
#include "DecodingTimesTest.moc"
