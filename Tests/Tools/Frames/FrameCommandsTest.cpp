#include "Log/LogParser.h"
#include "SampleFlight/SampleFlight.h"
#include "SampleFlight/frameStrip.h"
#include "Support/FullDisk.h"
#include "Support/ProgramRun.h"
#include "Timeline/ExportInsets.h"
#include "Timeline/InstrumentsInset.h"
#include "Timeline/ThermalBarInset.h"
#include "Video/VideoPlayer.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <opencv2/videoio.hpp>

using namespace corv;
using namespace corv::test;

namespace {

ProgramRun run(const QStringList& arguments)
{
    return runProgram(QStringLiteral(VISTREL_CLI), arguments);
}

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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

QRect placeOfInstruments(QSize picture)
{
    const HeadUpPainter painter;
    return instrumentsPlace(picture, painter.heightAt(HeadUpPainter::naturalWidth),
                            painter.withoutDials().heightAt(HeadUpPainter::naturalWidth))
        .rect;
}

} // namespace

class FrameCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void frameOfAProject();
    void frameOfAVideo_data();
    void frameOfAVideo();
    void framesOfARange();
    void framesOfThePois();
    void thermalClockOfTheScreen();
    void instrumentsInACorner_data();
    void instrumentsInACorner();
    void instrumentsLeaveNoFolderBehind();
    void instrumentsOfAVideo();
    void thermalBarInACorner();
    void thermalBarNeedsAnOverlay_data();
    void thermalBarNeedsAnOverlay();
    void anOverlayThatCannotBeSaysWhy();
    void wholeVideo();
    void sourcesAreNeverWrittenOver_data();
    void sourcesAreNeverWrittenOver();
    void aFullDiskIsAFailure_data();
    void aFullDiskIsAFailure();
    void aDiskWithoutAnyRoomIsNoWrongSuffix();
    void refusals_data();
    void refusals();

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    void writeProject(const QString& file, const QString& log) const;

    /// The flight as the window shows it, with the settings of the project.
    struct Window
    {
        LogParser parser;
        VideoPlayer player;
    };
    std::unique_ptr<Window> openWindow() const;

    QTemporaryDir m_folder;
    QString m_video;
    QString m_log;
    QString m_project;
};

void FrameCommandsTest::initTestCase()
{
    SampleFlightOptions options;
    options.videoSeconds = 2.0;
    options.secondsPerFile = 1;
    const SampleFlight flight(options);
    QVERIFY(flight.writeCard(m_folder.path()));
    m_video = m_folder.filePath(flight.videoFiles().first());
    m_log = m_folder.filePath(SampleFlight::logFile());
    m_project = path("flight.ecor");
    writeProject(m_project, SampleFlight::logFile());
    writeProject(path("nolog.ecor"), QStringLiteral("gone.log"));

    QVERIFY(QDir().mkpath(path("folder.mp4")));
    for (const auto& [name, bytes] : {std::pair{"cut.mov", contentsOf(m_video).left(20'000)},
                                      std::pair{"empty.mov", QByteArray()}}) {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }
    QVERIFY(QFile::link("circle.mov", path("circle.mov")));
}

void FrameCommandsTest::writeProject(const QString& file, const QString& log) const
{
    const auto poi = [](int timeMs) {
        return QJsonObject{{QStringLiteral("time"), timeMs},
                           {QStringLiteral("name"), QStringLiteral("poi")},
                           {QStringLiteral("comment"), QString()}};
    };
    const QJsonObject properties{
        {QStringLiteral("correction"), QJsonObject{{QStringLiteral("log_offset"), 300}}},
        {QStringLiteral("display"),
         QJsonObject{{QStringLiteral("brightness"), 20.0}, {QStringLiteral("contrast"), 0.8}}},
        {QStringLiteral("thermal_video"), QJsonObject{{QStringLiteral("align_offset_x"), 0.1},
                                                      {QStringLiteral("align_offset_y"), -0.05},
                                                      {QStringLiteral("colormap_auto"), false},
                                                      {QStringLiteral("colormap_min"), 7100.0},
                                                      {QStringLiteral("colormap_max"), 8500.0},
                                                      {QStringLiteral("translucent"), true},
                                                      {QStringLiteral("visible"), true}}}};
    const QJsonObject files{{QStringLiteral("video"), QStringLiteral("DCIM/101_CORV/CORV0001.MOV")},
                            {QStringLiteral("log"), log}};
    const QJsonObject flight{{QStringLiteral("files"), files},
                             {QStringLiteral("properties"), properties},
                             {QStringLiteral("poi"), QJsonArray{poi(100), poi(1200)}}};
    const QJsonObject contents{{QStringLiteral("flights"), QJsonArray{flight}}};
    QFile target(file);
    QVERIFY(target.open(QIODevice::WriteOnly));
    target.write(QJsonDocument(QJsonObject{{QStringLiteral("contents"), contents}}).toJson());
}

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

void FrameCommandsTest::frameOfAProject()
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

void FrameCommandsTest::frameOfAVideo_data()
{
    QTest::addColumn<bool>("withLog");
    QTest::addColumn<bool>("thermal");
    QTest::addColumn<bool>("hasOverlay");
    QTest::newRow("alone") << false << false << false;
    QTest::newRow("with its log") << true << false << false;
    QTest::newRow("with its log and the overlay") << true << true << true;
}

void FrameCommandsTest::frameOfAVideo()
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
    QCOMPARE(outcome.error, QByteArray());
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
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(QDir(out).entryList(QDir::Files),
             (QStringList{QStringLiteral("Frame000.jpg"), QStringLiteral("Frame001.jpg")}));
    QCOMPARE(numberIn(QDir(out).filePath(QStringLiteral("Frame000.jpg"))), 3);
    QCOMPARE(numberIn(QDir(out).filePath(QStringLiteral("Frame001.jpg"))), 36);
}

void FrameCommandsTest::thermalClockOfTheScreen()
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

void FrameCommandsTest::instrumentsInACorner_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<bool>("imperial");
    QTest::newRow("metric") << QStringList{"--instruments"} << false;
    QTest::newRow("imperial") << QStringList{"--instruments", "--imperial"} << true;
}

// As the window exports them, with the correction of the project.
void FrameCommandsTest::instrumentsInACorner()
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

void FrameCommandsTest::instrumentsOfAVideo()
{
    const QString out = path("corner.mp4");
    const ProgramRun outcome = run({"video", m_project, "--instruments", "--out", out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    const std::vector<cv::Mat> frames = framesOf(out);
    QCOMPARE(int(frames.size()), 60);
    for (int i = 0; i < 60; ++i)
        QCOMPARE(readFrameNumber(frames[static_cast<size_t>(i)]), i);
    const ProgramRun noLog = run({"video", m_video, "--instruments", "--out", path("none.mp4")});
    QCOMPARE(noLog.status, 1);
    QCOMPARE(noLog.error, QByteArray("vistrel-cli: --instruments needs a flight log.\n"));
    QVERIFY(!QFile::exists(path("none.mp4")));
}

// Of the range that the project has, and nothing else of the picture is changed.
void FrameCommandsTest::thermalBarInACorner()
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
    const QImage both = picture({"--thermal-bar", "--instruments"});
    QCOMPARE(both.copy(place), shown.copy(place));
    const QRect corner = placeOfInstruments(both.size());
    QVERIFY(both.copy(corner) != shown.copy(corner));
}

void FrameCommandsTest::thermalBarNeedsAnOverlay_data()
{
    QTest::addColumn<QStringList>("flight");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("not shown") << QStringList{m_video, m_log}
                               << QByteArray("--thermal-bar: the flight does not show the thermal "
                                             "overlay.");
    QTest::newRow("no log") << QStringList{m_video, "--thermal"}
                            << QByteArray("--thermal needs a log with thermal pictures");
}

void FrameCommandsTest::thermalBarNeedsAnOverlay()
{
    QFETCH(QStringList, flight);
    QFETCH(QByteArray, error);
    for (const char* command : {"frame", "video"}) {
        const QString out = path(qstrcmp(command, "frame") == 0 ? "none.png" : "none.mp4");
        QStringList line =
            QStringList{command} + flight + QStringList{"--thermal-bar", "--out", out};
        if (qstrcmp(command, "frame") == 0)
            line += {"--at-ms", "500"};
        const ProgramRun outcome = run(line);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.error.contains(error), outcome.error.constData());
        QVERIFY(!QFile::exists(out));
    }
}

void FrameCommandsTest::anOverlayThatCannotBeSaysWhy()
{
    const QString out = path("none.png");
    const ProgramRun outcome =
        run({QStringLiteral("frame"), m_video, QStringLiteral("--thermal"),
             QStringLiteral("--at-ms"), QStringLiteral("500"), QStringLiteral("--out"), out});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.error.contains("needs a log"));
    QVERIFY(!QFile::exists(out));
}

void FrameCommandsTest::wholeVideo()
{
    const QString out = path("whole.mp4");
    const ProgramRun outcome =
        run({QStringLiteral("video"), m_project, QStringLiteral("--out"), out});
    QCOMPARE(outcome.error, QByteArray());
    QCOMPARE(outcome.status, 0);
    const std::vector<cv::Mat> frames = framesOf(out);
    QCOMPARE(int(frames.size()), 60);
    for (int i = 0; i < 60; ++i)
        QCOMPARE(readFrameNumber(frames[static_cast<size_t>(i)]), i);
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

void FrameCommandsTest::sourcesAreNeverWrittenOver_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QString>("target");
    const QStringList frame{QStringLiteral("frame"), m_project, QStringLiteral("--at-ms"),
                            QStringLiteral("0")};
    const QStringList video{QStringLiteral("video"), m_project};
    const QString second = path("DCIM/101_CORV/CORV0002.MOV");
    QTest::newRow("the video by a video") << video << m_video;
    QTest::newRow("the second file by a video") << video << second;
    QTest::newRow("the video by a picture") << frame << m_video;
    QTest::newRow("the log by a picture") << frame << m_log;
    QTest::newRow("the project by a picture") << frame << m_project;
    // A log is one by what it holds.
    const QString log = path("log.docx");
    QVERIFY(QFile::exists(log) || QFile::copy(m_log, log));
    QTest::newRow("the log by a report") << QStringList{"report", m_video, log} << log;
}

void FrameCommandsTest::sourcesAreNeverWrittenOver()
{
    QFETCH(QStringList, command);
    QFETCH(QString, target);
    const QByteArray before = contentsOf(target);
    QVERIFY(!before.isEmpty());
    const ProgramRun outcome = run(command + QStringList{QStringLiteral("--out"), target});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.error.contains("is a file of the flight itself"));
    QVERIFY(contentsOf(target) == before);
}

void FrameCommandsTest::aFullDiskIsAFailure_data()
{
    QTest::addColumn<QStringList>("command");
    const QString flight = m_project;
    QTest::newRow("picture") << QStringList{"frame", flight,  "--at-ms",
                                            "0",     "--out", path("full.jpg")};
    QTest::newRow("pictures") << QStringList{"frames", flight, "--out", path("full")};
    QTest::newRow("mp4") << QStringList{"video", flight, "--out", path("full.mp4")};
    QTest::newRow("avi") << QStringList{"video", flight, "--out", path("full.avi")};
    QTest::newRow("report") << QStringList{"report", flight, "--out", path("full.docx")};
}

void FrameCommandsTest::aFullDiskIsAFailure()
{
    QFETCH(QStringList, command);
    const corv::test::FullDisk disk(20000); // for the program as well
    const ProgramRun outcome = run(command);
    QVERIFY2(outcome.status == 1 && outcome.error.startsWith("vistrel-cli: ") &&
                 outcome.error.count('\n') == 1,
             outcome.error.constData());
}

// The encoder ends in the same way for both.
void FrameCommandsTest::aDiskWithoutAnyRoomIsNoWrongSuffix()
{
    const corv::test::FullDisk disk(0);
    const ProgramRun outcome = run({"video", m_project, "--out", path("none.mp4")});
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.error.contains("The disk has no room for the video"), outcome.error);
}

void FrameCommandsTest::refusals_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char* name, const char* arguments, int status, const char* reason) {
        QTest::newRow(name) << arguments << status << QByteArray(reason);
    };
    row("frame without time", "frame PROJECT --out DIR/a.png", 2, "");
    row("frame without target", "frame PROJECT --at-ms 0", 2, "");
    row("frame at no number", "frame PROJECT --at-ms soon --out DIR/a.png", 2,
        "--at-ms: \"soon\" is not a whole number");
    row("frame before the start", "frame PROJECT --at-ms -1 --out DIR/a.png", 2,
        "--at-ms: \"-1\" is not");
    row("frame of nothing", "frame --at-ms 0 --out DIR/a.png", 2, "");
    row("unknown clock", "frame PROJECT --at-ms 0 --out DIR/a.png --thermal-clock wall", 2,
        "--thermal-clock: \"wall\" is neither \"file\" nor \"screen\".");
    row("pictures nowhere", "points PROJECT --thermal", 2, "--thermal needs --pictures.");
    row("empty prefix", "frames PROJECT --out DIR/x --prefix=", 2, "--prefix: the value is empty.");
    row("a folder of the video's name", "video PROJECT --out DIR/folder.mp4", 1,
        "folder.mp4 cannot be written: a folder has this name.");
    row("cut video", "frame DIR/cut.mov --at-ms 0 --out DIR/a.png", 1,
        "cut.mov cannot be opened: it is cut short or damaged.");
    row("empty video", "frame DIR/empty.mov --at-ms 0 --out DIR/a.png", 1,
        "empty.mov cannot be opened: it is empty.");
    row("circle of links", "frame DIR/circle.mov --at-ms 0 --out DIR/a.png", 1,
        "circle.mov is a link that leads back to itself.");
    row("unknown option", "frame PROJECT --at-ms 0 --out DIR/a.png --red", 2,
        "Unknown option 'red'");
    row("spacing of 0", "frames PROJECT --spacing 0 --out DIR/x", 2,
        "--spacing: \"0\" is not a whole number from 1");
    row("range upside down", "frames PROJECT --from-ms 9 --to-ms 8 --out DIR/x", 2,
        "--to-ms 8 is before --from-ms 9.");
    row("points of interest and a range", "frames PROJECT --poi --to-ms 8 --out DIR/x", 2,
        "--poi takes no range.");
    row("frames without target", "frames PROJECT", 2, "");
    row("video without target", "video PROJECT", 2, "");
    row("three files", "video PROJECT VIDEO LOG --out DIR/x.mp4", 2, "");
    row("project and log", "frame PROJECT LOG --at-ms 0 --out DIR/a.png", 2, "");
    row("a day later", "frame PROJECT --at-ms 86400000 --out DIR/a.png", 1, "");
    row("behind the end", "frame PROJECT --at-ms 99999 --out DIR/a.png", 1, "");
    row("range behind the end", "frames PROJECT --from-ms 99999 --out DIR/x", 1, "");
    row("no points of interest", "frames VIDEO --poi --out DIR/x", 1, "");
    row("unknown format", "frame PROJECT --at-ms 0 --out DIR/a.picture", 1,
        "a.picture has not the suffix of a picture format.");
    row("missing folder", "frame PROJECT --at-ms 0 --out DIR/none/a.png", 1,
        "none/a.png could not be written: the folder does not exist.");
    row("no folder to be made", "frames PROJECT --out LOG/x", 1,
        "/x cannot be made: Not a directory.");
    row("no place for the video", "video PROJECT --out DIR/none/a.mp4", 1,
        "none/a.mp4 could not be written: the folder does not exist.");
    row("unknown container", "video PROJECT --out DIR/a.picture", 1,
        "a.picture cannot be written: its name does not end in .mp4");
    row("no container", "video PROJECT --out DIR/a", 1,
        "/a cannot be written: its name does not end in .mp4");
    row("missing project", "frame DIR/none.ecor --at-ms 0 --out DIR/a.png", 1,
        "none.ecor does not exist.");
    row("missing video", "frame DIR/none.mp4 --at-ms 0 --out DIR/a.png", 1,
        "none.mp4 does not exist.");
    row("no video", "frame LOG --at-ms 0 --out DIR/a.png", 1, "cannot be opened: it is no video.");
    row("no log", "frame VIDEO PROJECT --at-ms 0 --out DIR/a.png", 1, "is not a flight log.");
    row("project without its log", "frame NOLOG --at-ms 0 --out DIR/a.png", 1, "");
}

void FrameCommandsTest::refusals()
{
    QFETCH(QString, arguments);
    const std::pair<const char*, QString> words[] = {{"NOLOG", path("nolog.ecor")},
                                                     {"DIR", m_folder.path()},
                                                     {"PROJECT", m_project},
                                                     {"VIDEO", m_video},
                                                     {"LOG", m_log}};
    QStringList list = arguments.split(QLatin1Char(' '));
    for (QString& argument : list) {
        for (const auto& word : words) {
            if (argument.startsWith(QLatin1String(word.first))) {
                argument.replace(0, int(qstrlen(word.first)), word.second);
                break;
            }
        }
    }
    const ProgramRun outcome = run(list);
    QTEST(outcome.status, "status");
    QFETCH(QByteArray, reason);
    const QList<QByteArray> lines = outcome.error.trimmed().split('\n');
    QCOMPARE(lines.last().startsWith("usage: vistrel-cli "), outcome.status == 2);
    QCOMPARE(lines.size(), outcome.status == 2 && !reason.isEmpty() ? 2 : 1);
    if (!reason.isEmpty() || outcome.status != 2)
        QVERIFY2(lines.first().startsWith("vistrel-cli: ") && lines.first().contains(reason),
                 outcome.error);
    QCOMPARE(QDir(m_folder.path()).entryList({"*.part.*"}), QStringList());
}

QTEST_MAIN(FrameCommandsTest)
#include "FrameCommandsTest.moc"
