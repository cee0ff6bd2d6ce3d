#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"
#include "Support/MessageLog.h"

#include <QTemporaryDir>
#include <QtTest>
#include <limits>
#include <memory>

using namespace corv;
using namespace corv::test;

using Events = std::vector<RecEvent>;
Q_DECLARE_METATYPE(Events)

/// How a log is tied to a video, to its flight's naming and to a thermal camera.
class LogSyncTest : public QObject
{
    Q_OBJECT

private slots:
    void theNearestRecordingMatches_data();
    void theNearestRecordingMatches();
    void matchIsLogged();
    void fallbackIsLogged();
    void missingRecordingIsLogged();
    void recordingsArePairedByPosition();
    void findsNothingWithoutDurationOrRecordings();
    void namingsAreRead();
    void namingsThatAreNotAllThere_data();
    void namingsThatAreNotAllThere();
    void theLatestNamingBeforeTheEndCounts_data();
    void theLatestNamingBeforeTheEndCounts();
    void endOfARecordingWrapsAround();
    void choiceOfANamingIsLogged();
    void theLastThermalCameraCounts_data();
    void theLastThermalCameraCounts();

private:
    std::unique_ptr<LogFile> decoded(const LogBuilder& builder);

    QTemporaryDir m_folder;
    const std::atomic<bool> m_abortFlag{false};
    LogDecoder m_decoder{&m_abortFlag};
};

namespace {

LogBuilder recordings(const std::vector<quint32>& starts, const std::vector<quint32>& stops)
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    for (const quint32 start : starts)
        log.addPacket(1, LogBuilder::u32(start));
    for (const quint32 stop : stops)
        log.addPacket(2, LogBuilder::u32(stop));
    return log;
}

FlightNamingEvent naming(int time, const QString& mission)
{
    FlightNamingEvent event;
    event.undefined = mission.isEmpty();
    event.time = time;
    event.missionName = mission;
    event.flightName = QStringLiteral("flight");
    event.flightNumber = 4;
    return event;
}

} // namespace

std::unique_ptr<LogFile> LogSyncTest::decoded(const LogBuilder& builder)
{
    const QString path = m_folder.filePath(QStringLiteral("a.log"));
    return std::unique_ptr<LogFile>(
        builder.save(path) ? m_decoder.parseLog(path, [](int, int, int) {}) : nullptr);
}

void LogSyncTest::theNearestRecordingMatches_data()
{
    QTest::addColumn<Events>("events");
    QTest::addColumn<int>("videoMs");
    QTest::addColumn<bool>("found");
    QTest::addColumn<bool>("weak");
    QTest::addColumn<int>("matchedMs");
    QTest::addColumn<int>("offset");
    const auto row = [](const char* name, const Events& events, int videoMs, bool found, bool weak,
                        int matchedMs, int offset) {
        QTest::newRow(name) << events << videoMs << found << weak << matchedMs << offset;
    };
    row("the second is nearer", {{5000, 35000}, {50000, 111000}}, 60000, true, false, 61000, 51279);
    row("the first gets less", {{5000, 66000}}, 60000, true, false, 61000, 5690);
    row("on a tie the first", {{1000, 61000}, {90000, 152000}}, 60000, true, false, 60000, 1690);
    row("2999 too long", {{1000, 63999}}, 60000, true, false, 62999, 1690);
    row("3000 too long", {{1000, 64000}}, 60000, true, true, 63000, 1690);
    row("2999 too short", {{1000, 58001}}, 60000, true, false, 57001, 1690);
    row("3000 too short", {{1000, 58000}}, 60000, true, true, 57000, 1690);
    row("one, more than twice as long", {{1000, 122000}}, 60000, true, true, 121000, 1690);
    row("just below twice", {{1000, 121999}}, 60000, true, true, 120999, 1690);
    row("a second is nothing", {{1000, 2000}, {9000, 60000}}, 50000, true, false, 51000, 10279);
    row("no longer than the overhead", {{1000, 2000}}, 50000, true, true, 1000, 1690);
    row("no stop", {{1000, 0}}, 50000, true, true, -1000, 1690);
    row("stop before start", {{9000, 8000}}, 50000, true, true, -1000, 9690);
    row("a later one without start", {{0, 9000}, {10000, 71000}}, 60000, true, false, 61000, 11279);
    row("no start at all", {{0, 9000}}, 60000, false, false, 0, 0);
    row("no events", {}, 60000, false, false, 0, 0);
    row("start beyond the signed range", {{0xfffffff0U, 0xffffffffU}}, 60000, true, true, 15, 674);
    row("longer than an int", {{1, 0xffffffffU}}, 60000, true, true, -2, 691);
    row("unsigned order", {{0x7fffff00U, 0x80000000U + 60744}}, 60000, true, false, 61000,
        static_cast<int>(0x7fffff00U + 690));
}

void LogSyncTest::theNearestRecordingMatches()
{
    QFETCH(Events, events);
    QFETCH(int, videoMs);
    QFETCH(bool, found);
    const LogSyncResult result = m_decoder.findLogTimeOffset(events, videoMs);
    QCOMPARE(result.found, found);
    QTEST(result.probablyNotMatching, "weak");
    QTEST(result.matchedDuration, "matchedMs");
    QTEST(result.logTimeOffset, "offset");
    QCOMPARE(result.videoDuration, found ? videoMs : 0);
}

void LogSyncTest::matchIsLogged()
{
    const MessageLog messages;
    m_decoder.findLogTimeOffset({{5000, 66000}}, 60000);
    QCOMPARE(messages.messages(QtInfoMsg),
             QStringList({QStringLiteral("Video duration: 60000 ms"),
                          QStringLiteral("Recording match duration: 61000 ms"),
                          QStringLiteral("Difference: -1000 ms")}));
}

void LogSyncTest::fallbackIsLogged()
{
    const MessageLog messages;
    m_decoder.findLogTimeOffset({{1000, 0}}, 60000);
    QCOMPARE(messages.messages(QtInfoMsg),
             QStringList({QStringLiteral("Defaulting to first recording event"),
                          QStringLiteral("Video duration: 60000 ms"),
                          QStringLiteral("Recording match duration: -1000 ms"),
                          QStringLiteral("Difference: 61000 ms")}));
}

void LogSyncTest::missingRecordingIsLogged()
{
    const MessageLog messages;
    m_decoder.findLogTimeOffset({}, 60000);
    QCOMPARE(messages.messages(QtInfoMsg),
             QStringList(
                 QStringLiteral("Failed to sync video and log: no valid video event in log file")));
}

void LogSyncTest::recordingsArePairedByPosition()
{
    const auto surplus = decoded(recordings({10, 20, 30}, {11, 22, 33, 44, 55}));
    const Events three = LogDecoder::readRecordingEvents(surplus.get());
    QCOMPARE(three.size(), size_t(3));
    QCOMPARE(three[2].startTime, 30U);
    QCOMPARE(three[2].stopTime, 33U);
    const auto missing = decoded(recordings({10, 20}, {11}));
    const Events two = LogDecoder::readRecordingEvents(missing.get());
    QCOMPARE(two.size(), size_t(2));
    QCOMPARE(two[1].startTime, 20U);
    QCOMPARE(two[1].stopTime, 0U);
    const auto synced = decoded(recordings({5000, 50000}, {35000, 111000}));
    QCOMPARE(m_decoder.syncLogToVideo(synced.get(), 60000).logTimeOffset, 51279);
}

void LogSyncTest::findsNothingWithoutDurationOrRecordings()
{
    const auto log = decoded(recordings({5000}, {66000}));
    QVERIFY(m_decoder.syncLogToVideo(log.get(), 60000).found);
    QVERIFY(!m_decoder.syncLogToVideo(log.get(), 0).found);
    QVERIFY(!m_decoder.syncLogToVideo(log.get(), -60000).found);
    QVERIFY(!m_decoder.syncLogToVideo(nullptr, 60000).found);
    const auto empty = decoded(LogBuilder().addGroup("mobius_start_rec", 1, {}));
    const LogSyncResult none = m_decoder.syncLogToVideo(empty.get(), 60000);
    QVERIFY(!none.found);
    QCOMPARE(none.logTimeOffset, 0);
}

void LogSyncTest::namingsAreRead()
{
    LogBuilder builder;
    builder.addGroup("mission_info", 5,
                     {{"time", "UINT32", 1},
                      {"mission_name", "INT8", 12},
                      {"flight_name", "INT8", 12},
                      {"flight_number", "UINT8", 1}});
    const auto add = [&builder](quint32 time, const char* mission, const char* flight,
                                unsigned number) {
        builder.addPacket(5, LogBuilder::u32(time) + LogBuilder::text(mission, 12) +
                                 LogBuilder::text(flight, 12) + LogBuilder::u8(number));
    };
    add(100, "", "", 0);
    add(200, "Roof", "North", 3);
    add(300, "", "", 0);
    add(400, "", "", 200);
    const auto log = decoded(builder);
    const QList<FlightNamingEvent> events = m_decoder.readFlightNamingEvents(log.get());
    QCOMPARE(events.size(), 4);
    QVERIFY(events[0].undefined);
    QCOMPARE(events[0].time, 0);
    QVERIFY(!events[1].undefined);
    QCOMPARE(events[1].time, 200);
    QCOMPARE(events[1].missionName, QStringLiteral("Roof"));
    QCOMPARE(events[1].flightName, QStringLiteral("North"));
    QCOMPARE(events[1].flightNumber, 3);
    // An undefined one keeps the time and the names of the one before.
    QVERIFY(events[2].undefined);
    QCOMPARE(events[2].time, 200);
    QCOMPARE(events[2].missionName, QStringLiteral("Roof"));
    QVERIFY(!events[3].undefined);
    QCOMPARE(events[3].flightNumber, 200);
    QCOMPARE(events[3].missionName, QString());
}

void LogSyncTest::namingsThatAreNotAllThere_data()
{
    QTest::addColumn<QByteArray>("missing");
    QTest::addColumn<bool>("isLogged");
    QTest::newRow("time") << QByteArray("time") << true;
    QTest::newRow("mission_name") << QByteArray("mission_name") << false;
    QTest::newRow("flight_name") << QByteArray("flight_name") << true;
    QTest::newRow("flight_number") << QByteArray("flight_number") << true;
}

void LogSyncTest::namingsThatAreNotAllThere()
{
    QFETCH(QByteArray, missing);
    std::vector<LogBuilder::Var> vars;
    for (const QByteArray& name : {QByteArray("time"), QByteArray("mission_name"),
                                   QByteArray("flight_name"), QByteArray("flight_number")}) {
        if (name != missing)
            vars.push_back({name, "UINT8", 1});
    }
    const auto log = decoded(LogBuilder().addGroup("mission_info", 5, vars).addPacket(5, "abc"));
    const MessageLog messages;
    QVERIFY(m_decoder.readFlightNamingEvents(log.get()).isEmpty());
    QTEST(messages.contains(QStringLiteral("Flight naming is incompletely described in the log")),
          "isLogged");
    QVERIFY(m_decoder.readFlightNamingEvents(nullptr).isEmpty());
}

void LogSyncTest::theLatestNamingBeforeTheEndCounts_data()
{
    QTest::addColumn<QList<int>>("times");
    QTest::addColumn<int>("end");
    QTest::addColumn<int>("chosen");
    QTest::newRow("none") << QList<int>{} << 1000 << -1;
    QTest::newRow("latest") << QList<int>{100, 500, 300} << 1000 << 1;
    QTest::newRow("before the recording") << QList<int>{1} << 1000 << 0;
    QTest::newRow("at the end") << QList<int>{100, 1000} << 1000 << 0;
    QTest::newRow("time 0") << QList<int>{0} << 1000 << -1;
    QTest::newRow("negative") << QList<int>{-5} << 1000 << -1;
    QTest::newRow("first of equals") << QList<int>{100, 100} << 1000 << 0;
}

void LogSyncTest::theLatestNamingBeforeTheEndCounts()
{
    QFETCH(QList<int>, times);
    QFETCH(int, end);
    QFETCH(int, chosen);
    QList<FlightNamingEvent> events;
    for (const int time : times)
        events.append(naming(time, QStringLiteral("mission %1").arg(events.size())));
    const FlightNamingEvent result = m_decoder.findNamingForFlight(events, 900, end);
    QCOMPARE(result.undefined, chosen < 0);
    QCOMPARE(result.missionName, chosen < 0 ? QString() : QStringLiteral("mission %1").arg(chosen));
    QCOMPARE(result.flightNumber, chosen < 0 ? 0 : 4);
    // An undefined one overrides a named one before it.
    events = {naming(100, QStringLiteral("a")), naming(200, QString())};
    QVERIFY(m_decoder.findNamingForFlight(events, 0, 1000).undefined);
}

void LogSyncTest::endOfARecordingWrapsAround()
{
    const QList<FlightNamingEvent> events{naming(100, QStringLiteral("a")),
                                          naming(900, QStringLiteral("b"))};
    QCOMPARE(m_decoder.findNamingForRecording(events, 50, 750).missionName, QString("a"));
    QCOMPARE(m_decoder.findNamingForRecording(events, 50, 851).missionName, QString("b"));
    const int last = std::numeric_limits<int>::max();
    QVERIFY(m_decoder.findNamingForRecording(events, last, last).undefined);
    QCOMPARE(m_decoder.findNamingForRecording(events, -1, 902).missionName, QString("b"));
}

void LogSyncTest::choiceOfANamingIsLogged()
{
    const MessageLog messages;
    m_decoder.findNamingForFlight(
        {naming(100, QStringLiteral("a")), naming(900, QStringLiteral("b"))}, 50, 800);
    const QStringList expected{QStringLiteral("Reference start 50 end 800"),
                               QStringLiteral("At position  0 , time 100"),
                               QStringLiteral("Mission \"a\""),
                               QStringLiteral("Flight \"flight\""),
                               QStringLiteral("Flight number 4"),
                               QStringLiteral("Set as candidate"),
                               QStringLiteral("At position  1 , time 900"),
                               QStringLiteral("Mission \"b\""),
                               QStringLiteral("Flight \"flight\""),
                               QStringLiteral("Flight number 4"),
                               QStringLiteral("Rejected"),
                               QStringLiteral("Correct event"),
                               QStringLiteral("Mission \"a\""),
                               QStringLiteral("Flight \"flight\""),
                               QStringLiteral("Flight number 4")};
    QCOMPARE(messages.messages(QtInfoMsg), expected);
}

void LogSyncTest::theLastThermalCameraCounts_data()
{
    QTest::addColumn<QByteArray>("types");
    QTest::addColumn<int>("version");
    QTest::newRow("known") << QByteArray(1, 35) << 35;
    QTest::newRow("the last counts") << QByteArray("\x1e\x23\x07", 3) << 7;
    QTest::newRow("no rows") << QByteArray() << 255;
}

void LogSyncTest::theLastThermalCameraCounts()
{
    QFETCH(QByteArray, types);
    LogBuilder builder;
    builder.addGroup("lepton_info", 9, {{"lepton_type", "UINT8", 1}});
    for (const char type : types)
        builder.addPacket(9, QByteArray(1, type));
    const auto log = decoded(builder);
    const MessageLog messages;
    QTEST(m_decoder.findThermalCameraHwVersion(log.get()), "version");
    QCOMPARE(messages.contains(QStringLiteral("Lepton version:")), !types.isEmpty());
    QCOMPARE(m_decoder.findThermalCameraHwVersion(nullptr), -1);
    const auto without = decoded(LogBuilder().addGroup("lepton_info", 9, {{"x", "UINT8", 1}}));
    QCOMPARE(m_decoder.findThermalCameraHwVersion(without.get()), -1);
    const auto nothing = decoded(LogBuilder());
    QCOMPARE(m_decoder.findThermalCameraHwVersion(nothing.get()), -1);
}

QTEST_GUILESS_MAIN(LogSyncTest)
#include "LogSyncTest.moc"
