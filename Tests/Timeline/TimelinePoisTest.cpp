#include "Support/MessageLog.h"
#include "timelineStrip.h"

#include <memory>

using namespace corv;
using namespace corv::test;

namespace {

QVariantMap poiMap(int ms, const QString& name, const QString& comment = QString())
{
    return {{QStringLiteral("time"), ms},
            {QStringLiteral("name"), name},
            {QStringLiteral("comment"), comment}};
}

QVariantMap texts(const QString& name, const QString& comment)
{
    return {{QStringLiteral("name"), name}, {QStringLiteral("comment"), comment}};
}

} // namespace

/// The points of interest of a timeline: made, edited, moved and deleted, and their pictures that
/// come later.
class TimelinePoisTest : public QObject
{
    Q_OBJECT

private slots:
    void addsOncePerPlace();
    void listsInAscendingTime();
    void replacesAllByAList();
    void anEmptyListKeepsAStaleSelection();
    void deletesAtTheCursor();
    void deletesTheSelected();
    void knowsWhetherTheSelectedIsThere();
    void clearsAll();
    void updatesTheSelectedWhateverTheTimeSays();
    void updatingNothingIsLogged();
    void nothingIsSelectedAtFirst();

    void moveModeNeedsASelection();
    void movesTheSelected();
    void movesOverAnother();
    void movingOntoItsOwnPlaceLosesIt();
    void movingAStaleSelectionMakesAnEmptyPoi();

    void thumbnailArrives_data();
    void thumbnailArrives();
    void nullFrameIsLogged_data();
    void nullFrameIsLogged();
    void deletedPoiStaysDeleted_data();
    void deletedPoiStaysDeleted();
    void replacedPoiTakesTheFrame();
    void framesMayComeInAnyOrder();
    void withoutAPlayerNoFrameIsAskedFor();
    void aDestroyedItemNeedsNoFrames();
    void thumbnailsDoNotHoldTheFramesMemory();
};

// --- The user's operations -------------------------------------------------------------------

void TimelinePoisTest::addsOncePerPlace()
{
    Strip strip;
    const MessageLog log;
    strip.timeline.setCursorPosition(timeAt(20000));
    strip.timeline.addPoiAtPosition();
    strip.timeline.addPoiAtPosition();
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(20000, QStringLiteral("New POI"))}));
    QCOMPARE(log.messages(QtInfoMsg),
             QStringList{QStringLiteral("Not adding POI, already one at same place")});
    QCOMPARE(strip.player.requestedTimes(), std::vector<QTime>{timeAt(20000)});
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());

    strip.timeline.setCursorPosition(timeAt(20001));
    strip.timeline.addPoiAtPosition();
    QCOMPARE(strip.timeline.getPOIs().size(), 2);
}

void TimelinePoisTest::listsInAscendingTime()
{
    Strip strip;
    for (const int ms : {30000, 10000, 20000}) {
        strip.timeline.setCursorPosition(timeAt(ms));
        strip.timeline.addPoiAtPosition();
    }
    QList<int> times;
    for (const QVariant& poi : strip.timeline.getPOIs())
        times.append(poi.toMap().value(QStringLiteral("time")).toInt());
    QCOMPARE(times, (QList<int>{10000, 20000, 30000}));
}

void TimelinePoisTest::replacesAllByAList()
{
    Strip strip;
    strip.timeline.addPoiAtPosition();
    strip.player.requests.clear();
    const MessageLog log;
    strip.timeline.setPOIsFromList({
        poiMap(5000, QStringLiteral("later"), QStringLiteral("second")),
        texts(QStringLiteral("no time"), QString()),
        QVariant(17),
        poiMap(3000, QStringLiteral("replaced")),
        QVariantMap{{QStringLiteral("time"), 4000}},
        poiMap(3000, QStringLiteral("earlier"), QStringLiteral("first")),
        poiMap(-1000, QStringLiteral("round midnight")),
    });
    QCOMPARE(strip.timeline.getPOIs(),
             (QVariantList{poiMap(3000, QStringLiteral("earlier"), QStringLiteral("first")),
                           poiMap(4000, QString()),
                           poiMap(5000, QStringLiteral("later"), QStringLiteral("second")),
                           poiMap(86399000, QStringLiteral("round midnight"))}));
    const std::vector<QTime> expected = {timeAt(5000), timeAt(3000), timeAt(4000), timeAt(3000),
                                         timeAt(-1000)};
    QCOMPARE(strip.player.requestedTimes(), expected);
    QVERIFY(log.messages().isEmpty());
}

void TimelinePoisTest::anEmptyListKeepsAStaleSelection()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    strip.select(3000);
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(3000));
    QSignalSpy selection(&strip.timeline, &TimelineContent::selectedPoiTimeChanged);
    strip.timeline.setPOIsFromList({});
    QVERIFY(strip.timeline.getPOIs().isEmpty());
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(3000));
    QVERIFY(selection.isEmpty());

    // Whatever looks it up finds nothing, and paints nothing.
    QVERIFY(strip.timeline.getSelectedPOI().isEmpty());
    strip.timeline.enterMovePOIMode();
    QCOMPARE(strip.thumbnailColour(3000), ground);
}

void TimelinePoisTest::deletesAtTheCursor()
{
    Strip strip;
    strip.timeline.setPOIsFromList(
        {poiMap(3000, QStringLiteral("one")), poiMap(3001, QStringLiteral("two"))});
    strip.select(3000);
    const QTime selected = strip.timeline.selectedPoiTime();
    strip.timeline.setCursorPosition(timeAt(3001));
    strip.timeline.deletePoiAtPosition();
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(3000, QStringLiteral("one"))}));
    strip.timeline.deletePoiAtPosition();
    QCOMPARE(strip.timeline.getPOIs().size(), 1);
    QCOMPARE(strip.timeline.selectedPoiTime(), selected);
}

void TimelinePoisTest::deletesTheSelected()
{
    Strip strip;
    strip.timeline.setPOIsFromList(
        {poiMap(3000, QStringLiteral("one")), poiMap(9000, QStringLiteral("two"))});
    QSignalSpy selection(&strip.timeline, &TimelineContent::selectedPoiTimeChanged);
    strip.timeline.deleteSelectedPoi();
    QCOMPARE(strip.timeline.getPOIs().size(), 2);
    QCOMPARE(selection.size(), 0);
    strip.select(3000);
    strip.timeline.deleteSelectedPoi();
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(9000, QStringLiteral("two"))}));
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());
    QCOMPARE(selection.size(), 2);
}

void TimelinePoisTest::knowsWhetherTheSelectedIsThere()
{
    Strip strip;
    const QVariantList pois = {poiMap(3000, QStringLiteral("one"))};
    strip.timeline.setPOIsFromList(pois);
    QVERIFY(!strip.timeline.hasSelectedPoi());
    strip.select(3000);
    QVERIFY(strip.timeline.hasSelectedPoi());
    QSignalSpy found(&strip.timeline, &TimelineContent::hasSelectedPoiChanged);
    strip.timeline.setPOIsFromList({});
    QVERIFY(!strip.timeline.hasSelectedPoi());
    QCOMPARE(found.size(), 1);
    strip.timeline.setPOIsFromList(pois);
    QVERIFY(strip.timeline.hasSelectedPoi());
    strip.timeline.deleteSelectedPoi();
    QVERIFY(!strip.timeline.hasSelectedPoi());
}

void TimelinePoisTest::clearsAll()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    QSignalSpy selection(&strip.timeline, &TimelineContent::selectedPoiTimeChanged);
    strip.timeline.clearAllData();
    QVERIFY(strip.timeline.getPOIs().isEmpty());
    QCOMPARE(selection.size(), 0);

    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    strip.select(3000);
    strip.timeline.clearAllData();
    QVERIFY(strip.timeline.getPOIs().isEmpty());
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());
    QCOMPARE(selection.size(), 2);
}

void TimelinePoisTest::updatesTheSelectedWhateverTheTimeSays()
{
    Strip strip;
    strip.timeline.setPOIsFromList(
        {poiMap(3000, QStringLiteral("one"), QStringLiteral("old")), poiMap(9000, QString())});
    strip.select(3000);
    strip.timeline.updatePoi(timeAt(9000),
                             texts(QStringLiteral("crack"), QStringLiteral("left blade")));
    QCOMPARE(strip.timeline.getSelectedPOI(),
             poiMap(3000, QStringLiteral("crack"), QStringLiteral("left blade")));
    strip.timeline.updatePoi(timeAt(3000), {{QStringLiteral("name"), 7}});
    QCOMPARE(strip.timeline.getSelectedPOI(), poiMap(3000, QStringLiteral("7")));
    QCOMPARE(strip.timeline.getPOIs().last().toMap(), poiMap(9000, QString()));
}

void TimelinePoisTest::updatingNothingIsLogged()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    const MessageLog log;
    strip.timeline.updatePoi(timeAt(3000), texts(QStringLiteral("x"), QString()));
    QString expected;
    QDebug(&expected) << "POI not found:" << timeAt(3000) << ";"
                      << texts(QStringLiteral("x"), QString());
    QCOMPARE(log.messages(QtWarningMsg), QStringList{expected.trimmed()});
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(3000, QStringLiteral("one"))}));
}

void TimelinePoisTest::nothingIsSelectedAtFirst()
{
    Strip strip;
    QVERIFY(strip.timeline.getSelectedPOI().isEmpty());
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());
}

// --- Moving ----------------------------------------------------------------------------------

void TimelinePoisTest::moveModeNeedsASelection()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    QSignalSpy mode(&strip.timeline, &TimelineContent::movePOIModeChanged);
    strip.timeline.exitMovePOIMode();
    strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    strip.timeline.enterMovePOIMode();
    QVERIFY(!strip.timeline.movePOIMode());
    QCOMPARE(mode.size(), 0);
    strip.select(3000);
    strip.timeline.enterMovePOIMode();
    strip.timeline.enterMovePOIMode();
    QVERIFY(strip.timeline.movePOIMode());
    QCOMPARE(mode.size(), 1);
    strip.timeline.exitMovePOIMode();
    strip.timeline.exitMovePOIMode();
    QVERIFY(!strip.timeline.movePOIMode());
    QCOMPARE(mode.size(), 2);
    QCOMPARE(strip.timeline.getPOIs().size(), 1);

    // A selection that went away while moving leaves only the mode to end.
    strip.timeline.enterMovePOIMode();
    strip.timeline.clearAllData();
    strip.player.requests.clear();
    strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    QVERIFY(!strip.timeline.movePOIMode());
    QVERIFY(strip.timeline.getPOIs().isEmpty());
    QVERIFY(strip.player.requests.empty());
}

void TimelinePoisTest::movesTheSelected()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"), QStringLiteral("text"))});
    strip.player.answerAll(frameOf(Qt::green));
    deliver();
    strip.select(3000);
    strip.timeline.enterMovePOIMode();
    strip.timeline.setCursorPosition(timeAt(40000));
    QSignalSpy selection(&strip.timeline, &TimelineContent::selectedPoiTimeChanged);
    QSignalSpy mode(&strip.timeline, &TimelineContent::movePOIModeChanged);
    strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    QCOMPARE(strip.timeline.getPOIs(),
             (QVariantList{poiMap(40000, QStringLiteral("one"), QStringLiteral("text"))}));
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(40000));
    QCOMPARE(selection.size(), 1);
    QCOMPARE(mode.size(), 1);
    QCOMPARE(strip.player.requestedTimes(), std::vector<QTime>{timeAt(40000)});

    // The picture of the old place does not come along.
    QCOMPARE(strip.thumbnailColour(40000), ground);
    strip.player.answer(frameOf(Qt::blue));
    deliver();
    QCOMPARE(strip.thumbnailColour(40000), QColor(Qt::blue));
}

void TimelinePoisTest::movesOverAnother()
{
    Strip strip;
    strip.timeline.setPOIsFromList(
        {poiMap(3000, QStringLiteral("one")), poiMap(40000, QStringLiteral("lost"))});
    strip.select(3000);
    strip.timeline.enterMovePOIMode();
    strip.timeline.setCursorPosition(timeAt(40000));
    strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(40000, QStringLiteral("one"))}));
}

void TimelinePoisTest::movingOntoItsOwnPlaceLosesIt()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    strip.player.requests.clear();
    strip.select(3000);
    strip.timeline.enterMovePOIMode();
    strip.timeline.setCursorPosition(timeAt(3000));
    QSignalSpy selection(&strip.timeline, &TimelineContent::selectedPoiTimeChanged);
    strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    QVERIFY(strip.timeline.getPOIs().isEmpty());
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(3000));
    QCOMPARE(selection.size(), 1);
    QVERIFY(strip.timeline.getSelectedPOI().isEmpty());
    const MessageLog log;
    strip.player.answerAll(frameOf(Qt::green));
    deliver();
    QCOMPARE(log.messages(QtWarningMsg), QStringList{QStringLiteral("POI not found anymore")});
    QVERIFY(strip.timeline.getPOIs().isEmpty());
}

void TimelinePoisTest::movingAStaleSelectionMakesAnEmptyPoi()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
    strip.select(3000);
    strip.timeline.enterMovePOIMode();
    strip.timeline.setPOIsFromList({});
    strip.timeline.setCursorPosition(timeAt(3000));
    strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(3000, QString())}));
}

// --- Frames that arrive later ----------------------------------------------------------------

namespace {

// Leaves a point of interest that waits for its picture, with the cursor on it, at 40 s.
void makeWaitingPoi(Strip& strip, const QString& how)
{
    if (how == QLatin1String("moved")) {
        strip.timeline.setPOIsFromList({poiMap(3000, QStringLiteral("one"))});
        strip.player.requests.clear();
        strip.select(3000);
        strip.timeline.enterMovePOIMode();
    }
    strip.timeline.setCursorPosition(timeAt(40000));
    if (how == QLatin1String("added"))
        strip.timeline.addPoiAtPosition();
    else if (how == QLatin1String("moved"))
        strip.timeline.confirmNewPOIPositionAndExitMoveMode();
    else
        strip.timeline.setPOIsFromList({poiMap(40000, QStringLiteral("one"))});
}

void addRowsOfOperations()
{
    QTest::addColumn<QString>("how");
    for (const char* how : {"added", "moved", "listed"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

QString nullFrameAt(int ms)
{
    QString text;
    QDebug(&text).nospace() << "Null frame at " << timeAt(ms);
    return text;
}

} // namespace

void TimelinePoisTest::thumbnailArrives_data()
{
    addRowsOfOperations();
}

void TimelinePoisTest::thumbnailArrives()
{
    QFETCH(QString, how);
    Strip strip;
    makeWaitingPoi(strip, how);
    QCOMPARE(strip.player.requestedTimes(), std::vector<QTime>{timeAt(40000)});
    QCOMPARE(strip.thumbnailColour(40000), ground);
    const MessageLog log;
    strip.player.answer(frameOf(Qt::green));
    // Nothing of the model changes before its own thread comes to it.
    QCOMPARE(strip.thumbnailColour(40000), ground);
    deliver();
    QCOMPARE(strip.thumbnailColour(40000), QColor(Qt::green));
    QVERIFY(log.messages().isEmpty());
}

void TimelinePoisTest::nullFrameIsLogged_data()
{
    addRowsOfOperations();
}

void TimelinePoisTest::nullFrameIsLogged()
{
    QFETCH(QString, how);
    Strip strip;
    makeWaitingPoi(strip, how);
    const MessageLog log;
    strip.player.answer(QImage());
    const QString expected =
        how == QLatin1String("listed") ? QStringLiteral("Null frame") : nullFrameAt(40000);
    QCOMPARE(log.messages(QtWarningMsg), QStringList{expected});
    deliver();
    QCOMPARE(strip.timeline.getPOIs().size(), 1);
    QCOMPARE(strip.thumbnailColour(40000), ground);
}

void TimelinePoisTest::deletedPoiStaysDeleted_data()
{
    addRowsOfOperations();
}

void TimelinePoisTest::deletedPoiStaysDeleted()
{
    QFETCH(QString, how);
    Strip strip;
    makeWaitingPoi(strip, how);
    strip.timeline.deletePoiAtPosition();
    const MessageLog log;
    strip.player.answer(frameOf(Qt::green));
    QVERIFY(log.messages().isEmpty());
    deliver();
    QCOMPARE(log.messages(QtWarningMsg), QStringList{QStringLiteral("POI not found anymore")});
    QVERIFY(strip.timeline.getPOIs().isEmpty());
}

void TimelinePoisTest::replacedPoiTakesTheFrame()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(40000, QStringLiteral("first"))});
    strip.timeline.setPOIsFromList({poiMap(40000, QStringLiteral("second"))});
    strip.player.answer(frameOf(Qt::green));
    deliver();
    QCOMPARE(strip.thumbnailColour(40000), QColor(Qt::green));
    QCOMPARE(strip.timeline.getPOIs(), (QVariantList{poiMap(40000, QStringLiteral("second"))}));
    strip.player.answer(frameOf(Qt::blue));
    deliver();
    QCOMPARE(strip.thumbnailColour(40000), QColor(Qt::blue));
}

void TimelinePoisTest::framesMayComeInAnyOrder()
{
    Strip strip;
    strip.timeline.setPOIsFromList(
        {poiMap(5000, QString()), poiMap(25000, QString()), poiMap(45000, QString())});
    strip.player.answerNth(2, frameOf(Qt::red));
    strip.player.answerNth(0, frameOf(Qt::green));
    strip.player.answerNth(0, frameOf(Qt::blue));
    deliver();
    QCOMPARE(strip.thumbnailColour(5000), QColor(Qt::green));
    QCOMPARE(strip.thumbnailColour(25000), QColor(Qt::blue));
    QCOMPARE(strip.thumbnailColour(45000), QColor(Qt::red));
}

void TimelinePoisTest::withoutAPlayerNoFrameIsAskedFor()
{
    TimelineContent timeline;
    timeline.addPoiAtPosition();
    QCOMPARE(timeline.getPOIs().size(), 1);
    {
        FramePlayer player;
        timeline.setVideoPlayer(&player);
    }
    timeline.setPOIsFromList({poiMap(3000, QString())});
    QCOMPARE(timeline.getPOIs().size(), 1);
}

void TimelinePoisTest::aDestroyedItemNeedsNoFrames()
{
    FramePlayer player;
    auto timeline = std::make_unique<TimelineContent>();
    timeline->setVideoPlayer(&player);
    timeline->setPOIsFromList(
        {poiMap(3000, QString()), poiMap(4000, QString()), poiMap(5000, QString())});
    const MessageLog log;
    player.answer(frameOf(Qt::green)); // waits for the item's thread when the item goes
    timeline.reset();
    player.answer(frameOf(Qt::green));
    player.answer(QImage());
    deliver();
    QCOMPARE(log.messages(), QStringList{QStringLiteral("Null frame")});
}

void TimelinePoisTest::thumbnailsDoNotHoldTheFramesMemory()
{
    Strip strip;
    strip.timeline.setPOIsFromList({poiMap(40000, QString())});
    // A frame of just the thumbnail's size lies on memory that is written again right afterwards.
    QImage memory = frameOf(Qt::green, QSize(106, 60));
    strip.player.answer(QImage(memory.bits(), memory.width(), memory.height(),
                               memory.bytesPerLine(), memory.format()));
    memory.fill(Qt::red);
    deliver();
    QCOMPARE(strip.thumbnailColour(40000), QColor(Qt::green));
}

QTEST_MAIN(TimelinePoisTest)
#include "TimelinePoisTest.moc"
