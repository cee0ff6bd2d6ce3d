#include "Support/LogBuilder.h"
#include "Support/ProgramRun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv::test;

namespace {

ProgramRun vistrel(const QStringList& arguments)
{
    return runProgram(QStringLiteral(VISTREL_CLI), arguments);
}

QJsonObject naming(bool undefined, const QString& mission, const QString& flight, int number)
{
    return {{"undefined", undefined},
            {"missionName", mission},
            {"flightName", flight},
            {"flightNumber", number}};
}

QJsonObject var(const QString& name, int nb, int elementSize)
{
    return {{"name", name}, {"nb", nb}, {"elementSize", elementSize}};
}

QJsonObject group(const QString& name, int id, int packets, int packetSize, const QJsonArray& vars)
{
    return {{"name", name},
            {"id", id},
            {"packets", packets},
            {"packetSize", packetSize},
            {"vars", vars}};
}

LogBuilder flight()
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    log.addGroup("mission_info", 3,
                 {{"time", "UINT32", 1},
                  {"mission_name", "INT8", 6},
                  {"flight_name", "INT8", 6},
                  {"flight_number", "UINT8", 1}});
    log.addGroup("lepton_info", 4, {{"lepton_type", "UINT8", 1}});
    log.addPacket(1, LogBuilder::u32(10000)).addPacket(2, LogBuilder::u32(71000));
    log.addPacket(3, LogBuilder::u32(9000) + LogBuilder::text("Roof", 6) +
                         LogBuilder::text("North", 6) + LogBuilder::u8(7));
    log.addPacket(4, LogBuilder::u8(35));
    log.addPacketWithBadChecksum(4, LogBuilder::u8(30));
    log.addPacketWithSize(4, 9, "").addPacket(99, "").addRaw("\x86\x37\x01");
    return log;
}

LogBuilder allTypes()
{
    LogBuilder log;
    log.addGroup("types", 1,
                 {{"a", "INT32", 1},
                  {"b", "UINT32", 1},
                  {"c", "INT16", 2},
                  {"d", "UINT16", 1},
                  {"e", "INT8", 1},
                  {"f", "UINT8", 1},
                  {"g", "FLOAT", 1},
                  {"h", "DOUBLE", 1},
                  {"odd,\"name", "other", 1}});
    const QByteArray ones(4, '\xff');
    log.addPacket(1, ones + ones + ones + ones.left(2) + ones.left(2) + LogBuilder::f32(0.1F) +
                         LogBuilder::f64(-1e300) + ones.left(1));
    log.addPacket(1, QByteArray(29, '\0'));
    log.addGroup("nothing", 2, {});
    log.addGroup("endless", 3, {{"v", "UINT8", 2000000000}});
    return log;
}

} // namespace

/// The program in a process of its own, on logs of every kind.
class LogCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void helpAndVersion();
    void infoShowsEverything();
    void infoForPeople();
    void rawIsTheBlock();
    void csvShowsTheDeclaredTypes();
    void syncFindsTheVideo();
    void failuresAreOneLine_data();
    void failuresAreOneLine();
    void wrongUsageExitsWith2_data();
    void wrongUsageExitsWith2();
    void diagnosticsAreShownOnDemand();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void LogCommandsTest::initTestCase()
{
    QVERIFY(flight().save(path("flight.log")));
    QVERIFY(allTypes().save(path("types.log")));
    QVERIFY(LogBuilder().setDescription("no log").save(path("text.log")));
}

void LogCommandsTest::helpAndVersion()
{
    const ProgramRun help = vistrel({"--help"});
    QCOMPARE(help.status, 0);
    QCOMPARE(help.error, QByteArray());
    for (const char* command : {"log-info FILE [--json]", "log-csv FILE GROUP",
                                "log-raw FILE GROUP VAR", "sync FILE --duration-ms N [--json]"})
        QVERIFY2(help.out.contains(command), command);
    const ProgramRun ofCommand = vistrel({"sync", "--help"});
    QCOMPARE(ofCommand.status, 0);
    QVERIFY(ofCommand.out.startsWith("usage: vistrel-cli sync FILE --duration-ms N [--json]\n"));
    QVERIFY(ofCommand.out.contains("  --duration-ms N "));
    const ProgramRun version = vistrel({"--version"});
    QCOMPARE(version.status, 0);
    QCOMPARE(version.out, QByteArray("vistrel-cli " VISTREL_VERSION "\n"));
}

void LogCommandsTest::infoShowsEverything()
{
    const ProgramRun run = vistrel({"log-info", path("flight.log"), "--json"});
    QCOMPARE(run.error, QByteArray());
    QCOMPARE(run.status, 0);
    QJsonObject named = naming(false, "Roof", "North", 7);
    named.insert("timeMs", 9000);
    const QJsonObject expected{
        {"version", 1},
        {"packets", QJsonObject{{"total", 7},
                                {"valid", 3},
                                {"wrongCrc", 1},
                                {"wrongSize", 1},
                                {"wrongId", 1},
                                {"incompleteLast", true}}},
        {"groups", QJsonArray{group("mobius_start_rec", 1, 1, 4, {var("mobius_start_rec", 1, 4)}),
                              group("mobius_stop_rec", 2, 1, 4, {var("mobius_stop_rec", 1, 4)}),
                              group("mission_info", 3, 1, 17,
                                    {var("time", 1, 4), var("mission_name", 6, 1),
                                     var("flight_name", 6, 1), var("flight_number", 1, 1)}),
                              group("lepton_info", 4, 1, 1, {var("lepton_type", 1, 1)})}},
        {"recordings", QJsonArray{QJsonObject{{"startMs", 10000}, {"stopMs", 71000}}}},
        {"namings", QJsonArray{named}},
        {"thermalCamera", 35}};
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), expected);
}

void LogCommandsTest::infoForPeople()
{
    const ProgramRun run = vistrel({"log-info", path("flight.log")});
    QCOMPARE(run.status, 0);
    for (const char* text : {"Log version 1, 7 packets: 3 valid", "the last incomplete",
                             "mission_name[6]", "recording from 10000 ms to 71000 ms",
                             "mission \"Roof\", flight \"North\", number 7", "thermal camera 35"})
        QVERIFY2(run.out.contains(text), text);
}

void LogCommandsTest::rawIsTheBlock()
{
    const ProgramRun run = vistrel({"log-raw", path("flight.log"), "mission_info", "mission_name"});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out, QByteArray("Roof\0\0", 6));
    const ProgramRun columns = vistrel({"log-raw", path("types.log"), "types", "c"});
    QCOMPARE(columns.out, QByteArray("\xff\xff\0\0\xff\xff\0\0", 8)); // a column after the other
    const ProgramRun empty = vistrel({"log-raw", path("types.log"), "endless", "v"});
    QCOMPARE(empty.status, 0);
    QCOMPARE(empty.out, QByteArray());
}

void LogCommandsTest::csvShowsTheDeclaredTypes()
{
    const ProgramRun run = vistrel({"log-csv", path("types.log"), "types"});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out, QByteArray("a,b,c[0],c[1],d,e,f,g,h,\"odd,\"\"name\"\n"
                                 "-1,4294967295,-1,-1,65535,-1,255,0.1,-1e+300,255\n"
                                 "0,0,0,0,0,0,0,0,0,0\n"));
    QCOMPARE(vistrel({"log-csv", path("types.log"), "nothing"}).out, QByteArray("\n"));
}

void LogCommandsTest::syncFindsTheVideo()
{
    const ProgramRun run = vistrel({"sync", path("flight.log"), "--duration-ms=60000", "--json"});
    QCOMPARE(run.status, 0);
    const QJsonObject expected{
        {"found", true},          {"probablyNotMatching", false},
        {"videoDuration", 60000}, {"matchedDuration", 61000},
        {"logTimeOffset", 10690}, {"naming", naming(false, "Roof", "North", 7)}};
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), expected);
    const ProgramRun none = vistrel({"sync", "--json", "--duration-ms", "0", path("flight.log")});
    QCOMPARE(none.status, 0);
    const QJsonObject nothing = QJsonDocument::fromJson(none.out).object();
    QCOMPARE(nothing["found"], QJsonValue(false));
    QCOMPARE(nothing["logTimeOffset"], QJsonValue(0));
    QCOMPARE(nothing["naming"], QJsonValue(naming(true, "", "", 0)));
    const ProgramRun people = vistrel({"sync", path("flight.log"), "--duration-ms", "60000"});
    QVERIFY(people.out.contains("begins at 10690 ms of the log"));
}

void LogCommandsTest::failuresAreOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("missing file") << QStringList{"log-info", path("missing.log")}
                                  << QByteArray("missing.log: Unable to read file.");
    QTest::newRow("no log") << QStringList{"log-info", path("text.log"), "--json"}
                            << QByteArray("text.log: log parsing: No document element found");
    QTest::newRow("a folder") << QStringList{"sync", m_folder.path(), "--duration-ms", "5"}
                              << QByteArray("Unable to read file.");
    QTest::newRow("no such group")
        << QStringList{"log-csv", path("flight.log"), "x"} << QByteArray("no group \"x\"");
    QTest::newRow("no such field")
        << QStringList{"log-raw", path("flight.log"), "mission_info", "x"}
        << QByteArray("no field \"x\" of a group \"mission_info\"");
    QTest::newRow("a table without end")
        << QStringList{"log-csv", path("types.log"), "endless"} << QByteArray("too many columns");
}

void LogCommandsTest::failuresAreOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    const ProgramRun run = vistrel(arguments);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.out, QByteArray());
    QVERIFY2(run.error.contains(message), run.error.constData());
    QVERIFY(run.error.startsWith("vistrel-cli: "));
    QCOMPARE(run.error.count('\n'), 1);
}

void LogCommandsTest::wrongUsageExitsWith2_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("nothing") << QStringList{};
    QTest::newRow("unknown command") << QStringList{"fly"};
    QTest::newRow("unknown option") << QStringList{"--fly"};
    QTest::newRow("unknown option of a command") << QStringList{"log-info", "a", "--fly"};
    QTest::newRow("option of another command") << QStringList{"log-csv", "a", "b", "--json"};
    QTest::newRow("value for a flag") << QStringList{"log-info", "a", "--json=yes"};
    QTest::newRow("no file") << QStringList{"log-info"};
    QTest::newRow("two files") << QStringList{"log-info", "a", "b"};
    QTest::newRow("no group") << QStringList{"log-csv", "a"};
    QTest::newRow("no var") << QStringList{"log-raw", "a", "b"};
    QTest::newRow("no duration") << QStringList{"sync", "a"};
    QTest::newRow("duration without number") << QStringList{"sync", "a", "--duration-ms"};
    QTest::newRow("duration in words") << QStringList{"sync", "a", "--duration-ms", "ten"};
}

void LogCommandsTest::wrongUsageExitsWith2()
{
    QFETCH(QStringList, arguments);
    const ProgramRun run = vistrel(arguments);
    QCOMPARE(run.status, 2);
    QCOMPARE(run.out, QByteArray());
    QVERIFY(run.error.startsWith("usage: vistrel-cli "));
    QCOMPARE(run.error.count('\n'), 1);
}

void LogCommandsTest::diagnosticsAreShownOnDemand()
{
    const ProgramRun run = vistrel({"--verbose", "log-info", path("flight.log")});
    QCOMPARE(run.status, 0);
    QVERIFY(run.error.contains("7  total packets counted, including:"));
}

QTEST_GUILESS_MAIN(LogCommandsTest)
#include "LogCommandsTest.moc"
