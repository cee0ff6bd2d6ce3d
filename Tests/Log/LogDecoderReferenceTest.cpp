#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"
#include "Support/RandomLog.h"
#include "Support/ReferenceDecoder.h"

#include <QTemporaryDir>
#include <QtTest>
#include <cstring>
#include <memory>

using namespace corv;
using namespace corv::test;

/// The decoder against a slow and independent one: both give callers the same.
class LogDecoderReferenceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void smallLogsDecodeAlike_data();
    void smallLogsDecodeAlike();
    void logsLargerThanAnyBufferDecodeAlike_data();
    void logsLargerThanAnyBufferDecodeAlike();

private:
    QString differences(const QByteArray& bytes);

    QTemporaryDir m_folder;
};

namespace {

QString compareVars(const LogGroup& group, const ReferenceLog::Group& expected)
{
    for (size_t i = 0; i < expected.vars.size(); ++i) {
        const LogVar& var = group.getVars()[i];
        const ReferenceLog::Var& wanted = expected.vars[i];
        const QString where =
            QString::fromStdString(expected.name + "." + wanted.name) + QStringLiteral(": ");
        if (var.getName() != wanted.name || var.getNb() != wanted.nb ||
            var.getElementSize() != wanted.elementSize)
            return where + QStringLiteral("shape");
        if ((var.getData() != nullptr) != wanted.allotted ||
            var.getDataSize() != wanted.data.size())
            return where + QStringLiteral("block size");
        if (!wanted.data.empty() &&
            std::memcmp(var.getData(), wanted.data.data(), wanted.data.size()) != 0)
            return where + QStringLiteral("values");
    }
    return {};
}

QString compareGroups(const LogFile& log, const ReferenceLog& expected)
{
    if (log.getGroups().size() != expected.groups.size())
        return QStringLiteral("number of groups");
    for (size_t i = 0; i < expected.groups.size(); ++i) {
        const LogGroup& group = log.getGroups()[i];
        const ReferenceLog::Group& wanted = expected.groups[i];
        if (group.getName() != wanted.name || group.getId() != wanted.id ||
            group.getPacketSize() != wanted.packetSize)
            return QStringLiteral("description of group %1").arg(i);
        if (group.getNbPackets() != wanted.packets || group.getNbStored() != wanted.stored)
            return QStringLiteral("packets of group %1: %2/%3, stored %4/%5")
                .arg(i)
                .arg(group.getNbPackets())
                .arg(wanted.packets)
                .arg(group.getNbStored())
                .arg(wanted.stored);
        if (group.getVars().size() != wanted.vars.size())
            return QStringLiteral("number of vars of group %1").arg(i);
        const QString vars = compareVars(group, wanted);
        if (!vars.isEmpty())
            return vars;
    }
    return {};
}

} // namespace

void LogDecoderReferenceTest::initTestCase()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

// What the two decoders make of a file differently; empty if nothing.
QString LogDecoderReferenceTest::differences(const QByteArray& bytes)
{
    const QString path = m_folder.filePath(QStringLiteral("a.log"));
    QFile::remove(path); // writing over it would wait for the disk
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QStringLiteral("cannot write");
    file.close();
    const std::atomic<bool> abortFlag{false};
    LogDecoder decoder(&abortFlag);
    std::vector<std::array<int, 3>> progress;
    const std::unique_ptr<LogFile> log(
        decoder.parseLog(path, [&progress](int stage, int done, int total) {
            progress.push_back({stage, done, total});
        }));
    const ReferenceLog expected = decodeByReference(bytes);
    if ((log != nullptr) != expected.decoded)
        return QStringLiteral("outcome");
    if (progress != expected.progress)
        return QStringLiteral("progress");
    const LogDecodeCounters counters = decoder.counters();
    if (counters.total != expected.total || counters.valid != expected.valid ||
        counters.wrongCrc != expected.wrongCrc || counters.wrongSize != expected.wrongSize ||
        counters.wrongId != expected.wrongId || counters.incompleteLast != expected.incompleteLast)
        return QStringLiteral("counters");
    if (decoder.logVersion() != expected.version)
        return QStringLiteral("version");
    return log ? compareGroups(*log, expected) : QString();
}

void LogDecoderReferenceTest::smallLogsDecodeAlike_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("whole") << static_cast<int>(RandomLogKind::Whole);
    QTest::newRow("damaged") << static_cast<int>(RandomLogKind::Damaged);
    QTest::newRow("hostile") << static_cast<int>(RandomLogKind::Hostile);
}

void LogDecoderReferenceTest::smallLogsDecodeAlike()
{
    QFETCH(int, kind);
    std::mt19937 random(20210 + static_cast<unsigned>(kind));
    for (int i = 0; i < 1500; ++i) {
        const QByteArray bytes = makeRandomLog(random, static_cast<RandomLogKind>(kind));
        const QString difference = differences(bytes);
        QVERIFY2(difference.isEmpty(), qPrintable(QStringLiteral("log %1: ").arg(i) + difference));
    }
}

void LogDecoderReferenceTest::logsLargerThanAnyBufferDecodeAlike_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<int>("nb");
    QTest::newRow("largest packets") << QByteArray("UINT8") << 65535;
    QTest::newRow("thermal frames") << QByteArray("UINT16") << 4801;
    QTest::newRow("floats") << QByteArray("FLOAT") << 333;
    QTest::newRow("doubles") << QByteArray("DOUBLE") << 17;
    QTest::newRow("tiny packets") << QByteArray("UINT8") << 3;
}

void LogDecoderReferenceTest::logsLargerThanAnyBufferDecodeAlike()
{
    QFETCH(QByteArray, type);
    QFETCH(int, nb);
    std::mt19937 random(77);
    LogBuilder log;
    log.addGroup("wide", 3, {{"v", type, nb}});
    log.addGroup("between", 0x37, {{"time", "UINT32", 1}});
    const int size = nb * LogVar::typeSize(LogVar::typeFromName(type.toStdString()));
    QByteArray payload(size, '\0');
    for (int written = 0; written < 7 * 1000 * 1000; written += size + 6) {
        for (int i = 0; i < size; ++i)
            payload[i] = static_cast<char>(random());
        const unsigned what = random() % 16;
        if (what == 0)
            log.addPacketWithBadChecksum(3, payload);
        else
            log.addPacket(3, payload);
        if (what == 1)
            log.addRaw(QByteArray("\x86\x37\x09\x86", 4));
        if (what == 2)
            log.addPacket(0x37, LogBuilder::u32(static_cast<quint32>(random())));
    }
    log.cutTail(1);
    QCOMPARE(differences(log.bytes()), QString());
}

QTEST_GUILESS_MAIN(LogDecoderReferenceTest)
#include "LogDecoderReferenceTest.moc"
