#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"
#include "Support/MessageLog.h"
#include "Support/RandomLog.h"

#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <memory>

using namespace corv;
using namespace corv::test;

/// The reduced reading of a log against its full decoding.
class PairingReadTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void givesWhatTheDecodedLogGives_data();
    void givesWhatTheDecodedLogGives();
    void readsTheNamesOfAWholeFlight();
    void readsMoreNamingsThanItKeeps();
    void readsALogWhoseOtherFieldsAreTooLarge();
    void stopsWhenAborted();
    void failsWithTheReasonOfTheDecoder_data();
    void failsWithTheReasonOfTheDecoder();

private:
    QString saved(const QByteArray& bytes);
    QString differences(const QByteArray& bytes);

    QTemporaryDir m_folder;
    std::atomic<bool> m_abortFlag{false};
    LogDecoder m_decoder{&m_abortFlag};
    const LogDecoder::Progress m_silent = [](int, int, int) {};
    int m_namings = 0;
    int m_recordings = 0;
    int m_cameras = 0;
};

namespace {

bool equal(const RecEvent& a, const RecEvent& b)
{
    return a.startTime == b.startTime && a.stopTime == b.stopTime;
}

bool equal(const FlightNamingEvent& a, const FlightNamingEvent& b)
{
    return a.undefined == b.undefined && a.time == b.time && a.missionName == b.missionName &&
           a.flightName == b.flightName && a.flightNumber == b.flightNumber;
}

template <typename List>
bool equalLists(const List& a, const List& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto& x, const auto& y) { return equal(x, y); });
}

bool equalCounters(const LogDecodeCounters& a, const LogDecodeCounters& b)
{
    return a.total == b.total && a.valid == b.valid && a.wrongCrc == b.wrongCrc &&
           a.wrongSize == b.wrongSize && a.wrongId == b.wrongId &&
           a.incompleteLast == b.incompleteLast;
}

bool haveEqualShape(const LogVar& a, const LogVar& b)
{
    return a.getName() == b.getName() && a.getType() == b.getType() && a.getNb() == b.getNb() &&
           a.getElementSize() == b.getElementSize() && a.getNbPackets() == b.getNbPackets();
}

// What a survey says otherwise than the decoded log; empty if nothing.
QString surveyDifference(const LogSurvey& survey, const LogFile& log)
{
    quint32 startMs = 0xffffffffU;
    quint32 endMs = 0;
    for (size_t i = 0; i < log.getGroups().size(); ++i) {
        const LogGroup& group = log.getGroups()[i];
        const LogGroup& surveyed = survey.log->getGroups()[i];
        if (surveyed.getName() != group.getName() ||
            surveyed.getNbPackets() != group.getNbPackets() ||
            surveyed.getPacketSize() != group.getPacketSize() ||
            !std::equal(group.getVars().begin(), group.getVars().end(), surveyed.getVars().begin(),
                        surveyed.getVars().end(), haveEqualShape))
            return QStringLiteral("survey: group %1").arg(i);
        for (const quint32 timeMs : group.column<quint32>("time")) {
            startMs = std::min(startMs, timeMs);
            endMs = std::max(endMs, timeMs);
        }
    }
    const bool hasTimes = startMs <= endMs;
    if (survey.span.has_value() != hasTimes ||
        (hasTimes && (survey.span->startMs != startMs || survey.span->endMs != endMs)))
        return QStringLiteral("survey: span");
    return {};
}

// Renames the groups and fields of a random log to those that are looked for, differently for each.
QByteArray renamed(QByteArray log, std::mt19937& random)
{
    std::vector<QByteArray> groups{"mission_info", "mission_info", "mobius_start_rec",
                                   "mobius_stop_rec", "lepton_info"};
    std::shuffle(groups.begin(), groups.end(), random);
    std::vector<QByteArray> vars{"time", "mission_name", "flight_name", "flight_number"};
    std::shuffle(vars.begin(), vars.end(), random);
    if (random() % 2 == 0)
        vars[random() % 4] = "mobius_start_rec";
    if (random() % 2 == 0)
        vars[random() % 4] = "mobius_stop_rec";
    if (random() % 3 == 0)
        vars[random() % 4] = "lepton_type";
    for (size_t i = 0; i < groups.size(); ++i)
        log.replace("<name>g" + QByteArray::number(int(i)) + "</name>",
                    "<name>" + groups[i] + "</name>");
    for (size_t i = 0; i < vars.size(); ++i)
        log.replace("<name>v" + QByteArray::number(int(i)) + "</name>",
                    "<name>" + vars[i] + "</name>");
    return log;
}

LogBuilder flightLog()
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    log.addGroup("mission_info", 3,
                 {{"time", "UINT32", 1},
                  {"mission_name", "UINT8", 20},
                  {"flight_name", "UINT8", 20},
                  {"flight_number", "UINT8", 1}});
    log.addGroup("lepton_info", 4, {{"lepton_type", "UINT8", 1}});
    log.addGroup("lepton_video", 5, {{"image", "UINT16", 4800}});
    return log;
}

QByteArray naming(quint32 timeMs, const QByteArray& mission)
{
    return LogBuilder::u32(timeMs) + LogBuilder::text(mission, 20) + LogBuilder::text("North", 20) +
           LogBuilder::u8(7);
}

} // namespace

void PairingReadTest::initTestCase()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

QString PairingReadTest::saved(const QByteArray& bytes)
{
    const QString path = m_folder.filePath(QStringLiteral("a.log"));
    QFile::remove(path); // writing over it would wait for the disk
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString PairingReadTest::differences(const QByteArray& bytes)
{
    const QString path = saved(bytes);
    const auto log = m_decoder.decode(path, m_silent);
    const auto digest = m_decoder.readForPairing(path, m_silent);
    if (!log)
        return {};
    if (!digest)
        return QStringLiteral("outcome: ") + digest.failure().sentence;
    const std::vector<RecEvent> recordings = LogDecoder::readRecordingEvents(log->get());
    const QList<FlightNamingEvent> namings = m_decoder.readFlightNamingEvents(log->get());
    const int camera = m_decoder.findThermalCameraHwVersion(log->get());
    m_recordings += static_cast<int>(recordings.size());
    m_namings += static_cast<int>(namings.size());
    m_cameras += camera >= 0 && camera != 255;
    if (!equalLists(digest->recordings, recordings))
        return QStringLiteral("recordings");
    if (!equalLists(digest->namings, namings))
        return QStringLiteral("namings");
    if (digest->describesRecordings != (log->get()->getGroup("mobius_start_rec") != nullptr))
        return QStringLiteral("description of recordings");
    if (digest->thermalCameraHwVersion != camera)
        return QStringLiteral("camera");
    const LogDecodeCounters counters = m_decoder.counters();
    const auto survey = m_decoder.survey(path, m_silent);
    if (!survey || !equalCounters(counters, m_decoder.counters()))
        return QStringLiteral("survey: counters");
    return surveyDifference(*survey, **log);
}

void PairingReadTest::givesWhatTheDecodedLogGives_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("whole") << static_cast<int>(RandomLogKind::Whole);
    QTest::newRow("damaged") << static_cast<int>(RandomLogKind::Damaged);
    QTest::newRow("hostile") << static_cast<int>(RandomLogKind::Hostile);
}

void PairingReadTest::givesWhatTheDecodedLogGives()
{
    QFETCH(int, kind);
    std::mt19937 random(1406 + static_cast<unsigned>(kind));
    m_namings = m_recordings = m_cameras = 0;
    for (int i = 0; i < 1500; ++i) {
        const QByteArray bytes =
            renamed(makeRandomLog(random, static_cast<RandomLogKind>(kind)), random);
        const QString difference = differences(bytes);
        if (!difference.isEmpty()) {
            const QString kept = QDir::temp().filePath(QStringLiteral("PairingReadTest.log"));
            QFile(m_folder.filePath(QStringLiteral("a.log"))).copy(kept);
            QFAIL(
                qPrintable(QStringLiteral("log %1, kept as %2: %3").arg(i).arg(kept, difference)));
        }
    }
    // The comparison means nothing where there is nothing to compare.
    QVERIFY2(m_namings > 0 && m_recordings > 20 && m_cameras > 0,
             qPrintable(QStringLiteral("%1 namings, %2 recordings, %3 cameras")
                            .arg(m_namings)
                            .arg(m_recordings)
                            .arg(m_cameras)));
}

void PairingReadTest::readsTheNamesOfAWholeFlight()
{
    LogBuilder log = flightLog();
    log.addPacket(1, LogBuilder::u32(10'000)).addPacket(3, naming(9'000, "Roof"));
    for (int i = 0; i < 500; ++i)
        log.addPacket(5, QByteArray(9600, static_cast<char>(i % 2 ? 0x86 : 0x37)));
    log.addPacket(2, LogBuilder::u32(71'000)).addPacket(4, LogBuilder::u8(35));
    std::vector<std::array<int, 3>> progress;
    const auto digest =
        m_decoder.readForPairing(saved(log.bytes()), [&progress](int stage, int done, int total) {
            progress.push_back({stage, done, total});
        });
    QVERIFY(digest);
    QCOMPARE(digest->recordings.size(), size_t(1));
    QCOMPARE(digest->recordings[0].stopTime, 71'000U);
    QCOMPARE(digest->namings.size(), 1);
    QCOMPARE(digest->namings[0].missionName, QStringLiteral("Roof"));
    QCOMPARE(digest->thermalCameraHwVersion, 35);
    QCOMPARE(progress.front()[0], 0);
    QVERIFY(progress.back()[2] > 4000); // kilobytes
    QCOMPARE(progress.back()[1], progress.back()[2]);
}

void PairingReadTest::readsMoreNamingsThanItKeeps()
{
    LogBuilder log = flightLog();
    constexpr int kNamings = 200'000; // nine megabytes of them
    QByteArray packets;
    for (int i = 0; i < kNamings; ++i) {
        packets += "\x86\x37\x03";
        packets += QByteArray("\0\x2d", 2);
        const QByteArray payload = naming(static_cast<quint32>(i), "Roof");
        unsigned sum = 0;
        for (const char byte : payload)
            sum += static_cast<unsigned char>(byte);
        packets += payload + static_cast<char>(i == 7 ? sum + 1 : sum);
    }
    const QString path = saved(log.addRaw(packets).bytes());
    const auto digest = m_decoder.readForPairing(path, m_silent);
    QVERIFY(digest);
    QCOMPARE(digest->namings.size(), kNamings - 1);
    QCOMPARE(digest->namings.back().time, kNamings - 1);
    QCOMPARE(digest->namings[7].time, 8);
}

void PairingReadTest::readsALogWhoseOtherFieldsAreTooLarge()
{
    LogBuilder log = flightLog();
    log.addGroup("huge", 9, {{"a", "UINT32", 1073741823}, {"b", "UINT32", -1073741822}});
    log.addPacket(9, "abcd").addPacket(1, LogBuilder::u32(10'000));
    const QString path = saved(log.bytes());
    QVERIFY(!m_decoder.decode(path, m_silent));
    const auto digest = m_decoder.readForPairing(path, m_silent);
    QVERIFY(digest);
    QCOMPARE(digest->recordings.size(), size_t(1));
}

void PairingReadTest::stopsWhenAborted()
{
    LogBuilder log = flightLog();
    log.addRaw(QByteArray(5 << 20, '\0'));
    const QString path = saved(log.bytes());
    int calls = 0;
    const auto digest = m_decoder.readForPairing(path, [&](int stage, int, int) {
        calls += stage == 2;
        m_abortFlag = stage == 2;
    });
    m_abortFlag = false;
    QVERIFY(!digest);
    QCOMPARE(digest.failure().kind, Failure::Kind::cancelled);
    QCOMPARE(calls, 1);
}

void PairingReadTest::failsWithTheReasonOfTheDecoder_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("not a log");
    QTest::newRow("damaged") << QByteArray("<main><gr</main>");
}

void PairingReadTest::failsWithTheReasonOfTheDecoder()
{
    QFETCH(QByteArray, bytes);
    const QString path = saved(bytes);
    const auto log = m_decoder.decode(path, m_silent);
    const auto digest = m_decoder.readForPairing(path, m_silent);
    QVERIFY(!log && !digest);
    QCOMPARE(digest.failure().sentence, log.failure().sentence);
    QCOMPARE(digest.failure().kind, log.failure().kind);
}

QTEST_GUILESS_MAIN(PairingReadTest)
#include "PairingReadTest.moc"
