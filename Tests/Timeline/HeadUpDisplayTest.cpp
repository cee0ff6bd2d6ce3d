#include "Support/MessageLog.h"
#include "headUpPanel.h"

#include <QRandomGenerator>
#include <limits>

using namespace corv;
using namespace corv::test;

namespace {

const int altitudeRow = rowOf("Altitude");
const int cameraRow = rowOf("Cam pitch");

} // namespace

/// The values that the panel shows, and when it has none.
class HeadUpDisplayTest : public QObject
{
    Q_OBJECT

private slots:
    void rowsReadTheirVars_data();
    void rowsReadTheirVars();
    void valuesHaveTheirDecimalsAndUnits_data();
    void valuesHaveTheirDecimalsAndUnits();
    void holdsTheSampleOfTheMoment_data();
    void holdsTheSampleOfTheMoment();
    void agreesWithAStepByStepSearchOnAnyTimes();
    void followsTheCorrection();
    void anInvalidPositionShowsTheStart();
    void labelsOnlyWithoutAMatch();
    void updateWithoutALogIsLogged();
    void groupsWithoutValuesAreListed_data();
    void groupsWithoutValuesAreListed();
    void varsOfAnotherShapeHaveNoValue_data();
    void varsOfAnotherShapeHaveNoValue();
    void keepsTheLogAlive();
    void readingsSayWhatIsPainted();
    void readingsChangeWithWhatTheyRestOn();
};

void HeadUpDisplayTest::rowsReadTheirVars_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");
    QTest::newRow("pitch") << rowOf("Pitch") << QStringLiteral("11°");
    QTest::newRow("roll") << rowOf("Roll") << QStringLiteral("-7°");
    QTest::newRow("heading, less its reference") << rowOf("Heading") << QStringLiteral("60°");
    QTest::newRow("altitude, less its reference") << rowOf("Altitude") << QStringLiteral("102.5 m");
    QTest::newRow("camera pitch, in degrees already")
        << rowOf("Cam pitch") << QStringLiteral("-33°");
}

void HeadUpDisplayTest::rowsReadTheirVars()
{
    QFETCH(int, row);
    QFETCH(QString, text);
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addCameraGroup(log);
    addState(log, {start, radians(-7), radians(11), radians(90), radians(30), 152.5F, 50});
    addCamera(log, start, -33);
    Panel panel(log);
    QVERIFY(panel.parsed);
    QCOMPARE(panel.textsOfRow(row, 0), texts(row, text));
}

void HeadUpDisplayTest::valuesHaveTheirDecimalsAndUnits_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("imperial");
    QTest::addColumn<QString>("text");
    QTest::newRow("degrees are whole") << rowOf("Pitch") << 12.4 << false << QStringLiteral("12°");
    QTest::newRow("degrees are rounded")
        << rowOf("Pitch") << 12.6 << false << QStringLiteral("13°");
    QTest::newRow("degrees stay degrees")
        << rowOf("Pitch") << 12.6 << true << QStringLiteral("13°");
    QTest::newRow("no modulo for pitch")
        << rowOf("Pitch") << 370.0 << false << QStringLiteral("370°");
    QTest::newRow("a full turn is taken off")
        << rowOf("Heading") << 365.2 << false << QStringLiteral("5°");
    QTest::newRow("heading keeps its sign")
        << rowOf("Heading") << -5.0 << false << QStringLiteral("-5°");
    QTest::newRow("a turn to the left too")
        << rowOf("Heading") << -365.2 << false << QStringLiteral("-5°");
    QTest::newRow("metres") << rowOf("Altitude") << 10.0 << false << QStringLiteral("10.0 m");
    QTest::newRow("feet") << rowOf("Altitude") << 10.0 << true << QStringLiteral("32.8 ft");
    QTest::newRow("below the reference")
        << rowOf("Altitude") << -2.25 << true << QStringLiteral("-7.4 ft");
    QTest::newRow("camera") << rowOf("Cam pitch") << -90.0 << true << QStringLiteral("-90°");
}

void HeadUpDisplayTest::valuesHaveTheirDecimalsAndUnits()
{
    QFETCH(int, row);
    QFETCH(double, value);
    QFETCH(bool, imperial);
    QFETCH(QString, text);
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addCameraGroup(log);
    State state;
    state.time = start;
    state.pitch = radians(value);
    state.yaw = radians(value);
    state.altitude = static_cast<float>(value);
    addState(log, state);
    addCamera(log, start, static_cast<float>(value));
    Panel panel(log);
    panel.hud.setImperialUnits(imperial);
    QCOMPARE(panel.textsOfRow(row, 0), texts(row, text));
}

void HeadUpDisplayTest::holdsTheSampleOfTheMoment_data()
{
    QTest::addColumn<int>("videoMs");
    QTest::addColumn<QString>("text");
    QTest::newRow("before the first sample") << 500 << QStringLiteral("1.0 m");
    QTest::newRow("at the first") << 1000 << QStringLiteral("1.0 m");
    QTest::newRow("just before the second") << 1999 << QStringLiteral("1.0 m");
    QTest::newRow("at the second") << 2000 << QStringLiteral("2.0 m");
    QTest::newRow("between, not interpolated") << 2500 << QStringLiteral("2.0 m");
    QTest::newRow("at the last") << 3000 << QStringLiteral("3.0 m");
    QTest::newRow("after the last") << 59000 << QStringLiteral("3.0 m");
}

void HeadUpDisplayTest::holdsTheSampleOfTheMoment()
{
    QFETCH(int, videoMs);
    QFETCH(QString, text);
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    for (const int second : {1, 2, 3}) {
        State state;
        state.time = start + 1000U * static_cast<unsigned>(second);
        state.altitude = static_cast<float>(second);
        addState(log, state);
    }
    Panel panel(log);
    QCOMPARE(panel.textsOfRow(altitudeRow, videoMs), texts(altitudeRow, text));
}

void HeadUpDisplayTest::agreesWithAStepByStepSearchOnAnyTimes()
{
    QRandomGenerator random(7);
    for (int round = 0; round < 12; ++round) {
        LogBuilder log = recordingLog(durationMs);
        addStateGroup(log);
        std::vector<int> videoTimes;
        for (int packet = 0; packet < 30; ++packet) {
            videoTimes.push_back(random.bounded(0, 3000));
            State state;
            state.time = start + static_cast<unsigned>(videoTimes.back());
            state.altitude = static_cast<float>(packet);
            addState(log, state);
        }
        Panel panel(log);
        QVERIFY(panel.parsed);
        for (int ms = 0; ms < 3200; ms += random.bounded(50, 200)) {
            size_t held = 0;
            while (held + 1 < videoTimes.size() && ms >= videoTimes[held + 1])
                ++held;
            QCOMPARE(panel.textsOfRow(altitudeRow, ms),
                     texts(altitudeRow, QStringLiteral("%1.0 m").arg(held)));
        }
    }
}

void HeadUpDisplayTest::followsTheCorrection()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addCameraGroup(log);
    for (const unsigned half : {0U, 1U, 2U, 3U}) {
        State state;
        state.time = start + 500 * half;
        state.altitude = static_cast<float>(half);
        addState(log, state);
        addCamera(log, start + 500 * half, static_cast<float>(half));
    }
    Panel panel(log);
    QCOMPARE(panel.textsOfRow(altitudeRow, 500), texts(altitudeRow, QStringLiteral("1.0 m")));
    QCOMPARE(panel.textsOfRow(cameraRow, 500), texts(cameraRow, QStringLiteral("1°")));
    panel.parser.setManualLogTimeOffset(500);
    QCOMPARE(panel.textsOfRow(altitudeRow, 500), texts(altitudeRow, QStringLiteral("2.0 m")));
    QCOMPARE(panel.textsOfRow(cameraRow, 500), texts(cameraRow, QStringLiteral("2°")));
    panel.parser.setManualLogTimeOffset(-500);
    QCOMPARE(panel.textsOfRow(altitudeRow, 500), texts(altitudeRow, QStringLiteral("0.0 m")));
    panel.parser.setManualLogTimeOffset(std::numeric_limits<int>::max());
    QCOMPARE(panel.textsOfRow(altitudeRow, 500), texts(altitudeRow, QStringLiteral("0.0 m")));
}

void HeadUpDisplayTest::anInvalidPositionShowsTheStart()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    State state;
    state.time = start;
    state.altitude = 5;
    addState(log, state);
    state.time = start + 1;
    state.altitude = 6;
    addState(log, state);
    Panel panel(log);
    QVERIFY(!panel.hud.videoPosition().isValid());
    QCOMPARE(panel.textsOfRow(altitudeRow), texts(altitudeRow, QStringLiteral("5.0 m")));
}

void HeadUpDisplayTest::labelsOnlyWithoutAMatch()
{
    LogBuilder log; // no recording
    addStateGroup(log);
    addCameraGroup(log);
    addState(log, {start, 1, 1, 1, 0, 1, 0});
    addCamera(log, start, 1);
    Panel panel(log);
    QVERIFY(panel.parsed);
    QVERIFY(!panel.parser.isSynced());
    for (int row = 0; row < rowCount(); ++row)
        QCOMPARE(panel.textsOfRow(row, 0), texts(row, QString()));
    const QImage image = painted(panel.hud);
    QCOMPARE(image.pixelColor(compassCentre), discColour);
    QCOMPARE(needlePixels(image, image.rect()), 0);
}

void HeadUpDisplayTest::updateWithoutALogIsLogged()
{
    HeadUpDisplay hud;
    hud.setSize(QSizeF(panelWidth, panelHeight));
    const MessageLog log;
    hud.updateLogData();
    QCOMPARE(log.messages(QtWarningMsg), QStringList{QStringLiteral("No log parser")});
    LogParser parser;
    hud.setLogParser(&parser);
    hud.updateLogData();
    QCOMPARE(log.messages(QtWarningMsg),
             (QStringList{QStringLiteral("No log parser"), QStringLiteral("No log file")}));
    QCOMPARE(painted(hud).pixelColor(compassCentre), discColour);
}

void HeadUpDisplayTest::groupsWithoutValuesAreListed_data()
{
    QTest::addColumn<QString>("log");
    QTest::addColumn<QStringList>("logged");
    const QString noState = QStringLiteral("No state estimation time/values");
    const QString noCamera = QStringLiteral("No camera pitch time/values");
    QTest::newRow("no groups") << "none" << QStringList();
    QTest::newRow("groups without packets") << "empty" << QStringList{noState, noCamera};
    QTest::newRow("groups without time") << "no time" << QStringList{noState, noCamera};
    QTest::newRow("times of another size") << "short time" << QStringList{noState, noCamera};
    QTest::newRow("camera without angles") << "no angle" << QStringList{noCamera};
    QTest::newRow("time without columns") << "no columns" << QStringList{noState, noCamera};
}

void HeadUpDisplayTest::groupsWithoutValuesAreListed()
{
    QFETCH(QString, log);
    QFETCH(QStringList, logged);
    LogBuilder builder = recordingLog(durationMs);
    const auto add = [&builder](const std::vector<LogBuilder::Var>& state,
                                const std::vector<LogBuilder::Var>& camera, int bytes) {
        builder.addGroup("state_estimation", stateGroup, state);
        builder.addGroup("camera_cmd", cameraGroup, camera);
        if (bytes > 0) {
            builder.addPacket(stateGroup, QByteArray(bytes, '\1'));
            builder.addPacket(cameraGroup, QByteArray(bytes, '\1'));
        }
    };
    if (log == QLatin1String("empty"))
        add({{"time", "UINT32", 1}}, {{"time", "UINT32", 1}, {"servo_angle", "FLOAT", 1}}, 0);
    else if (log == QLatin1String("no time"))
        add({{"altitude", "FLOAT", 1}}, {{"servo_angle", "FLOAT", 1}}, 4);
    else if (log == QLatin1String("short time"))
        add({{"time", "UINT16", 1}, {"altitude", "FLOAT", 1}},
            {{"time", "UINT16", 1}, {"servo_angle", "FLOAT", 1}}, 6);
    else if (log == QLatin1String("no angle"))
        add({{"time", "UINT32", 1}}, {{"time", "UINT32", 1}}, 4);
    else if (log == QLatin1String("no columns"))
        add({{"time", "UINT32", 0}, {"altitude", "FLOAT", 1}},
            {{"time", "UINT32", 0}, {"servo_angle", "FLOAT", 1}}, 4);
    Panel panel;
    QVERIFY(parse(panel.parser, builder, durationMs));
    panel.hud.setLogParser(&panel.parser);
    const MessageLog messages;
    panel.hud.updateLogData();
    QCOMPARE(messages.messages(), logged);
    QVERIFY(!QGuiApplication::overrideCursor());
    for (int row = 0; row < rowCount(); ++row)
        QCOMPARE(panel.textsOfRow(row, 0), texts(row, QString()));
}

void HeadUpDisplayTest::varsOfAnotherShapeHaveNoValue_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<int>("anglesColumns");
    QTest::addColumn<QStringList>("withValue");
    QTest::newRow("as they should be")
        << QByteArray("FLOAT") << 3
        << QStringList{"Pitch", "Roll", "Heading", "Altitude", "Cam pitch"};
    QTest::newRow("more columns") << QByteArray("FLOAT") << 9
                                  << QStringList{"Pitch", "Roll", "Heading", "Altitude",
                                                 "Cam pitch"};
    QTest::newRow("no yaw") << QByteArray("FLOAT") << 2
                            << QStringList{"Pitch", "Roll", "Altitude", "Cam pitch"};
    QTest::newRow("roll only") << QByteArray("FLOAT") << 1
                               << QStringList{"Roll", "Altitude", "Cam pitch"};
    QTest::newRow("no angles") << QByteArray("FLOAT") << 0 << QStringList{"Altitude", "Cam pitch"};
    QTest::newRow("bytes") << QByteArray("UINT8") << 3 << QStringList();
    QTest::newRow("words") << QByteArray("INT16") << 3 << QStringList();
    QTest::newRow("whole numbers") << QByteArray("INT32") << 3 << QStringList();
    QTest::newRow("doubles") << QByteArray("DOUBLE") << 3 << QStringList();
}

void HeadUpDisplayTest::varsOfAnotherShapeHaveNoValue()
{
    QFETCH(QByteArray, type);
    QFETCH(int, anglesColumns);
    QFETCH(QStringList, withValue);
    LogBuilder log = recordingLog(durationMs);
    log.addGroup(
        "state_estimation", stateGroup,
        {{"time", "UINT32", 1}, {"euler_angles", type, anglesColumns}, {"altitude", type, 1}});
    log.addGroup("camera_cmd", cameraGroup, {{"time", "UINT32", 1}, {"servo_angle", type, 1}});
    const int size = type == "UINT8" ? 1 : type == "INT16" ? 2 : type == "DOUBLE" ? 8 : 4;
    log.addPacket(stateGroup,
                  LogBuilder::u32(start) + QByteArray(size * (anglesColumns + 1), '\0'));
    log.addPacket(cameraGroup, LogBuilder::u32(start) + QByteArray(size, '\0'));
    Panel panel(log);
    QVERIFY(panel.parsed);
    for (int row = 0; row < rowCount(); ++row) {
        const bool hasValue = panel.textsOfRow(row, 0) != texts(row, QString());
        QCOMPARE(hasValue, withValue.contains(texts(row, QString())));
    }
}

void HeadUpDisplayTest::keepsTheLogAlive()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    State state;
    state.time = start;
    state.altitude = 5;
    addState(log, state);
    Panel panel(log);
    const std::weak_ptr<const LogFile> first = panel.parser.log();
    // A second parse brings the parser another log; the panel goes on reading the one it knows.
    LogBuilder next = recordingLog(durationMs);
    addStateGroup(next);
    QVERIFY(parse(panel.parser, next, durationMs));
    QVERIFY(!first.expired());
    QCOMPARE(panel.textsOfRow(altitudeRow, 0), texts(altitudeRow, QStringLiteral("5.0 m")));
    panel.hud.updateLogData();
    // The parser lets go of a log in the background.
    QTRY_VERIFY(first.expired());
    QCOMPARE(panel.textsOfRow(altitudeRow, 0), texts(altitudeRow, QString()));
    panel.parser.closeLog();
    QCOMPARE(panel.textsOfRow(altitudeRow, 0), texts(altitudeRow, QString()));
}

void HeadUpDisplayTest::readingsSayWhatIsPainted()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    addState(log, {start, radians(-7), radians(11), radians(90), radians(30), 152.5F, 50});
    Panel panel(log);
    QVERIFY(panel.parsed);
    const QStringList readings = panel.hud.readings();
    QCOMPARE(readings.size(), rowCount());
    QCOMPARE(readings[rowOf("Pitch")], QStringLiteral("Pitch 11°"));
    QCOMPARE(readings[rowOf("Roll")], QStringLiteral("Roll -7°"));
    QCOMPARE(readings[rowOf("Heading")], QStringLiteral("Heading 60°"));
    QCOMPARE(readings[altitudeRow], QStringLiteral("Altitude 102.5 m"));
    QCOMPARE(readings[cameraRow], QStringLiteral("Cam pitch: no value"));
}

void HeadUpDisplayTest::readingsChangeWithWhatTheyRestOn()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    for (const int second : {1, 2}) {
        State state;
        state.time = start + 1000U * static_cast<unsigned>(second);
        state.altitude = static_cast<float>(second);
        addState(log, state);
    }
    Panel panel(log);
    QVERIFY(panel.parsed);
    const QSignalSpy changed(&panel.hud, &HeadUpDisplay::readingsChanged);
    const auto altitude = [&panel] { return panel.hud.readings().at(altitudeRow); };
    panel.hud.setVideoPosition(QTime(0, 0, 2));
    QCOMPARE(altitude(), QStringLiteral("Altitude 2.0 m"));
    QCOMPARE(changed.count(), 1);
    panel.hud.setImperialUnits(true);
    QCOMPARE(altitude(), QStringLiteral("Altitude 6.6 ft"));
    QCOMPARE(changed.count(), 2);
    panel.parser.setManualLogTimeOffset(-1000);
    panel.hud.refresh();
    QCOMPARE(altitude(), QStringLiteral("Altitude 3.3 ft"));
    QCOMPARE(changed.count(), 3);
    panel.parser.closeLog();
    panel.hud.updateLogData();
    QCOMPARE(altitude(), QStringLiteral("Altitude: no value"));
    QCOMPARE(changed.count(), 4);
}

QTEST_MAIN(HeadUpDisplayTest)
#include "HeadUpDisplayTest.moc"
