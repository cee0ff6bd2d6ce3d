#include "Support/TestVideo.h"
#include "Support/videoTruth.h"
#include "openVideo.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

using namespace corv;
using namespace corv::test;

namespace {

constexpr int madeFrames = 90;
constexpr double madeFps = 30.0;
constexpr double toleranceMs = 1.0;

QByteArray contentOf(const QString& file)
{
    QFile reader(file);
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

bool write(const QString& file, const QByteArray& content)
{
    QFile writer(file);
    return writer.open(QIODevice::WriteOnly) && writer.write(content) == content.size();
}

quint32 numberAt(const QByteArray& bytes, int place)
{
    return qFromBigEndian<quint32>(bytes.constData() + place);
}

void putNumber(QByteArray& bytes, int place, quint32 number)
{
    qToBigEndian(number, bytes.data() + place);
}

// Where the name of a box of a file's description is. The description comes after the pictures.
int placeOf(const QByteArray& bytes, const char* box)
{
    return bytes.indexOf(box, bytes.lastIndexOf("moov"));
}

} // namespace

/// Frames are exact where the lists in the head of an MP4 or MOV file lack something, or lead
/// through the packets in another order than that of the recording.
class ListedPacketsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void framesAreExactWithoutAListOfKeyframes_data();
    void framesAreExactWithoutAListOfKeyframes();
    void keyframesAreFoundWhereNoneAreListed();
    void aVideoOfKeyframesAloneNeedsNoList();
    void nothingIsLostAtTheSeamOfTwoParts_data();
    void nothingIsLostAtTheSeamOfTwoParts();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    bool make(const QString& name, const QStringList& encoding);
    bool makeWithoutKeyframes(const QString& name, const QStringList& encoding, bool isListEmpty);
    bool cutIntoParts(const QString& name, int first, int second, int frames);
    QString wrongFrame(FrameSource& source, const std::vector<int>& numbers) const;

    QTemporaryDir m_folder;
    QString m_lossless;
    QSize m_size{160, 120};
};

void ListedPacketsTest::initTestCase()
{
    m_lossless = path("lossless.mkv");
    QVERIFY((TestVideo{madeFrames, "30", m_size, 0, {"-c:v", "ffv1"}}.write(m_lossless)));
}

bool ListedPacketsTest::make(const QString& name, const QStringList& encoding)
{
    return runFfmpeg(QStringList{"-i", m_lossless} + encoding + QStringList{path(name)});
}

bool ListedPacketsTest::makeWithoutKeyframes(const QString& name, const QStringList& encoding,
                                             bool isListEmpty)
{
    if (!make(name, encoding))
        return false;
    QByteArray content = contentOf(path(name));
    const int list = placeOf(content, "stss");
    if (list < 0)
        return false;
    if (isListEmpty)
        putNumber(content, list + 8, 0);
    else
        content.replace(list, 4, "free");
    return write(path(name), content);
}

// Leaves two parts of a video, each of so many frames, in this order.
bool ListedPacketsTest::cutIntoParts(const QString& name, int first, int second, int frames)
{
    QByteArray content = contentOf(path(name));
    const int head = placeOf(content, "mvhd");
    const int media = placeOf(content, "mdhd");
    const int list = placeOf(content, "elst");
    if (head < 0 || media < 0 || list < 0 || numberAt(content, list + 8) != 1)
        return false;
    const quint32 duration = numberAt(content, head + 16) * static_cast<quint32>(frames) / 30;
    const auto timeOf = [&, start = numberAt(content, list + 16)](int frame) {
        return start + numberAt(content, media + 16) * static_cast<quint32>(frame) / 30;
    };
    putNumber(content, list + 8, 2);
    putNumber(content, list + 12, duration);
    putNumber(content, list + 16, timeOf(first));
    QByteArray entry(12, '\0');
    putNumber(entry, 0, duration);
    putNumber(entry, 4, timeOf(second));
    putNumber(entry, 8, numberAt(content, list + 20));
    content.insert(list + 24, entry);
    for (const char* box : {"moov", "trak", "edts", "elst"}) {
        const int size = placeOf(content, box) - 4;
        putNumber(content, size, numberAt(content, size) + 12);
    }
    return write(path(name), content);
}

// Reads forwards, backwards and in any order. What is wrong first; nothing if all is as it should.
QString ListedPacketsTest::wrongFrame(FrameSource& source, const std::vector<int>& numbers) const
{
    if (source.frameCount() != static_cast<int>(numbers.size()))
        return QString("%1 frames").arg(source.frameCount());
    std::vector<int> order(numbers.size());
    std::iota(order.begin(), order.end(), 0);
    for (int round = 0; round < 3; ++round) {
        for (const int wanted : order) {
            Frame frame;
            if (round > 0 && !source.seekToFrame(wanted))
                return QString("no seek to %1").arg(wanted);
            if (source.read(frame) != ReadOutcome::frame)
                return QString("no frame %1 in round %2").arg(wanted).arg(round);
            cv::Mat picture;
            toBgr(frame, picture);
            const int number = readFrameNumber(picture);
            const double wantedMs = wanted * 1000.0 / madeFps;
            if (frame.index != wanted || number != numbers[static_cast<size_t>(wanted)] ||
                std::abs(frame.timeMs - wantedMs) > toleranceMs)
                return QString("%1 at %2 ms with number %3 for %4 in round %5")
                    .arg(frame.index)
                    .arg(frame.timeMs)
                    .arg(number)
                    .arg(wanted)
                    .arg(round);
        }
        if (round == 0)
            std::reverse(order.begin(), order.end());
        else
            std::shuffle(order.begin(), order.end(), std::mt19937(5));
    }
    return {};
}

void ListedPacketsTest::framesAreExactWithoutAListOfKeyframes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("encoding");
    const QStringList h264{"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                           "3",    "-g",      "24",      "-pix_fmt",  "yuv420p"};
    const QStringList hevc{"-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};
    QTest::newRow("h264") << "a.mp4" << h264;
    QTest::newRow("h264, open groups")
        << "a.mov" << h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"};
    QTest::newRow("h264, one group") << "a.mp4" << h264 + QStringList{"-g", "250"};
    QTest::newRow("hevc") << "a.mp4"
                          << hevc + QStringList{"-x265-params", "log-level=none:keyint=24"};
    QTest::newRow("hevc, open groups")
        << "a.mov"
        << hevc + QStringList{"-x265-params", "log-level=none:keyint=24:open-gop=1:bframes=4"};
    QTest::newRow("mpeg-4") << "a.mp4"
                            << QStringList{"-c:v", "mpeg4", "-bf", "2", "-q:v", "3", "-g", "15"};
}

// Without the list every packet counts as a keyframe, and with an empty one the first alone.
void ListedPacketsTest::framesAreExactWithoutAListOfKeyframes()
{
    QFETCH(QString, name);
    QFETCH(QStringList, encoding);
    std::vector<int> numbers(madeFrames);
    std::iota(numbers.begin(), numbers.end(), 0);
    for (const bool isListEmpty : {false, true}) {
        QVERIFY(makeWithoutKeyframes(name, encoding, isListEmpty));
        const auto source = openVideo(path(name));
        QVERIFY(source);
        QCOMPARE(wrongFrame(*source, numbers), QString());
    }
}

void ListedPacketsTest::keyframesAreFoundWhereNoneAreListed()
{
    const QStringList encoding{"-c:v", "libx264",       "-preset", "ultrafast", "-bf",    "0", "-g",
                               "24",   "-sc_threshold", "0",       "-pix_fmt",  "yuv420p"};
    QVERIFY(makeWithoutKeyframes("a.mp4", encoding, false));
    const auto source = openVideo(path("a.mp4"));
    QVERIFY(source);
    QCOMPARE(source->nearestKeyframe(23), 0);
    QCOMPARE(source->nearestKeyframe(24), 24);
    QCOMPARE(source->nearestKeyframe(89), 72);
}

void ListedPacketsTest::aVideoOfKeyframesAloneNeedsNoList()
{
    QVERIFY(make("a.mp4",
                 {"-c:v", "libx264", "-preset", "ultrafast", "-g", "1", "-pix_fmt", "yuv420p"}));
    QVERIFY(placeOf(contentOf(path("a.mp4")), "stss") < 0);
    const auto source = openVideo(path("a.mp4"));
    QVERIFY(source);
    QVERIFY(source->isIndexReady());
    QCOMPARE(source->nearestKeyframe(37), 37);
}

void ListedPacketsTest::nothingIsLostAtTheSeamOfTwoParts_data()
{
    QTest::addColumn<QStringList>("encoding");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    const QStringList h264{"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                           "3",    "-g",      "24",      "-pix_fmt",  "yuv420p"};
    const QStringList hevc{"-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};
    const QStringList closed{"-x265-params", "log-level=none:keyint=24:scenecut=0:open-gop=0"};
    const QStringList open{"-x265-params",
                           "log-level=none:keyint=24:scenecut=0:open-gop=1:bframes=4"};
    QTest::newRow("h264") << h264 << 5 << 53;
    QTest::newRow("h264, open groups")
        << h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"} << 5 << 53;
    QTest::newRow("h264, at another place between b-frames") << h264 << 5 << 55;
    QTest::newRow("hevc") << hevc + closed << 5 << 53;
    QTest::newRow("hevc, at another place between b-frames") << hevc + open << 5 << 54;
    QTest::newRow("hevc, the other way round") << hevc + open << 54 << 5;
    QTest::newRow("hevc, open groups") << hevc + open << 5 << 53;
    QTest::newRow("hevc, the same group again") << hevc + open << 5 << 20;
    QTest::newRow("hevc, the later part first") << hevc + open << 53 << 5;
    QTest::newRow("h264, the later part first") << h264 << 53 << 5;
    QTest::newRow("h264, one group") << h264 + QStringList{"-g", "250"} << 5 << 55;
    QTest::newRow("h264, one group from its beginning")
        << h264 + QStringList{"-g", "250"} << 0 << 60;
    QTest::newRow("mpeg-4, one group")
        << QStringList{"-c:v", "mpeg4", "-q:v", "3", "-g", "250"} << 0 << 60;
}

// Both parts are cut out of the middle of groups of pictures.
void ListedPacketsTest::nothingIsLostAtTheSeamOfTwoParts()
{
    QFETCH(QStringList, encoding);
    QFETCH(int, first);
    QFETCH(int, second);
    constexpr int partFrames = 30;
    QVERIFY(make("a.mp4", encoding));
    QVERIFY(cutIntoParts("a.mp4", first, second, partFrames));
    std::vector<int> numbers(size_t(2) * partFrames);
    std::iota(numbers.begin(), numbers.begin() + partFrames, first);
    std::iota(numbers.begin() + partFrames, numbers.end(), second);
    const auto source = openVideo(path("a.mp4"));
    QVERIFY(source);
    QCOMPARE(wrongFrame(*source, numbers), QString());
}

QTEST_GUILESS_MAIN(ListedPacketsTest)
#include "ListedPacketsTest.moc"
