#include "Video/ThermalOverlay.h"

#include "Support/MessageLog.h"
#include "Support/ThermalReference.h"
#include "Video/thermalPicture.h"

#include <QtTest>
#include <cmath>
#include <random>

using namespace corv;
using namespace corv::test;

using Spoil = std::function<void(LogFile&)>;
Q_DECLARE_METATYPE(Spoil)
Q_DECLARE_METATYPE(corv::VideoDisplaySettings)

namespace {

const ThermalOverlay::RangeReport noReport;

std::shared_ptr<FlightClock> clockAt(int logTimeOffset)
{
    auto clock = std::make_shared<FlightClock>();
    clock->logTimeOffset = logTimeOffset;
    clock->synced = true;
    return clock;
}

VideoDisplaySettings shown(bool autoMapping = true)
{
    VideoDisplaySettings settings;
    settings.showIR = true;
    settings.autoIRMapping = autoMapping;
    return settings;
}

std::vector<quint16> pixels(int words, quint16 value)
{
    return std::vector<quint16>(static_cast<size_t>(words), value);
}

// Frames 0 to `frames` - 1, one each 114 ms from 1000 ms on, in `parts` parts whose pixels all
// hold 1000 * frame + part.
ThermalLog plainLog(quint32 frames, int parts)
{
    ThermalLog log;
    log.wordsPerPacket = thermalPixels / parts;
    for (quint32 f = 0; f < frames; ++f) {
        log.status.push_back({1000 + 114 * f, f});
        for (int p = 0; p < parts; ++p) {
            const auto value = static_cast<quint16>(1000 * f + static_cast<quint32>(p));
            log.packets.push_back({f, static_cast<quint8>(p), pixels(log.wordsPerPacket, value)});
        }
    }
    return log;
}

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

cv::Mat randomFrame(int cols, int rows, unsigned seed)
{
    cv::Mat frame(rows, cols, CV_8UC3);
    cv::RNG random(seed);
    random.fill(frame, cv::RNG::UNIFORM, 0, 256);
    return frame;
}

bool equal(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

std::vector<quint16> values(const cv::Mat& thermal)
{
    return {thermal.ptr<quint16>(), thermal.ptr<quint16>() + thermal.total()};
}

quint16 thermalAt(const ThermalOverlay& overlay, int row)
{
    return overlay.thermalFrame().at<quint16>(row, 80);
}

LogVar* varOf(LogFile& log, const char* group, const char* var)
{
    return log.getGroup(std::string(group))->getVar(var);
}

Spoil reshape(const char* group, const char* var, int nb, int packets, LogVar::Type type)
{
    return [=](LogFile& log) { varOf(log, group, var)->allocate(nb, packets, type); };
}

Spoil counters(std::vector<quint32> numbers)
{
    return [numbers](LogFile& log) {
        for (size_t i = 0; i < numbers.size(); ++i)
            varOf(log, "lepton_status", "frame_counter")
                ->setU32(0, static_cast<int>(i), numbers[i]);
    };
}

const cv::Vec3b coldest(128, 0, 0);

} // namespace

class ThermalOverlayTest : public QObject
{
    Q_OBJECT

private slots:
    void equalsTheSlowComputation_data();
    void equalsTheSlowComputation();
    void noParserAndNoLogAreTold();
    void missingGroupsAndVarsAreSilent_data();
    void missingGroupsAndVarsAreSilent();
    void hostileTablesGiveNoOverlay_data();
    void hostileTablesGiveNoOverlay();
    void oddTablesAreReadWithinTheirRows_data();
    void oddTablesAreReadWithinTheirRows();
    void switches();
    void momentsOutsideTheLog();
    void manualOffsetMovesTheMoment();
    void lostPartsShowTheFrameBefore();
    void composedFrameOutlivesTheLog();
    void bytesAreExchangedInTheLog();
    void rangeIsThatOfTheFrameBefore();
    void contrastAndBrightness_data();
    void contrastAndBrightness();
    void effectsComeBeforeTheOverlay();
    void rectangle_data();
    void rectangle();
    void rectangleBeyondTheFrame_data();
    void rectangleBeyondTheFrame();
    void emptyMappingDrawsNothing_data();
    void emptyMappingDrawsNothing();
    void unfitFramesAreLeftAlone();
    void wrappedProductStaysInside();
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
            overlay.applyPictureEffects(frame, timeMs, settings, invert, noReport);
            reference.compose(1500 + timeMs);
            QVERIFY(values(overlay.thermalFrame()) == reference.composed());
            QVERIFY(equal(frame, reference.drawn(before, settings, invert)));
        }
        memory = reference.composed();
    }
}

void ThermalOverlayTest::noParserAndNoLogAreTold()
{
    ThermalOverlay overlay;
    overlay.setClock(clockAt(0));
    overlay.updateLogData(true, plainLog(5, 4).decoded());
    QVERIFY(overlay.isActive());
    MessageLog messages;
    overlay.updateLogData(false, nullptr);
    QCOMPARE(messages.messages(QtWarningMsg), QStringList{QStringLiteral("No log parser")});
    QVERIFY(!overlay.isActive());
    overlay.updateLogData(true, plainLog(5, 4).decoded());
    messages.clear();
    overlay.updateLogData(true, nullptr);
    QCOMPARE(messages.messages(QtWarningMsg), QStringList{QStringLiteral("No log file")});
    QVERIFY(!overlay.isActive());
}

void ThermalOverlayTest::missingGroupsAndVarsAreSilent_data()
{
    QTest::addColumn<QByteArray>("missing");
    for (const char* name : {"lepton_status", "lepton_video", "time", "status frame_counter",
                             "image", "image_part", "video frame_counter"})
        QTest::newRow(name) << QByteArray(name);
}

void ThermalOverlayTest::missingGroupsAndVarsAreSilent()
{
    QFETCH(QByteArray, missing);
    const auto log = std::make_shared<LogFile>();
    const auto add = [&log, &missing](const char* group, int id,
                                      const std::vector<QByteArray>& names) {
        if (missing == group)
            return;
        log->addGroup(group, id);
        for (const QByteArray& name : names) {
            if (missing == name)
                continue;
            log->getGroup(id)->addVar(name.split(' ').last().toStdString());
            log->getGroup(id)->getVars().back().allocate(1, 3, LogVar::Uint32);
        }
    };
    add("lepton_status", 1, {"time", "status frame_counter"});
    add("lepton_video", 2, {"image", "image_part", "video frame_counter"});
    ThermalOverlay overlay;
    overlay.setClock(clockAt(0));
    overlay.updateLogData(true, plainLog(5, 4).decoded());
    MessageLog messages;
    overlay.updateLogData(true, log);
    QCOMPARE(messages.messages(), QStringList());
    QVERIFY(!overlay.isActive());
}

void ThermalOverlayTest::hostileTablesGiveNoOverlay_data()
{
    QTest::addColumn<Spoil>("spoil");
    const auto image = [](int nb, LogVar::Type type = LogVar::Uint16) {
        return reshape("lepton_video", "image", nb, 20, type);
    };
    QTest::newRow("image without columns") << image(0);
    QTest::newRow("image with fewer than no columns") << image(-4800);
    QTest::newRow("image larger than a frame") << image(19201);
    QTest::newRow("image of two frames") << image(38400);
    QTest::newRow("image that divides no frame") << image(4799);
    QTest::newRow("image of bytes") << image(4800, LogVar::Uint8);
    QTest::newRow("image of doubles") << image(4800, LogVar::Double);
    QTest::newRow("counters of four billion")
        << counters({4'294'967'290, 4'294'967'291, 4'294'967'292, 4'294'967'293, 4'294'967'294});
    QTest::newRow("last counter there is")
        << counters({4'294'967'291, 4'294'967'292, 4'294'967'293, 4'294'967'294, 4'294'967'295});
    QTest::newRow("counters that start beyond their end") << counters({90, 91, 3, 4, 5});
    QTest::newRow("status times of bytes") << reshape("lepton_status", "time", 1, 5, LogVar::Uint8);
    QTest::newRow("status counters of words")
        << reshape("lepton_status", "frame_counter", 1, 5, LogVar::Int16);
    QTest::newRow("status times without columns")
        << reshape("lepton_status", "time", 0, 5, LogVar::Uint32);
    QTest::newRow("part numbers of words")
        << reshape("lepton_video", "image_part", 1, 20, LogVar::Uint32);
    QTest::newRow("part counters of bytes")
        << reshape("lepton_video", "frame_counter", 1, 20, LogVar::Uint8);
}

void ThermalOverlayTest::hostileTablesGiveNoOverlay()
{
    QFETCH(Spoil, spoil);
    const auto log = plainLog(5, 4).decoded();
    spoil(*log);
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, plainLog(5, 4).decoded());
    MessageLog messages;
    overlay.updateLogData(true, log);
    QCOMPARE(messages.messages(QtWarningMsg),
             QStringList{QStringLiteral("Thermal frames of the log cannot be used")});
    QVERIFY(!overlay.isActive());
    const cv::Mat before = randomFrame(320, 180, 1);
    cv::Mat frame = before.clone();
    VideoDisplaySettings settings = shown();
    overlay.applyPictureEffects(frame, 50, settings, false, noReport);
    overlay.drawThermalOverlay(frame, 50, settings, false);
    QVERIFY(equal(frame, before));
}

void ThermalOverlayTest::oddTablesAreReadWithinTheirRows_data()
{
    QTest::addColumn<Spoil>("spoil");
    QTest::newRow("fewer status times") << reshape("lepton_status", "time", 1, 2, LogVar::Uint32);
    QTest::newRow("fewer status counters")
        << reshape("lepton_status", "frame_counter", 1, 1, LogVar::Uint32);
    QTest::newRow("no status") << reshape("lepton_status", "frame_counter", 1, 0, LogVar::Uint32);
    QTest::newRow("fewer part numbers")
        << reshape("lepton_video", "image_part", 1, 3, LogVar::Uint8);
    QTest::newRow("fewer part counters")
        << reshape("lepton_video", "frame_counter", 1, 0, LogVar::Uint32);
    QTest::newRow("fewer images") << reshape("lepton_video", "image", 4800, 2, LogVar::Uint16);
    QTest::newRow("no image") << reshape("lepton_video", "image", 4800, 0, LogVar::Uint16);
    QTest::newRow("one word per image") << reshape("lepton_video", "image", 1, 20, LogVar::Uint16);
    QTest::newRow("counters that run backward") << counters({5, 4, 3, 2, 1});
    QTest::newRow("counters that stand still") << counters({7, 7, 7, 7, 7});
}

void ThermalOverlayTest::oddTablesAreReadWithinTheirRows()
{
    QFETCH(Spoil, spoil);
    const auto log = plainLog(5, 4).decoded();
    spoil(*log);
    ThermalOverlay overlay;
    overlay.setClock(clockAt(0));
    MessageLog messages;
    overlay.updateLogData(true, log);
    QVERIFY(overlay.isActive());
    VideoDisplaySettings settings = shown();
    for (const int timeMs : {-5000, 0, 1, 500, 1050, 1200, 99'999}) {
        const cv::Mat before = randomFrame(320, 180, 1);
        cv::Mat frame = before.clone();
        overlay.applyPictureEffects(frame, timeMs, settings, false, noReport);
        QVERIFY(!equal(frame, before));
    }
    QCOMPARE(messages.messages(), QStringList());
}

void ThermalOverlayTest::switches()
{
    const auto clock = clockAt(0);
    ThermalOverlay overlay;
    QVERIFY(!overlay.isActive());
    overlay.updateLogData(true, plainLog(5, 4).decoded());
    QVERIFY(!overlay.isActive());
    overlay.setClock(clock);
    QVERIFY(overlay.isActive());
    clock->synced = false;
    QVERIFY(!overlay.isActive());
    clock->synced = true;
    VideoDisplaySettings settings = shown();
    settings.showIR = false;
    const cv::Mat before = randomFrame(320, 180, 1);
    cv::Mat frame = before.clone();
    overlay.applyPictureEffects(frame, 1000, settings, false, noReport);
    QVERIFY(equal(frame, before));
    overlay.setClock(nullptr);
    QVERIFY(!overlay.isActive());
    overlay.setClock(clock);
    overlay.clear();
    QVERIFY(!overlay.isActive());
}

void ThermalOverlayTest::momentsOutsideTheLog()
{
    ThermalLog log = plainLog(9, 4);
    // The camera had counted three frames before the log began.
    log.status.erase(log.status.begin(), log.status.begin() + 3);
    ThermalOverlay overlay;
    overlay.setClock(clockAt(0));
    overlay.updateLogData(true, log.decoded());
    cv::Mat frame = randomFrame(320, 180, 1);
    overlay.drawThermalOverlay(frame, 5, shown(), false);
    QCOMPARE(thermalAt(overlay, 0), quint16(3000));
    overlay.drawThermalOverlay(frame, 1'000'000, shown(), false);
    QCOMPARE(thermalAt(overlay, 0), quint16(8000));
}

void ThermalOverlayTest::manualOffsetMovesTheMoment()
{
    const auto clock = clockAt(700);
    ThermalOverlay overlay;
    overlay.setClock(clock);
    overlay.updateLogData(true, plainLog(9, 4).decoded());
    cv::Mat frame = randomFrame(320, 180, 1);
    for (const int manual : {0, 100, 114, 500, -114, 0}) {
        clock->manualLogTimeOffset = manual;
        const int moment = 700 + 450 + manual;
        const int expected = (moment - 1000) / 114 + 1;
        overlay.drawThermalOverlay(frame, 450, shown(), false);
        QCOMPARE(thermalAt(overlay, 0), static_cast<quint16>(1000 * expected));
    }
    // Sums beyond the largest int go round as the log's own numbers do.
    clock->logTimeOffset = INT_MAX;
    clock->manualLogTimeOffset = 1000;
    overlay.drawThermalOverlay(frame, 450, shown(), false);
    QCOMPARE(thermalAt(overlay, 0), quint16(0));
}

void ThermalOverlayTest::lostPartsShowTheFrameBefore()
{
    ThermalLog log = plainLog(6, 4);
    log.packets.erase(log.packets.begin() + 4 * 3 + 2);
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, log.decoded());
    QCOMPARE(thermalAt(overlay, 0), quint16(0));
    cv::Mat frame = randomFrame(320, 180, 1);
    overlay.drawThermalOverlay(frame, 114 + 50, shown(), false);
    overlay.drawThermalOverlay(frame, 2 * 114 + 50, shown(), false);
    QCOMPARE(thermalAt(overlay, 0), quint16(3000));
    QCOMPARE(thermalAt(overlay, 59), quint16(3001));
    QCOMPARE(thermalAt(overlay, 60), quint16(2002));
    QCOMPARE(thermalAt(overlay, 89), quint16(2002));
    QCOMPARE(thermalAt(overlay, 90), quint16(3003));
}

void ThermalOverlayTest::composedFrameOutlivesTheLog()
{
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, plainLog(6, 4).decoded());
    cv::Mat frame = randomFrame(320, 180, 1);
    overlay.drawThermalOverlay(frame, 50, shown(), false);
    overlay.clear();
    QCOMPARE(thermalAt(overlay, 0), quint16(1000));
    ThermalLog next = plainLog(6, 4);
    next.packets.clear();
    overlay.updateLogData(true, next.decoded());
    overlay.drawThermalOverlay(frame, 400, shown(), false);
    QCOMPARE(thermalAt(overlay, 0), quint16(1000));
}

void ThermalOverlayTest::bytesAreExchangedInTheLog()
{
    const auto log = plainLog(6, 4).decoded();
    void* column = nullptr;
    varOf(*log, "lepton_video", "image")->getColumn(0, &column);
    const auto* words = static_cast<const quint16*>(column);
    QCOMPARE(words[4], quint16(0xe803));
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    overlay.updateLogData(true, log);
    QCOMPARE(words[4], quint16(0x03e8));
    overlay.updateLogData(true, log);
    QCOMPARE(words[4], quint16(0xe803));
    cv::Mat frame = randomFrame(320, 180, 1);
    overlay.drawThermalOverlay(frame, 50, shown(), false);
    QCOMPARE(thermalAt(overlay, 0), quint16(0xe803));
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
    overlay.applyPictureEffects(frame, 50, settings, false, report);
    QCOMPARE(reports, (QVector<QPair<double, double>>{{0.0, 0.0}}));
    overlay.applyPictureEffects(frame, 114 + 50, settings, false, report);
    QCOMPARE(reports.last(), qMakePair(1000.0, 1003.0));
    QCOMPARE(settings.irDataMin, 1000.0);
    QCOMPARE(settings.irDataMax, 1003.0);
    overlay.applyPictureEffects(frame, 114 + 50, settings, false, noReport);
    QCOMPARE(settings.irDataMax, 1003.0);
    settings.showIR = false;
    overlay.applyPictureEffects(frame, 114 + 50, settings, false, report);
    overlay.applyPictureEffects(frame, 114 + 50, settings, false, report);
    QCOMPARE(reports.size(), 3);
    QCOMPARE(reports.last(), qMakePair(2000.0, 2003.0));
    clock->synced = false;
    settings.irDataMax = 7.0;
    overlay.applyPictureEffects(frame, 114 + 50, settings, false, report);
    QCOMPARE(reports.size(), 3);
}

void ThermalOverlayTest::contrastAndBrightness_data()
{
    QTest::addColumn<double>("contrast");
    QTest::addColumn<double>("brightness");
    QTest::newRow("none") << 1.0 << 0.0;
    QTest::newRow("less than can be told apart") << 1.0 + 2.220446049250313e-16 << 1e-16;
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
    ThermalOverlay().applyPictureEffects(frame, 0, settings, false, noReport);
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
    overlay.applyPictureEffects(frame, 50, settings, false, noReport);
    QVERIFY(frame.at<cv::Vec3b>(0, 0) == cv::Vec3b(255, 255, 255));
    QVERIFY(frame.at<cv::Vec3b>(90, 160) == coldest);
}

void ThermalOverlayTest::rectangle_data()
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

void ThermalOverlayTest::rectangle()
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
    // Told again when it has been right in between.
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
    overlay.applyPictureEffects(none, 50, settings, false, noReport);
    cv::Mat tiny(1, 2, CV_8UC3, cv::Scalar::all(10));
    overlay.applyPictureEffects(tiny, 50, settings, false, noReport);
    QVERIFY(tiny.at<cv::Vec3b>(0, 0) == cv::Vec3b(15, 15, 15));
    cv::Mat grey(180, 320, CV_8UC1, cv::Scalar::all(10));
    overlay.applyPictureEffects(grey, 50, settings, false, noReport);
    QCOMPARE(cv::countNonZero(grey != 15), 0);
    settings.irOffsetX = qQNaN();
    cv::Mat frame(180, 320, CV_8UC3, cv::Scalar::all(10));
    overlay.applyPictureEffects(frame, 50, settings, false, noReport);
    QVERIFY(frame.at<cv::Vec3b>(90, 160) == cv::Vec3b(15, 15, 15));
    QCOMPARE(messages.messages(),
             QStringList{QStringLiteral("No place for the thermal overlay in the frame")});
}

void ThermalOverlayTest::wrappedProductStaysInside()
{
    // 223,697 times 19,200 is 15,104 beyond the largest 32-bit number, a 120th of which is 125.
    const int packets = 223'698;
    const auto log = std::make_shared<LogFile>();
    log->addGroup("lepton_status", 1);
    log->getGroup(1)->addVar("time");
    log->getGroup(1)->addVar("frame_counter");
    for (LogVar& var : log->getGroup(1)->getVars())
        var.allocate(1, 2, LogVar::Uint32);
    varOf(*log, "lepton_status", "frame_counter")->setU32(0, 1, 1);
    log->addGroup("lepton_video", 2);
    for (const char* name : {"image", "image_part", "frame_counter"})
        log->getGroup(2)->addVar(name);
    LogVar* image = varOf(*log, "lepton_video", "image");
    image->allocate(160, packets, LogVar::Uint16);
    varOf(*log, "lepton_video", "image_part")->allocate(1, packets, LogVar::Uint8);
    LogVar* counter = varOf(*log, "lepton_video", "frame_counter");
    counter->allocate(1, packets, LogVar::Uint32);
    for (int row = 0; row < packets; ++row)
        counter->setU32(0, row, 77);
    counter->setU32(0, packets - 1, 1);
    for (int word = 0; word < 320; ++word)
        image->setU16(word % 160, word / 160, static_cast<quint16>(word % 256 << 8 | word / 256));
    ThermalOverlay overlay;
    overlay.setClock(clockAt(0));
    overlay.updateLogData(true, log);
    QVERIFY(overlay.isActive());
    cv::Mat frame = randomFrame(320, 180, 1);
    overlay.drawThermalOverlay(frame, 5000, shown(), false);
    QCOMPARE(overlay.thermalFrame().at<quint16>(0, 0), quint16(125));
    QCOMPARE(overlay.thermalFrame().at<quint16>(0, 159), quint16(125 + 159));
}

QTEST_GUILESS_MAIN(ThermalOverlayTest)
#include "ThermalOverlayTest.moc"
