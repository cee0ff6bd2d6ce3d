#include "Log/LogFile.h"

#include <QtTest>
#include <cstring>
#include <limits>

Q_DECLARE_METATYPE(std::string)

class LogFileTest : public QObject
{
    Q_OBJECT

private slots:
    void typesHaveTheirNamesAndSizes_data();
    void typesHaveTheirNamesAndSizes();
    void theFirstOfANameOrIdIsFound();
    void blocksAreColumnMajor();
    void newBlocksReadAsZero();
    void gettersLeaveTheirOutputAlone_data();
    void gettersLeaveTheirOutputAlone();
    void writesOutOfRangeAreIgnored();
    void storedValuesAreReadBack();
    void wideReadsOfNarrowElementsStayInTheBlock();
    void stringsEndAtAZeroOrAfterFifty_data();
    void stringsEndAtAZeroOrAfterFifty();
    void emptyBlocksAreBlocks();
    void blocksOfTwoGibibytesAreRefused_data();
    void blocksOfTwoGibibytesAreRefused();
    void countsBelowOneGiveNoColumns();
    void columnsAreTyped_data();
    void columnsAreTyped();
};

void LogFileTest::typesHaveTheirNamesAndSizes_data()
{
    QTest::addColumn<std::string>("word");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("size");
    QTest::newRow("INT32") << std::string("INT32") << 0 << 4;
    QTest::newRow("UINT32") << std::string("UINT32") << 1 << 4;
    QTest::newRow("INT16") << std::string("INT16") << 2 << 2;
    QTest::newRow("UINT16") << std::string("UINT16") << 3 << 2;
    QTest::newRow("INT8") << std::string("INT8") << 4 << 1;
    QTest::newRow("UINT8") << std::string("UINT8") << 5 << 1;
    QTest::newRow("FLOAT") << std::string("FLOAT") << 6 << 4;
    QTest::newRow("DOUBLE") << std::string("DOUBLE") << 7 << 8;
    QTest::newRow("another case") << std::string("double") << 5 << 1;
    QTest::newRow("blank") << std::string("INT32 ") << 5 << 1;
    QTest::newRow("empty") << std::string() << 5 << 1;
}

void LogFileTest::typesHaveTheirNamesAndSizes()
{
    QFETCH(std::string, word);
    QTEST(int(LogVar::typeFromName(word)), "type");
    QTEST(LogVar::typeSize(LogVar::typeFromName(word)), "size");
    QCOMPARE(LogVar::typeSize(8), 1);
    QCOMPARE(LogVar::typeSize(-1), 1);
}

void LogFileTest::theFirstOfANameOrIdIsFound()
{
    LogFile log;
    log.addGroup("a", 3);
    log.addGroup("b", 3);
    log.addGroup("a", 4);
    QCOMPARE(log.getGroup("a"), &log.getGroups()[0]);
    QCOMPARE(log.getGroup(3), &log.getGroups()[0]);
    QCOMPARE(log.getGroup(4), &log.getGroups()[2]);
    QVERIFY(!log.getGroup("c"));
    QVERIFY(!log.getGroup(5));
    LogGroup& group = log.getGroups()[0];
    group.addVar("x");
    group.addVar("x");
    QCOMPARE(group.getVar("x"), &group.getVars()[0]);
    QVERIFY(!group.getVar("y"));
    QCOMPARE(group.getId(), 3);
    QCOMPARE(group.getNbPackets(), 0);
    QCOMPARE(group.getNbStored(), 0);
    log.setFileName("/flights/a.log");
    QCOMPARE(log.getFileName(), std::string("/flights/a.log"));
}

void LogFileTest::blocksAreColumnMajor()
{
    LogVar var("v");
    QVERIFY(var.allocate(3, 4, LogVar::Uint16));
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column)
            var.setU16(column, row, static_cast<quint16>(100 * column + row));
    }
    void* data = nullptr;
    var.getColumn(2, &data);
    const auto* third = static_cast<const quint16*>(data);
    QCOMPARE(third[0], quint16(200));
    QCOMPARE(third[3], quint16(203));
    const auto* block = static_cast<const quint16*>(var.getData());
    QCOMPARE(third - block, std::ptrdiff_t(8));
    QCOMPARE(block[4 * 1 + 2], quint16(102));
    QCOMPARE(var.getDataSize(), size_t(24));
    QCOMPARE(var.getElementSize(), 2);
}

void LogFileTest::newBlocksReadAsZero()
{
    LogVar var("v");
    QVERIFY(var.allocate(1000, 3000, LogVar::Uint8, true));
    const auto* bytes = static_cast<const char*>(var.getData());
    QVERIFY(std::all_of(bytes, bytes + var.getDataSize(), [](char byte) { return byte == 0; }));
    var.setU8(7, 7, 9);
    QVERIFY(var.allocate(2, 2, LogVar::Uint8));
    quint8 value = 1;
    var.getU8(1, 1, &value);
    QCOMPARE(value, quint8(0));
}

void LogFileTest::gettersLeaveTheirOutputAlone_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("row");
    QTest::newRow("row behind the last") << 0 << 4;
    QTest::newRow("column behind the last") << 3 << 0;
    QTest::newRow("negative row") << 0 << -1;
    QTest::newRow("negative column") << -1 << 0;
    QTest::newRow("far off") << std::numeric_limits<int>::max() << 0;
}

void LogFileTest::gettersLeaveTheirOutputAlone()
{
    QFETCH(int, column);
    QFETCH(int, row);
    LogVar var("v");
    LogVar unallotted("u");
    QVERIFY(var.allocate(3, 4, LogVar::Uint32));
    for (const LogVar* from : {&var, &unallotted}) {
        quint8 byte = 77;
        quint32 word = 7777;
        from->getU8(column, row, &byte);
        from->getU32(column, row, &word);
        QCOMPARE(byte, quint8(77));
        QCOMPARE(word, quint32(7777));
        QCOMPARE(from->getString(row), QString());
    }
    void* out = this;
    unallotted.getColumn(0, &out);
    var.getColumn(3, &out);
    var.getColumn(-1, &out);
    QCOMPARE(out, static_cast<void*>(this));
}

void LogFileTest::writesOutOfRangeAreIgnored()
{
    LogVar var("v");
    QVERIFY(var.allocate(1, 2, LogVar::Uint16));
    var.setU16(1, 0, 0xffff);
    var.setU16(0, 2, 0xffff);
    var.setU16(0, -1, 0xffff);
    var.setU32(0, 0, 0xffffffffU); // would run into the next row
    var.setDouble(0, 1, 1.0);
    const auto* words = static_cast<const quint16*>(var.getData());
    QCOMPARE(words[0], quint16(0));
    QCOMPARE(words[1], quint16(0));
}

void LogFileTest::storedValuesAreReadBack()
{
    LogVar floats("f");
    LogVar doubles("d");
    LogVar words("w");
    QVERIFY(floats.allocate(1, 1, LogVar::Float) && doubles.allocate(1, 1, LogVar::Double) &&
            words.allocate(1, 1, LogVar::Uint32));
    floats.setFloat(0, 0, 1.5F);
    doubles.setDouble(0, 0, -2.25);
    words.setU32(0, 0, 0x01020304U);
    QCOMPARE(*static_cast<const float*>(floats.getData()), 1.5F);
    QCOMPARE(*static_cast<const double*>(doubles.getData()), -2.25);
    quint32 word = 0;
    words.getU32(0, 0, &word);
    QCOMPARE(word, 0x01020304U);
    quint8 byte = 0;
    words.getU8(0, 0, &byte);
    QCOMPARE(byte, quint8(4)); // little-endian
}

void LogFileTest::wideReadsOfNarrowElementsStayInTheBlock()
{
    LogVar var("v");
    QVERIFY(var.allocate(1, 5, LogVar::Uint8));
    for (int row = 0; row < 5; ++row)
        var.setU8(0, row, static_cast<quint8>(row + 1));
    quint32 word = 0;
    var.getU32(0, 0, &word);
    QCOMPARE(word, 0x04030201U);
    var.getU32(0, 4, &word);
    QCOMPARE(word, 5U); // nothing but zeros behind the last element
}

void LogFileTest::stringsEndAtAZeroOrAfterFifty_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("ended by NUL") << QByteArray("Roof\0xyz", 8) << QStringLiteral("Roof");
    QTest::newRow("to the end") << QByteArray("Roof") << QStringLiteral("Roof");
    QTest::newRow("UTF-8") << QByteArray("Dach f\xc3\xbc") << QString::fromUtf8("Dach f\xc3\xbc");
    QTest::newRow("empty") << QByteArray(4, '\0') << QString();
    QTest::newRow("fifty") << QByteArray(50, 'a') << QString(50, QLatin1Char('a'));
    QTest::newRow("more than fifty") << QByteArray(80, 'a') << QString(50, QLatin1Char('a'));
}

void LogFileTest::stringsEndAtAZeroOrAfterFifty()
{
    QFETCH(QByteArray, bytes);
    LogVar var("name");
    QVERIFY(var.allocate(static_cast<int>(bytes.size()), 2, LogVar::Uint8));
    for (int column = 0; column < bytes.size(); ++column)
        var.setU8(column, 1, static_cast<quint8>(bytes[column]));
    QTEST(var.getString(1), "text");
    QCOMPARE(var.getString(0), QString());
    QCOMPARE(var.getString(2), QString());
}

void LogFileTest::emptyBlocksAreBlocks()
{
    LogVar var("v");
    QVERIFY(var.allocate(3, 0, LogVar::Uint32));
    QVERIFY(var.getData());
    QCOMPARE(var.getDataSize(), size_t(0));
    void* out = nullptr;
    var.getColumn(2, &out);
    QCOMPARE(static_cast<const void*>(out), var.getData());
}

void LogFileTest::blocksOfTwoGibibytesAreRefused_data()
{
    QTest::addColumn<int>("nb");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("fits");
    QTest::newRow("one below") << 0x7fffffff << 1 << int(LogVar::Uint8) << true;
    QTest::newRow("exactly") << 0x40000000 << 2 << int(LogVar::Uint8) << false;
    QTest::newRow("wraps to nothing") << 0x40000000 << 1 << int(LogVar::Uint32) << false;
    QTest::newRow("wraps to a little") << 0x20000001 << 1 << int(LogVar::Double) << false;
    QTest::newRow("thermal flight of two hours") << 4800 << 259200 << int(LogVar::Uint16) << false;
    QTest::newRow("largest of all") << 0x7fffffff << 0x7fffffff << int(LogVar::Double) << false;
}

void LogFileTest::blocksOfTwoGibibytesAreRefused()
{
    QFETCH(int, nb);
    QFETCH(int, rows);
    QFETCH(int, type);
    LogVar var("v");
    QTEST(var.allocate(nb, rows, static_cast<LogVar::Type>(type)), "fits");
    QTEST(var.getData() != nullptr, "fits");
}

void LogFileTest::countsBelowOneGiveNoColumns()
{
    LogVar var("v");
    for (const int nb : {0, -1, std::numeric_limits<int>::min()}) {
        QVERIFY(var.allocate(nb, 10, LogVar::Uint32));
        QCOMPARE(var.getNb(), nb);
        QCOMPARE(var.getDataSize(), size_t(0));
        quint32 word = 5;
        var.getU32(0, 0, &word);
        QCOMPARE(word, 5U);
        QCOMPARE(var.getString(0), QString());
    }
}

void LogFileTest::columnsAreTyped_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("readAs");
    QTest::newRow("INT32") << int(LogVar::Int32) << QByteArray("i32 u32");
    QTest::newRow("UINT32") << int(LogVar::Uint32) << QByteArray("i32 u32");
    QTest::newRow("INT16") << int(LogVar::Int16) << QByteArray("u16");
    QTest::newRow("UINT16") << int(LogVar::Uint16) << QByteArray("u16");
    QTest::newRow("INT8") << int(LogVar::Int8) << QByteArray("u8");
    QTest::newRow("UINT8") << int(LogVar::Uint8) << QByteArray("u8");
    QTest::newRow("FLOAT") << int(LogVar::Float) << QByteArray("f32");
    QTest::newRow("DOUBLE") << int(LogVar::Double) << QByteArray("f64");
}

void LogFileTest::columnsAreTyped()
{
    QFETCH(int, type);
    LogGroup group("g", 1);
    group.addVar("v");
    group.addVar("unallotted");
    LogVar& var = group.getVars()[0];
    QVERIFY(var.allocate(2, 3, static_cast<LogVar::Type>(type)));
    QCOMPARE(int(var.getType()), type);
    QByteArrayList readAs;
    const auto add = [&](const auto& column, const char* name) {
        if (column.empty())
            return;
        readAs += name;
        QCOMPARE(column.size(), 3);
        QCOMPARE(
            static_cast<const void*>(column.data() + 3),
            static_cast<const void*>(static_cast<const char*>(var.getData()) + var.getDataSize()));
    };
    add(group.column<qint32>("v", 1), "i32");
    add(group.column<quint32>("v", 1), "u32");
    add(group.column<quint16>("v", 1), "u16");
    add(group.column<quint8>("v", 1), "u8");
    add(group.column<float>("v", 1), "f32");
    add(group.column<double>("v", 1), "f64");
    QTEST(readAs.join(' '), "readAs");
    QVERIFY(group.column<quint8>("unallotted").empty());
    QVERIFY(group.column<quint8>("another").empty());
    QVERIFY(group.column<quint32>("v", 2).empty());
    QVERIFY(group.column<quint32>("v", -1).empty());
}

QTEST_GUILESS_MAIN(LogFileTest)
#include "LogFileTest.moc"
