#include "Support/ProgramRun.h"
#include "Support/TestVideo.h"
#include "Support/trustRow.h"
#include "Support/videoTruth.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <vector>

using namespace corv::test;

namespace {

const QSize pictureSize(160, 120);

constexpr double toleranceMs = 1.0;

struct TrueFrame
{
    double timeMs;
    int number;
};

/// One file of a flight: how it is made of frames at one rate.
struct Part
{
    QString fps;
    int frames = 0;
    QStringList options; // for the ffmpeg program, behind the input
    QStringList encoding;
};

/// The files of a flight as one row of frames.
struct Flight
{
    std::vector<TrueFrame> frames;
    std::vector<int> firstFrames; // of the files
    double lengthMs = 0.0;
    double periodMs = 0.0; // of the first file
};

QStringList h264(const QStringList& more = {})
{
    return QStringList{"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                       "2",    "-g",      "15",      "-pix_fmt",  "yuv420p"} +
           more;
}

QStringList dropped(const char* kept)
{
    return {"-vf", QStringLiteral("select='%1'").arg(QLatin1String(kept)), "-vsync", "vfr"};
}

ProgramRun run(const QStringList& arguments)
{
    return runProgram(QStringLiteral(VISTREL_CLI), arguments);
}

} // namespace

/// Files of different rates that are one flight: the pictures that the tool saves are those of the
/// times asked for. Judged by the numbers in the pixels, and by the times that another program
/// reads from each file.
class JoinTruthTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyPictureIsThatOfItsTime_data();
    void everyPictureIsThatOfItsTime();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    void make(const QList<Part>& parts, const QString& suffix, Flight& flight);
    void askForFrames(const Flight& flight);
    void askForASeries(const Flight& flight);
    void askForTheVideo(const Flight& flight);
    void compare(const Flight& flight, double timeMs, int number, double reachMs);

    QTemporaryDir m_folder;
    QString m_first; // file
    int m_asked = 0;
    QStringList m_wrong;
};

Q_DECLARE_METATYPE(Part)

void JoinTruthTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
}

// Writes the files, and reads them with the other program.
void JoinTruthTest::make(const QList<Part>& parts, const QString& suffix, Flight& flight)
{
    const QStringList earlier = QDir(m_folder.path()).entryList({"CORV*"});
    for (const QString& name : earlier)
        QVERIFY(QFile::remove(path(name)));
    int firstNumber = 0;
    for (int i = 0; i < parts.size(); ++i) {
        const Part& part = parts[i];
        const QString lossless = path("lossless.mkv");
        const TestVideo video{part.frames, part.fps, pictureSize, firstNumber, {"-c:v", "ffv1"}};
        QVERIFY(video.write(lossless));
        const QString file = path(QStringLiteral("CORV000%1.%2").arg(i + 1).arg(suffix));
        QVERIFY(runFfmpeg(QStringList{"-i", lossless} + part.options + part.encoding +
                          QStringList{file}));
        if (i == 0)
            m_first = file;
        firstNumber += part.frames;
        const std::vector<double> times = trueTimes(file);
        const std::vector<int> numbers = trueNumbers(file, pictureSize);
        QVERIFY(times.size() > 1);
        QCOMPARE(times.size(), numbers.size());
        flight.firstFrames.push_back(static_cast<int>(flight.frames.size()));
        for (size_t frame = 0; frame < times.size(); ++frame)
            flight.frames.push_back({flight.lengthMs + times[frame], numbers[frame]});
        flight.lengthMs += trueLengthMs(file);
    }
    const QStringList rate = parts.first().fps.split('/');
    flight.periodMs = 1000.0 * rate.value(1, "1").toDouble() / rate.first().toDouble();
}

/// Whether the frame of this number is the one on screen at that time, or within `reachMs` of it.
void JoinTruthTest::compare(const Flight& flight, double timeMs, int number, double reachMs)
{
    ++m_asked;
    for (size_t i = 0; i < flight.frames.size(); ++i) {
        const double end =
            i + 1 < flight.frames.size() ? flight.frames[i + 1].timeMs : flight.lengthMs;
        if (flight.frames[i].number == number && flight.frames[i].timeMs <= timeMs + reachMs &&
            end >= timeMs - reachMs)
            return;
    }
    m_wrong << QStringLiteral("%1 at %2 ms").arg(number).arg(timeMs);
}

// The edges of every file, and frames in between.
void JoinTruthTest::askForFrames(const Flight& flight)
{
    std::vector<int> asked;
    const int count = static_cast<int>(flight.frames.size());
    for (const int first : flight.firstFrames)
        asked.insert(asked.end(), {first - 1, first, first + 1});
    for (int i = 3; i < count; i += 29)
        asked.push_back(i);
    asked.push_back(count - 1);
    for (const int i : asked) {
        if (i < 0)
            continue;
        const TrueFrame& frame = flight.frames[static_cast<size_t>(i)];
        const QString out = path("frame.png");
        QFile::remove(out);
        const ProgramRun outcome = run(
            {"frame", m_first, "--at-ms",
             QString::number(static_cast<int>(frame.timeMs + toleranceMs / 2.0)), "--out", out});
        QCOMPARE(outcome.error, QByteArray());
        QCOMPARE(outcome.status, 0);
        ++m_asked;
        if (numberIn(QImage(out)) != frame.number)
            m_wrong << QStringLiteral("%1 for frame %2").arg(numberIn(QImage(out))).arg(i);
    }
}

void JoinTruthTest::askForASeries(const Flight& flight)
{
    constexpr int spacing = 4;
    const QString folder = path("series");
    QDir(folder).removeRecursively();
    const int lastMs = static_cast<int>(flight.lengthMs) - 1;
    const ProgramRun outcome =
        run({"frames", m_first, "--from-ms", "0", "--to-ms", QString::number(lastMs), "--spacing",
             QString::number(spacing), "--out", folder});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    const int stepMs = static_cast<int>(flight.periodMs) * spacing;
    QCOMPARE(QDir(folder).entryList(QDir::Files).size(), lastMs / stepMs + 1);
    for (int i = 0; i * stepMs <= lastMs; ++i) {
        const QImage picture(
            QStringLiteral("%1/Frame%2.jpg").arg(folder).arg(i, 3, 10, QLatin1Char('0')));
        // A frame reaches half a frame of its file back; 24 a second are the slowest.
        compare(flight, i * stepMs, numberIn(picture), 1000.0 / 24.0 / 2.0 + toleranceMs);
    }
}

// At the rate of the first file, each frame in the place that is nearest to its time.
void JoinTruthTest::askForTheVideo(const Flight& flight)
{
    const QString out = path("whole.avi");
    QFile::remove(out);
    const ProgramRun outcome = run({"video", m_first, "--out", out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    const std::vector<int> numbers = trueNumbers(out, pictureSize);
    // The last frame can be in the place behind its time.
    const double excessMs = static_cast<double>(numbers.size()) * flight.periodMs - flight.lengthMs;
    QVERIFY2(std::abs(excessMs) < flight.periodMs, QByteArray::number(excessMs));
    QVERIFY(std::is_sorted(numbers.begin(), numbers.end()));
    for (size_t i = 0; i < numbers.size(); ++i)
        compare(flight, static_cast<double>(i) * flight.periodMs, numbers[i],
                flight.periodMs / 2.0 + toleranceMs);
}

void JoinTruthTest::everyPictureIsThatOfItsTime_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QList<Part>>("parts");
    const Part at30{"30", 45, {}, h264()};
    const Part at25{"25", 40, {}, h264()};
    const Part at2997{"30000/1001", 50, {}, h264({"-g", "250"})};
    const Part at60{"60", 70, {}, h264()};
    const Part at24{"24", 31, {}, h264({"-x264-params", "open-gop=1:keyint=12"})};
    const Part gap{"30", 90, dropped("lt(n,20)+gt(n,60)"), h264()};
    const Part tenths{"30", 60, dropped("mod(n,10)"), h264()};
    const Part halved{"30", 70, dropped("lt(n,30)+mod(n,2)"), h264()};
    const Part jitter{"30",
                      50,
                      {"-vf", "settb=1/90000,setpts='N*3000+random(1)*2000'", "-vsync",
                       "passthrough", "-enc_time_base", "1/90000"},
                      h264({"-bf", "0"})}; // else no length of the last frame is written
    const Part hevc{"50",
                    55,
                    {},
                    {"-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p",
                     "-x265-params", "log-level=none:keyint=20:open-gop=1:bframes=3"}};
    const Part jpeg30{"30", 40, {}, {"-c:v", "mjpeg", "-q:v", "3", "-pix_fmt", "yuvj420p"}};
    const Part mpeg25{"25", 40, {}, {"-c:v", "mpeg4", "-q:v", "3"}};
    QTest::newRow("30 and 25 a second") << "MP4" << QList<Part>{at30, at25};
    QTest::newRow("25 and 60 a second") << "MP4" << QList<Part>{at25, at60};
    QTest::newRow("29.97, 25 and 30 a second") << "MOV" << QList<Part>{at2997, at25, at30};
    QTest::newRow("29.97 a second and jitter, twice")
        << "MP4" << QList<Part>{at2997, jitter, at2997, jitter};
    QTest::newRow("a gap, and 25 a second") << "MP4" << QList<Part>{gap, at25};
    QTest::newRow("every tenth dropped, 60 a second, the rate halves")
        << "MP4" << QList<Part>{tenths, at60, halved};
    QTest::newRow("60, 24, 50 and 29.97 a second")
        << "MOV" << QList<Part>{at60, at24, hevc, at2997};
    QTest::newRow("30 and 25 a second in avi") << "AVI" << QList<Part>{jpeg30, mpeg25};
}

void JoinTruthTest::everyPictureIsThatOfItsTime()
{
    QFETCH(QString, suffix);
    QFETCH(QList<Part>, parts);
    m_asked = 0;
    m_wrong.clear();
    Flight flight;
    make(parts, suffix, flight);
    if (!QTest::currentTestFailed())
        askForFrames(flight);
    if (!QTest::currentTestFailed())
        askForASeries(flight);
    if (!QTest::currentTestFailed())
        askForTheVideo(flight);
    if (QTest::currentTestFailed())
        return;
    trustRow(QStringLiteral("Wrong pictures by the tool, of flights of files of different rates"),
             QString::fromUtf8(QTest::currentDataTag()),
             QStringLiteral("%1 of %2").arg(m_wrong.size()).arg(m_asked));
    QVERIFY2(m_wrong.isEmpty(), qPrintable(m_wrong.join(", ")));
}

QTEST_GUILESS_MAIN(JoinTruthTest)
#include "JoinTruthTest.moc"
