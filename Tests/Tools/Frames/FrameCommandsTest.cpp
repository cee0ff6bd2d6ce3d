#include "FlightFixture.h"
#include "Log/LogParser.h"
#include "SampleFlight/frameStrip.h"
#include "Timeline/ExportInsets.h"
#include "Timeline/InstrumentsInset.h"
#include "Timeline/ThermalBarInset.h"
#include "Video/VideoPlayer.h"

#include <QDir>
#include <QSignalSpy>
#include <QtTest>
#include <memory>
#include <numeric>
#include <opencv2/videoio.hpp>

using namespace corv;
using namespace corv::test;

namespace {

int numberIn(const QString& path)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_RGB888);
    if (image.isNull())
        return -1;
    return readFrameNumber(cv::Mat(image.height(), image.width(), CV_8UC3,
                                   const_cast<uchar*>(image.constBits()),
                                   static_cast<size_t>(image.bytesPerLine())));
}

std::vector<cv::Mat> framesOf(const QString& path)
{
    cv::VideoCapture video(path.toStdString(), cv::CAP_FFMPEG);
    std::vector<cv::Mat> frames;
    for (cv::Mat frame; video.read(frame);)
        frames.push_back(frame.clone());
    return frames;
}

std::vector<int> numbersOf(const std::vector<cv::Mat>& frames)
{
    std::vector<int> numbers;
    for (const cv::Mat& frame : frames)
        numbers.push_back(readFrameNumber(frame));
    return numbers;
}

/// The numbers of the two seconds of the flight.
std::vector<int> wholeFlight()
{
    std::vector<int> numbers(60);
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

QRect placeOfInstruments(QSize picture)
{
    const HeadUpPainter painter;
    return instrumentsPlace(picture, painter.heightAt(HeadUpPainter::naturalWidth),
                            painter.withoutDials().heightAt(HeadUpPainter::naturalWidth))
        .rect;
}

} // namespace

class FrameCommandsTest : public QObject, private FlightFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { writeFlight(); }
    void frameOfAProjectIsThatOfTheWindow();
    void frameOfAVideoHasTheOverlayThatIsAskedFor_data();
    void frameOfAVideoHasTheOverlayThatIsAskedFor();
    void framesOfARange();
    void framesOfThePois();
    void thermalClockPicksTheMomentOfTheOverlay();
    void picturesWithAnotherMomentAreNamed_data();
    void picturesWithAnotherMomentAreNamed();
    void jobIsShownOnATerminal_data();
    void jobIsShownOnATerminal();
    void instrumentsAreShownInACorner_data();
    void instrumentsAreShownInACorner();
    void instrumentsLeaveNoFolderBehind();
    void instrumentsOfAVideoNeedALog();
    void thermalBarIsShownInACorner();
    void videoIsThatOfTheWindow();

private:
    /// The flight as the window shows it, with the settings of the project.
    struct Window
    {
        LogParser parser;
        VideoPlayer player;
    };
    std::unique_ptr<Window> openWindow() const;
};

std::unique_ptr<FrameCommandsTest::Window> FrameCommandsTest::openWindow() const
{
    auto window = std::make_unique<Window>();
    VideoPlayer& player = window->player;
    player.setLogParser(&window->parser);
    QSignalSpy opened(&player, &VideoPlayer::durationChanged);
    player.setSource(m_video);
    if (!opened.wait())
        return nullptr;
    window->parser.setDuration(player.duration());
    player.setContrast(0.8);
    player.setBrightness(20.0);
    player.setIrOffsetX(0.1);
    player.setIrOffsetY(-0.05);
    player.setAutoIRMapping(false);
    player.setIrMappingMinValue(7100.0);
    player.setIrMappingMaxValue(8500.0);
    player.setIrOverlayTransparent(true);
    player.setShowIR(true);
    QSignalSpy parsed(&window->parser, &LogParser::logParsingComplete);
    window->parser.parseLog(m_log, true);
    window->parser.setManualLogTimeOffset(300);
    if (!parsed.wait() || !window->parser.isSynced())
        return nullptr;
    player.updateLogData();
    return window;
}

void FrameCommandsTest::frameOfAProjectIsThatOfTheWindow()
{
    const QString out = path("project.png");
    const ProgramRun outcome = run({QStringLiteral("frame"), m_project, QStringLiteral("--at-ms"),
                                    QStringLiteral("500"), QStringLiteral("--out"), out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(numberIn(out), 15);
    const auto window = openWindow();
    QVERIFY(window);
    const QString shown = path("window.png");
    QVERIFY(window->player.saveFrame(QTime(0, 0, 0, 500), shown, true));
    QTRY_VERIFY(QImage(shown) == QImage(out));
    window->player.setShowIR(false);
    const QString bare = path("bare.png");
    QVERIFY(window->player.saveFrame(QTime(0, 0, 0, 500), bare, true));
    QTRY_VERIFY(!QImage(bare).isNull());
    QVERIFY(QImage(bare) != QImage(out));
}

void FrameCommandsTest::frameOfAVideoHasTheOverlayThatIsAskedFor_data()
{
    QTest::addColumn<bool>("withLog");
    QTest::addColumn<bool>("thermal");
    QTest::addColumn<bool>("hasOverlay");
    QTest::newRow("alone") << false << false << false;
    QTest::newRow("with its log") << true << false << false;
    QTest::newRow("with its log and the overlay") << true << true << true;
}

void FrameCommandsTest::frameOfAVideoHasTheOverlayThatIsAskedFor()
{
    QFETCH(bool, withLog);
    QFETCH(bool, thermal);
    QFETCH(bool, hasOverlay);
    QStringList arguments{QStringLiteral("frame"), m_video};
    if (withLog)
        arguments << m_log;
    if (thermal)
        arguments << QStringLiteral("--thermal");
    const QString out = path("video.png");
    QFile::remove(out);
    const ProgramRun outcome =
        run(arguments + QStringList{QStringLiteral("--at-ms"), QStringLiteral("1500"),
                                    QStringLiteral("--out"), out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(numberIn(out), 45);
    cv::VideoCapture second(path("DCIM/101_CORV/CORV0002.MOV").toStdString(), cv::CAP_FFMPEG);
    cv::Mat frame;
    for (int i = 0; i <= 15; ++i)
        QVERIFY(second.read(frame));
    const QImage expected(frame.data, frame.cols, frame.rows, static_cast<int>(frame.step),
                          QImage::Format_BGR888);
    QCOMPARE(QImage(out).convertToFormat(QImage::Format_BGR888) != expected, hasOverlay);
}

void FrameCommandsTest::framesOfARange()
{
    const QString out = path("range");
    const ProgramRun outcome =
        run({QStringLiteral("frames"), m_project, QStringLiteral("--from-ms"),
             QStringLiteral("100"), QStringLiteral("--to-ms"), QStringLiteral("1500"),
             QStringLiteral("--spacing"), QStringLiteral("12"), QStringLiteral("--prefix"),
             QStringLiteral("Still"), QStringLiteral("--out"), out});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(QDir(out).entryList(QDir::Files),
             (QStringList{QStringLiteral("Still000.jpg"), QStringLiteral("Still001.jpg"),
                          QStringLiteral("Still002.jpg"), QStringLiteral("Still003.jpg")}));
    const auto window = openWindow();
    QVERIFY(window);
    const QString shown = path("windowrange");
    QVERIFY(QDir().mkpath(shown));
    QVERIFY(window->player.exportFrames(100, 1500, 12, shown, QStringLiteral("Still")));
    for (const QString& name : QDir(out).entryList(QDir::Files))
        QTRY_VERIFY(QImage(QDir(shown).filePath(name)) == QImage(QDir(out).filePath(name)));
    QCOMPARE(QDir(shown).entryList(QDir::Files), QDir(out).entryList(QDir::Files));
}

void FrameCommandsTest::framesOfThePois()
{
    const QString out = path("pois");
    const ProgramRun outcome = run({QStringLiteral("frames"), QStringLiteral("--poi"), m_project,
                                    QStringLiteral("--out"), out});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(QDir(out).entryList(QDir::Files),
             (QStringList{QStringLiteral("Frame000.jpg"), QStringLiteral("Frame001.jpg")}));
    QCOMPARE(numberIn(QDir(out).filePath(QStringLiteral("Frame000.jpg"))), 3);
    QCOMPARE(numberIn(QDir(out).filePath(QStringLiteral("Frame001.jpg"))), 36);
}

void FrameCommandsTest::thermalClockPicksTheMomentOfTheOverlay()
{
    const QStringList frame{QStringLiteral("frame"), m_project, QStringLiteral("--at-ms"),
                            QStringLiteral("1500"), QStringLiteral("--out")};
    const auto picture = [&](const QStringList& options) {
        const QString out = path("clock.png");
        QFile::remove(out);
        const ProgramRun outcome = run(frame + QStringList{out} + options);
        return outcome.status == 0 ? QImage(out) : QImage();
    };
    const QImage ofFile = picture({});
    const QImage ofScreen = picture({QStringLiteral("--thermal-clock"), QStringLiteral("screen")});
    QVERIFY(!ofFile.isNull() && !ofScreen.isNull());
    QVERIFY(ofFile != ofScreen);
    QCOMPARE(picture({QStringLiteral("--thermal-clock"), QStringLiteral("file")}), ofFile);
    QCOMPARE(run(frame + QStringList{path("clock.png"), QStringLiteral("--thermal-clock"),
                                     QStringLiteral("wall")})
                 .status,
             2);
}

void FrameCommandsTest::picturesWithAnotherMomentAreNamed_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("named");
    const QStringList frame{"frame", m_project, "--out", path("moment.png"), "--at-ms"};
    const QStringList frames{"frames", m_project, "--out", path("moments")};
    const QStringList range{"--from-ms", "0", "--to-ms", "1500", "--spacing", "15"};
    QTest::newRow("one picture") << frame + QStringList{"1500"} << QByteArray();
    QTest::newRow("as on screen") << frames + range + QStringList{"--thermal-clock", "screen"}
                                  << QByteArray();
    QTest::newRow("of a series") << frames + range << QByteArray("Frame003.jpg has ");
    QTest::newRow("of the points of interest")
        << frames + QStringList{"--poi"} << QByteArray("Frame001.jpg has ");
    QTest::newRow("report") << QStringList{"report", m_project, "--out", path("moments.docx")}
                            << QByteArray("\"poi\" has ");
}

void FrameCommandsTest::picturesWithAnotherMomentAreNamed()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, named);
    const ProgramRun outcome = run(arguments);
    QCOMPARE(outcome.status, 0);
    if (named.isEmpty()) {
        QCOMPARE(outcome.error, QByteArray());
        return;
    }
    QVERIFY2(outcome.error.startsWith("vistrel-cli: " + named) &&
                 outcome.error.endsWith("--thermal-clock screen changes that.\n"),
             outcome.error);
}

void FrameCommandsTest::jobIsShownOnATerminal_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("shown");
    const QString flight = QLatin1Char('\'') + m_project + QStringLiteral("' --out '");
    QTest::newRow("series") << "frames " + flight + path("shown") + "'"
                            << QByteArray("\rSave pictures: 3 of 7 ");
    QTest::newRow("video") << "video " + flight + path("shown.mp4") + "'"
                           << QByteArray("\rWrite the video: 30 of 60 ");
    QTest::newRow("report") << "report " + flight + path("shown.docx") + "'"
                            << QByteArray("\rWrite the report: 1 of 2 ");
}

void FrameCommandsTest::jobIsShownOnATerminal()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, shown);
    const ProgramRun outcome =
        runProgram("/usr/bin/script", {"-qec", VISTREL_CLI " " + line, "/dev/null"});
    QCOMPARE(outcome.status, 0);
    // Lines are written over with spaces where the one before was longer.
    QVERIFY2((QByteArray(outcome.out).replace('\r', " \r") + ' ').contains(shown), outcome.out);
}

void FrameCommandsTest::instrumentsAreShownInACorner_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<bool>("imperial");
    QTest::newRow("metric") << QStringList{"--instruments"} << false;
    QTest::newRow("with one dash") << QStringList{"-instruments"} << false;
    QTest::newRow("imperial") << QStringList{"--instruments", "--imperial"} << true;
}

// As the window exports them, with the correction of the project.
void FrameCommandsTest::instrumentsAreShownInACorner()
{
    QFETCH(QStringList, options);
    QFETCH(bool, imperial);
    const QString out = path("instruments.png");
    const ProgramRun outcome =
        run(QStringList{"frame", m_project, "--at-ms", "500", "--out", out} + options);
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    const auto window = openWindow();
    QVERIFY(window);
    const QString bare = path("nowhere.png");
    QSignalSpy saved(&window->player, &VideoPlayer::frameSaveComplete);
    QVERIFY(window->player.saveFrame(QTime(0, 0, 0, 500), bare, true));
    QTRY_COMPARE(saved.size(), 1);
    ExportInsets insets;
    insets.setPlayer(&window->player);
    insets.setLogParser(&window->parser);
    insets.setImperialUnits(imperial);
    insets.setShowsInstruments(true);
    const QString shown = path("shown.png");
    QVERIFY(window->player.saveFrame(QTime(0, 0, 0, 500), shown, true));
    QTRY_COMPARE(saved.size(), 2);
    const QImage picture(out);
    const QImage without(bare);
    const QRect place = placeOfInstruments(picture.size());
    QVERIFY(picture.copy(place) != without.copy(place));
    // Fonts differ between the window system and none; the numbers' widths do by a little.
    const QImage ofWindow(shown);
    QCOMPARE(picture.copy(0, 0, place.left(), picture.height()),
             ofWindow.copy(0, 0, place.left(), picture.height()));
    QVERIFY(ofWindow.copy(place) != without.copy(place));
    const QRect below(place.left(), place.bottom() + 1, place.width(),
                      picture.height() - place.bottom() - 1);
    QCOMPARE(picture.copy(below), without.copy(below));
}

// Also without a session, as in a job of the night.
void FrameCommandsTest::instrumentsLeaveNoFolderBehind()
{
    const QString temporary = path("temporary");
    QVERIFY(QDir().mkpath(temporary));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("XDG_RUNTIME_DIR");
    environment.insert("TMPDIR", temporary);
    const ProgramRun outcome = runProgram(
        VISTREL_CLI,
        {"frame", m_project, "--instruments", "--at-ms", "500", "--out", path("alone.png")},
        environment);
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(QDir(temporary).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void FrameCommandsTest::instrumentsOfAVideoNeedALog()
{
    const QString out = path("corner.mp4");
    const ProgramRun outcome = run({"video", m_project, "--instruments", "--out", out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(numbersOf(framesOf(out)), wholeFlight());
    const ProgramRun noLog = run({"video", m_video, "--instruments", "--out", path("none.mp4")});
    QCOMPARE(noLog.status, 1);
    QCOMPARE(noLog.error, QByteArray("vistrel-cli: --instruments needs a flight log.\n"));
    QVERIFY(!QFile::exists(path("none.mp4")));
}

// Of the range that the project has, and nothing else of the picture is changed.
void FrameCommandsTest::thermalBarIsShownInACorner()
{
    const auto picture = [this](const QStringList& options) {
        const QString out = path("bar.png");
        QFile::remove(out);
        const ProgramRun outcome =
            run(QStringList{"frame", m_project, "--at-ms", "500", "--out", out} + options);
        return outcome.status == 0 && outcome.error.isEmpty() ? QImage(out) : QImage();
    };
    const QImage bare = picture({});
    const QImage shown = picture({"--thermal-bar"});
    QVERIFY(!bare.isNull() && shown.size() == bare.size());
    const QRect place = thermalBarPlace(shown.size()).rect;
    QVERIFY(!place.isEmpty());
    ThermalBarInset inset;
    const QImage bar =
        inset.partAt({500, shown.size(), ThermalScale{ThermalPalette::rainbow, 7100, 8500}})
            .image.convertToFormat(QImage::Format_RGB32);
    // Half way between the two texts only the colours are there.
    const int middle = bar.width() / 2;
    for (const int y : {bar.height() / 3, bar.height() / 2, bar.height() * 2 / 3})
        QCOMPARE(shown.pixelColor(place.left() + middle, place.top() + y),
                 bar.pixelColor(middle, y));
    const QRect right(place.right() + 1, 0, shown.width() - place.right() - 1, shown.height());
    QCOMPARE(shown.copy(right), bare.copy(right));
    const QRect below(0, place.bottom() + 1, shown.width(), shown.height() - place.bottom() - 1);
    QCOMPARE(shown.copy(below), bare.copy(below));
    QCOMPARE(picture({"-thermal-bar"}), shown);
    const QImage both = picture({"--thermal-bar", "--instruments"});
    QCOMPARE(both.copy(place), shown.copy(place));
    const QRect corner = placeOfInstruments(both.size());
    QVERIFY(both.copy(corner) != shown.copy(corner));
}

void FrameCommandsTest::videoIsThatOfTheWindow()
{
    const QString out = path("whole.mp4");
    const ProgramRun outcome =
        run({QStringLiteral("video"), m_project, QStringLiteral("--out"), out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    const std::vector<cv::Mat> frames = framesOf(out);
    QCOMPARE(numbersOf(frames), wholeFlight());
    const auto window = openWindow();
    QVERIFY(window);
    const QString shown = path("window.mp4");
    QSignalSpy complete(&window->player, &VideoPlayer::videoExportComplete);
    QVERIFY(window->player.exportVideo(shown));
    QVERIFY(complete.wait(60'000));
    const std::vector<cv::Mat> shownFrames = framesOf(shown);
    QCOMPARE(shownFrames.size(), frames.size());
    for (size_t i = 0; i < frames.size(); ++i)
        QCOMPARE(cv::norm(frames[i], shownFrames[i], cv::NORM_INF), 0.0);
}

QTEST_MAIN(FrameCommandsTest)
#include "FrameCommandsTest.moc"
