#include "Support/MessageLog.h"
#include "timelineSupport.h"

using namespace corv;
using namespace corv::test;

namespace {

constexpr int durationMs = 60000;
constexpr quint32 start = videoStartInLogMs;

LogBuilder logWithPois(const std::vector<quint32>& logTimes, const QByteArray& type = "UINT32")
{
    LogBuilder log = recordingLog(durationMs);
    log.addGroup("point_of_interest", 3, {{"point_of_interest", type, 1}});
    for (const quint32 time : logTimes) {
        log.addPacket(3, type == "UINT8"    ? LogBuilder::u8(time % 256)
                         : type == "UINT16" ? LogBuilder::u16(time % 65536)
                                            : LogBuilder::u32(time));
    }
    return log;
}

struct LoggedStrip
{
    explicit LoggedStrip(const std::vector<quint32>& logTimes)
    {
        parsed = parse(parser, logWithPois(logTimes), durationMs);
        timeline.setLogParser(&parser);
        timeline.setVideoPlayer(&player);
        timeline.setSize(QSizeF(720, 160));
        timeline.setContentWidth(720);
    }

    void answerAll(const QImage& frame = frameOf(Qt::green))
    {
        player.answerAll(frame);
        deliver();
    }

    // "time name", in ascending time
    QStringList pois() const
    {
        QStringList list;
        for (const QVariant& poi : timeline.getPOIs()) {
            const QVariantMap map = poi.toMap();
            list.append(map.value(QStringLiteral("time")).toString() + QLatin1Char(' ') +
                        map.value(QStringLiteral("name")).toString());
        }
        return list;
    }

    bool parsed = false;
    LogParser parser;
    FramePlayer player;
    TimelineContent timeline;
};

QString logLine(const char* text, int ms)
{
    QString message;
    QDebug(&message) << text << timeAt(ms);
    return message.trimmed();
}

} // namespace

class TimelineLogPoiTest : public QObject
{
    Q_OBJECT

private slots:
    void updateAddsWhatIsMissing();
    void poiOfTheLogExistsWithItsFrameOnly();
    void nullFramesMakeNoPoi_data();
    void nullFramesMakeNoPoi();
    void updatingTwiceAddsNothing();
    void updateBringsBackWhatWasDeleted();
    void poisBeforeTheVideo();
    void correctionMovesNoPoi();
    void theLaterOfEqualEntriesWins();
    void updateReplacesWhatCameInBetween();
    void restoreAddsWithinTheVideoOnly();
    void restoringTwiceDoubles();
    void restoreFindsTheNextFreeMillisecond();
    void restoreGivesUpAtTheEnd();
    void restoreAsksTheDurationWhenTheFrameComes();
    void withoutALog_data();
    void withoutALog();
    void logsOfAnotherShape_data();
    void logsOfAnotherShape();
    void hostileLogsAreCutShort();
    void theWaitCursorGoesAgain();
};

void TimelineLogPoiTest::updateAddsWhatIsMissing()
{
    LoggedStrip strip({start + 30000, start + 10000, start + 20000});
    QVERIFY(strip.parsed);
    const MessageLog log;
    strip.timeline.setPOIsFromList(
        {QVariantMap{{QStringLiteral("time"), 10000}, {QStringLiteral("name"), "mine"}}});
    strip.player.requests.clear();
    strip.timeline.updateLogData();
    const std::vector<QTime> expected = {timeAt(30000), timeAt(20000)};
    QCOMPARE(strip.player.requestedTimes(), expected);
    QCOMPARE(log.messages(), QStringList{logLine("Already added POI at", 10000)});
    strip.answerAll();
    QCOMPARE(strip.pois(), (QStringList{"10000 mine", "20000 POI 3", "30000 POI 1"}));
    QCOMPARE(strip.timeline.getPOIs().last().toMap().value(QStringLiteral("comment")).toString(),
             QString());
}

void TimelineLogPoiTest::poiOfTheLogExistsWithItsFrameOnly()
{
    LoggedStrip strip({start + 30000});
    strip.timeline.updateLogData();
    QVERIFY(strip.pois().isEmpty());
    strip.player.answer(frameOf(Qt::green));
    QVERIFY(strip.pois().isEmpty());
    deliver();
    QCOMPARE(strip.pois(), QStringList{"30000 POI 1"});
    QCOMPARE(painted(strip.timeline).pixelColor(320, 70), QColor(Qt::green));
}

void TimelineLogPoiTest::nullFramesMakeNoPoi_data()
{
    QTest::addColumn<bool>("restore");
    QTest::newRow("updateLogData") << false;
    QTest::newRow("restoreMissingPOIsWithLogData") << true;
}

void TimelineLogPoiTest::nullFramesMakeNoPoi()
{
    QFETCH(bool, restore);
    LoggedStrip strip({start + 30000});
    if (restore)
        strip.timeline.restoreMissingPOIsWithLogData();
    else
        strip.timeline.updateLogData();
    const MessageLog log;
    strip.answerAll(QImage());
    QCOMPARE(log.messages(QtWarningMsg), QStringList{logLine("Null frame at", 30000)});
    QVERIFY(strip.pois().isEmpty());
}

void TimelineLogPoiTest::updatingTwiceAddsNothing()
{
    LoggedStrip strip({start + 10000, start + 20000});
    strip.timeline.updateLogData();
    strip.answerAll();
    const MessageLog log;
    strip.timeline.updateLogData();
    QVERIFY(strip.player.requests.empty());
    QCOMPARE(log.messages(QtInfoMsg), (QStringList{logLine("Already added POI at", 10000),
                                                   logLine("Already added POI at", 20000)}));
    QCOMPARE(strip.pois(), (QStringList{"10000 POI 1", "20000 POI 2"}));
}

void TimelineLogPoiTest::updateBringsBackWhatWasDeleted()
{
    LoggedStrip strip({start + 10000, start + 20000});
    strip.timeline.updateLogData();
    strip.answerAll();
    strip.timeline.setCursorPosition(timeAt(20000));
    strip.timeline.deletePoiAtPosition();
    QCOMPARE(strip.pois(), QStringList{"10000 POI 1"});
    strip.timeline.updateLogData();
    strip.answerAll();
    QCOMPARE(strip.pois(), (QStringList{"10000 POI 1", "20000 POI 2"}));
}

void TimelineLogPoiTest::poisBeforeTheVideo()
{
    LoggedStrip strip({start - 2000, start + 10000});
    strip.timeline.setDuration(timeAt(durationMs));
    strip.timeline.restoreMissingPOIsWithLogData();
    QCOMPARE(strip.player.requestedTimes(), std::vector<QTime>{timeAt(10000)});
    strip.answerAll();
    QCOMPARE(strip.pois(), QStringList{"10000 POI 2"});
    strip.timeline.updateLogData();
    strip.answerAll();
    QCOMPARE(strip.pois(), (QStringList{"10000 POI 2", "86398000 POI 1"}));
}

void TimelineLogPoiTest::correctionMovesNoPoi()
{
    LoggedStrip strip({start + 10000});
    strip.parser.setManualLogTimeOffset(500);
    strip.timeline.updateLogData();
    strip.answerAll();
    strip.parser.setManualLogTimeOffset(-500);
    strip.timeline.updateLogData();
    strip.answerAll();
    QCOMPARE(strip.pois(), QStringList{"10000 POI 1"});
}

void TimelineLogPoiTest::theLaterOfEqualEntriesWins()
{
    LoggedStrip strip({start + 10000, start + 10000});
    strip.timeline.updateLogData();
    strip.answerAll();
    QCOMPARE(strip.pois(), QStringList{"10000 POI 2"});
}

void TimelineLogPoiTest::updateReplacesWhatCameInBetween()
{
    LoggedStrip strip({start + 10000});
    strip.timeline.updateLogData();
    strip.timeline.setCursorPosition(timeAt(10000));
    strip.timeline.addPoiAtPosition();
    strip.answerAll();
    QCOMPARE(strip.pois(), QStringList{"10000 POI 1"});
}

void TimelineLogPoiTest::restoreAddsWithinTheVideoOnly()
{
    LoggedStrip strip({start - 1, start, start + 59999, start + 60000, start + 60001});
    const MessageLog log;
    strip.timeline.restoreMissingPOIsWithLogData();
    const std::vector<QTime> expected = {timeAt(0), timeAt(59999), timeAt(60000)};
    QCOMPARE(strip.player.requestedTimes(), expected);
    QVERIFY(log.messages().isEmpty());
    strip.answerAll();
    QCOMPARE(strip.pois(), (QStringList{"0 POI 2", "59999 POI 3"}));
    QCOMPARE(log.messages(QtWarningMsg), QStringList{logLine("Couldn't insert POI at ", 60000)});
}

void TimelineLogPoiTest::restoringTwiceDoubles()
{
    LoggedStrip strip({start + 10000, start + 20000});
    for (int run = 0; run < 3; ++run) {
        strip.timeline.restoreMissingPOIsWithLogData();
        strip.answerAll();
    }
    QCOMPARE(strip.pois(), (QStringList{"10000 POI 1", "10001 POI 1", "10002 POI 1", "20000 POI 2",
                                        "20001 POI 2", "20002 POI 2"}));
}

void TimelineLogPoiTest::restoreFindsTheNextFreeMillisecond()
{
    LoggedStrip strip({start + 10000, start + 10000, start + 10001});
    strip.timeline.restoreMissingPOIsWithLogData();
    strip.answerAll();
    QCOMPARE(strip.pois(), (QStringList{"10000 POI 1", "10001 POI 2", "10002 POI 3"}));
}

void TimelineLogPoiTest::restoreGivesUpAtTheEnd()
{
    LoggedStrip strip({start + 59998, start + 59998, start + 59998});
    const MessageLog log;
    strip.timeline.restoreMissingPOIsWithLogData();
    strip.answerAll();
    QCOMPARE(strip.pois(), (QStringList{"59998 POI 1", "59999 POI 2"}));
    QCOMPARE(log.messages(QtWarningMsg), QStringList{logLine("Couldn't insert POI at ", 59998)});
}

void TimelineLogPoiTest::restoreAsksTheDurationWhenTheFrameComes()
{
    LoggedStrip strip({start + 40000});
    const MessageLog log;
    strip.timeline.restoreMissingPOIsWithLogData();
    strip.timeline.setDuration(timeAt(30000));
    strip.answerAll();
    QVERIFY(strip.pois().isEmpty());
    QCOMPARE(log.messages(QtWarningMsg), QStringList{logLine("Couldn't insert POI at ", 40000)});
}

void TimelineLogPoiTest::withoutALog_data()
{
    QTest::addColumn<bool>("hasParser");
    QTest::addColumn<bool>("hasLog");
    QTest::newRow("no parser") << false << false;
    QTest::newRow("no log") << true << false;
    QTest::newRow("a log without a recording") << true << true;
}

void TimelineLogPoiTest::withoutALog()
{
    QFETCH(bool, hasParser);
    QFETCH(bool, hasLog);
    LogParser parser;
    FramePlayer player;
    TimelineContent timeline;
    timeline.setVideoPlayer(&player);
    if (hasLog) {
        LogBuilder log;
        log.addGroup("point_of_interest", 3, {{"point_of_interest", "UINT32", 1}});
        log.addPacket(3, LogBuilder::u32(12000));
        QVERIFY(parse(parser, log, durationMs));
        QVERIFY(parser.log());
        QVERIFY(!parser.isSynced());
    }
    if (hasParser)
        timeline.setLogParser(&parser);
    const MessageLog log;
    timeline.updateLogData();
    timeline.restoreMissingPOIsWithLogData();
    QVERIFY(player.requests.empty());
    QVERIFY(log.messages().isEmpty());
}

void TimelineLogPoiTest::logsOfAnotherShape_data()
{
    QTest::addColumn<QByteArray>("group");
    QTest::addColumn<QByteArray>("var");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("pois");
    const QByteArray name = "point_of_interest";
    QTest::newRow("as it should be") << name << name << QByteArray("UINT32") << 1 << 2;
    QTest::newRow("more columns") << name << name << QByteArray("UINT32") << 3 << 2;
    QTest::newRow("no columns") << name << name << QByteArray("UINT32") << 0 << 0;
    QTest::newRow("another group") << QByteArray("poi") << name << QByteArray("UINT32") << 1 << 0;
    QTest::newRow("another var") << name << QByteArray("time") << QByteArray("UINT32") << 1 << 0;
    QTest::newRow("bytes") << name << name << QByteArray("UINT8") << 1 << 0;
    QTest::newRow("words") << name << name << QByteArray("UINT16") << 1 << 0;
    QTest::newRow("signed") << name << name << QByteArray("INT32") << 1 << 2;
    QTest::newRow("fractions") << name << name << QByteArray("FLOAT") << 1 << 0;
    QTest::newRow("doubles") << name << name << QByteArray("DOUBLE") << 1 << 0;
}

void TimelineLogPoiTest::logsOfAnotherShape()
{
    QFETCH(QByteArray, group);
    QFETCH(QByteArray, var);
    QFETCH(QByteArray, type);
    QFETCH(int, columns);
    QFETCH(int, pois);
    LogBuilder log = recordingLog(durationMs);
    log.addGroup(group, 3, {{var, type, columns}, {"tail", "UINT8", 1}});
    const int elementSize = type == "UINT8" ? 1 : type == "UINT16" ? 2 : type == "DOUBLE" ? 8 : 4;
    for (int packet = 0; packet < 2; ++packet) {
        QByteArray payload = LogBuilder::u32(start + 10000 + static_cast<quint32>(packet));
        payload.resize(elementSize * columns);
        log.addPacket(3, payload + LogBuilder::u8(0));
    }
    LogParser parser;
    QVERIFY(parse(parser, log, durationMs));
    FramePlayer player;
    TimelineContent timeline;
    timeline.setVideoPlayer(&player);
    timeline.setLogParser(&parser);
    const MessageLog messages;
    timeline.updateLogData();
    QCOMPARE(static_cast<int>(player.requests.size()), pois);
    timeline.restoreMissingPOIsWithLogData();
    QCOMPARE(static_cast<int>(player.requests.size()), 2 * pois);
    QVERIFY(messages.messages().isEmpty());
}

void TimelineLogPoiTest::hostileLogsAreCutShort()
{
    LoggedStrip strip(std::vector<quint32>(50000, start + 10000));
    QVERIFY(strip.parsed);
    const MessageLog log;
    strip.timeline.updateLogData();
    QCOMPARE(strip.player.requests.size(), size_t(10000));
    QCOMPARE(log.messages(QtWarningMsg),
             QStringList{"Too many POIs in the log, taking the first 10000"});
}

void TimelineLogPoiTest::theWaitCursorGoesAgain()
{
    // Seen from inside: a player that looks while it is asked.
    class CursorWitness : public FramePlayer
    {
    public:
        bool getFrameAsync(QTime, std::function<void(const QImage&)>) override
        {
            const QCursor* cursor = QGuiApplication::overrideCursor();
            seenWaiting = cursor && cursor->shape() == Qt::WaitCursor;
            return true;
        }
        bool seenWaiting = false;
    };
    LoggedStrip strip({start + 10000});
    const auto operations = {&TimelineContent::updateLogData,
                             &TimelineContent::restoreMissingPOIsWithLogData};
    for (const auto operation : operations) {
        CursorWitness witness;
        strip.timeline.setVideoPlayer(&witness);
        (strip.timeline.*operation)();
        QVERIFY(witness.seenWaiting);
        QVERIFY(!QGuiApplication::overrideCursor());
    }
}

QTEST_MAIN(TimelineLogPoiTest)
#include "TimelineLogPoiTest.moc"
