#include "Support/LogBuilder.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <unistd.h>
#include <vector>

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

QJsonObject var(const QString& name, const QString& type, int nb, int elementSize)
{
    return {{"name", name}, {"type", type}, {"nb", nb}, {"elementSize", elementSize}};
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
    void helpAndVersionArePrinted();
    void infoShowsEverything();
    void infoShowsTheContentsForPeople();
    void infoOfSeveralLogs();
    void infoOfOddEvents();
    void logOfAFolderThatCannotBeReadIsNamed();
    void namesInMessagesDoNotSteerTheTerminal();
    void rawIsTheBlock();
    void csvShowsTheDeclaredTypes();
    void csvChoosesColumnsAndRows();
    void logCommandsLoadNoPictures();
    void syncFindsTheVideo();
    void failuresAreOneLine_data();
    void failuresAreOneLine();
    void wrongUsageExitsWith2_data();
    void wrongUsageExitsWith2();
    void valuesThatCannotBeAreNamed_data();
    void valuesThatCannotBeAreNamed();
    void namesThatAreNotUtf8LeadToTheirFiles();
    void folderThatCannotBeListedIsNamed();
    void wordWithOneDashIsNamedWhole();
    void memoryThatCannotBeHadIsAMessage();
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

void LogCommandsTest::helpAndVersionArePrinted()
{
    const ProgramRun help = vistrel({"--help"});
    QCOMPARE(help.status, 0);
    QCOMPARE(help.error, QByteArray());
    for (const char* command : {"log-info FILE|FOLDER... [--json]", "log-csv FILE GROUP",
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
        {"file", path("flight.log")},
        {"version", 1},
        {"startMs", 9000},
        {"endMs", 9000},
        {"packets", QJsonObject{{"total", 7},
                                {"valid", 3},
                                {"wrongCrc", 1},
                                {"wrongSize", 1},
                                {"wrongId", 1},
                                {"incompleteLast", true}}},
        {"groups",
         QJsonArray{group("mobius_start_rec", 1, 1, 4, {var("mobius_start_rec", "UINT32", 1, 4)}),
                    group("mobius_stop_rec", 2, 1, 4, {var("mobius_stop_rec", "UINT32", 1, 4)}),
                    group("mission_info", 3, 1, 17,
                          {var("time", "UINT32", 1, 4), var("mission_name", "INT8", 6, 1),
                           var("flight_name", "INT8", 6, 1), var("flight_number", "UINT8", 1, 1)}),
                    group("lepton_info", 4, 1, 1, {var("lepton_type", "UINT8", 1, 1)})}},
        {"recordings", QJsonArray{QJsonObject{{"startMs", 10000}, {"stopMs", 71000}}}},
        {"namings", QJsonArray{named}},
        {"thermalCamera", 35}};
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), expected);
}

void LogCommandsTest::infoShowsTheContentsForPeople()
{
    const ProgramRun run = vistrel({"log-info", path("flight.log")});
    QCOMPARE(run.status, 0);
    for (const char* text :
         {"Log version 1, 7 packets: 3 valid", "the last incomplete",
          "mission_name INT8[6], flight_name INT8[6], flight_number UINT8\n",
          "Log time from 9000 ms to 9000 ms", "flight.log\n", "recording from 10000 ms to 71000 ms",
          "mission \"Roof\", flight \"North\", number 7", "thermal camera 35"})
        QVERIFY2(run.out.contains(text), text);
}

void LogCommandsTest::infoOfSeveralLogs()
{
    const QString folder = path("card");
    QVERIFY(QDir().mkpath(folder + "/below"));
    QVERIFY(flight().save(folder + "/b.log"));
    QVERIFY(flight().save(folder + "/below/a.log"));
    QVERIFY(flight().save(folder + "/other.txt"));
    const ProgramRun all = vistrel({"log-info", folder, path("types.log"), "--json"});
    QCOMPARE(all.status, 0);
    QStringList files;
    for (const QJsonValue& log : QJsonDocument::fromJson(all.out).array())
        files += log.toObject()["file"].toString();
    QCOMPARE(files, QStringList({folder + "/b.log", folder + "/below/a.log", path("types.log")}));

    const ProgramRun some = vistrel({"log-info", path("missing.log"), path("flight.log")});
    QCOMPARE(some.status, 3);
    QVERIFY(some.error.contains("missing.log\" does not exist."));
    QVERIFY(some.out.startsWith("==> " + path("flight.log").toUtf8() + " <=="));
    const ProgramRun none = vistrel({"log-info", "--json", path("missing.log"), path("text.log")});
    QCOMPARE(none.status, 1);
    QCOMPARE(none.error.count('\n'), 2);
    const QJsonArray reasons = QJsonDocument::fromJson(none.out).array();
    QCOMPARE(reasons.size(), 2);
    QCOMPARE(reasons[1].toObject()["error"].toString(),
             QStringLiteral("\"%1\" is not a flight log.").arg(path("text.log")));
    QVERIFY(QDir().mkpath(path("empty")));
    const ProgramRun empty = vistrel({"log-info", path("empty")});
    QCOMPARE(empty.status, 1);
    QVERIFY(empty.error.contains("There is no log in"));
}

void LogCommandsTest::infoOfOddEvents()
{
    LogBuilder log = flight();
    log.addPacket(99, ""); // completes the packet that the flight breaks off in
    log.addPacket(1, LogBuilder::u32(4'000'000'000U));
    log.addPacket(3, LogBuilder::u32(3'900'000'000U) + LogBuilder::text("", 6) +
                         LogBuilder::text("", 6) + LogBuilder::u8(0));
    log.addPacket(3, LogBuilder::u32(3'950'000'000U) + LogBuilder::text("%3\x1b[1", 6) +
                         LogBuilder::text("\xc2\x9bm", 6) + LogBuilder::u8(1));
    log.addPacket(3, LogBuilder::u32(3'960'000'000U) + LogBuilder::text("a\xe2\x80\xae!", 6) +
                         LogBuilder::text("", 6) + LogBuilder::u8(1));
    QVERIFY(log.save(path("odd.log")));
    const ProgramRun people = vistrel({"log-info", path("odd.log")});
    QCOMPARE(people.status, 0);
    for (const char* text : {"recording from 4000000000 ms, a start without a stop",
                             "named at 3900000000 ms: undefined",
                             "named at 3950000000 ms: mission \"%3\xef\xbf\xbd[1\", flight "
                             "\"\xef\xbf\xbdm\", number 1"})
        QVERIFY2(people.out.contains(text), people.out.constData());
    const ProgramRun json = vistrel({"log-info", path("odd.log"), "--json"});
    const QJsonObject info = QJsonDocument::fromJson(json.out).object();
    QCOMPARE(info["recordings"].toArray()[1].toObject(),
             QJsonObject({{"startMs", 4e9}, {"stopMs", QJsonValue()}}));
    QJsonObject undefined = naming(true, "", "", 0);
    undefined.insert("timeMs", 3.9e9);
    QCOMPARE(info["namings"].toArray()[1].toObject(), undefined);
    QCOMPARE(info["namings"].toArray()[2].toObject()["missionName"].toString(),
             QStringLiteral("%3\x1b[1"));
    for (const QByteArray& out : {people.out, json.out}) {
        QVERIFY(!out.contains('\x1b'));
        QVERIFY(!out.contains("\xc2\x9b"));
        QVERIFY(!out.contains("\xe2\x80\xae"));
    }
    QVERIFY(json.out.contains("\"a\\u202e!\""));
    QCOMPARE(info["namings"].toArray()[3].toObject()["missionName"].toString(),
             QString::fromUtf8("a\xe2\x80\xae!"));
}

void LogCommandsTest::logOfAFolderThatCannotBeReadIsNamed()
{
    QVERIFY(QDir().mkpath(path("locked")));
    QVERIFY(flight().save(path("locked/a.log")));
    QVERIFY(flight().save(path("locked/b.log")));
    QVERIFY(QFile::setPermissions(path("locked/b.log"), QFile::Permissions()));
    QStringList line{VISTREL_CLI, "log-info", path("locked"), "--json"};
    if (::geteuid() == 0) {
        // The administrator may read everything.
        QVERIFY(QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(path("locked/a.log"), QFile::Permissions(0x6644)));
        line = QStringList{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"} + line;
    }
    const ProgramRun run = runProgram(line[0], line.mid(1));
    if (run.status == 127)
        QSKIP("the tool is where another user may not start it");
    QCOMPARE(run.status, 3);
    QVERIFY2(run.error.contains("b.log\" cannot be read: the system refuses access"), run.error);
    const QJsonArray logs = QJsonDocument::fromJson(run.out).array();
    QCOMPARE(logs.size(), 2);
    QVERIFY(!logs[0].toObject().contains("error"));
    QVERIFY(logs[1].toObject().contains("error"));
}

void LogCommandsTest::namesInMessagesDoNotSteerTheTerminal()
{
    const ProgramRun run = vistrel({"log-csv", path("flight.log"), "\x1b[2J\nx"});
    QCOMPARE(run.status, 1);
    QVERIFY(!run.error.contains('\x1b'));
    QCOMPARE(run.error.count('\n'), 1);
}

void LogCommandsTest::csvChoosesColumnsAndRows()
{
    const ProgramRun byId =
        vistrel({"log-csv", path("types.log"), "#1", "--columns", "g,c[1]", "--bytes"});
    QCOMPARE(byId.error, QByteArray());
    QCOMPARE(byId.out, QByteArray("g,c[1]\n0.1,-1\n0,0\n"));
    const ProgramRun text = vistrel({"log-csv", path("flight.log"), "mission_info", "--rate", "1"});
    QCOMPARE(text.out, QByteArray("time (ms),mission_name,flight_name,flight_number\n"
                                  "9000,Roof,North,7\n"));
}

void LogCommandsTest::logCommandsLoadNoPictures()
{
    QProcess trace;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_DEBUG", "files");
    trace.setProcessEnvironment(environment);
    trace.start(VISTREL_CLI, {"log-info", path("flight.log")});
    QVERIFY(trace.waitForFinished());
    const QByteArray loaded = trace.readAllStandardError();
    QVERIFY(loaded.contains("libQt5Core"));
    for (const char* library : {"libopencv", "libQt5Gui", "libQt5Quick", "libQt5Network", "libav"})
        QVERIFY2(!loaded.contains(library), library);
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
    const QJsonObject expected{{"found", true},
                               {"probablyNotMatching", false},
                               {"videoDurationMs", 60000},
                               {"matchedDurationMs", 61000},
                               {"logTimeOffsetMs", 10690},
                               {"naming", naming(false, "Roof", "North", 7)}};
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), expected);
    const ProgramRun none = vistrel({"sync", "--json", "--duration-ms", "0", path("flight.log")});
    QCOMPARE(none.status, 1);
    QVERIFY(none.error.contains("No recording of the log"));
    const QJsonObject nothing = QJsonDocument::fromJson(none.out).object();
    QCOMPARE(nothing["found"], QJsonValue(false));
    QCOMPARE(nothing["logTimeOffsetMs"], QJsonValue(0));
    QCOMPARE(nothing["naming"], QJsonValue(naming(true, "", "", 0)));
    // The nearest recording is shown, but it does not fit.
    const ProgramRun other =
        vistrel({"sync", "--json", "--duration-ms", "999999", path("flight.log")});
    QCOMPARE(other.status, 1);
    QVERIFY(other.error.contains("No recording of the log"));
    QCOMPARE(QJsonDocument::fromJson(other.out).object()["probablyNotMatching"], QJsonValue(true));
    const ProgramRun people = vistrel({"sync", path("flight.log"), "--duration-ms", "60000"});
    QVERIFY(people.out.contains("begins at 10690 ms of the log"));
}

void LogCommandsTest::failuresAreOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("missing file") << QStringList{"log-info", path("missing.log")}
                                  << QByteArray("missing.log\" does not exist.");
    QTest::newRow("no log") << QStringList{"log-info", path("text.log"), "--json"}
                            << QByteArray("text.log\" is not a flight log.");
    QTest::newRow("a folder") << QStringList{"sync", m_folder.path(), "--duration-ms", "5"}
                              << QByteArray("\" is a folder or a device, not a flight log.");
    QVERIFY(::symlink("circle.log", QFile::encodeName(path("circle.log")).constData()) == 0);
    QTest::newRow("a link to itself") << QStringList{"log-info", path("circle.log")}
                                      << QByteArray("\" is a link that leads back to itself.");
    QTest::newRow("no such group")
        << QStringList{"log-csv", path("flight.log"), "x"} << QByteArray("has no group \"x\".");
    QTest::newRow("no such field")
        << QStringList{"log-raw", path("flight.log"), "mission_info", "x"}
        << QByteArray("has no field \"x\".");
    QTest::newRow("a table without end") << QStringList{"log-csv", path("types.log"), "endless"}
                                         << QByteArray("has too many columns for a table.");
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
    QTest::newRow("rate in words") << QStringList{"log-csv", "a", "b", "--rate", "often"};
    QTest::newRow("rate of nothing") << QStringList{"log-csv", "a", "b", "--rate", "0"};
    QTest::newRow("columns without names") << QStringList{"log-csv", "a", "b", "--columns", ","};
    QTest::newRow("no group") << QStringList{"log-csv", "a"};
    QTest::newRow("no var") << QStringList{"log-raw", "a", "b"};
    QTest::newRow("no duration") << QStringList{"sync", "a"};
    QTest::newRow("duration without number") << QStringList{"sync", "a", "--duration-ms"};
    QTest::newRow("duration below nothing") << QStringList{"sync", "a", "--duration-ms", "-5"};
    QTest::newRow("duration in words") << QStringList{"sync", "a", "--duration-ms", "ten"};
}

void LogCommandsTest::wrongUsageExitsWith2()
{
    QFETCH(QStringList, arguments);
    const ProgramRun run = vistrel(arguments);
    QCOMPARE(run.status, 2);
    QCOMPARE(run.out, QByteArray());
    const QByteArray usage = run.error.mid(run.error.indexOf('\n') + 1);
    const bool hasReason = run.error.startsWith("vistrel-cli: ");
    QVERIFY2((hasReason ? usage : run.error).startsWith("usage: vistrel-cli "), run.error);
    QCOMPARE(run.error.count('\n'), hasReason ? 2 : 1);
    if (arguments.size() > 3) { // the name of an option and what it is given
        QVERIFY(hasReason);
        QVERIFY2(run.error.contains("--rate") || run.error.contains("--columns") ||
                     run.error.contains("--duration-ms") || run.error.contains("json"),
                 run.error);
    }
}

void LogCommandsTest::valuesThatCannotBeAreNamed_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char* name, const QStringList& arguments, const char* reason) {
        QTest::newRow(name) << arguments << QByteArray("vistrel-cli: ") + reason + "\nusage: ";
    };
    const QStringList csv{"log-csv", "a", "b"};
    for (const char* rate : {"inf", "nan", "-1", "0", "1e400", "often"})
        row(rate, csv + QStringList{"--rate", rate},
            "--rate: \"" + QByteArray(rate) + "\" is not a number above 0.");
    row("no rate", csv + QStringList{"--rate", ""}, "--rate: the value is empty.");
    row("no names", csv + QStringList{"--columns", ",,"}, "--columns: \",,\" names no field.");
    for (const char* length : {"-5", "ten", "4.5", "2147483648"})
        row(length, {"sync", "a", "--duration-ms", length},
            "--duration-ms: \"" + QByteArray(length) +
                "\" is not a whole number from 0 to 2147483647.");
    row("unknown option", {"sync", "a", "--fly"}, "Unknown option 'fly'.");
    row("unknown command", {"fly"}, "There is no command \"fly\".");
    row("unknown shell", {"--completion", "csh"},
        "--completion: there is none for \"csh\", only for bash, zsh, fish.");
}

void LogCommandsTest::valuesThatCannotBeAreNamed()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, reason);
    const ProgramRun run = vistrel(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY2(run.error.startsWith(reason), run.error);
}

// A card written by another system may have names that are not UTF-8.
void LogCommandsTest::namesThatAreNotUtf8LeadToTheirFiles()
{
    const QByteArray folder = QFile::encodeName(path("names"));
    QVERIFY(QDir().mkpath(path("names/below")));
    QVERIFY(flight().save(path("names/below/plain.LOG")));
    const QByteArray name = folder + "/caf\xe9-\xc3\xa9.log";
    QCOMPARE(::symlink("below/plain.LOG", name.constData()), 0);
    QCOMPARE(::symlink("..", (folder + "/below/up").constData()), 0);
    QCOMPARE(::symlink("circle.log", (folder + "/circle.log").constData()), 0);
    const ProgramRun all = vistrel({"log-info", path("names"), "--json"});
    QCOMPARE(all.status, 0);
    QCOMPARE(all.error, QByteArray());
    QCOMPARE(QJsonDocument::fromJson(all.out).array().size(), 2);
    const ProgramRun one =
        runProgram("sh", {"-c", "exec \"$0\" log-info \"$1\"/caf*", VISTREL_CLI, path("names")});
    QCOMPARE(one.status, 0);
    QVERIFY2(one.out.contains("7 packets: 3 valid"), one.out + one.error);
}

void LogCommandsTest::folderThatCannotBeListedIsNamed()
{
    QVERIFY(QDir().mkpath(path("shut/in")));
    QVERIFY(flight().save(path("shut/a.log")));
    QVERIFY(QFile::setPermissions(path("shut/in"), QFile::Permissions()));
    QStringList line{VISTREL_CLI, "log-info", path("shut"), "--json"};
    if (::geteuid() == 0) {
        // The administrator may read everything.
        QVERIFY(QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::setPermissions(path("shut/a.log"), QFile::Permissions(0x6644)));
        line = QStringList{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"} + line;
    }
    const ProgramRun run = runProgram(line[0], line.mid(1));
    QVERIFY(QFile::setPermissions(path("shut/in"), QFile::Permissions(0x7755)));
    if (run.status == 127)
        QSKIP("the tool is where another user may not start it");
    QCOMPARE(run.status, 3);
    QVERIFY2(run.error.contains("shut/in\" cannot be read: Permission denied."), run.error);
    QCOMPARE(QJsonDocument::fromJson(run.out).array().size(), 2);
}

// Not letter by letter: it may be the name of a file.
void LogCommandsTest::wordWithOneDashIsNamedWhole()
{
    for (const QStringList& line : {QStringList{"log-info", "-dash"}, QStringList{"-dash"}}) {
        const ProgramRun run = vistrel(line);
        QCOMPARE(run.status, 2);
        QVERIFY2(run.error.contains("'dash'"), run.error.constData());
    }
}

// Where the log has room, its description as JSON may have none.
void LogCommandsTest::memoryThatCannotBeHadIsAMessage()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs more than any limit allows");
#endif
    LogBuilder log;
    for (int group = 0; group < 128; ++group) {
        std::vector<LogBuilder::Var> vars;
        for (int i = 0; i < 60; ++i)
            vars.push_back({"value_" + QByteArray::number(i), "FLOAT", 1});
        log.addGroup("group_" + QByteArray::number(group), group, vars);
    }
    QVERIFY(log.save(path("wide.log")));
    constexpr int mib = 1024 * 1024;
    QList<ProgramRun> failures;
    for (int limitBytes = 40 * mib; limitBytes < 1024 * mib; limitBytes += mib / 2) {
        const ProgramRun run =
            runProgram("prlimit", {QString("--as=%1").arg(limitBytes), QStringLiteral(VISTREL_CLI),
                                   "log-info", path("wide.log"), "--json"});
        if (run.status == 0)
            break;
        failures << run;
    }
    // With much less the program does not even begin.
    constexpr int nearlyEnough = 8;
    QVERIFY(failures.size() > nearlyEnough);
    for (const ProgramRun& run : failures.mid(failures.size() - nearlyEnough)) {
        QCOMPARE(run.status, 1);
        QVERIFY2(run.error.startsWith("vistrel-cli: There is not enough memory"), run.error);
    }
}

void LogCommandsTest::diagnosticsAreShownOnDemand()
{
    const ProgramRun run = vistrel({"--verbose", "log-info", path("flight.log")});
    QCOMPARE(run.status, 0);
    QVERIFY(run.error.contains("7  total packets counted, including:"));
}

QTEST_GUILESS_MAIN(LogCommandsTest)
#include "LogCommandsTest.moc"
