#include "Log/LogDecoder.h"
#include "Support/MessageLog.h"
#include "decodingFixture.h"

#include <QtTest>

using namespace corv;
using namespace corv::test;

class LogDecoderTest : public QObject, private DecodingFixture
{
    Q_OBJECT

private slots:
    void init();
    void theRecordOfAWholeLog();
    void theRecordOfADamagedLog();
    void filesThatAreNoLogs_data();
    void filesThatAreNoLogs();
    void descriptionsWithoutPackets_data();
    void descriptionsWithoutPackets();
    void whatASyncPairMeans_data();
    void whatASyncPairMeans();
    void sizeFieldIsAsWideAsTheVersionSays_data();
    void sizeFieldIsAsWideAsTheVersionSays();
    void withoutAVersionTheSizeHasOneByte();
    void aCutLastPacketIsCountedAsIncomplete_data();
    void aCutLastPacketIsCountedAsIncomplete();
    void aBadRowIsOverwritten();
    void anEmptyPacketShiftsTheFirstPassOnly();
    void aLaterGroupOfTheSameIdStaysEmpty();
    void aVarDeclaredTwiceKeepsItsSize_data();
    void aVarDeclaredTwiceKeepsItsSize();
    void hostileDescriptionsAreRefusedOrRead_data();
    void hostileDescriptionsAreRefusedOrRead();
    void moreGroupsThanAnyDrone();
    void descriptionsNestedAMillionDeepDoNotOverflow();
};

namespace {

using Var = LogBuilder::Var;

quint32 valueAt(LogFile* log, const char* group, const char* var, int column, int row)
{
    quint32 value = 0xdeadbeefU;
    log->getGroup(group)->getVar(var)->getU32(column, row, &value);
    return value;
}

int bytesAt(LogFile* log, const char* group, const char* var, int row)
{
    quint8 first = 0;
    quint8 second = 0;
    log->getGroup(group)->getVar(var)->getU8(0, row, &first);
    log->getGroup(group)->getVar(var)->getU8(1, row, &second);
    return first * 256 + second;
}

QStringList withoutTimes(const QStringList& messages)
{
    static const QRegularExpression time(QStringLiteral("^Elapsed time:  [0-9.e-]+ s\\.$"));
    QStringList result = messages;
    return result.replaceInStrings(time, QStringLiteral("Elapsed"));
}

} // namespace

void LogDecoderTest::init()
{
    reset();
}

void LogDecoderTest::theRecordOfAWholeLog()
{
    const MessageLog messages;
    const auto log = decode(pairLog().addPacket(3, "ab").addPacket(3, "cd"));
    const QStringList expected{QStringLiteral("XML parsing...  "),
                               QStringLiteral("Parsed."),
                               QStringLiteral("Retrieving log version...  "),
                               QStringLiteral("Retrieved. Log version is version  1 ."),
                               QStringLiteral("Elapsed"),
                               QStringLiteral("Packet counting...  "),
                               QStringLiteral("2  total packets counted, including:"),
                               QStringLiteral("2  valid packets counted ( 1 %)"),
                               QStringLiteral("0  packets had a wrong CRC ( 0 %)"),
                               QStringLiteral("0  packets had a wrong size ( 0 %)"),
                               QStringLiteral("0  packets had a wrong id ( 0 %)"),
                               QStringLiteral("Elapsed"),
                               QStringLiteral("Data parsing: "),
                               QStringLiteral("Done."),
                               QStringLiteral("Elapsed")};
    QCOMPARE(withoutTimes(messages.messages(QtInfoMsg)), expected);
    QCOMPARE(messages.messages().size(), expected.size());
    QCOMPARE(QString::fromStdString(log->getFileName()),
             m_folder.filePath(QStringLiteral("a.log")));
    QCOMPARE(bytesAt(log.get(), "pair", "v", 1), 'c' * 256 + 'd');
    QCOMPARE(m_decoder.logVersion(), 1);
}

void LogDecoderTest::theRecordOfADamagedLog()
{
    const MessageLog messages;
    const auto log = decode(pairLog()
                                .addPacket(3, "ab")
                                .addPacketWithBadChecksum(3, "xx")
                                .addPacketWithSize(3, 1, "")
                                .addPacket(9, "")
                                .addPacket(9, "")
                                .addPacket(3, "cd")
                                .addRaw("\x86\x37\x03"));
    const QStringList record = messages.messages(QtInfoMsg);
    QCOMPARE(record.mid(6, 6),
             QStringList({QStringLiteral("5  total packets counted, including:"),
                          QStringLiteral("0  valid packets counted ( 0 %)"),
                          QStringLiteral("1  packets had a wrong CRC ( 0.2 %)"),
                          QStringLiteral("1  packets had a wrong size ( 0.2 %)"),
                          QStringLiteral("2  packets had a wrong id ( 0.4 %)"),
                          QStringLiteral("Oh, and the last packet is incomplete, so it was "
                                         "dropped.")}));
    QCOMPARE(log->getGroup("pair")->getNbPackets(), 2);
    QCOMPARE(bytesAt(log.get(), "pair", "v", 0), 'a' * 256 + 'b');
    QCOMPARE(bytesAt(log.get(), "pair", "v", 1), 'c' * 256 + 'd');
    QVERIFY(decode(LogBuilder().addPacket(1, "").addPacket(2, "")));
    QCOMPARE(m_decoder.counters().valid, qint64(-2)); // wrong ids lower what they never raised
    QCOMPARE(m_decoder.counters().total, qint64(0));
}

void LogDecoderTest::filesThatAreNoLogs_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");
    const QString fault = QStringLiteral("ERROR: log parsing: ");
    QTest::newRow("empty") << QByteArray() << fault + QStringLiteral(" No document element found");
    QTest::newRow("text") << QByteArray("not a log")
                          << fault + QStringLiteral(" No document element found");
    QTest::newRow("no end") << QByteArray("<main><groups>")
                            << fault + QStringLiteral(" Start-end tags mismatch");
    QTest::newRow("broken tag") << QByteArray("<main><gr</main>")
                                << fault + QStringLiteral(" Error parsing start element tag");
    QTest::newRow("separator ends the document")
        << QByteArray("<main></main><") << fault + QStringLiteral(" Could not determine tag type");
}

void LogDecoderTest::filesThatAreNoLogs()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    MessageLog messages;
    QVERIFY(!decode(bytes));
    QVERIFY2(messages.contains(message), qPrintable(messages.messages().join(QLatin1Char('|'))));
    for (const QString& path : {m_folder.filePath(QStringLiteral("missing.log")), m_folder.path(),
                                QStringLiteral("/dev/zero"), QString()}) {
        messages.clear();
        const std::unique_ptr<LogFile> none(m_decoder.parseLog(path, m_progress));
        QVERIFY(!none);
        QVERIFY2(messages.contains(QStringLiteral("ERROR: Unable to read file.\n")),
                 qPrintable(path));
    }
}

void LogDecoderTest::descriptionsWithoutPackets_data()
{
    const QByteArray main = "<main><groups><group><id>3</id><name>g</name><var><name>v</name>"
                            "<type>UINT32</type><nb>2</nb></var></group></groups></main>";
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("groups");
    QTest::newRow("separator") << main + "\n" << 1;
    QTest::newRow("no separator") << main << 1;
    QTest::newRow("separator looks like a packet") << main + "\x86" << 1;
    QTest::newRow("no groups") << QByteArray("<main></main>\n") << 0;
    QTest::newRow("groups of nothing") << QByteArray("<main><groups></groups></main>\n") << 0;
    QTest::newRow("another root") << QByteArray("<x><main></main></x>") << -1;
    QTest::newRow("a nested main") << QByteArray("<main a='1'></main>\n") << 0;
}

void LogDecoderTest::descriptionsWithoutPackets()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, groups);
    const auto log = decode(bytes);
    QCOMPARE(log ? static_cast<int>(log->getGroups().size()) : -1, groups);
    QCOMPARE(m_decoder.logVersion(), 0);
    if (groups != 1)
        return;
    const LogGroup& group = log->getGroups()[0];
    QCOMPARE(group.getNbPackets(), 0);
    QCOMPARE(group.getPacketSize(), 8);
    QCOMPARE(group.getVars()[0].getNb(), 2);
    QVERIFY(group.getVars()[0].getData());
    QCOMPARE(group.getVars()[0].getDataSize(), size_t(0));
}

void LogDecoderTest::whatASyncPairMeans_data()
{
    const QByteArray good("\x86\x37\x03\x00\x02"
                          "ab\xc3",
                          8);
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<int>("packets");
    QTest::newRow("good") << good << 1;
    QTest::newRow("behind noise") << "noise" + good << 1;
    QTest::newRow("a first sync twice") << "\x86" + good << 0;
    QTest::newRow("a first sync thrice") << "\x86\x86" + good << 1;
    QTest::newRow("in a payload") << QByteArray("\x86\x37\x03\x00\x02\x86\x37\xbd", 8) + good << 2;
    QTest::newRow("behind a wrong id") << "\x86\x37\x07" + good << 1;
    QTest::newRow("instead of an id") << QByteArray("\x86\x37\x86\x37\x03\x00\x02"
                                                    "ab\xc3",
                                                    10)
                                      << 0;
    QTest::newRow("behind a wrong size") << QByteArray("\x86\x37\x03\x00\x09", 5) + good << 1;
    QTest::newRow("behind a wrong checksum") << QByteArray("\x86\x37\x03\x00\x02"
                                                           "ab\xc4",
                                                           8) +
                                                    good
                                             << 1;
    QTest::newRow("as a wrong checksum") << QByteArray("\x86\x37\x03\x00\x02"
                                                       "ab\x86",
                                                       8) +
                                                good.mid(1)
                                         << 0;
}

void LogDecoderTest::whatASyncPairMeans()
{
    QFETCH(QByteArray, stream);
    QFETCH(int, packets);
    const auto log = decode(pairLog().addRaw(stream));
    QCOMPARE(log->getGroup("pair")->getNbPackets(), packets);
    QCOMPARE(log->getGroup("pair")->getNbStored(), packets);
}

void LogDecoderTest::sizeFieldIsAsWideAsTheVersionSays_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("nb");
    QTest::addColumn<QByteArray>("size");
    QTest::addColumn<int>("packets");
    QTest::newRow("version 0, one byte") << 0 << 2 << QByteArray("\x02") << 1;
    QTest::newRow("negative version") << -1 << 2 << QByteArray("\x02") << 1;
    QTest::newRow("version 1, high byte first") << 1 << 258 << QByteArray("\x01\x02", 2) << 1;
    QTest::newRow("version 2") << 2 << 258 << QByteArray("\x01\x02", 2) << 1;
    QTest::newRow("low byte first") << 1 << 258 << QByteArray("\x02\x01", 2) << 0;
    QTest::newRow("equal bytes") << 1 << 257 << QByteArray("\x01\x01", 2) << 1;
    QTest::newRow("too large for one byte") << 0 << 258 << QByteArray("\x02") << 0;
}

void LogDecoderTest::sizeFieldIsAsWideAsTheVersionSays()
{
    QFETCH(int, version);
    QFETCH(int, nb);
    QFETCH(QByteArray, size);
    LogBuilder builder(version);
    builder.addGroup("g", 3, {{"v", "unknown", nb}});
    builder.addRaw("\x86\x37\x03" + size + QByteArray(nb, '\0') + QByteArray(1, '\0'));
    const auto log = decode(builder);
    QTEST(log->getGroup("g")->getNbPackets(), "packets");
    QCOMPARE(log->getGroup("g")->getVar("v")->getElementSize(), 1);
}

void LogDecoderTest::withoutAVersionTheSizeHasOneByte()
{
    LogBuilder builder(0);
    builder.setDescription("<main><groups><group><id>3</id><name>g</name><var><name>v</name>"
                           "<type>UINT8</type><nb>1</nb></var></group></groups></main>");
    builder.addPacket(3, "a");
    const auto log = decode(builder);
    QCOMPARE(m_decoder.logVersion(), 0);
    QCOMPARE(log->getGroup("g")->getNbPackets(), 1);
}

void LogDecoderTest::aCutLastPacketIsCountedAsIncomplete_data()
{
    QTest::addColumn<int>("cut");
    QTest::addColumn<bool>("incomplete");
    QTest::addColumn<int>("stored");
    QTest::newRow("nothing missing") << 0 << false << 2;
    QTest::newRow("checksum") << 1 << true << 2;
    QTest::newRow("half the payload") << 2 << true << 2;
    QTest::newRow("the payload") << 3 << true << 1;
    QTest::newRow("half the size") << 4 << true << 1;
    QTest::newRow("the size") << 5 << true << 1;
    QTest::newRow("the id") << 6 << false << 1;
    QTest::newRow("half the sync") << 7 << false << 1;
}

void LogDecoderTest::aCutLastPacketIsCountedAsIncomplete()
{
    QFETCH(int, cut);
    QFETCH(bool, incomplete);
    const MessageLog messages;
    const auto log = decode(pairLog().addPacket(3, "ab").addPacket(3, "cd").cutTail(cut));
    QCOMPARE(m_decoder.counters().incompleteLast, incomplete);
    QCOMPARE(messages.contains(QStringLiteral("Oh, and the last packet is incomplete,")),
             incomplete);
    QCOMPARE(log->getGroup("pair")->getNbPackets(), cut == 0 ? 2 : 1);
    // A packet that is cut counts as stored, though none of its values can be read.
    QTEST(log->getGroup("pair")->getNbStored(), "stored");
    QCOMPARE(bytesAt(log.get(), "pair", "v", 0), 'a' * 256 + 'b');
    QCOMPARE(bytesAt(log.get(), "pair", "v", 1), cut == 0 ? 'c' * 256 + 'd' : 0);
}

void LogDecoderTest::aBadRowIsOverwritten()
{
    const auto log = decode(
        pairLog().addPacketWithBadChecksum(3, "xx").addPacket(3, "ab").addPacketWithBadChecksum(
            3, "yy"));
    QCOMPARE(log->getGroup("pair")->getNbPackets(), 1);
    QCOMPARE(bytesAt(log.get(), "pair", "v", 0), 'a' * 256 + 'b');
    QCOMPARE(log->getGroup("pair")->getNbStored(), 1);
}

void LogDecoderTest::anEmptyPacketShiftsTheFirstPassOnly()
{
    LogBuilder builder = pairLog();
    builder.addGroup("empty", 4, {});
    // Counting takes the 5 for the payload and for its checksum; storing takes 0 for the checksum
    // and then sees the 5 as noise.
    builder.addRaw(QByteArray("\x86\x37\x04\x00\x00\x05\x05", 7));
    builder.addRaw(QByteArray("\x86\x37\x04\x00\x00\x00", 6)).addPacket(3, "ab");
    const auto log = decode(builder);
    QCOMPARE(m_decoder.counters().total, qint64(2));
    QCOMPARE(log->getGroup("empty")->getNbPackets(), 1);
    // Counting swallowed the sync byte behind the second one, storing did not: the row that it
    // meets then has no room.
    QCOMPARE(log->getGroup("pair")->getNbPackets(), 0);
    QCOMPARE(log->getGroup("pair")->getNbStored(), 1);
    QCOMPARE(log->getGroup("pair")->getVar("v")->getDataSize(), size_t(0));
}

void LogDecoderTest::aLaterGroupOfTheSameIdStaysEmpty()
{
    LogBuilder builder;
    builder.addGroup("first", 3, {{"a", "UINT32", 1}});
    builder.addGroup("second", 3, {{"b", "UINT16", 1}});
    builder.addPacketWithSize(3, 2, "xy").addPacketWithSize(3, 4, "abcd");
    const auto log = decode(builder);
    const LogGroup* first = log->getGroup("first");
    QCOMPARE(first->getVars().size(), size_t(2));
    QCOMPARE(first->getPacketSize(), 2); // what was described last
    QCOMPARE(first->getNbPackets(), 1);
    QVERIFY(log->getGroup("second")->getVars().empty());
    // The first description is stored, as far as the packet goes; the rest reads as zero.
    QCOMPARE(valueAt(log.get(), "first", "a", 0, 0), quint32('x' | 'y' << 8));
    QCOMPARE(valueAt(log.get(), "first", "b", 0, 0), 0U);
}

void LogDecoderTest::aVarDeclaredTwiceKeepsItsSize_data()
{
    QTest::addColumn<QByteArray>("secondType");
    QTest::addColumn<bool>("decoded");
    QTest::newRow("same type") << QByteArray("UINT32") << true;
    QTest::newRow("same size") << QByteArray("FLOAT") << true;
    QTest::newRow("other size") << QByteArray("UINT8") << false;
}

void LogDecoderTest::aVarDeclaredTwiceKeepsItsSize()
{
    QFETCH(QByteArray, secondType);
    QFETCH(bool, decoded);
    LogBuilder builder;
    builder.addGroup("g", 3, {{"v", "UINT32", 1}, {"v", secondType, 1}});
    builder.addPacket(3, decoded ? QByteArray("\1\0\0\0\2\0\0\0", 8) : QByteArray("abcde"));
    const MessageLog messages;
    const auto log = decode(builder);
    QCOMPARE(log != nullptr, decoded);
    QCOMPARE(messages.contains(QStringLiteral("ERROR: log field declared twice")), !decoded);
    if (!decoded)
        return;
    QCOMPARE(valueAt(log.get(), "g", "v", 0, 0), 2U); // the later one overwrites
    QVERIFY(!log->getGroup("g")->getVars()[1].getData());
}

void LogDecoderTest::hostileDescriptionsAreRefusedOrRead_data()
{
    using Vars = std::vector<Var>;
    QTest::addColumn<QByteArray>("vars");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("decoded");
    const auto row = [](const char* name, const Vars& vars, int size, bool decoded) {
        LogBuilder builder;
        builder.addGroup("g", 3, vars);
        const QByteArray bytes = builder.bytes();
        QTest::newRow(name) << bytes << size << decoded;
    };
    row("negative nb", {{"a", "UINT8", 4}, {"b", "UINT8", -2}}, 2, true);
    row("only negative", {{"a", "UINT8", -2}}, 2, true);
    row("zero nb", {{"a", "UINT8", 0}, {"b", "UINT8", 2}}, 2, true);
    row("wraps to a little", {{"a", "UINT32", 0x40000001}}, 4, false);
    row("wraps to nothing", {{"a", "UINT32", 0x40000000}}, 0, false);
    row("largest", {{"a", "DOUBLE", 0x7fffffff}}, 4, true);
    const Var huge{"a", "UINT8", 0x3fffffff};
    row("many that wrap",
        {huge,
         {"b", "UINT8", huge.nb},
         {"c", "UINT8", huge.nb},
         {"d", "UINT8", huge.nb},
         {"e", "UINT8", 6}},
        2, true);
    row("an element half behind the end",
        {{"a", "UINT8", 3}, {"b", "UINT32", 1}, {"c", "UINT8", -2}}, 5, true);
}

void LogDecoderTest::hostileDescriptionsAreRefusedOrRead()
{
    QFETCH(QByteArray, vars);
    QFETCH(int, size);
    QFETCH(bool, decoded);
    LogBuilder packets;
    packets.setDescription("#");
    for (int i = 0; i < 2; ++i) // the zero behind makes an empty packet good in both passes
        packets.addPacket(3, QByteArray(size, '\7')).addRaw(QByteArray(1, '\0'));
    const MessageLog messages;
    const auto log = decode(vars + packets.bytes().mid(2));
    QCOMPARE(log != nullptr, decoded);
    QCOMPARE(messages.contains(QStringLiteral("ERROR: log field too large")), !decoded);
    if (!decoded)
        return;
    const LogGroup& group = log->getGroups()[0];
    for (const LogVar& var : group.getVars()) {
        const auto* bytes = static_cast<const unsigned char*>(var.getData());
        int sevens = 0;
        for (size_t i = 0; i < std::min(var.getDataSize(), size_t(1000)); ++i) {
            QVERIFY(bytes[i] == 7 || bytes[i] == 0);
            sevens += bytes[i] == 7;
        }
        QVERIFY(sevens <= size * group.getNbPackets());
    }
}

void LogDecoderTest::moreGroupsThanAnyDrone()
{
    QByteArray groups;
    for (int i = 0; i < 100000; ++i) {
        groups += "<group><id>" + QByteArray::number(i % 50000) + "</id><name>g</name><var><name>" +
                  QByteArray::number(i) + "</name><nb>1</nb></var></group>";
    }
    QByteArray vars;
    for (int i = 0; i < 100000; ++i)
        vars += "<var><name>" + QByteArray::number(i % 60000) + "</name></var>";
    // A search per group from the front would exceed the time limit of the suite.
    const auto log = decode("<main><groups>" + groups + "<group><id>-1</id>" + vars +
                            "</group></groups></main>\n");
    QVERIFY(log);
    QCOMPARE(log->getGroups().size(), size_t(100001));
    QCOMPARE(log->getGroups()[7].getVars().size(), size_t(2));
}

void LogDecoderTest::descriptionsNestedAMillionDeepDoNotOverflow()
{
    constexpr int kDepth = 1000000;
    QByteArray opened;
    QByteArray closed;
    for (int i = 0; i < kDepth; ++i) {
        opened += "<a>";
        closed += "</a>";
    }
    const auto log = decode("<main>" + opened + closed + "<groups><group/></groups></main>\n");
    QVERIFY(log);
    QCOMPARE(log->getGroups().size(), size_t(1));
    QVERIFY(!decode("<main>" + opened + "</main>\n"));
}

QTEST_GUILESS_MAIN(LogDecoderTest)
#include "LogDecoderTest.moc"
