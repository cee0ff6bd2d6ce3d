#include "Support/MessageLog.h"
#include "Video/pictureEffects.h"
#include "thermalLogs.h"

#include <QtTest>
#include <climits>
#include <functional>

using namespace corv;
using namespace corv::test;

using Spoil = std::function<void(LogFile&)>;
Q_DECLARE_METATYPE(Spoil)

namespace {

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

} // namespace

/// What the overlay takes from the records of a log: of which moment, and from which tables.
class ThermalRecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void missingParserOrLogIsLogged();
    void missingGroupsAndVarsAreSilent_data();
    void missingGroupsAndVarsAreSilent();
    void hostileTablesGiveNoOverlay_data();
    void hostileTablesGiveNoOverlay();
    void oddTablesAreReadWithinTheirRows_data();
    void oddTablesAreReadWithinTheirRows();
    void isActiveWithAClockThatIsSynchronised();
    void momentsOutsideTheLog();
    void manualOffsetMovesTheMoment();
    void lostPartsShowTheFrameBefore();
    void composedFrameOutlivesTheLog();
    void theLogStaysAsItIs();
    void wrappedProductStaysInside();
};

void ThermalRecordsTest::missingParserOrLogIsLogged()
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

void ThermalRecordsTest::missingGroupsAndVarsAreSilent_data()
{
    QTest::addColumn<QByteArray>("missing");
    for (const char* name : {"lepton_status", "lepton_video", "time", "status frame_counter",
                             "image", "image_part", "video frame_counter"})
        QTest::newRow(name) << QByteArray(name);
}

void ThermalRecordsTest::missingGroupsAndVarsAreSilent()
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

void ThermalRecordsTest::hostileTablesGiveNoOverlay_data()
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

void ThermalRecordsTest::hostileTablesGiveNoOverlay()
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
    applyPictureEffects(overlay, frame, 50, settings, false, noReport);
    overlay.drawThermalOverlay(frame, 50, settings, false);
    QVERIFY(equal(frame, before));
}

void ThermalRecordsTest::oddTablesAreReadWithinTheirRows_data()
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
    QTest::newRow("counters that do not move") << counters({7, 7, 7, 7, 7});
}

void ThermalRecordsTest::oddTablesAreReadWithinTheirRows()
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
        applyPictureEffects(overlay, frame, timeMs, settings, false, noReport);
        QVERIFY(!equal(frame, before));
    }
    QCOMPARE(messages.messages(), QStringList());
}

void ThermalRecordsTest::isActiveWithAClockThatIsSynchronised()
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
    applyPictureEffects(overlay, frame, 1000, settings, false, noReport);
    QVERIFY(equal(frame, before));
    overlay.setClock(nullptr);
    QVERIFY(!overlay.isActive());
    overlay.setClock(clock);
    overlay.clear();
    QVERIFY(!overlay.isActive());
}

void ThermalRecordsTest::momentsOutsideTheLog()
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

void ThermalRecordsTest::manualOffsetMovesTheMoment()
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

void ThermalRecordsTest::lostPartsShowTheFrameBefore()
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

void ThermalRecordsTest::composedFrameOutlivesTheLog()
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

void ThermalRecordsTest::theLogStaysAsItIs()
{
    const auto log = plainLog(6, 4).decoded();
    const LogColumn<quint16> words = log->getGroup("lepton_video")->column<quint16>("image");
    QCOMPARE(words[4], quint16(0xe803));
    ThermalOverlay overlay;
    overlay.setClock(clockAt(1000));
    for (int i = 0; i < 2; ++i) {
        overlay.updateLogData(true, log);
        QCOMPARE(words[4], quint16(0xe803));
        cv::Mat frame = randomFrame(320, 180, 1);
        overlay.drawThermalOverlay(frame, 50, shown(), false);
        QCOMPARE(thermalAt(overlay, 0), quint16(1000));
    }
}

void ThermalRecordsTest::wrappedProductStaysInside()
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

QTEST_GUILESS_MAIN(ThermalRecordsTest)
#include "ThermalRecordsTest.moc"
