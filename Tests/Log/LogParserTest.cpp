#include "Log/LogParser.h"
#include "Support/LogBuilder.h"
#include "Support/MessageLog.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>
#include <memory>
#include <random>

using namespace corv;
using namespace corv::test;

class LogParserTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void aNewParserKnowsNothing();
    void aParsePublishesInOrder();
    void theProjectsNamingSurvives();
    void theDurationIsReadWhenTheDecodingHasEnded();
    void withoutADurationNothingIsSynced();
    void anUnsyncedLogKeepsTheOffsetOfTheOneBefore();
    void aMissingFileFailsLater();
    void theReasonOfAFailureIsReadable();
    void theLogNamesTheThermalCamera_data();
    void theLogNamesTheThermalCamera();
    void closingForgetsTheLog();
    void closingOvertakesAParse();
    void aNewerParseOvertakesAnOlderOne();
    void closingInASlotEndsThePublishing();
    void deletingInASlotEndsThePublishing();
    void theDestructorEndsARunningParse();
    void readersKeepTheLogAlive();
    void namingIsKeptAndSignalled_data();
    void namingIsKeptAndSignalled();
    void settersEmitOnChangeOnly();
    void callsInRandomOrderAreSafe();

private:
    QString flight() const { return m_folder.filePath(QStringLiteral("flight.log")); }
    QString largeFlight() const { return m_folder.filePath(QStringLiteral("large.log")); }
    void parseAndWait(const QString& path, bool ignoreNaming = false);

    QTemporaryDir m_folder;
    std::unique_ptr<LogParser> m_parser;
};

namespace {

LogBuilder flightLog(unsigned camera = 35)
{
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    log.addGroup("mission_info", 3,
                 {{"time", "UINT32", 1},
                  {"mission_name", "INT8", 10},
                  {"flight_name", "INT8", 10},
                  {"flight_number", "UINT8", 1}});
    log.addGroup("lepton_info", 4, {{"lepton_type", "UINT8", 1}});
    log.addGroup("state", 5, {{"time", "UINT32", 1}});
    log.addPacket(1, LogBuilder::u32(10000)).addPacket(2, LogBuilder::u32(71000));
    log.addPacket(3, LogBuilder::u32(9000) + LogBuilder::text("Roof", 10) +
                         LogBuilder::text("North", 10) + LogBuilder::u8(7));
    log.addPacket(4, LogBuilder::u8(camera));
    return log;
}

// Everything that a parser emits, by name and value, in order.
class Record : public QObject
{
public:
    explicit Record(LogParser* parser)
    {
        connect(parser, &LogParser::sourceChanged, this,
                [this] { lines += QStringLiteral("source"); });
        connect(parser, &LogParser::sourceDataParsed, this,
                [this] { lines += QStringLiteral("parsed"); });
        connect(parser, &LogParser::flightNamingChanged, this,
                [this] { lines += QStringLiteral("naming"); });
        connect(parser, &LogParser::logParsingProgress, this,
                [this](int stage, int done, int total) {
                    lines += QStringLiteral("%1 %2/%3").arg(stage).arg(done).arg(total);
                });
        connect(parser, &LogParser::logParsingComplete, this, [this](bool result) {
            lines += result ? QStringLiteral("complete") : QStringLiteral("failed");
        });
        connect(parser, &LogParser::isParsingChanged, this, [this](bool isParsing) {
            lines += isParsing ? QStringLiteral("parsing") : QStringLiteral("not parsing");
        });
    }

    QStringList lines;
};

QVariantMap namingMap(bool undefined, const QString& mission, const QString& flight, int number)
{
    return {{QStringLiteral("undefined"), undefined},
            {QStringLiteral("missionName"), mission},
            {QStringLiteral("flightName"), flight},
            {QStringLiteral("flightNumber"), number}};
}

const QTime kMinute(0, 1, 0);

} // namespace

void LogParserTest::initTestCase()
{
    QVERIFY(flightLog().save(flight()));
    LogBuilder large = flightLog();
    for (quint32 i = 0; i < 200000; ++i)
        large.addPacket(5, LogBuilder::u32(i));
    QVERIFY(large.save(largeFlight()));
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

void LogParserTest::init()
{
    m_parser = std::make_unique<LogParser>();
    m_parser->setDuration(kMinute);
}

void LogParserTest::parseAndWait(const QString& path, bool ignoreNaming)
{
    QSignalSpy complete(m_parser.get(), &LogParser::logParsingComplete);
    QVERIFY(m_parser->parseLog(path, ignoreNaming));
    QVERIFY(complete.isEmpty()); // it only starts
    QTRY_COMPARE(complete.size(), 1);
}

void LogParserTest::aNewParserKnowsNothing()
{
    const LogParser parser;
    QCOMPARE(parser.getLogTimeOffset(), 0);
    QCOMPARE(parser.getManualLogTimeOffset(), 0);
    QVERIFY(parser.duration().isNull());
    QVERIFY(!parser.isParsing());
    QVERIFY(!parser.isSynced());
    QVERIFY(parser.source().isEmpty());
    QCOMPARE(parser.flightNaming(), namingMap(true, QString(), QString(), 0));
    QCOMPARE(parser.thermalCameraVersion(), -1);
    QVERIFY(!parser.getLogFile());
    QVERIFY(!parser.log());
}

void LogParserTest::aParsePublishesInOrder()
{
    const MessageLog messages;
    const Record record(m_parser.get());
    const std::shared_ptr<const FlightClock> clock = m_parser->clock();
    parseAndWait(flight());
    QCOMPARE(record.lines, QStringList({QStringLiteral("source"), QStringLiteral("0 0/0"),
                                        QStringLiteral("1 0/0"), QStringLiteral("2 0/4"),
                                        QStringLiteral("2 4/4"), QStringLiteral("naming"),
                                        QStringLiteral("parsed"), QStringLiteral("complete")}));
    QCOMPARE(m_parser->source(), flight());
    QVERIFY(m_parser->isSynced());
    QCOMPARE(m_parser->getLogTimeOffset(), 10690);
    QCOMPARE(m_parser->matchedLogDuration(), 60000); // what was asked for, not what was found
    QVERIFY(!m_parser->logProbablyNotMatching());
    QCOMPARE(m_parser->flightNaming(),
             namingMap(false, QStringLiteral("Roof"), QStringLiteral("North"), 7));
    QCOMPARE(m_parser->thermalCameraVersion(), 35);
    QVERIFY(m_parser->getLogFile());
    QCOMPARE(m_parser->clock(), clock);
    QVERIFY(clock->synced);
    QCOMPARE(clock->logTimeOffset.load(), 10690);
    QVERIFY(messages.contains(QStringLiteral("Parsing log in separate thread")));
    QVERIFY(messages.contains(QStringLiteral("Thermal camera HW version: 35")));
}

void LogParserTest::theProjectsNamingSurvives()
{
    const QVariantMap project = namingMap(false, QStringLiteral("a"), QStringLiteral("b"), 1);
    m_parser->setFlightNaming(project);
    const Record record(m_parser.get());
    parseAndWait(flight(), true);
    QCOMPARE(m_parser->flightNaming(), project);
    QVERIFY(!record.lines.contains(QStringLiteral("naming")));
    QVERIFY(record.lines.contains(QStringLiteral("parsed")));
}

void LogParserTest::theDurationIsReadWhenTheDecodingHasEnded()
{
    // The decoding waits just before it stores the packets, until the duration has changed.
    static QSemaphore reached;
    static QSemaphore changed;
    m_parser->setDuration(QTime());
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
            if (message == QLatin1String("Data parsing: ")) {
                reached.release();
                changed.acquire();
            }
        });
    QSignalSpy complete(m_parser.get(), &LogParser::logParsingComplete);
    m_parser->parseLog(flight(), false);
    QTRY_VERIFY(reached.available() > 0);
    m_parser->setDuration(QTime(0, 0, 59));
    changed.release();
    QTRY_COMPARE(complete.size(), 1);
    qInstallMessageHandler(before);
    QVERIFY(m_parser->isSynced());
    QCOMPARE(m_parser->matchedLogDuration(), 59000);
}

void LogParserTest::withoutADurationNothingIsSynced()
{
    const MessageLog messages;
    m_parser->setDuration(QTime());
    parseAndWait(flight());
    QVERIFY(m_parser->getLogFile());
    QVERIFY(!m_parser->isSynced());
    QVERIFY(messages.contains(QStringLiteral("Reference start 0 end 0")));
    QVERIFY(m_parser->flightNaming()[QStringLiteral("undefined")].toBool());
}

void LogParserTest::anUnsyncedLogKeepsTheOffsetOfTheOneBefore()
{
    parseAndWait(flight());
    const QString other = m_folder.filePath(QStringLiteral("other.log"));
    QVERIFY(LogBuilder().addGroup("x", 1, {}).save(other));
    const MessageLog messages;
    parseAndWait(other);
    QVERIFY(!m_parser->isSynced());
    QCOMPARE(m_parser->getLogTimeOffset(), 10690);
    QCOMPARE(m_parser->matchedLogDuration(), 60000);
    QVERIFY(messages.contains(QStringLiteral("Reference start 10690 end 70690")));
}

void LogParserTest::aMissingFileFailsLater()
{
    parseAndWait(flight());
    const MessageLog messages;
    const Record record(m_parser.get());
    parseAndWait(m_folder.filePath(QStringLiteral("missing.log")));
    QCOMPARE(record.lines, QStringList({QStringLiteral("source"), QStringLiteral("failed")}));
    QVERIFY(messages.contains(QStringLiteral("Log decoding returned null")));
    QVERIFY(!m_parser->getLogFile());
    QVERIFY(!m_parser->isSynced());
    // The rest stays as it was.
    QCOMPARE(m_parser->getLogTimeOffset(), 10690);
    QCOMPARE(m_parser->thermalCameraVersion(), 35);
    QVERIFY(!m_parser->flightNaming()[QStringLiteral("undefined")].toBool());
}

void LogParserTest::theReasonOfAFailureIsReadable()
{
    QVERIFY(!m_parser->failure());
    QSignalSpy changed(m_parser.get(), &LogParser::failureChanged);
    QString atCompletion;
    connect(m_parser.get(), &LogParser::logParsingComplete, m_parser.get(),
            [&] { atCompletion = m_parser->property("failureText").toString(); });
    const QString missing = m_folder.filePath(QStringLiteral("missing.log"));
    parseAndWait(missing);
    QVERIFY(m_parser->failure());
    QCOMPARE(m_parser->failure()->kind, Failure::Kind::notFound);
    QCOMPARE(atCompletion, QStringLiteral("The log \"%1\" does not exist.").arg(missing));
    QTRY_COMPARE(changed.size(), 1);
    parseAndWait(flight());
    QVERIFY(!m_parser->failure());
    QCOMPARE(atCompletion, QString());
    QCOMPARE(changed.size(), 2);
    parseAndWait(missing);
    m_parser->closeLog();
    QCOMPARE(m_parser->failureText(), QString());
}

void LogParserTest::theLogNamesTheThermalCamera_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("version");
    QTest::newRow("30") << 30 << 30;
    QTest::newRow("35") << 35 << 35;
    QTest::newRow("255") << 255 << -1;
    QTest::newRow("0") << 0 << -1;
    QTest::newRow("31") << 31 << -1;
}

void LogParserTest::theLogNamesTheThermalCamera()
{
    QFETCH(int, type);
    const QString path = m_folder.filePath(QStringLiteral("camera.log"));
    QVERIFY(flightLog(static_cast<unsigned>(type)).save(path));
    parseAndWait(path);
    QTEST(m_parser->thermalCameraVersion(), "version");
}

void LogParserTest::closingForgetsTheLog()
{
    parseAndWait(flight());
    m_parser->setManualLogTimeOffset(44);
    m_parser->setIsParsing(true); // nothing runs, so this is the interface's own
    const Record record(m_parser.get());
    m_parser->closeLog();
    QCOMPARE(record.lines, QStringList({QStringLiteral("source"), QStringLiteral("naming")}));
    QVERIFY(!m_parser->getLogFile());
    QVERIFY(!m_parser->isSynced());
    QVERIFY(m_parser->source().isEmpty());
    QCOMPARE(m_parser->getLogTimeOffset(), 0);
    QCOMPARE(m_parser->thermalCameraVersion(), -1);
    QCOMPARE(m_parser->flightNaming(), namingMap(true, QString(), QString(), 0));
    QCOMPARE(m_parser->getManualLogTimeOffset(), 44);
    QCOMPARE(m_parser->matchedLogDuration(), 60000);
    QCOMPARE(m_parser->duration(), kMinute);
    QVERIFY(m_parser->isParsing());
}

void LogParserTest::closingOvertakesAParse()
{
    const Record record(m_parser.get());
    m_parser->setIsParsing(true);
    connect(m_parser.get(), &LogParser::logParsingProgress, m_parser.get(),
            [this] { m_parser->closeLog(); });
    m_parser->parseLog(largeFlight(), false);
    QTRY_VERIFY(!m_parser->isParsing());
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(record.lines, QStringList({QStringLiteral("parsing"), QStringLiteral("source"),
                                        QStringLiteral("0 0/0"), QStringLiteral("source"),
                                        QStringLiteral("naming"), QStringLiteral("not parsing")}));
    QVERIFY(!m_parser->getLogFile());
    QVERIFY(m_parser->source().isEmpty());
}

void LogParserTest::aNewerParseOvertakesAnOlderOne()
{
    const Record record(m_parser.get());
    m_parser->setIsParsing(true);
    m_parser->parseLog(largeFlight(), false);
    parseAndWait(flight());
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(record.lines.count(QStringLiteral("source")), 1);
    QCOMPARE(record.lines.count(QStringLiteral("complete")), 1);
    QVERIFY(!record.lines.contains(QStringLiteral("failed")));
    QCOMPARE(m_parser->source(), flight());
    QVERIFY(m_parser->isParsing()); // the interface clears it on completion
}

void LogParserTest::closingInASlotEndsThePublishing()
{
    const Record record(m_parser.get());
    const auto connection = connect(m_parser.get(), &LogParser::flightNamingChanged, this, [this] {
        if (m_parser->getLogFile())
            m_parser->closeLog();
    });
    m_parser->parseLog(flight(), false);
    QTRY_VERIFY(record.lines.contains(QStringLiteral("naming")));
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCoreApplication::processEvents();
    disconnect(connection);
    QVERIFY(!record.lines.contains(QStringLiteral("parsed")));
    QVERIFY(!record.lines.contains(QStringLiteral("complete")));
}

void LogParserTest::deletingInASlotEndsThePublishing()
{
    auto* parser = new LogParser;
    bool deleted = false;
    connect(parser, &LogParser::sourceDataParsed, this, [parser, &deleted] {
        delete parser;
        deleted = true;
    });
    parser->parseLog(flight(), false);
    QTRY_VERIFY(deleted);
    QCoreApplication::processEvents();
}

void LogParserTest::theDestructorEndsARunningParse()
{
    const MessageLog messages;
    Record record(m_parser.get());
    for (int i = 0; i < 4; ++i) {
        m_parser->parseLog(largeFlight(), false);
        QTRY_VERIFY(record.lines.contains(QStringLiteral("1 0/0"))); // it runs
        record.lines.clear();
    }
    m_parser.reset();
    const auto said = messages.messages().size();
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(messages.messages().size(), said); // nothing was left to run
    QVERIFY(record.lines.isEmpty());
}

void LogParserTest::readersKeepTheLogAlive()
{
    parseAndWait(flight());
    const std::shared_ptr<const LogFile> kept = m_parser->log();
    void* column = nullptr;
    kept->getGroup("mobius_start_rec")->getVar("mobius_start_rec")->getColumn(0, &column);
    parseAndWait(largeFlight());
    m_parser->closeLog();
    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
    QCOMPARE(*static_cast<const quint32*>(column), 10000U);
}

void LogParserTest::namingIsKeptAndSignalled_data()
{
    QTest::addColumn<QVariantMap>("written");
    QTest::addColumn<QVariantMap>("read");
    QVariantMap withoutKey = namingMap(false, QStringLiteral("a"), QStringLiteral("b"), 3);
    withoutKey.remove(QStringLiteral("undefined"));
    QTest::newRow("defined") << namingMap(false, QStringLiteral("a"), QStringLiteral("b"), 3)
                             << namingMap(false, QStringLiteral("a"), QStringLiteral("b"), 3);
    QTest::newRow("undefined") << namingMap(true, QStringLiteral("a"), QStringLiteral("b"), 3)
                               << namingMap(true, QString(), QString(), 0);
    QTest::newRow("without undefined")
        << withoutKey << namingMap(false, QStringLiteral("a"), QStringLiteral("b"), 3);
    QTest::newRow("empty") << QVariantMap() << namingMap(false, QString(), QString(), 0);
}

void LogParserTest::namingIsKeptAndSignalled()
{
    QFETCH(QVariantMap, written);
    QSignalSpy changed(m_parser.get(), &LogParser::flightNamingChanged);
    m_parser->setFlightNaming(written);
    m_parser->setFlightNaming(written);
    QCOMPARE(changed.size(), 2); // also when nothing changed
    QTEST(m_parser->flightNaming(), "read");
    QCOMPARE(m_parser->property("flightNaming").toMap(), m_parser->flightNaming());
}

void LogParserTest::settersEmitOnChangeOnly()
{
    QSignalSpy offset(m_parser.get(), &LogParser::manualLogTimeOffsetChanged);
    QSignalSpy parsing(m_parser.get(), &LogParser::isParsingChanged);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(m_parser->setProperty("manualLogTimeOffset", -250));
        QVERIFY(m_parser->setProperty("isParsing", true));
    }
    QCOMPARE(offset.size(), 1);
    QCOMPARE(offset[0][0].toInt(), -250);
    QCOMPARE(parsing.size(), 1);
    QCOMPARE(m_parser->clock()->manualLogTimeOffset.load(), -250);
    QVERIFY(m_parser->setProperty("duration", QTime(0, 0, 1)));
    QCOMPARE(m_parser->property("duration").toTime(), QTime(0, 0, 1));
}

// Parsing, closing, reading and dying in any order, each of them possibly in the middle of another.
void LogParserTest::callsInRandomOrderAreSafe()
{
    std::mt19937 random(5);
    const QStringList files{flight(), largeFlight(),
                            m_folder.filePath(QStringLiteral("missing.log"))};
    std::vector<std::shared_ptr<const LogFile>> kept;
    for (int i = 0; i < 300; ++i) {
        if (random() % 10 == 0) {
            m_parser = std::make_unique<LogParser>();
            m_parser->setDuration(kMinute);
        }
        switch (random() % 6) {
        case 0:
            m_parser->closeLog();
            break;
        case 1:
            QCoreApplication::processEvents();
            break;
        case 2:
            kept.push_back(m_parser->log());
            if (kept.size() > 3)
                kept.erase(kept.begin());
            break;
        case 3: {
            QSignalSpy progress(m_parser.get(), &LogParser::logParsingProgress);
            m_parser->parseLog(largeFlight(), random() % 2 == 0);
            const int enough = static_cast<int>(random() % 20);
            QTRY_VERIFY_WITH_TIMEOUT(progress.size() > enough, 60000);
            break;
        }
        default:
            m_parser->parseLog(files[static_cast<int>(random() % 3)], random() % 2 == 0);
        }
        quint32 start = 10000;
        if (const LogFile* log = m_parser->getLogFile())
            log->getGroup("mobius_start_rec")->getVar("mobius_start_rec")->getU32(0, 0, &start);
        QCOMPARE(start, 10000U);
    }
    parseAndWait(flight());
    QVERIFY(m_parser->isSynced());
}

QTEST_GUILESS_MAIN(LogParserTest)
#include "LogParserTest.moc"
