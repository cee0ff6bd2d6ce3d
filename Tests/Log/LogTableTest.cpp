#include "Log/LogTable.h"

#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"

#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(std::string)

/// A group of a log as a table.
class LogTableTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aGroupBecomesATable_data();
    void aGroupBecomesATable();
    void onlyChosenColumnsAreWritten_data();
    void onlyChosenColumnsAreWritten();
    void ratesShowTheFirstOfEachInterval_data();
    void ratesShowTheFirstOfEachInterval();
    void whatIsNotThereIsAFailure_data();
    void whatIsNotThereIsAFailure();
    void bytesThatHoldTextAreRecognised_data();
    void bytesThatHoldTextAreRecognised();
    void steeringCharactersAreReplaced();
    void everyFractionReadsBackAsItIs();
    void aLongTableIsWhole();
    void aFullDiskStopsTheTable();

private:
    std::shared_ptr<const LogFile> decoded(const LogBuilder& log);

    QTemporaryDir m_folder;
};

namespace {

LogBuilder flight()
{
    LogBuilder log;
    log.addGroup("state_estimation", 1,
                 {{"time", "UINT32", 1}, {"euler_angles", "FLOAT", 2}, {"altitude", "FLOAT", 1}});
    for (quint32 time = 990; time < 1030; time += 10)
        log.addPacket(1, LogBuilder::u32(time) + LogBuilder::f32(0.5F) + LogBuilder::f32(-0.25F) +
                             LogBuilder::f32(static_cast<float>(time)));
    log.addGroup("mission_info", 2, {{"mission_name", "INT8", 4}, {"flight_number", "UINT8", 1}});
    log.addPacket(2, LogBuilder::text("a,\"b", 4) + LogBuilder::u8(7));
    log.addPacket(2, LogBuilder::text("", 4) + LogBuilder::u8(0));
    log.addGroup("counts", 3, {{"bytes", "UINT8", 3}});
    log.addPacket(3, QByteArray("\1\2\3"));
    return log;
}

QByteArray written(const LogTable& table)
{
    QByteArray bytes;
    table.write([&bytes](const char* more, size_t size) {
        bytes.append(more, static_cast<int>(size));
        return true;
    });
    return bytes;
}

QByteArray tableOf(const std::shared_ptr<const LogFile>& log, const std::string& group,
                   const LogTableOptions& options = {})
{
    const Result<LogTable> table = LogTable::make(log, *log->getGroup(group), options);
    return table ? written(*table) : table.failure().sentence.toUtf8();
}

} // namespace

void LogTableTest::initTestCase()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

std::shared_ptr<const LogFile> LogTableTest::decoded(const LogBuilder& log)
{
    const QString path = m_folder.filePath(QStringLiteral("a.log"));
    const std::atomic<bool> abortFlag{false};
    if (!log.save(path))
        return nullptr;
    const auto result = LogDecoder(&abortFlag).decode(path, [](int, int, int) {});
    return result ? *result : nullptr;
}

void LogTableTest::aGroupBecomesATable_data()
{
    QTest::addColumn<std::string>("group");
    QTest::addColumn<bool>("textAsText");
    QTest::addColumn<QByteArray>("table");
    QTest::newRow("units") << std::string("state_estimation") << true
                           << QByteArray("time (ms),euler_angles[0] (rad),euler_angles[1] (rad),"
                                         "altitude (m)\n"
                                         "990,0.5,-0.25,990\n1000,0.5,-0.25,1000\n"
                                         "1010,0.5,-0.25,1010\n1020,0.5,-0.25,1020\n");
    QTest::newRow("text") << std::string("mission_info") << true
                          << QByteArray("mission_name,flight_number\n\"a,\"\"b\",7\n,0\n");
    QTest::newRow("text as bytes")
        << std::string("mission_info") << false
        << QByteArray("mission_name[0],mission_name[1],mission_name[2],mission_name[3],"
                      "flight_number\n97,44,34,98,7\n0,0,0,0,0\n");
    QTest::newRow("bytes") << std::string("counts") << true
                           << QByteArray("bytes[0],bytes[1],bytes[2]\n1,2,3\n");
}

void LogTableTest::aGroupBecomesATable()
{
    QFETCH(std::string, group);
    QFETCH(bool, textAsText);
    LogTableOptions options;
    options.textAsText = textAsText;
    QTEST(tableOf(decoded(flight()), group, options), "table");
}

void LogTableTest::onlyChosenColumnsAreWritten_data()
{
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<QByteArray>("firstLines");
    QTest::newRow("one") << QStringList{"altitude"} << QByteArray("altitude (m)\n990\n");
    QTest::newRow("in their order")
        << QStringList{"altitude", "time"} << QByteArray("altitude (m),time (ms)\n990,990\n");
    QTest::newRow("an element") << QStringList{"euler_angles[1]"}
                                << QByteArray("euler_angles[1] (rad)\n-0.25\n");
    QTest::newRow("all elements")
        << QStringList{" euler_angles "}
        << QByteArray("euler_angles[0] (rad),euler_angles[1] (rad)\n0.5,-0.25\n");
}

void LogTableTest::onlyChosenColumnsAreWritten()
{
    QFETCH(QStringList, columns);
    QFETCH(QByteArray, firstLines);
    LogTableOptions options;
    options.columns = columns;
    const QByteArray table = tableOf(decoded(flight()), "state_estimation", options);
    QVERIFY2(table.startsWith(firstLines), table.constData());
    QCOMPARE(table.count('\n'), 5);
}

void LogTableTest::ratesShowTheFirstOfEachInterval_data()
{
    QTest::addColumn<double>("rateHz");
    QTest::addColumn<QByteArray>("times");
    QTest::newRow("all") << 0.0 << QByteArray("990\n1000\n1010\n1020\n");
    QTest::newRow("faster than the log") << 1000.0 << QByteArray("990\n1000\n1010\n1020\n");
    QTest::newRow("half of them") << 50.0 << QByteArray("990\n1000\n1020\n");
    QTest::newRow("one a second") << 1.0 << QByteArray("990\n1000\n");
    QTest::newRow("one in ten seconds") << 0.1 << QByteArray("990\n");
}

void LogTableTest::ratesShowTheFirstOfEachInterval()
{
    QFETCH(double, rateHz);
    QFETCH(QByteArray, times);
    LogTableOptions options;
    options.columns = QStringList{"time"};
    options.rateHz = rateHz;
    QCOMPARE(tableOf(decoded(flight()), "state_estimation", options), "time (ms)\n" + times);
}

void LogTableTest::whatIsNotThereIsAFailure_data()
{
    QTest::addColumn<std::string>("group");
    QTest::addColumn<QString>("column");
    QTest::addColumn<double>("rateHz");
    QTest::addColumn<QByteArray>("sentence");
    const QByteArray noColumn = "The group \"counts\" has no column \"%1\".";
    for (const char* column : {"x", "bytes[3]", "bytes[-1]", "bytes[]", "[0]", "bytes[0"}) {
        QTest::newRow(column) << std::string("counts") << QString(column) << 0.0
                              << QByteArray(noColumn).replace("%1", column);
    }
    QTest::newRow("rate without times")
        << std::string("counts") << QString("bytes") << 5.0
        << QByteArray("The group \"counts\" has no times to take a rate of.");
}

void LogTableTest::whatIsNotThereIsAFailure()
{
    QFETCH(std::string, group);
    QFETCH(QString, column);
    QFETCH(double, rateHz);
    LogTableOptions options;
    options.columns = QStringList{column};
    options.rateHz = rateHz;
    QTEST(tableOf(decoded(flight()), group, options), "sentence");
}

void LogTableTest::bytesThatHoldTextAreRecognised_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArrayList>("values");
    QTest::addColumn<bool>("isText");
    const auto row = [](const char* title, const char* name, const char* type,
                        const QByteArrayList& values, bool isText) {
        QTest::newRow(title) << QByteArray(name) << QByteArray(type) << values << isText;
    };
    row("by its name", "mission_name", "UINT8", {QByteArray(4, '\0')}, true);
    row("by its values", "serial", "INT8", {"AB12", QByteArray("C\0\0\0", 4)}, true);
    row("UTF-8", "serial", "UINT8", {"\xc3\xbc\xc3\xbc"}, true);
    row("no values but zeros", "flags", "UINT8", {QByteArray(4, '\0')}, false);
    row("one value that is none", "serial", "UINT8", {"AB12", QByteArray("\1\2\3\4")}, false);
    row("bytes behind the end", "serial", "UINT8", {QByteArray("A\0B\0", 4)}, false);
    row("broken UTF-8", "serial", "UINT8", {"A\xff\xff\xff"}, false);
    row("words", "mission_name", "UINT16", {"AB12CD34"}, false);
}

void LogTableTest::bytesThatHoldTextAreRecognised()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, type);
    QFETCH(QByteArrayList, values);
    LogBuilder log;
    log.addGroup("g", 1, {{name, type, 4}});
    for (const QByteArray& value : qAsConst(values))
        log.addPacket(1, value);
    const auto file = decoded(log);
    QTEST(LogTable::isText(file->getGroups()[0].getVars()[0]), "isText");
}

void LogTableTest::steeringCharactersAreReplaced()
{
    LogBuilder log;
    log.addGroup("g", 1, {{"x\x1b[2J", "UINT8", 1}, {"a_name", "UINT8", 6}});
    log.addPacket(1, LogBuilder::u8(1) + LogBuilder::text("a\x1b[2J\n", 6));
    QCOMPARE(tableOf(decoded(log), "g"),
             QString::fromUtf8("x\uFFFD[2J,a_name\n1,a\uFFFD[2J\uFFFD\n").toUtf8());
}

void LogTableTest::everyFractionReadsBackAsItIs()
{
    const QList<double> values{0.1, -1e300, 5e-324, 1.0 / 3, 0.0, -0.0, 123456789.125};
    LogBuilder log;
    log.addGroup("g", 1, {{"v", "DOUBLE", 1}});
    for (const double value : values)
        log.addPacket(1, LogBuilder::f64(value));
    QByteArrayList lines = tableOf(decoded(log), "g").trimmed().split('\n');
    lines.removeFirst();
    QCOMPARE(lines.size(), values.size());
    for (int i = 0; i < values.size(); ++i) {
        QCOMPARE(lines[i].toDouble(), values[i]);
        QCOMPARE(std::signbit(lines[i].toDouble()), std::signbit(values[i]));
    }
}

void LogTableTest::aLongTableIsWhole()
{
    constexpr int kRows = 200'000; // some chunks
    auto log = std::make_shared<LogFile>();
    log->addGroup("g", 1);
    LogGroup& group = log->getGroups()[0];
    group.setNbPackets(kRows);
    group.addVar("v");
    QVERIFY(group.getVars()[0].allocate(1, kRows, LogVar::Uint32));
    QByteArray expected = "v\n";
    for (int row = 0; row < kRows; ++row) {
        const auto value = static_cast<quint32>(row) * 2654435761U;
        group.getVars()[0].setU32(0, row, value);
        expected += QByteArray::number(value) + '\n';
    }
    QVERIFY(tableOf(log, "g") == expected);
}

void LogTableTest::aFullDiskStopsTheTable()
{
    const auto log = decoded(flight());
    const Result<LogTable> table =
        LogTable::make(log, *log->getGroup(std::string("state_estimation")), {});
    QVERIFY(table);
    int writes = 0;
    QVERIFY(!table->write([&writes](const char*, size_t) { return ++writes < 2; }));
    QCOMPARE(writes, 2);
}

QTEST_GUILESS_MAIN(LogTableTest)
#include "LogTableTest.moc"
