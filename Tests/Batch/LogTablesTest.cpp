#include "Batch/logTables.h"
#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;
using namespace corv::test;

/// The tables of a flight's log that a review writes.
class LogTablesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void eachGroupGetsAFile();
    void columnsAndRateAreThoseOfTheTable();
    void whatIsMissingStopsNoOther();
    void namesOfGroupsAreNoPaths();

private:
    QByteArray contentsOf(const QString& name) const
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;
    std::shared_ptr<const LogFile> m_log;
};

void LogTablesTest::initTestCase()
{
    LogBuilder log;
    log.addGroup("wind", 1, {{"time", "UINT32", 1}, {"speed", "UINT8", 1}});
    log.addGroup("../wind", 2, {{"speed", "UINT8", 1}});
    log.addGroup("WIND", 3, {{"speed", "UINT8", 1}});
    for (unsigned ms = 0; ms < 2000; ms += 500)
        log.addPacket(1, LogBuilder::u32(ms) + LogBuilder::u8(ms / 100));
    log.addPacket(2, LogBuilder::u8(7)).addPacket(3, LogBuilder::u8(8));
    const QString path = m_folder.filePath("flight.log");
    QVERIFY(log.save(path));
    const std::atomic<bool> abortFlag{false};
    LogDecoder decoder(&abortFlag);
    const auto decoded = decoder.decode(path, [](int, int, int) {});
    QVERIFY(decoded);
    m_log = *decoded;
}

void LogTablesTest::eachGroupGetsAFile()
{
    const Result<QStringList> files =
        writeLogTables(m_log, {"wind", "#3", "wind:speed"}, 0, m_folder.path());
    QVERIFY(files);
    QCOMPARE(*files, QStringList({"wind.csv", "WIND-2.csv", "wind-3.csv"}));
    QCOMPARE(contentsOf("wind.csv"), QByteArray("time (ms),speed\n0,0\n500,5\n1000,10\n1500,15\n"));
    QCOMPARE(contentsOf("WIND-2.csv"), QByteArray("speed\n8\n"));
}

void LogTablesTest::columnsAndRateAreThoseOfTheTable()
{
    const Result<QStringList> files =
        writeLogTables(m_log, {"wind:speed,time"}, 1, m_folder.path());
    QVERIFY(files);
    QCOMPARE(contentsOf(files->value(0)), QByteArray("speed,time (ms)\n0,0\n10,1000\n"));
}

void LogTablesTest::whatIsMissingStopsNoOther()
{
    QVERIFY(QDir(m_folder.path()).mkpath("some"));
    const Result<QStringList> files =
        writeLogTables(m_log, {"rain", "wind:gusts", "wind:speed"}, 0, m_folder.filePath("some"));
    QVERIFY(!files);
    QCOMPARE(files.failure().sentence, QStringLiteral("The log has no group \"rain\"."));
    QCOMPARE(contentsOf("some/wind.csv"), QByteArray("speed\n0\n5\n10\n15\n"));
    QVERIFY(!writeLogTables(m_log, {"wind"}, 0, m_folder.filePath("none")));
}

void LogTablesTest::namesOfGroupsAreNoPaths()
{
    const Result<QStringList> files = writeLogTables(m_log, {"../wind"}, 0, m_folder.path());
    QVERIFY(files);
    QCOMPARE(*files, QStringList("___wind.csv"));
    QCOMPARE(contentsOf("___wind.csv"), QByteArray("speed\n7\n"));
}

QTEST_GUILESS_MAIN(LogTablesTest)
#include "LogTablesTest.moc"
