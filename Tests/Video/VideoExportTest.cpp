#include "ExportFixture.h"
#include "SampleFlight/frameStrip.h"
#include "Support/FullDisk.h"
#include "Support/LogBuilder.h"
#include "Support/MessageLog.h"
#include "Threads/pool.h"
#include "openVideo.h"

#include <QDir>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>
#include <filesystem>

using namespace corv;
using namespace corv::test;

namespace {

/// A cold thermal frame that ends where the second file begins, a second into the video, and a hot
/// one from there on.
LogBuilder coldThenHotLog()
{
    constexpr quint32 startMs = 10000;
    constexpr quint32 videoMs = startMs + 690; // when the recorder's first frame comes
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32"}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32"}});
    log.addGroup("lepton_status", 3, {{"time", "UINT32"}, {"frame_counter", "UINT32"}});
    log.addGroup(
        "lepton_video", 4,
        {{"frame_counter", "UINT32"}, {"image_part", "UINT8"}, {"image", "UINT16", 19200}});
    log.addPacket(1, LogBuilder::u32(startMs)).addPacket(2, LogBuilder::u32(startMs + 3000));
    for (quint32 frame = 0; frame < 2; ++frame) {
        log.addPacket(3, LogBuilder::u32(videoMs + 1000 * (frame + 1)) + LogBuilder::u32(frame));
        log.addPacket(4, LogBuilder::u32(frame) + LogBuilder::u8(0) +
                             QByteArray("\x3f\xff").repeated(19200 * int(frame)) +
                             QByteArray(2 * 19200 * int(1 - frame), '\0'));
    }
    return log;
}

/// Shows nothing and remembers the scale of each picture.
class ScaleInset : public PictureInset
{
public:
    Part partAt(const Moment& moment) override
    {
        scales.push_back(moment.thermal);
        return {};
    }

    // Read once the worker has answered.
    std::vector<std::optional<ThermalScale>> scales;
};

/// Whether the middle of the overlay is red, and with nothing of the picture under it.
bool isHot(const cv::Vec3b& bgr)
{
    return bgr[2] > 100 && bgr[0] < 30;
}

bool isCold(const cv::Vec3b& bgr)
{
    return bgr[0] > 100 && bgr[2] < 30;
}

QList<int> countedFrom(int first, int count)
{
    QList<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers << first + i;
    return numbers;
}

constexpr int overlayX = 170;
constexpr int overlayY = 113;

} // namespace

/// Whole videos: what is in them, what ends them early, and what they may not overwrite.
class VideoExportTest : public QObject, private ExportFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void exportsEveryFrameInOrder();
    void videoThatFillsTheDiskIsReported();
    void effectsAreInTheVideo();
    void theOverlayFollowsTheTimeline_data();
    void theOverlayFollowsTheTimeline();
    void theOverlayOfASavedFrameFollowsItsFile_data();
    void theOverlayOfASavedFrameFollowsItsFile();
    void theRangeIsSignalledOnTheInterfaceThread();
    void theOverlayOnScreenSaysItsValues();
    void theScaleIsThatOfTheFrameOnScreen();
    void insetsKnowTheScaleOfTheirOwnFrame_data();
    void insetsKnowTheScaleOfTheirOwnFrame();
    void theGreyPaletteHasNoColours();
    void aSeriesNamesPicturesWithAnotherThermalPicture();
    void cancelledInTheSecondFile();
    void aFileOfAnotherSizeAddsNothing();
    void aFileThatFailsEndsAlone();
    void aPositionThatIsLostIsReported();
    void refusedExportStillEmitsItsEnd();
    void sourcesAreNotOverwritten_data();
    void sourcesAreNotOverwritten();
    void anExportWhileThePoolWaitsForPictures();
    void anExportThatIsLeftEndsReadable();

private:
    QList<int> numbersInVideo(const QString& file);
    void openTwoFilesWithALog();

    std::unique_ptr<LogParser> m_parser;
};

QList<int> VideoExportTest::numbersInVideo(const QString& file)
{
    QList<int> numbers;
    const auto source = openVideo(file);
    for (cv::Mat picture; source && !(picture = readPicture(*source)).empty();)
        numbers << readFrameNumber(picture);
    return numbers;
}

void VideoExportTest::exportsEveryFrameInOrder()
{
    addFile("CORV0001.MP4", 30);
    addFile("CORV0002.MP4", 21, 30);
    open("CORV0001.MP4");
    QVERIFY(m_player->seekAtFrame(40));
    QTRY_COMPARE(m_surface.lastNumber(), 40);
    MessageLog log;
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(record.results.first());
    QCOMPARE(numbersInVideo(path("out.mp4")), countedFrom(0, 51));
    QCOMPARE(record.progress.size(), 51);
    for (int i = 0; i < 51; ++i)
        QCOMPARE(record.progress.at(i), qMakePair(i + 1, 51));
    for (const char* file : {"CORV0001.MP4", "CORV0002.MP4"})
        QVERIFY(log.contains(QStringLiteral("Starting to export video \"%1\"")
                                 .arg(path(QString::fromLatin1(file)))));
    // Playback goes on where it was.
    m_player->play();
    QTRY_VERIFY(m_surface.numbers.contains(41));
}

void VideoExportTest::videoThatFillsTheDiskIsReported()
{
    addFile("CORV0001.MP4", 60);
    open("CORV0001.MP4");
    MessageLog log;
    const ExportRecord record(*m_player);
    {
        const FullDisk disk(8192);
        QVERIFY(m_player->exportVideo(path("out.mp4")));
        QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    }
    QVERIFY(log.contains("Exported video is incomplete: frames"));
    QVERIFY(record.results.first()); // it is about the position alone
    QVERIFY(!m_player->videoExportResult());
    QVERIFY(m_player->videoExportResult().failure().sentence.contains("out.mp4"));
    QCOMPARE(QDir(m_folder->path()).entryList({"out*"}), QStringList{}); // it cannot be read
    log.clear();
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 2, 60000);
    QVERIFY(!log.contains("Exported video is incomplete: frames"));
    QVERIFY(m_player->videoExportResult().ok());
    QCOMPARE(QDir(m_folder->path()).entryList({"out*"}), QStringList{"out.mp4"});
}

void VideoExportTest::effectsAreInTheVideo()
{
    addFile("a.mp4", 5);
    open("a.mp4");
    m_player->setContrast(0.5);
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    const auto exported = openVideo(path("out.mp4"));
    QVERIFY(exported);
    const cv::Mat frame = readPicture(*exported);
    QVERIFY(!frame.empty());
    const cv::Vec3b plain = testPicture(0, {320, 240}).at<cv::Vec3b>(230, 310);
    const cv::Vec3b seen = frame.at<cv::Vec3b>(230, 310);
    for (int channel = 0; channel < 3; ++channel)
        QVERIFY(std::abs(seen[channel] - plain[channel] / 2) < 8);
}

void VideoExportTest::openTwoFilesWithALog()
{
    addFile("CORV0001.MP4", 25);
    addFile("CORV0002.MP4", 25, 25);
    QVERIFY(coldThenHotLog().save(path("flight.log")));
    open("CORV0001.MP4");
    m_parser = std::make_unique<LogParser>();
    m_parser->setDuration(m_player->duration());
    m_parser->parseLog(path("flight.log"), false);
    QTRY_VERIFY(m_parser->isSynced());
    m_player->setLogParser(m_parser.get());
    m_player->setIrMappingMaxValue(16383);
    m_player->updateLogData();
}

void VideoExportTest::theOverlayFollowsTheTimeline_data()
{
    QTest::addColumn<bool>("showIR");
    QTest::newRow("with the overlay") << true;
    QTest::newRow("without") << false;
}

void VideoExportTest::theOverlayFollowsTheTimeline()
{
    QFETCH(bool, showIR);
    openTwoFilesWithALog();
    m_player->setShowIR(showIR);
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    const auto exported = openVideo(path("out.mp4"));
    QVERIFY(exported);
    QCOMPARE(exported->frameCount(), 50);
    for (int i = 0; i < 50; ++i) {
        const cv::Mat frame = readPicture(*exported);
        QCOMPARE(readFrameNumber(frame), i);
        const cv::Vec3b seen = frame.at<cv::Vec3b>(overlayY, overlayX);
        QCOMPARE(isCold(seen), showIR && i < 25);
        QCOMPARE(isHot(seen), showIR && i >= 25);
    }
}

void VideoExportTest::theOverlayOfASavedFrameFollowsItsFile_data()
{
    QTest::addColumn<bool>("asOnScreen");
    QTest::newRow("the time inside its file") << false;
    QTest::newRow("the moment on screen") << true;
}

// On screen the second file is in the hot half; the time inside the file is in the cold one.
void VideoExportTest::theOverlayOfASavedFrameFollowsItsFile()
{
    QFETCH(bool, asOnScreen);
    openTwoFilesWithALog();
    m_player->setShowIR(true);
    m_player->setThermalAsOnScreen(asOnScreen);
    QVERIFY(m_player->saveFrame(timeAt(1400), path("shot.png"), false));
    QTRY_VERIFY(!QImage(path("shot.png")).isNull());
    const QImage shot(path("shot.png"));
    QCOMPARE(numberIn(shot), 35);
    const QColor seen = shot.pixelColor(overlayX, overlayY);
    const cv::Vec3b bgr{uchar(seen.blue()), uchar(seen.green()), uchar(seen.red())};
    QCOMPARE(isHot(bgr), asOnScreen);
    QCOMPARE(isCold(bgr), !asOnScreen);
}

void VideoExportTest::theRangeIsSignalledOnTheInterfaceThread()
{
    openTwoFilesWithALog();
    QThread* maxThread = nullptr;
    double seenMax = -1.0;
    connect(
        m_player.get(), &VideoPlayer::irDataMaxChanged, this,
        [&] {
            maxThread = QThread::currentThread();
            seenMax = m_player->irDataMax();
        },
        Qt::DirectConnection);
    m_player->setShowIR(true);
    QVERIFY(m_player->goToFrame(40)); // its range is reported with the frame after
    QTRY_COMPARE(m_surface.lastNumber(), 40);
    QVERIFY(m_player->step(1));
    QTRY_COMPARE(seenMax, 16383.0);
    QCOMPARE(maxThread, QThread::currentThread());
}

void VideoExportTest::theOverlayOnScreenSaysItsValues()
{
    openTwoFilesWithALog();
    QTRY_VERIFY(m_player->thermalStatus().ok());
    QVERIFY(m_player->thermalExtremes().isEmpty());
    QVERIFY(qIsNaN(m_player->thermalValueAt(0.5, 0.5)));
    m_player->setShowIR(true);
    for (const auto& [frame, value] : {std::pair{10, 0}, std::pair{40, 16383}}) {
        QVERIFY(m_player->goToFrame(frame));
        QTRY_COMPARE(m_surface.lastNumber(), frame);
        QCOMPARE(m_player->thermalValueAt(0.5, 0.5), double(value));
        QVERIFY(qIsNaN(m_player->thermalValueAt(0.05, 0.5)));
        for (const char* extreme : {"coldest", "hottest"}) {
            const QVariantMap point = m_player->thermalExtremes()[extreme].toMap();
            QCOMPARE(point["value"].toInt(), value);
            QCOMPARE(m_player->thermalValueAt(point["x"].toDouble(), point["y"].toDouble()),
                     double(value));
        }
    }
    m_player->setShowIR(false);
    QTRY_VERIFY(m_player->thermalExtremes().isEmpty());
}

// The stated range is that of the frame before; the colour bar must not lag.
void VideoExportTest::theScaleIsThatOfTheFrameOnScreen()
{
    openTwoFilesWithALog();
    QTRY_VERIFY(m_player->thermalStatus().ok());
    QVERIFY(!m_player->thermalScale());
    m_player->setAutoIRMapping(true);
    m_player->setShowIR(true);
    for (const auto& [frame, value] : {std::pair{10, 0}, std::pair{40, 16383}, std::pair{5, 0}}) {
        QVERIFY(m_player->goToFrame(frame));
        QTRY_COMPARE(m_surface.lastNumber(), frame);
        QVERIFY(m_player->thermalScale() ==
                (ThermalScale{ThermalPalette::rainbow, double(value), double(value)}));
    }
    m_player->setAutoIRMapping(false);
    m_player->setIrMappingMinValue(7000);
    m_player->setIrPalette(static_cast<int>(ThermalPalette::grey));
    QTRY_VERIFY(m_player->thermalScale() == (ThermalScale{ThermalPalette::grey, 7000, 16383}));
    m_player->setShowIR(false);
    QTRY_VERIFY(!m_player->thermalScale());
}

void VideoExportTest::insetsKnowTheScaleOfTheirOwnFrame_data()
{
    QTest::addColumn<bool>("showIR");
    QTest::addColumn<bool>("automatic");
    QTest::newRow("automatic range") << true << true;
    QTest::newRow("range by hand") << true << false;
    QTest::newRow("without the overlay") << false << true;
}

void VideoExportTest::insetsKnowTheScaleOfTheirOwnFrame()
{
    QFETCH(bool, showIR);
    QFETCH(bool, automatic);
    openTwoFilesWithALog();
    m_player->setShowIR(showIR);
    m_player->setAutoIRMapping(automatic);
    m_player->setIrMappingMinValue(100);
    m_player->setThermalAsOnScreen(true);
    const auto inset = std::make_shared<ScaleInset>();
    m_player->setExportInsets({inset});
    const auto expected = [&](int frame) -> std::optional<ThermalScale> {
        if (!showIR)
            return std::nullopt;
        const double value = frame < 25 ? 0 : 16383;
        return automatic ? ThermalScale{ThermalPalette::rainbow, value, value}
                         : ThermalScale{ThermalPalette::rainbow, 100, 16383};
    };
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QCOMPARE(int(inset->scales.size()), 50);
    for (int i = 0; i < 50; ++i)
        QVERIFY2(inset->scales[static_cast<size_t>(i)] == expected(i),
                 qPrintable(QString::number(i)));
    inset->scales.clear();
    for (const int frame : {40, 3}) {
        QSignalSpy saved(m_player.get(), &VideoPlayer::frameSaveComplete);
        QVERIFY(m_player->saveFrame(timeAt(frame * 40), path("shot.png"), true));
        QTRY_COMPARE(saved.size(), 1);
        QVERIFY(inset->scales.back() == expected(frame));
    }
}

void VideoExportTest::theGreyPaletteHasNoColours()
{
    openTwoFilesWithALog();
    m_player->setShowIR(true);
    m_player->setIrPalette(static_cast<int>(ThermalPalette::grey));
    StillFrame still(*m_player, timeAt(0));
    QTRY_VERIFY(still.came());
    const QColor cold = still.image().pixelColor(overlayX, overlayY);
    QCOMPARE(cold, QColor(0, 0, 0));
    m_player->setIrPalette(static_cast<int>(ThermalPalette::even));
    StillFrame even(*m_player, timeAt(0));
    QTRY_VERIFY(even.came());
    const QColor blue = even.image().pixelColor(overlayX, overlayY);
    QVERIFY(blue.blue() > blue.red() + 30 && blue.blue() > blue.green());
}

void VideoExportTest::aSeriesNamesPicturesWithAnotherThermalPicture()
{
    openTwoFilesWithALog();
    QTRY_VERIFY(m_player->thermalStatus().ok());
    m_player->setShowIR(true);
    QVERIFY(!m_player->savesOtherThermal(timeAt(999)));
    QVERIFY(m_player->savesOtherThermal(timeAt(1000)));
    QVERIFY(QDir().mkpath(path("out")));
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    QVERIFY(m_player->exportSpecificFrames({0, 1000, 1400}, path("out"), "Frame"));
    QTRY_COMPARE(complete.count(), 1);
    QVERIFY(m_player->framesExportNote().startsWith("Frame001.jpg to Frame002.jpg"));
    // By the names under which they were saved, and none that was not.
    QVERIFY(m_player->exportSpecificFrames({0, 1400}, path("out"), "Frame"));
    QTRY_COMPARE(complete.count(), 2);
    QVERIFY(m_player->framesExportNote().startsWith("Frame001(1).jpg has"));
    QVERIFY(m_player->exportSpecificFrames({1000, 1400}, path("gone"), "Frame"));
    QTRY_COMPARE(complete.count(), 3);
    QCOMPARE(m_player->framesExportNote(), QString());
    m_player->setThermalAsOnScreen(true);
    QVERIFY(!m_player->savesOtherThermal(timeAt(1400)));
    QVERIFY(m_player->exportSpecificFrames({0, 1000}, path("out"), "Other"));
    QTRY_COMPARE(complete.count(), 4);
    QVERIFY(m_player->framesExportNote().isEmpty());
}

void VideoExportTest::cancelledInTheSecondFile()
{
    addFile("CORV0001.MP4", 20);
    addFile("CORV0002.MP4", 2000, 20);
    open("CORV0001.MP4");
    const ExportRecord record(*m_player);
    QObject canceller;
    VideoPlayer* const player = m_player.get();
    connect(
        player, &VideoPlayer::videoExportProgress, &canceller,
        [player](int done) {
            if (done >= 30)
                player->cancelExportVideo();
        },
        Qt::DirectConnection);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(record.results.first());
    QCOMPARE(numbersInVideo(path("out.mp4")), countedFrom(0, 30));
    m_player.reset(); // its thread calls the canceller
}

void VideoExportTest::aFileOfAnotherSizeAddsNothing()
{
    addFile("CORV0001.MP4", 10);
    addFile("CORV0002.MP4", 10, 10)->size = QSize(160, 120);
    addFile("CORV0003.MP4", 10, 20);
    open("CORV0001.MP4");
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(record.results.first());
    QCOMPARE(numbersInVideo(path("out.mp4")), countedFrom(0, 10) + countedFrom(20, 10));
    QCOMPARE(record.progress.size(), 30);
}

void VideoExportTest::aFileThatFailsEndsAlone()
{
    addFile("CORV0001.MP4", 10)->unreadable = {4};
    const auto second = addFile("CORV0002.MP4", 10, 10);
    addFile("CORV0003.MP4", 10, 20);
    open("CORV0001.MP4");
    QVERIFY(m_player->seekAtFrame(15));
    QTRY_COMPARE(m_surface.lastNumber(), 15);
    QVERIFY(m_player->seekAtFrame(0));
    QTRY_COMPARE(m_surface.lastNumber(), 0);
    second->positioning = false; // and so it cannot go back to its first frame
    MessageLog log;
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(record.results.first());
    QVERIFY(log.contains("Read failed for frame  4"));
    QVERIFY(log.contains("Forcefully stopping at frame  0"));
    QCOMPARE(numbersInVideo(path("out.mp4")), countedFrom(0, 4) + countedFrom(20, 10));
}

void VideoExportTest::aPositionThatIsLostIsReported()
{
    const auto file = addFile("a.mp4", 10);
    file->unreachable = {6};
    open("a.mp4");
    QVERIFY(m_player->seekAtFrame(5));
    QTRY_COMPARE(m_surface.lastNumber(), 5);
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(!record.results.first());
}

void VideoExportTest::refusedExportStillEmitsItsEnd()
{
    addFile("a.mp4", 5);
    open("a.mp4");
    MessageLog log;
    const ExportRecord record(*m_player);
    QVERIFY(!m_player->exportVideo(QString()));
    QVERIFY(record.results.isEmpty()); // only after the call: who waits may not be ready yet
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(log.contains("!m_hasVideoOpened || file.isEmpty()"));
    QVERIFY(m_player->exportVideo(path("no/folder/out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 2, 60000);
    QVERIFY(m_player->exportVideo(path("shot001.none"))); // no container; no series of pictures
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 3, 60000);
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    log.clear();
    QVERIFY(m_player->exportVideo(path("out.mp4"))); // the end of the stream has been reached
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 4, 60000);
    QVERIFY(log.contains("Invalid video capture"));
    m_player->close();
    QVERIFY(!m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 5, 60000);
    QVERIFY(!record.results.contains(true));
}

void VideoExportTest::sourcesAreNotOverwritten_data()
{
    QTest::addColumn<QString>("target");
    for (const char* name : {"CORV0001.MP4", "CORV0002.MP4", "symbolic.mp4", "hard.mp4",
                             "sub/../CORV0001.MP4", "relative"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void VideoExportTest::sourcesAreNotOverwritten()
{
    QFETCH(QString, target);
    addFile("CORV0001.MP4", 5);
    addFile("CORV0002.MP4", 5);
    QVERIFY(QDir().mkpath(path("sub")));
    QVERIFY(QFile::link(path("CORV0002.MP4"), path("symbolic.mp4")));
    std::error_code failed;
    std::filesystem::create_hard_link(path("CORV0002.MP4").toStdString(),
                                      path("hard.mp4").toStdString(), failed);
    QVERIFY(!failed);
    open("CORV0001.MP4");
    MessageLog log;
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(target == "relative"
                                      ? QDir::current().relativeFilePath(path("CORV0001.MP4"))
                                      : path(target)));
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QVERIFY(!record.results.first());
    QVERIFY(log.contains("Refused to export over a file of the flight:"));
    for (const char* name : {"CORV0001.MP4", "CORV0002.MP4"}) {
        QFile file(path(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("source"));
    }
}

// A task of the pool that waits for a picture, while the export waits for the pool.
void VideoExportTest::anExportWhileThePoolWaitsForPictures()
{
    addFile("a.mp4", 50);
    open("a.mp4");
    const int threads = QThreadPool::globalInstance()->maxThreadCount();
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    auto picture = std::make_shared<QSemaphore>();
    const PoolTask waiting = runOnPool([this, picture] {
        m_player->getFrameAsync(timeAt(0), [picture](const QImage&) { picture->release(); });
        picture->acquire();
    });
    QTRY_COMPARE_WITH_TIMEOUT(record.results.size(), 1, 60000);
    QTRY_VERIFY(!waiting.isRunning());
    QCOMPARE(numbersInVideo(path("out.mp4")), countedFrom(0, 50));
    QThreadPool::globalInstance()->setMaxThreadCount(threads);
}

void VideoExportTest::anExportThatIsLeftEndsReadable()
{
    addFile("a.mp4", 100000);
    open("a.mp4");
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_VERIFY(record.progress.size() > 3);
    m_player.reset();
    const QList<int> numbers = numbersInVideo(path("out.mp4"));
    QVERIFY(numbers.size() >= 3);
    QCOMPARE(numbers, countedFrom(0, numbers.size()));
}

QTEST_MAIN(VideoExportTest)
#include "VideoExportTest.moc"
