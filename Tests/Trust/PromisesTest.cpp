#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"
#include "Support/trustRow.h"

#include <QSet>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <random>

using namespace corv;
using namespace corv::test;

namespace {

constexpr int flightCount = 1000;

/// One flight: what the log says, and what is true. Milliseconds.
struct Flight
{
    LogBuilder log;
    int videoDurationMs = 0;
    int trueOffsetMs = 0;
};

// What the recorder takes from its start to the first frame, the first time and later.
// Milliseconds.
constexpr int firstDelayMs = 690;
constexpr int laterDelayMs = 1279;

// A drone records up to six times; the log notes each start and stop some moments late, the video
// is one of the recordings and begins once the recorder is ready.
Flight makeFlight(std::mt19937& random)
{
    const auto between = [&random](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random);
    };
    constexpr int latestNoteMs = 80;
    Flight flight;
    flight.log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    flight.log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    const int recordings = between(1, 6);
    const int chosen = between(0, recordings - 1);
    int timeMs = 1000;
    for (int i = 0; i < recordings; ++i) {
        timeMs += between(2'000, 120'000);
        const int lengthMs = between(5'000, 900'000);
        flight.log.addPacket(1, LogBuilder::u32(quint32(timeMs + between(0, latestNoteMs))));
        flight.log.addPacket(
            2, LogBuilder::u32(quint32(timeMs + lengthMs + between(0, latestNoteMs))));
        if (i == chosen) {
            const int delayMs = i == 0 ? firstDelayMs : laterDelayMs;
            flight.trueOffsetMs = timeMs + delayMs;
            flight.videoDurationMs = lengthMs - delayMs;
        }
        timeMs += lengthMs;
    }
    return flight;
}

/// A log of packets that each carry their number, and where each of them lies in the file.
struct NumberedLog
{
    QByteArray bytes;
    std::vector<int> begins;
    int packetBytes = 0;
};

NumberedLog makeNumberedLog(int packets)
{
    LogBuilder log;
    log.addGroup("numbers", 7,
                 {{"number", "UINT32", 1}, {"inverse", "UINT32", 1}, {"rest", "UINT8", 24}});
    const int headBytes = log.bytes().size();
    for (int i = 0; i < packets; ++i)
        log.addPacket(7, LogBuilder::u32(quint32(i)) + LogBuilder::u32(~quint32(i)) +
                             QByteArray(24, char(i)));
    NumberedLog made;
    made.bytes = log.bytes();
    made.packetBytes = (made.bytes.size() - headBytes) / packets;
    for (int i = 0; i < packets; ++i)
        made.begins.push_back(headBytes + i * made.packetBytes);
    return made;
}

} // namespace

/// What the program promises, over many cases that are made from a seed. The limits are those that
/// a change must not fall below; the figures themselves go onto the page of what was measured.
class PromisesTest : public QObject
{
    Q_OBJECT

private slots:
    void synchronisesAThousandFlights();
    void keepsTheGoodPacketsOfADamagedLog_data();
    void keepsTheGoodPacketsOfADamagedLog();

private:
    std::unique_ptr<LogFile> decoded(const QByteArray& bytes)
    {
        QFile file(m_folder.filePath(QStringLiteral("a.log")));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write the log");
        file.close();
        return std::unique_ptr<LogFile>(m_decoder.parseLog(file.fileName(), [](int, int, int) {}));
    }

    QTemporaryDir m_folder;
    const std::atomic<bool> m_abortFlag{false};
    LogDecoder m_decoder{&m_abortFlag};
};

void PromisesTest::synchronisesAThousandFlights()
{
    std::mt19937 random(20261121);
    std::vector<int> errorsMs;
    for (int i = 0; i < flightCount; ++i) {
        const Flight flight = makeFlight(random);
        const std::unique_ptr<LogFile> log = decoded(flight.log.bytes());
        QVERIFY(log);
        const LogSyncResult result = m_decoder.syncLogToVideo(log.get(), flight.videoDurationMs);
        QVERIFY(result.found);
        errorsMs.push_back(std::abs(result.logTimeOffset - flight.trueOffsetMs));
    }
    std::sort(errorsMs.begin(), errorsMs.end());
    constexpr int rightRecordingMs = 500;
    const auto right = std::upper_bound(errorsMs.begin(), errorsMs.end(), rightRecordingMs);
    const auto rightCount = static_cast<int>(right - errorsMs.begin());
    const int median = errorsMs[flightCount / 2];
    const int ofNineteenInTwenty = errorsMs[flightCount * 95 / 100];
    const QString subject = QStringLiteral("Synchronisation");
    trustRow(subject, QStringLiteral("flights of 1000 tied to the right recording"),
             QString::number(rightCount));
    trustRow(subject, QStringLiteral("error of half of them, at most"),
             QStringLiteral("%1 ms").arg(median));
    trustRow(subject, QStringLiteral("error of 95 in 100 of them, at most"),
             QStringLiteral("%1 ms").arg(ofNineteenInTwenty));
    QVERIFY2(rightCount >= 990, QByteArray::number(rightCount));
    QVERIFY2(median <= 80, QByteArray::number(median));
    QVERIFY2(ofNineteenInTwenty <= 160, QByteArray::number(ofNineteenInTwenty));
}

void PromisesTest::keepsTheGoodPacketsOfADamagedLog_data()
{
    QTest::addColumn<double>("badShare");
    QTest::addColumn<double>("leastKept");
    const auto row = [](const char* name, double badShare, double leastKept) {
        QTest::newRow(name) << badShare << leastKept;
    };
    row("0.01 %", 0.0001, 0.99);
    row("0.1 %", 0.001, 0.99);
    row("1 %", 0.01, 0.97);
    row("5 %", 0.05, 0.85);
    row("10 %", 0.1, 0.5);
    row("20 %", 0.2, 0.0);
    row("50 %", 0.5, 0.0);
}

void PromisesTest::keepsTheGoodPacketsOfADamagedLog()
{
    QFETCH(double, badShare);
    QFETCH(double, leastKept);
    constexpr int packets = 60'000;
    NumberedLog log = makeNumberedLog(packets);
    std::mt19937 random(static_cast<unsigned>(badShare * 100'000));
    std::uniform_real_distribution<double> share(0, 1);
    std::uniform_int_distribution<int> error(1, 255);
    QSet<quint32> good;
    for (int i = 0; i < packets; ++i) {
        bool isWhole = true;
        for (int at = 0; at < log.packetBytes; ++at) {
            if (share(random) >= badShare)
                continue;
            char& byte = log.bytes.data()[log.begins[static_cast<size_t>(i)] + at];
            byte = static_cast<char>(byte ^ error(random));
            isWhole = false;
        }
        if (isWhole)
            good.insert(static_cast<quint32>(i));
    }
    const std::unique_ptr<LogFile> decodedLog = decoded(log.bytes);
    QVERIFY(decodedLog);
    const LogFile& model = *decodedLog;
    const LogGroup* group = model.getGroup("numbers");
    QVERIFY(group);
    const LogVar* number = group->getVar("number");
    QVERIFY(number);
    QSet<quint32> left = good;
    int kept = 0;
    int invented = 0;
    for (int row = 0; row < number->getNbPackets(); ++row) {
        quint32 value = 0;
        number->getU32(0, row, &value);
        // What is left is each good packet once.
        ++(left.remove(value) ? kept : invented);
    }
    const double keptShare = good.isEmpty() ? 1.0 : double(kept) / good.size();
    trustRow(QStringLiteral("Damaged logs"),
             QStringLiteral("good packets kept with %1 of the bytes bad")
                 .arg(QString::fromLatin1(QTest::currentDataTag())),
             good.isEmpty() ? QStringLiteral("none of 60000 packets is whole")
                            : QStringLiteral("%1 % of %2, besides %3 that are damaged unnoticed")
                                  .arg(keptShare * 100, 0, 'f', 2)
                                  .arg(good.size())
                                  .arg(invented));
    QVERIFY2(keptShare >= leastKept, QByteArray::number(keptShare));
}

QTEST_GUILESS_MAIN(PromisesTest)
#include "PromisesTest.moc"
