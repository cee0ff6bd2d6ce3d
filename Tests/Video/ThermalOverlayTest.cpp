#include "Video/ThermalOverlay.h"

#include "Support/MessageLog.h"
#include "Video/pictureEffects.h"
#include "Video/thermalPicture.h"
#include "thermalLogs.h"

#include <QtTest>
#include <cmath>
#include <random>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::VideoDisplaySettings)

namespace {

// A log as a flight in trouble leaves it: lost parts, gaps in the counters, parts twice, junk at
// the end. The pixels lie between 8000 and 8000 + 13107, a range that maps without a remainder.
ThermalLog damagedLog(int parts, unsigned seed)
{
    std::mt19937 random(seed);
    ThermalLog log;
    log.wordsPerPacket = thermalPixels / parts;
    quint32 counter = static_cast<quint32>(random()) % 5;
    for (quint32 f = 0; f < 14; ++f, ++counter) {
        if (random() % 6 != 0)
            log.status.push_back({2000 + 114 * f + static_cast<quint32>(random()) % 9, counter});
        for (int p = 0; p < parts; ++p) {
            for (auto copies = random() % 8 ? 1 : random() % 3; copies; --copies) {
                ThermalLog::Packet packet{counter, static_cast<quint8>(p), {}};
                for (int k = 0; k < log.wordsPerPacket; ++k)
                    packet.pixels.push_back(static_cast<quint16>(8000 + random() % 13108));
                packet.pixels[0] = 8000;
                packet.pixels[1] = 8000 + 13107;
                log.packets.push_back(packet);
            }
        }
    }
    if (random() % 2) {
        log.status.push_back({9, 3'000'000'000});
        log.packets.push_back({3'000'000'000, 200, pixels(log.wordsPerPacket, 1)});
    }
    return log;
}

std::vector<quint16> values(const cv::Mat& thermal)
{
    return {thermal.ptr<quint16>(), thermal.ptr<quint16>() + thermal.total()};
}

const cv::Vec3b coldest(128, 0, 0);

} // namespace

/// The overlay as it is drawn into the frame, and the effects under it.
class ThermalOverlayTest : public QObject
{
    Q_OBJECT

private slots:
    void equalsTheSlowComputation_data();
    void equalsTheSlowComputation();
    void aGapShowsTheNewestFrameBeforeIt_data();
    void aGapShowsTheNewestFrameBeforeIt();
    void rangeIsThatOfTheFrameBefore();
    void contrastAndBrightness_data();
    void contrastAndBrightness();
    void effectsComeBeforeTheOverlay();
    void theOverlayIsPlacedByItsOffsets_data();
    void theOverlayIsPlacedByItsOffsets();
    void rectangleBeyondTheFrame_data();
    void rectangleBeyondTheFrame();
    void emptyMappingDrawsNothing_data();
    void emptyMappingDrawsNothing();
    void unfitFramesAreLeftAlone();
};

void ThermalOverlayTest::equalsTheSlowComputation_data()
{
    QTest::addColumn<int>("parts");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<VideoDisplaySettings>("settings");
    QTest::addColumn<bool>("invert");
    VideoDisplaySettings settings = shown();
    QTest::newRow("one part, automatic") << 1 << QSize(320, 180) << settings << false;
    QTest::newRow("four parts, automatic") << 4 << QSize(320, 180) << settings << false;
    QTest::newRow("a part per row") << 120 << QSize(320, 180) << settings << false;
    QTest::newRow("parts of broken rows") << 64 << QSize(320, 180) << settings << false;
    QTest::newRow("parts smaller than a row") << 150 << QSize(320, 180) << settings << false;
    QTest::newRow("inverted") << 4 << QSize(320, 180) << settings << true;
    QTest::newRow("smaller than the thermal frame") << 4 << QSize(161, 97) << settings << false;
    QTest::newRow("large") << 4 << QSize(1280, 720) << settings << false;
    settings.irOverlayTransparent = true;
    QTest::newRow("translucent") << 4 << QSize(640, 360) << settings << false;
    settings.irOffsetX = 0.2;
    settings.irOffsetY = -0.16;
    QTest::newRow("moved") << 4 << QSize(640, 360) << settings << false;
    settings.irOffsetX = -0.2;
    settings.irOffsetY = 0.16;
    QTest::newRow("moved the other way") << 4 << QSize(640, 360) << settings << false;
    settings.fullScreenIR = true;
    QTest::newRow("full screen is opaque") << 4 << QSize(333, 217) << settings << false;
    settings = shown(false);
    QTest::newRow("fixed, whole range") << 4 << QSize(320, 180) << settings << false;
    settings.irMappingMinValue = 12'000.0;
    settings.irMappingMaxValue = 12'000.0 + 4369.0;
    QTest::newRow("fixed, saturated on both sides") << 4 << QSize(320, 180) << settings << false;
    QTest::newRow("the same inverted") << 4 << QSize(320, 180) << settings << true;
    std::swap(settings.irMappingMinValue, settings.irMappingMaxValue);
    QTest::newRow("fixed, upside down") << 4 << QSize(320, 180) << settings << false;
    settings.irMappingMinValue = 30'000.0;
    settings.irMappingMaxValue = 30'257.0;
    QTest::newRow("fixed, all below") << 4 << QSize(320, 180) << settings << false;
}

void ThermalOverlayTest::equalsTheSlowComputation()
{
    QFETCH(int, parts);
    QFETCH(QSize, size);
    QFETCH(VideoDisplaySettings, settings);
    QFETCH(bool, invert);
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1500));
    std::vector<quint16> memory(thermalPixels, 0);
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const ThermalLog log = damagedLog(parts, seed);
        ThermalReference reference(log);
        reference.setComposed(memory);
        overlay.updateLogData(true, log.decoded());
        QVERIFY(overlay.isActive());
        for (const int timeMs : {-2000, 0, 497, 560, 900, 1333, 1334, 700, 5000}) {
            const cv::Mat before = randomFrame(size.width(), size.height(), seed);
            cv::Mat frame = before.clone();
            applyPictureEffects(overlay, frame, timeMs, settings, invert, noReport);
            reference.compose(1500 + timeMs);
            QVERIFY(values(overlay.thermalFrame()) == reference.composed());
            QVERIFY(equal(frame, reference.drawn(before, settings, invert)));
        }
        memory = reference.composed();
    }
}

void ThermalOverlayTest::aGapShowsTheNewestFrameBeforeIt_data()
{
    QTest::addColumn<QList<int>>("framesBefore");
    QTest::newRow("opened there") << QList<int>();
    QTest::newRow("played") << QList<int>{1, 2, 3, 4};
    QTest::newRow("after a jump on") << QList<int>{0};
    QTest::newRow("after a jump back") << QList<int>{9};
}

// Of frames 4 to 6 the log has the status and no packet; of frame 3 a part is missing.
void ThermalOverlayTest::aGapShowsTheNewestFrameBeforeIt()
{
    QFETCH(QList<int>, framesBefore);
    ThermalLog log = plainLog(10, 2);
    const auto isLost = [](const ThermalLog::Packet& packet) {
        return (packet.counter >= 4 && packet.counter <= 6) ||
               (packet.counter == 3 && packet.part == 1);
    };
    log.packets.erase(std::remove_if(log.packets.begin(), log.packets.end(), isLost),
                      log.packets.end());
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, log.decoded());
    const auto draw = [&overlay](int number) {
        cv::Mat frame = randomFrame(320, 180, 1);
        overlay.drawThermalOverlay(frame, 114 * number - 50, shown(), false);
    };
    for (const int number : framesBefore)
        draw(number);
    draw(5);
    const cv::Mat& thermal = overlay.thermalFrame();
    QCOMPARE(int(thermal.at<quint16>(0, 0)), 3000);
    QCOMPARE(int(thermal.at<quint16>(thermalRows / 2, 0)), 2001);
}

void ThermalOverlayTest::rangeIsThatOfTheFrameBefore()
{
    const auto clock = clockAt(1000);
    ThermalOverlay overlay;
    overlay.setClock(clock);
    overlay.updateLogData(true, plainLog(6, 4).decoded());
    QVector<QPair<double, double>> reports;
    const auto report = [&reports](double min, double max) { reports.append({min, max}); };
    VideoDisplaySettings settings = shown();
    cv::Mat frame = randomFrame(320, 180, 1);
    applyPictureEffects(overlay, frame, 50, settings, false, report);
    QCOMPARE(reports, (QVector<QPair<double, double>>{{0.0, 0.0}}));
    applyPictureEffects(overlay, frame, 114 + 50, settings, false, report);
    QCOMPARE(reports.last(), qMakePair(1000.0, 1003.0));
    QCOMPARE(settings.irDataMin, 1000.0);
    QCOMPARE(settings.irDataMax, 1003.0);
    applyPictureEffects(overlay, frame, 114 + 50, settings, false, noReport);
    QCOMPARE(settings.irDataMax, 1003.0);
    settings.showIR = false;
    applyPictureEffects(overlay, frame, 114 + 50, settings, false, report);
    applyPictureEffects(overlay, frame, 114 + 50, settings, false, report);
    QCOMPARE(reports.size(), 3);
    QCOMPARE(reports.last(), qMakePair(2000.0, 2003.0));
    clock->synced = false;
    settings.irDataMax = 7.0;
    applyPictureEffects(overlay, frame, 114 + 50, settings, false, report);
    QCOMPARE(reports.size(), 3);
}

void ThermalOverlayTest::contrastAndBrightness_data()
{
    QTest::addColumn<double>("contrast");
    QTest::addColumn<double>("brightness");
    QTest::newRow("none") << 1.0 << 0.0;
    QTest::newRow("less than the resolution") << 1.0 + 2.220446049250313e-16 << 1e-16;
    QTest::newRow("contrast") << 1.5 << 0.0;
    QTest::newRow("brightness") << 1.0 << -40.0;
    QTest::newRow("both") << 0.5 << 100.0;
    QTest::newRow("no number") << qQNaN() << 0.0;
}

void ThermalOverlayTest::contrastAndBrightness()
{
    QFETCH(double, contrast);
    QFETCH(double, brightness);
    VideoDisplaySettings settings;
    settings.contrast = contrast;
    settings.brightness = brightness;
    const cv::Mat before = randomFrame(64, 48, 1);
    cv::Mat frame = before.clone();
    ThermalOverlay overlay;
    applyPictureEffects(overlay, frame, 0, settings, false, noReport);
    for (int i = 0; i < 64 * 48 * 3; ++i) {
        const double value = before.data[i];
        const double wanted =
            std::isnan(contrast) ? value : std::nearbyint(value * contrast + brightness);
        QCOMPARE(double(frame.data[i]), std::clamp(wanted, 0.0, 255.0));
    }
}

void ThermalOverlayTest::effectsComeBeforeTheOverlay()
{
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, plainLog(6, 1).decoded());
    VideoDisplaySettings settings = shown();
    settings.brightness = 255.0;
    cv::Mat frame = randomFrame(320, 180, 1);
    applyPictureEffects(overlay, frame, 50, settings, false, noReport);
    QVERIFY(frame.at<cv::Vec3b>(0, 0) == cv::Vec3b(255, 255, 255));
    QVERIFY(frame.at<cv::Vec3b>(90, 160) == coldest);
}

void ThermalOverlayTest::theOverlayIsPlacedByItsOffsets_data()
{
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("720p") << QSize(1280, 720) << 0.0 << 0.0 << QRect(405, 128, 548, 427);
    QTest::newRow("1080p") << QSize(1920, 1080) << 0.0 << 0.0 << QRect(608, 193, 822, 640);
    QTest::newRow("moved") << QSize(1000, 1000) << 0.1 << -0.1 << QRect(417, 79, 428, 593);
    QTest::newRow("left of the edge, cut towards it")
        << QSize(1000, 1000) << -0.3175 << 0.0 << QRect(0, 179, 428, 593);
    QTest::newRow("nothing") << QSize(2, 1) << 0.0 << 0.0 << QRect(0, 0, 0, 0);
    QTest::newRow("far out") << QSize(1280, 720) << 1e300 << -1e300
                             << QRect(1'000'000'000, -1'000'000'000, 548, 427);
}

void ThermalOverlayTest::theOverlayIsPlacedByItsOffsets()
{
    QFETCH(QSize, frame);
    QFETCH(double, x);
    QFETCH(double, y);
    VideoDisplaySettings settings;
    settings.irOffsetX = x;
    settings.irOffsetY = y;
    const cv::Size size(frame.width(), frame.height());
    const cv::Rect place = thermalRectangle(size, settings);
    QTEST(QRect(place.x, place.y, place.width, place.height), "expected");
    settings.fullScreenIR = true;
    QVERIFY(thermalRectangle(size, settings) == cv::Rect({0, 0}, size));
}

void ThermalOverlayTest::rectangleBeyondTheFrame_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<bool>("translucent");
    QTest::newRow("right") << 0.4 << 0.0 << false;
    QTest::newRow("left, translucent") << -0.5 << 0.0 << true;
    QTest::newRow("corner") << -0.5 << 0.6 << false;
    QTest::newRow("outside") << 1.5 << 0.0 << false;
    QTest::newRow("far outside") << 1e300 << -1e300 << false;
}

void ThermalOverlayTest::rectangleBeyondTheFrame()
{
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(bool, translucent);
    const ThermalLog log = damagedLog(4, 1);
    ThermalReference reference(log);
    reference.compose(2500);
    ThermalOverlay overlay;
    overlay.setClock(clockAt(0));
    overlay.updateLogData(true, log.decoded());
    VideoDisplaySettings settings = shown();
    settings.irOverlayTransparent = translucent;
    settings.irOffsetX = x;
    settings.irOffsetY = y;
    VideoDisplaySettings asFarAsIntsGo = settings;
    asFarAsIntsGo.irOffsetX = std::clamp(x, -3.0, 3.0);
    asFarAsIntsGo.irOffsetY = std::clamp(y, -3.0, 3.0);
    const cv::Mat before = randomFrame(320, 180, 1);
    MessageLog messages;
    for (int i = 0; i < 3; ++i) {
        cv::Mat frame = before.clone();
        overlay.drawThermalOverlay(frame, 2500, settings, false);
        QVERIFY(equal(frame, reference.drawn(before, asFarAsIntsGo, false)));
    }
    QCOMPARE(messages.messages(),
             QStringList{QStringLiteral("Thermal overlay reaches beyond the frame")});
}

void ThermalOverlayTest::emptyMappingDrawsNothing_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::newRow("equal") << 9000.0 << 9000.0;
    QTest::newRow("both zero") << 0.0 << 0.0;
    QTest::newRow("nearly equal") << 1e-300 << 2e-300;
    QTest::newRow("no number") << qQNaN() << 9000.0;
    QTest::newRow("endless") << -qInf() << 9000.0;
}

void ThermalOverlayTest::emptyMappingDrawsNothing()
{
    QFETCH(double, min);
    QFETCH(double, max);
    VideoDisplaySettings settings = shown(false);
    settings.irMappingMinValue = min;
    settings.irMappingMaxValue = max;
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, plainLog(6, 4).decoded());
    const cv::Mat before = randomFrame(320, 180, 1);
    cv::Mat frame = before.clone();
    const QString text =
        QStringLiteral("No thermal overlay: its colours are mapped to an empty range");
    MessageLog messages;
    overlay.drawThermalOverlay(frame, 50, settings, false);
    overlay.drawThermalOverlay(frame, 50, settings, false);
    QVERIFY(equal(frame, before));
    QCOMPARE(messages.messages(), QStringList{text});
    QCOMPARE(thermalAt(overlay, 0), quint16(1000));
    // Logged again when it has been right in between.
    overlay.drawThermalOverlay(frame, 50, shown(), false);
    QVERIFY(!equal(frame, before));
    overlay.drawThermalOverlay(frame, 50, settings, false);
    QCOMPARE(messages.count(text), 2);
}

void ThermalOverlayTest::unfitFramesAreLeftAlone()
{
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, plainLog(6, 4).decoded());
    VideoDisplaySettings settings = shown();
    settings.irOverlayTransparent = true;
    settings.contrast = 1.5;
    MessageLog messages;
    cv::Mat none;
    applyPictureEffects(overlay, none, 50, settings, false, noReport);
    cv::Mat tiny(1, 2, CV_8UC3, cv::Scalar::all(10));
    applyPictureEffects(overlay, tiny, 50, settings, false, noReport);
    QVERIFY(tiny.at<cv::Vec3b>(0, 0) == cv::Vec3b(15, 15, 15));
    cv::Mat grey(180, 320, CV_8UC1, cv::Scalar::all(10));
    applyPictureEffects(overlay, grey, 50, settings, false, noReport);
    QCOMPARE(cv::countNonZero(grey != 15), 0);
    settings.irOffsetX = qQNaN();
    cv::Mat frame(180, 320, CV_8UC3, cv::Scalar::all(10));
    applyPictureEffects(overlay, frame, 50, settings, false, noReport);
    QVERIFY(frame.at<cv::Vec3b>(90, 160) == cv::Vec3b(15, 15, 15));
    QCOMPARE(messages.messages(),
             QStringList{QStringLiteral("No place for the thermal overlay in the frame")});
}

QTEST_GUILESS_MAIN(ThermalOverlayTest)
#include "ThermalOverlayTest.moc"
