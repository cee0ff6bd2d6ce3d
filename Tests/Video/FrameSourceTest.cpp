#include "Support/FieldVideo.h"
#include "Support/TestVideo.h"
#include "openVideo.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <random>

using namespace corv;
using namespace corv::test;

namespace {

const QStringList h264{"-c:v", "libx264", "-preset",  "ultrafast",
                       "-bf",  "3",       "-pix_fmt", "yuv420p"};

QStringList h264With(const QStringList& more)
{
    return h264 + more;
}

} // namespace

class FrameSourceTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFrameIsTheOneAskedFor_data();
    void everyFrameIsTheOneAskedFor();
    void countIsWhatArrives_data();
    void countIsWhatArrives();
    void aVariableRateIsExact_data();
    void aVariableRateIsExact();
    void sidesAreCroppedToEven_data();
    void sidesAreCroppedToEven();
    void aTurnedVideoKeepsItsTurnedSize();
    void framesOfTwoPacketsHaveTheRateOfFrames();
    void onePictureIsAVideo();
    void stepsAheadAndBackAreExact();
    void seeksInAProgrammeStreamAreExact();
    void aListOfKeyframesNeedNotBeginAtTheFirst();
    void whatIsNoVideoDoesNotOpen_data();
    void whatIsNoVideoDoesNotOpen();
    void cloneIsAtTheStartAndIndependent();
    void aVanishedFileIsStillReadButNotCloned();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void FrameSourceTest::everyFrameIsTheOneAskedFor_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("fps");
    QTest::addColumn<QStringList>("encoding");
    QTest::newRow("h264 gop 30") << "mp4" << 150 << "30" << h264With({"-g", "30"});
    QTest::newRow("h264 gop 250") << "mp4" << 400 << "30" << h264With({"-g", "250"});
    QTest::newRow("h264 gop 250 60 fps") << "mov" << 300 << "60" << h264With({"-g", "250"});
    QTest::newRow("h264 25 fps") << "mov" << 120 << "25" << h264With({"-g", "30"});
    QTest::newRow("h264 29.97 fps") << "mp4" << 200 << "30000/1001" << h264With({"-g", "30"});
    QTest::newRow("h264 23.976 fps") << "mp4" << 120 << "24000/1001" << h264With({"-g", "60"});
    QTest::newRow("h264 59.94 fps") << "mp4" << 240 << "60000/1001" << h264With({"-g", "48"});
    QTest::newRow("h264 open gop")
        << "mp4" << 150 << "30" << h264With({"-g", "30", "-x264-params", "open-gop=1"});
    QTest::newRow("h264 without b-frames")
        << "mp4" << 100 << "50" << h264With({"-g", "25", "-bf", "0"});
    QTest::newRow("hevc") << "mp4" << 120 << "30"
                          << QStringList{"-c:v",         "libx265",
                                         "-preset",      "ultrafast",
                                         "-x265-params", "log-level=none:bframes=4:keyint=60",
                                         "-pix_fmt",     "yuv420p"};
    QTest::newRow("mpeg4") << "mp4" << 90 << "30"
                           << QStringList{"-c:v", "mpeg4", "-q:v", "3", "-bf", "2"};
    QTest::newRow("avi") << "avi" << 90 << "25" << QStringList{"-c:v", "mjpeg", "-q:v", "3"};
    QTest::newRow("3gp") << "3gp" << 90 << "25" << h264With({"-g", "30"});
}

void FrameSourceTest::everyFrameIsTheOneAskedFor()
{
    QFETCH(QString, suffix);
    QFETCH(int, frames);
    QFETCH(QString, fps);
    QFETCH(QStringList, encoding);
    const QString file = path(QStringLiteral("exact.") + suffix);
    QVERIFY((TestVideo{frames, fps, {320, 240}, 0, encoding}.write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    QCOMPARE(source->frameCount(), frames);
    QCOMPARE(source->size(), QSize(320, 240));
    for (int i = 0; i < frames; ++i) {
        QCOMPARE(source->nextFrame(), i);
        QCOMPARE(readNumber(*source), i);
    }
    QCOMPARE(source->nextFrame(), frames);
    QCOMPARE(readNumber(*source), -1);

    std::mt19937 random(1);
    for (int round = 0; round < 40; ++round) {
        const int wanted = static_cast<int>(random() % static_cast<unsigned>(frames));
        QVERIFY(source->seekToFrame(wanted));
        QCOMPARE(source->nextFrame(), wanted);
        const int wholeMs = static_cast<int>(source->nextFrameMs());
        QCOMPARE(readNumber(*source), wanted);
        const int away = static_cast<int>(random() % static_cast<unsigned>(frames));
        QVERIFY(source->seekToFrame(away));
        QVERIFY(source->seekToTime(wholeMs));
        QCOMPARE(readNumber(*source), wanted);
    }
}

void FrameSourceTest::countIsWhatArrives_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"edit list", "duration cut", "cut off", "cut off early", "mkv"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

// Each of these containers promises frames that do not come, or no number at all.
void FrameSourceTest::countIsWhatArrives()
{
    QFETCH(QString, kind);
    const QString whole = path("whole.mp4");
    QVERIFY((TestVideo{300, "30", {320, 240}, 0, h264With({"-g", "30", "-movflags", "+faststart"})}
                 .write(whole)));
    QString file = path("part.mp4");
    if (kind == "edit list") {
        QVERIFY(runFfmpeg({"-ss", "1.3", "-i", whole, "-c", "copy", file}));
    } else if (kind == "duration cut") {
        QVERIFY(runFfmpeg({"-i", whole, "-c", "copy", "-t", "5.5", file}));
    } else if (kind == "mkv") {
        file = path("part.mkv");
        QVERIFY(runFfmpeg({"-i", whole, "-c", "copy", file}));
    } else {
        QFile::remove(file);
        QVERIFY(QFile::copy(whole, file));
        QFile part(file);
        QVERIFY(part.resize(part.size() * (kind == "cut off" ? 6 : 2) / 10));
    }
    const auto source = openVideo(file);
    QVERIFY(source);
    int arrived = 0;
    const int first = readNumber(*source);
    for (int number = first; number >= 0; number = readNumber(*source)) {
        QCOMPARE(number, first + arrived);
        ++arrived;
    }
    QVERIFY(arrived > 20);
    QCOMPARE(source->frameCount(), arrived);
    QVERIFY(source->seekToFrame(arrived - 1));
    QCOMPARE(readNumber(*source), first + arrived - 1);
    QVERIFY(source->seekToFrame(arrived / 2));
    QCOMPARE(readNumber(*source), first + arrived / 2);
}

void FrameSourceTest::aVariableRateIsExact_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("filter");
    QTest::newRow("slower from the middle on") << 200 << "select='lt(n,60)+not(mod(n,3))'";
    QTest::newRow("slower up to the middle") << 200 << "select='gt(n,100)+not(mod(n,4))'";
    QTest::newRow("a gap") << 200 << "select='lt(n,50)+gt(n,120)'";
    QTest::newRow("many frames, slower in the end") << 1400 << "select='lt(n,900)+not(mod(n,2))'";
}

void FrameSourceTest::aVariableRateIsExact()
{
    QFETCH(int, frames);
    QFETCH(QString, filter);
    const QString steady = path("steady.mp4");
    const QString variable = path("variable.mp4");
    QVERIFY((TestVideo{frames, "30", {320, 240}, 0, h264With({"-g", "30"})}.write(steady)));
    QVERIFY(runFfmpeg(QStringList{"-i", steady, "-vf", filter, "-vsync", "vfr", "-g", "20"} + h264 +
                      QStringList{variable}));
    const auto source = openVideo(variable);
    QVERIFY(source);
    QList<int> numbers;
    for (int number = readNumber(*source); number >= 0; number = readNumber(*source))
        numbers << number;
    QCOMPARE(source->frameCount(), numbers.size());
    const auto clone = source->clone();
    QVERIFY(clone);
    std::mt19937 random(5);
    for (int round = 0; round < 25; ++round) {
        const int wanted = static_cast<int>(random() % static_cast<unsigned>(numbers.size()));
        FrameSource& asked = round % 2 ? *source : *clone;
        QVERIFY(asked.seekToFrame(wanted));
        QCOMPARE(readNumber(asked), numbers.at(wanted));
        QCOMPARE(asked.nextFrame(), wanted + 1);
    }
}

void FrameSourceTest::sidesAreCroppedToEven_data()
{
    QTest::addColumn<QSize>("made");
    QTest::addColumn<QSize>("read");
    QTest::newRow("both odd") << QSize(321, 241) << QSize(320, 240);
    QTest::newRow("odd width") << QSize(321, 240) << QSize(320, 240);
    QTest::newRow("odd height") << QSize(320, 241) << QSize(320, 240);
}

void FrameSourceTest::sidesAreCroppedToEven()
{
    QFETCH(QSize, made);
    QFETCH(QSize, read);
    const QString file = path("odd.mp4");
    QVERIFY((TestVideo{10, "25", made, 0, {"-c:v", "libx264", "-pix_fmt", "yuv444p"}}.write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    QCOMPARE(source->size(), read);
    for (int i = 0; i < 10; ++i) {
        const cv::Mat frame = readPicture(*source);
        QCOMPARE(QSize(frame.cols, frame.rows), read);
        QCOMPARE(readFrameNumber(frame), i);
    }
}

void FrameSourceTest::aTurnedVideoKeepsItsTurnedSize()
{
    const QString lying = path("lying.mp4");
    const QString turned = path("turned.mp4");
    QVERIFY((TestVideo{10, "25", {320, 240}, 0, h264}.write(lying)));
    QVERIFY(runFfmpeg({"-i", lying, "-c", "copy", "-metadata:s:v:0", "rotate=90", turned}));
    const auto source = openVideo(turned);
    QVERIFY(source);
    QCOMPARE(source->size(), QSize(240, 320));
    const cv::Mat frame = readPicture(*source);
    QCOMPARE(QSize(frame.cols, frame.rows), QSize(240, 320));
}

void FrameSourceTest::framesOfTwoPacketsHaveTheRateOfFrames()
{
    const QString fields = path("fields.h264");
    const QString file = path("fields.ts");
    QVERIFY(writeFieldPairs(fields, 30, {160, 128}));
    QVERIFY(runFfmpeg({"-framerate", "50", "-i", fields, "-c", "copy", "-bsf:v",
                       "setts=ts=N*1800:time_base=1/90000", file}));
    const auto source = openVideo(file);
    QVERIFY(source);
    QCOMPARE(source->fps(), 25.0);
    QCOMPARE(source->frameCount(), 30);
    QVERIFY(source->isConstantRate());
    QCOMPARE(source->durationMs(), 1200.0);
}

void FrameSourceTest::onePictureIsAVideo()
{
    const QString file = path("one.mp4");
    QVERIFY((TestVideo{1, "25", {320, 240}, 7, h264}.write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    QCOMPARE(source->frameCount(), 1);
    for (int round = 0; round < 3; ++round) {
        QVERIFY(source->seekToFrame(0));
        QCOMPARE(readNumber(*source), 7);
        QCOMPARE(readNumber(*source), -1);
    }
}

void FrameSourceTest::stepsAheadAndBackAreExact()
{
    const QString file = path("steps.mp4");
    QVERIFY((TestVideo{200, "30", {320, 240}, 0, h264With({"-g", "250"})}.write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    for (int step : {1, 2, 15, 16, 17, 18, 40, -1, -2, -30}) {
        QVERIFY(source->seekToFrame(100));
        QCOMPARE(readNumber(*source), 100);
        QVERIFY(source->seekToFrame(101 + step));
        QCOMPARE(readNumber(*source), 101 + step);
    }
    QVERIFY(source->seekToFrame(-5));
    QCOMPARE(source->nextFrame(), 0);
    QVERIFY(source->seekToTime(-100.0));
    QCOMPARE(source->nextFrame(), 0);
    QVERIFY(source->seekToFrame(5000));
    QCOMPARE(source->nextFrame(), 200);
    QCOMPARE(readNumber(*source), -1);
    // The last half of the last frame's time is nearest to no later frame.
    QVERIFY(source->seekToTime(200 * 1000.0 / 30 - 1));
    QCOMPARE(readNumber(*source), 199);
    QVERIFY(source->seekToTime(1e12));
    QCOMPARE(readNumber(*source), 199);
}

// A block of the stream can begin inside a frame: after a seek the rest of another one comes first.
void FrameSourceTest::seeksInAProgrammeStreamAreExact()
{
    const QString file = path("programme.mpg");
    QVERIFY((TestVideo{
        90, "25", {640, 480}, 0, {"-c:v", "mpeg2video", "-q:v", "1", "-bf", "2", "-g", "12"}}
                 .write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    QCOMPARE(source->frameCount(), 90);
    for (int i = 89; i >= 0; i -= 4) {
        QVERIFY(source->seekToFrame(i));
        QCOMPARE(readNumber(*source), i);
        const auto other = source->clone();
        QVERIFY(other && other->seekToTime(i * 40.0));
        QCOMPARE(readNumber(*other), i);
    }
}

// Matroska lists no keyframe that is shown before the time 0.
void FrameSourceTest::aListOfKeyframesNeedNotBeginAtTheFirst()
{
    const QString whole = path("whole.mp4");
    const QString early = path("early.mkv");
    QVERIFY((TestVideo{60, "25", {160, 120}, 0, {"-c:v", "libx264", "-g", "10", "-bf", "2"}}.write(
        whole)));
    QVERIFY(runFfmpeg({"-itsoffset", "-1.1", "-i", whole, "-c", "copy", "-avoid_negative_ts",
                       "disabled", early}));
    const auto source = openVideo(early);
    QVERIFY(source);
    QCOMPARE(source->frameCount(), 60);
    for (int i = 0; i < 60; ++i)
        QCOMPARE(readNumber(*source), i);
    const auto other = source->clone();
    QVERIFY(other);
    for (const int i : {55, 15, 3, 45, 0, 25}) {
        for (FrameSource* each : {source.get(), other.get()}) {
            QVERIFY(each->seekToFrame(i));
            QCOMPARE(readNumber(*each), i);
        }
    }
}

void FrameSourceTest::whatIsNoVideoDoesNotOpen_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("Dear diary, today I flew over the panels.\n").repeated(99);
    QTest::newRow("playlist") << QByteArray("#EXTM3U\n#EXT-X-VERSION:3\n/etc/passwd\n");
    QTest::newRow("box without content") << QByteArray("\0\0\0\x18"
                                                       "ftypmp42\0\0\0\0mp42isom",
                                                       24);
    QTest::newRow("zeros") << QByteArray(100000, '\0');
}

void FrameSourceTest::whatIsNoVideoDoesNotOpen()
{
    QFETCH(QByteArray, content);
    QFile file(path("no.mp4"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
    file.close();
    QVERIFY(!openVideo(file.fileName()));
    QVERIFY(!openVideo(m_folder.path()));
    QVERIFY(!openVideo(path("nowhere.mp4")));
    QVERIFY(!openVideo(QString()));
}

void FrameSourceTest::cloneIsAtTheStartAndIndependent()
{
    const QString file = path("clone.mp4");
    QVERIFY((TestVideo{60, "30", {320, 240}, 0, h264}.write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    QVERIFY(source->seekToFrame(20));
    const auto clone = source->clone();
    QVERIFY(clone);
    QCOMPARE(clone->frameCount(), 60);
    QCOMPARE(clone->nextFrame(), 0);
    QVERIFY(clone->seekToFrame(50));
    QCOMPARE(readNumber(*clone), 50);
    QCOMPARE(readNumber(*source), 20);
}

void FrameSourceTest::aVanishedFileIsStillReadButNotCloned()
{
    const QString file = path("vanishing.mp4");
    QVERIFY((TestVideo{60, "30", {320, 240}, 0, h264}.write(file)));
    const auto source = openVideo(file);
    QVERIFY(source);
    QVERIFY(QFile::remove(file));
    QVERIFY(!source->clone());
    QVERIFY(source->seekToFrame(30));
    QCOMPARE(readNumber(*source), 30);
}

QTEST_GUILESS_MAIN(FrameSourceTest)
#include "FrameSourceTest.moc"
