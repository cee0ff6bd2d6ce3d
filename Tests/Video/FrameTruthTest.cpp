#include "Support/FieldVideo.h"
#include "Support/TestVideo.h"
#include "Support/trustRow.h"
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

constexpr double toleranceMs = 1.0;

} // namespace

/// Every frame of every kind of file that a camera or a program may write is the one asked for, by
/// number and by time, forwards, backwards and in any order. Judged by the numbers in the pixels
/// and by the times that another program reads from the file.
class FrameTruthTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFrameIsTheOneAskedFor_data();
    void everyFrameIsTheOneAskedFor();
    void aMirroredPictureIsShownMirrored_data();
    void aMirroredPictureIsShownMirrored();
    void aStreamCutInAGroupBeginsAtAKeyframe_data();
    void aStreamCutInAGroupBeginsAtAKeyframe();
    void timesGoOnWhereAClockBeginsAnew_data();
    void timesGoOnWhereAClockBeginsAnew();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    bool make(const QString& file, const QStringList& options, const QStringList& encoding);

    QTemporaryDir m_folder;
    QString m_fields;   // a bare stream of 60 frames, 25 a second, each of two fields
    QString m_lossless; // 90 frames, 30 a second: what the files are made from
    QSize m_size{160, 120};
    QSize m_fieldSize{160, 128};
};

void FrameTruthTest::initTestCase()
{
    m_lossless = path("lossless.mkv");
    QVERIFY((TestVideo{90, "30", m_size, 0, {"-c:v", "ffv1"}}.write(m_lossless)));
    m_fields = path("fields.h264");
    QVERIFY(writeFieldPairs(m_fields, 60, m_fieldSize));
}

bool FrameTruthTest::make(const QString& file, const QStringList& options,
                          const QStringList& encoding)
{
    if (options.value(0) == "fields")
        return runFfmpeg(QStringList{"-framerate", "50", "-i", m_fields, "-c", "copy", "-bsf:v"} +
                         encoding + QStringList{file});
    return runFfmpeg(QStringList{"-i", m_lossless} + options + encoding + QStringList{file});
}

void FrameTruthTest::everyFrameIsTheOneAskedFor_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("encoding");
    QTest::addColumn<QStringList>("remux"); // a second pass that copies the packets
    QTest::addColumn<int>("rotation");
    const QStringList h264{"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                           "3",    "-g",      "24",      "-pix_fmt",  "yuv420p"};
    const QStringList hevc{"-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};
    const QStringList vfr{"-vsync", "vfr"};
    const auto row = [](const char* title, const QString& name, const QStringList& options,
                        const QStringList& encoding, const QStringList& remux = {},
                        int rotation = 0) {
        QTest::newRow(title) << name << options << encoding << remux << rotation;
    };
    row("b-frames", "a.mp4", {}, h264);
    row("long group", "a.mov", {}, h264 + QStringList{"-g", "250"});
    row("open groups", "a.mp4", {}, h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"});
    row("open groups, the last one short", "a.mp4", {"-frames:v", "67"},
        h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"});
    row("open groups, the last one of three", "a.mkv", {"-frames:v", "63"},
        h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"});
    row("keyframes spread over many", "a.mp4", {},
        h264 + QStringList{"-x264-params", "intra-refresh=1:keyint=20:bframes=0"});
    row("keyframes spread over more than a group", "a.mp4", {},
        h264 + QStringList{"-x264-params", "intra-refresh=1:keyint=12:bframes=2"});
    row("hevc", "a.mp4", {}, hevc + QStringList{"-x265-params", "log-level=none:keyint=24"});
    row("hevc, open groups", "a.mp4", {},
        hevc + QStringList{"-x265-params", "log-level=none:keyint=24:open-gop=1:bframes=4"});
    row("mpeg-4 with b-frames", "a.mp4", {}, {"-c:v", "mpeg4", "-bf", "2", "-q:v", "3"});
    row("motion jpeg", "a.avi", {}, {"-c:v", "mjpeg", "-q:v", "3", "-pix_fmt", "yuvj420p"});
    row("mpeg-4 in avi", "a.avi", {}, {"-c:v", "mpeg4", "-q:v", "3"});
    row("vp9", "a.mp4", {},
        {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-pix_fmt", "yuv420p"});
    row("prores 4:2:2 of 10 bits", "a.mov", {}, {"-c:v", "prores_ks"});
    row("h264 4:2:2 of 10 bits", "a.mp4", {}, h264 + QStringList{"-pix_fmt", "yuv422p10le"});
    row("fields", "a.mp4", {},
        h264 + QStringList{"-flags", "+ildct+ilme", "-x264-params", "tff=1"});
    row("29.97", "a.mp4", {"-vf", "setpts=N*1001/30000/TB", "-r", "30000/1001"}, h264);
    row("every tenth dropped", "a.mp4", {"-vf", "select='mod(n,10)'"}, vfr + h264);
    row("a gap of 40", "a.mp4", {"-vf", "select='lt(n,20)+gt(n,60)'"}, vfr + h264);
    row("the rate halves", "a.mp4", {"-vf", "select='lt(n,40)+mod(n,2)'"}, vfr + h264);
    row("jitter", "a.mp4", {"-vf", "settb=1/90000,setpts='N*3000+random(1)*2000'"},
        QStringList{"-vsync", "passthrough", "-enc_time_base", "1/90000"} + h264);
    // Two and more frames at one time, which cut through groups of B-frames.
    for (const char* name : {"a.mp4", "a.mkv"})
        row(qPrintable(QStringLiteral("equal times in %1").arg(name)), name,
            {"-vf", "settb=1/1000,setpts='floor(N*3/5)*56'"},
            QStringList{"-vsync", "passthrough", "-enc_time_base", "1/1000"} + h264);
    row("frames twice", "a.mp4", {"-r", "45"}, h264);
    row("fragments", "a.mp4", {}, h264 + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    row("head first", "a.mp4", {}, h264 + QStringList{"-movflags", "+faststart"});
    row("negative offsets", "a.mp4", {}, h264 + QStringList{"-movflags", "negative_cts_offsets"});
    row("an edit list", "a.mp4", {}, h264, {"-ss", "0.9"});
    row("an empty edit", "a.mp4", {}, h264, {"-itsoffset", "1.5"});
    row("a later start", "a.mov", {}, h264 + QStringList{"-output_ts_offset", "3.7"});
    row("3gp", "a.3gp", {}, h264);
    row("matroska", "a.mkv", {}, h264);
    row("transport stream", "a.ts", {}, h264);
    row("transport stream, dropped frames", "a.ts", {"-vf", "select='mod(n,10)'"}, vfr + h264);
    row("transport stream, jitter", "a.ts", {"-vf", "settb=1/90000,setpts='N*3000+random(1)*2000'"},
        QStringList{"-vsync", "passthrough", "-enc_time_base", "1/90000"} + h264);
    // 33 bits of 90 kHz end 1.5 s into the file.
    row("transport stream with a wrap", "a.ts", {},
        h264 + QStringList{"-output_ts_offset", "95440.8"});
    row("transport stream, open groups", "a.ts", {},
        h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"});
    row("hevc in a transport stream", "a.ts", {},
        hevc + QStringList{"-x265-params", "log-level=none:keyint=24:open-gop=1:bframes=4"});
    row("mpeg-2 of fields in a transport stream", "a.ts", {},
        {"-c:v", "mpeg2video", "-bf", "2", "-q:v", "3", "-flags", "+ildct+ilme"});
    row("small frames in a programme stream", "a.mpg", {},
        {"-c:v", "mpeg2video", "-bf", "2", "-q:v", "3", "-g", "12"});
    row("matroska, dropped frames", "a.mkv", {"-vf", "select='mod(n,10)'"}, vfr + h264);
    row("matroska, the rate halves", "a.mkv", {"-vf", "select='lt(n,40)+mod(n,2)'"}, vfr + h264);
    row("matroska, jitter", "a.mkv", {"-vf", "settb=1/1000,setpts='N*33+random(1)*20'"},
        QStringList{"-vsync", "passthrough", "-enc_time_base", "1/1000"} + h264);
    row("matroska, a later start", "a.mkv", {}, h264 + QStringList{"-output_ts_offset", "3.7"});
    row("matroska, cut without coding", "a.mkv", {}, h264, {"-ss", "0.9"});
    row("matroska, hevc cut at an open group", "a.mkv", {},
        hevc + QStringList{"-x265-params", "log-level=none:keyint=24:open-gop=1:bframes=4"},
        {"-ss", "1.9"});
    row("vp8", "a.mkv", {}, {"-c:v", "libvpx", "-deadline", "realtime", "-cpu-used", "8"});
    row("vp9 with hidden frames", "a.mkv", {},
        {"-c:v", "libvpx-vp9", "-cpu-used", "8", "-auto-alt-ref", "1", "-lag-in-frames", "16"});
    row("mpeg-4 with b-frames in avi", "a.avi", {}, {"-c:v", "mpeg4", "-bf", "2", "-q:v", "3"});
    row("h264 with b-frames in avi", "a.avi", {}, h264);
    row("h264 with open groups in avi", "a.avi", {},
        h264 + QStringList{"-x264-params", "open-gop=1:keyint=20"});
    row("uncompressed in avi", "a.avi", {}, {"-c:v", "rawvideo", "-pix_fmt", "bgr24"});
    row("dropped frames in avi", "a.avi", {"-vf", "select='mod(n,10)'"},
        {"-vsync", "vfr", "-c:v", "mjpeg", "-q:v", "3", "-pix_fmt", "yuvj420p"});
    const QStringList aGap{"-vf", "select='mod(n,11)*not(between(n,40,47))'", "-vsync", "vfr"};
    row("dropped frames in avi, mpeg-4 with b-frames", "a.avi", aGap,
        {"-c:v", "mpeg4", "-bf", "2", "-q:v", "3", "-g", "20"});
    row("dropped frames in avi, h264 with b-frames", "a.avi", aGap, h264);
    row("mpeg-4 with two pictures in a packet, in avi", "a.avi", {},
        {"-c:v", "libxvid", "-bf", "2", "-q:v", "3", "-g", "20"});
    row("red, green and blue", "a.mov", {}, {"-c:v", "qtrle", "-pix_fmt", "rgb24"});
    row("grey", "a.mkv", {}, {"-c:v", "ffv1", "-pix_fmt", "gray"});
    row("4:1:0", "a.mkv", {}, {"-c:v", "ffv1", "-pix_fmt", "yuv410p"});
    row("4:4:4 of 12 bits", "a.mkv", {}, {"-c:v", "ffv1", "-pix_fmt", "yuv444p12"});
    row("h264 4:2:2 of 10 bits, a transport stream", "a.ts", {},
        h264 + QStringList{"-pix_fmt", "yuv422p10le"});
    row("hevc of 10 bits", "a.mov", {},
        hevc + QStringList{"-pix_fmt", "yuv420p10le", "-x265-params", "log-level=none:keyint=24"});
    const QStringList everyField{"setts=ts=N*1800:time_base=1/90000"};
    row("field by field in a transport stream", "a.ts", {"fields"}, everyField);
    row("field by field with a wrap", "a.ts", {"fields"},
        {"setts=ts=95441*90000+N*1800:time_base=1/90000"});
    row("field by field in matroska", "a.mkv", {"fields"}, everyField);
    row("field by field", "a.mp4", {"fields"}, everyField);
    row("hevc of fields", "a.mp4", {},
        hevc + QStringList{"-x265-params", "log-level=none:keyint=24:interlace=tff"});
    row("a gap in fragments", "a.mp4", {"-vf", "select='lt(n,20)+gt(n,60)'"},
        vfr + h264 + QStringList{"-movflags", "frag_keyframe+empty_moov"});
    row("negative times", "a.mp4", {}, h264, {"-itsoffset", "-0.5"});
    row("frames far apart", "a.mp4", {"-vf", "select='not(mod(n,30))'"}, vfr + h264);
    row("one frame", "a.mp4", {"-frames:v", "1"}, h264);
    row("turned by 90", "a.mp4", {}, h264, {"-metadata:s:v:0", "rotate=270"}, 90);
    row("turned by 180", "a.mp4", {}, h264, {"-metadata:s:v:0", "rotate=180"}, 180);
    row("turned by 270", "a.mp4", {}, h264, {"-metadata:s:v:0", "rotate=90"}, 270);
}

void FrameTruthTest::everyFrameIsTheOneAskedFor()
{
    QFETCH(QString, name);
    QFETCH(QStringList, options);
    QFETCH(QStringList, encoding);
    QFETCH(QStringList, remux);
    QFETCH(int, rotation);
    QString file = path(name);
    QVERIFY(make(file, options, encoding));
    if (!remux.isEmpty()) {
        const QString second = path(QStringLiteral("second-") + name);
        QVERIFY(runFfmpeg(remux.first() == "-metadata:s:v:0"
                              ? QStringList{"-i", file, "-c", "copy"} + remux + QStringList{second}
                              : remux + QStringList{"-i", file, "-c", "copy", second}));
        file = second;
    }
    const std::vector<double> times = trueTimes(file);
    const QSize size = options.value(0) == "fields" ? m_fieldSize : m_size;
    const std::vector<int> numbers = trueNumbers(file, size);
    const int frames = static_cast<int>(numbers.size());
    QVERIFY(frames > 0);
    QCOMPARE(times.size(), numbers.size());

    const auto source = openVideo(file);
    QVERIFY(source);
    QCOMPARE(source->frameCount(), frames);
    QCOMPARE(source->size(), rotation % 180 ? size.transposed() : size);
    for (int i = 0; i < frames; ++i) {
        const double trueMs = times[static_cast<size_t>(i)];
        QVERIFY(std::isnan(trueMs) || std::abs(source->frameTimeMs(i) - trueMs) <= toleranceMs);
        const Shown shown = readShown(*source, rotation);
        QCOMPARE(shown.index, i);
        QCOMPARE(shown.number, numbers[static_cast<size_t>(i)]);
    }
    Frame none;
    QVERIFY(source->read(none) == ReadOutcome::end);

    const auto other = source->clone();
    QVERIFY(other);
    int asked = frames;
    for (int i = frames - 1; i >= 0; i -= 1 + i % 3) {
        ++asked;
        QVERIFY(other->seekToFrame(i));
        QCOMPARE(readShown(*other, rotation).number, numbers[static_cast<size_t>(i)]);
    }
    std::vector<int> order(numbers.size());
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    order.resize(std::min<size_t>(order.size(), 40));
    for (const int i : order) {
        const double timeMs = source->frameTimeMs(i);
        QVERIFY(source->seekToTime(std::floor(timeMs)));
        const Shown shown = readShown(*source, rotation);
        QVERIFY(shown.index >= 0);
        // Of frames that one millisecond has together, any.
        QVERIFY(std::abs(source->frameTimeMs(shown.index) - timeMs) < 1.0);
        QCOMPARE(shown.number, numbers[static_cast<size_t>(shown.index)]);
    }
    trustRow(QStringLiteral("Wrong frames, asked forwards, backwards and by time"),
             QString::fromUtf8(QTest::currentDataTag()),
             QStringLiteral("0 of %1").arg(asked + static_cast<int>(order.size())));
}

void FrameTruthTest::aMirroredPictureIsShownMirrored_data()
{
    QTest::addColumn<QList<int>>("matrix"); // where right and down of the picture point to
    QTest::addColumn<int>("rotation");      // clockwise, before left and right change places
    QTest::newRow("left and right") << QList<int>{-1, 0, 0, 1} << 0;
    QTest::newRow("above and below") << QList<int>{1, 0, 0, -1} << 180;
    QTest::newRow("along the diagonal") << QList<int>{0, 1, 1, 0} << 90;
    QTest::newRow("across the diagonal") << QList<int>{0, -1, -1, 0} << 270;
}

// As a camera that looks at its own mirror or hangs below its carrier writes it.
void FrameTruthTest::aMirroredPictureIsShownMirrored()
{
    QFETCH(QList<int>, matrix);
    QFETCH(int, rotation);
    for (const QString format : {"yuv420p", "yuv422p10le"}) { // as decoded, and converted
        const QString name = path("mirrored.mp4");
        QVERIFY(make(name, {"-frames:v", "20"},
                     {"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", format}));
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QByteArray bytes = file.readAll();
        const int header = bytes.indexOf("tkhd");
        QVERIFY(header > 0);
        constexpr int matrixOffset = 44;
        constexpr int entries[]{0, 1, 3, 4};
        for (int i = 0; i < 4; ++i)
            qToBigEndian<qint32>(matrix[i] * 0x10000,
                                 bytes.data() + header + matrixOffset + entries[i] * 4);
        QVERIFY(file.seek(0) && file.write(bytes) == bytes.size());
        file.close();

        const auto source = openVideo(name);
        QVERIFY(source);
        QCOMPARE(source->frameCount(), 20);
        QCOMPARE(source->size(), rotation % 180 ? m_size.transposed() : m_size);
        for (int i = 0; i < 20; ++i) {
            cv::Mat picture = readPicture(*source);
            QVERIFY(!picture.empty());
            cv::flip(picture, picture, 1);
            QCOMPARE(readFrameNumber(turnedBack(picture, rotation)), i);
        }
    }
}

void FrameTruthTest::aStreamCutInAGroupBeginsAtAKeyframe_data()
{
    QTest::addColumn<QStringList>("encoding");
    const QStringList hevc{"-c:v",     "libx265", "-preset",     "ultrafast",
                           "-pix_fmt", "yuv420p", "-x265-params"};
    QTest::newRow("hevc") << hevc + QStringList{"log-level=none:keyint=24:bframes=3"};
    QTest::newRow("hevc, open groups")
        << hevc + QStringList{"log-level=none:keyint=24:open-gop=1:bframes=4"};
    QTest::newRow("h264, open groups")
        << QStringList{"-c:v",     "libx264", "-preset",      "veryfast",
                       "-pix_fmt", "yuv420p", "-x264-params", "open-gop=1:keyint=24"};
    QTest::newRow("mpeg-2") << QStringList{"-c:v", "mpeg2video", "-bf",  "2",
                                           "-g",   "15",         "-q:v", "3"};
    QTest::newRow("mpeg-4") << QStringList{"-c:v", "mpeg4", "-bf", "2", "-g", "15", "-q:v", "3"};
}

// The first part of what a recorder wrote on a ring of memory is gone. What is left of its group is
// built on pictures that nobody has.
void FrameTruthTest::aStreamCutInAGroupBeginsAtAKeyframe()
{
    QFETCH(QStringList, encoding);
    QVERIFY(make(path("whole.ts"), {}, encoding));
    QFile whole(path("whole.ts"));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    constexpr int packetBytes = 188;
    const int packets = bytes.size() / packetBytes;
    for (int cut = packets / 16; cut < packets / 2; cut += packets / 16) {
        QFile rest(path("rest.ts"));
        QVERIFY(rest.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QVERIFY(rest.write(bytes.mid(cut * packetBytes)) > 0);
        rest.close();
        const auto source = openVideo(rest.fileName());
        QVERIFY(source);
        const int frames = source->frameCount();
        const int firstNumber = 90 - frames;
        for (int i = 0; i < frames; ++i)
            QCOMPARE(readShown(*source).number, firstNumber + i);
        QCOMPARE(readShown(*source).index, -1);
        for (int i = frames - 1; i >= 0; i -= 5) {
            QVERIFY(source->seekToFrame(i));
            QCOMPARE(readShown(*source).number, firstNumber + i);
        }
    }
}

void FrameTruthTest::timesGoOnWhereAClockBeginsAnew_data()
{
    QTest::addColumn<QStringList>("starts");    // of the second and the third part, in seconds
    QTest::addColumn<QList<double>>("shownMs"); // the starts of all parts
    QTest::newRow("at the same time") << QStringList{"0", "0"} << QList<double>{0, 1000, 2000};
    QTest::newRow("hours later, and back")
        << QStringList{"9000", "100"} << QList<double>{0, 1000, 2000};
    QTest::newRow("earlier each time")
        << QStringList{"-0.6", "-1.2"} << QList<double>{0, 1000, 2000};
    // The first part is written two frames later, so that no time of decoding is below 0.
    constexpr double lateMs = 2000.0 / 30.0;
    QTest::newRow("after pauses") << QStringList{"600", "603"}
                                  << QList<double>{0, 600000 - lateMs, 603000 - lateMs};
    QTest::newRow("where it was") << QStringList{"1.066667", "2.066667"}
                                  << QList<double>{0, 1000, 2000};
}

// A recorder that starts again writes on into the same transport stream.
void FrameTruthTest::timesGoOnWhereAClockBeginsAnew()
{
    QFETCH(QStringList, starts);
    QFETCH(QList<double>, shownMs);
    starts.prepend("0");
    QFile whole(path("clocks.ts"));
    QVERIFY(whole.open(QIODevice::WriteOnly | QIODevice::Truncate));
    for (int part = 0; part < 3; ++part) {
        const QString piece = path(QString("clock%1.ts").arg(part));
        QVERIFY(make(piece,
                     {"-vf", QString("select='between(n,%1,%2)',setpts=N/30/TB")
                                 .arg(part * 30)
                                 .arg(part * 30 + 29)},
                     {"-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-g", "12",
                      "-output_ts_offset", starts[part]}));
        QFile bytes(piece);
        QVERIFY(bytes.open(QIODevice::ReadOnly));
        QVERIFY(whole.write(bytes.readAll()) > 0);
    }
    whole.close();

    const auto trueMs = [&](int frame) { return shownMs[frame / 30] + frame % 30 * 1000.0 / 30.0; };
    const auto source = openVideo(path("clocks.ts"));
    QVERIFY(source);
    QCOMPARE(source->frameCount(), 90);
    QVERIFY(std::abs(source->durationMs() - trueMs(89) - 1000.0 / 30.0) <= toleranceMs);
    std::vector<int> order(90);
    std::iota(order.begin(), order.end(), 0);
    for (int round = 0; round < 2; ++round) {
        for (const int i : order) {
            QVERIFY(source->seekToTime(trueMs(i)));
            const Shown shown = readShown(*source);
            QCOMPARE(shown.number, i);
            QVERIFY(std::abs(shown.timeMs - trueMs(i)) <= toleranceMs);
        }
        std::shuffle(order.begin(), order.end(), std::mt19937(11));
    }
}

QTEST_GUILESS_MAIN(FrameTruthTest)
#include "FrameTruthTest.moc"
