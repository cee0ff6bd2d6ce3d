#include "Support/MessageLog.h"
#include "timelineSupport.h"

#include "Timeline/TimelinePoi.h"

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

// A minute at 100 ms per pixel, all of it in view.
struct Strip
{
    Strip()
    {
        timeline.setVideoPlayer(&player);
        timeline.setSize(QSizeF(720, 160));
        timeline.setContentWidth(720);
    }

    // Selects the mark at `ms` with the pointer, as the user does.
    void select(int ms)
    {
        painted(timeline);
        QHoverEvent hover(QEvent::HoverMove, QPointF(ms / 100, 60), QPointF());
        QCoreApplication::sendEvent(&timeline, &hover);
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(ms / 100, 60), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&timeline, &press);
    }

    // Where the thumbnail of the mark at `ms` is painted, if it has one.
    QColor thumbnailColour(int ms) { return painted(timeline).pixelColor(ms / 100 + 20, 70); }

    FramePlayer player;
    TimelineContent timeline;
};

const QColor ground(169, 169, 169);

} // namespace

class TimelinePoiTest : public QObject
{
    Q_OBJECT

private slots:
    void scalesFrames_data();
    void scalesFrames();
    void aNullFrameKeepsTheThumbnail();
    void drawsAFlag_data();
    void drawsAFlag();
    void drawsTheNameInsideTheFlag();
    void aFlagWithoutThumbnailIsOnePixelWide();
    void drawsAtAnyX_data();
    void drawsAtAnyX();

    void addsOncePerPlace();
    void listsInAscendingTime();
    void replacesAllByAList();
    void anEmptyListKeepsAStaleSelection();
    void deletesAtTheCursor();
    void deletesTheSelected();
    void clearsAll();
    void updatesTheSelectedWhateverTheTimeSays();
    void updatingNothingIsTold();
    void nothingIsSelectedAtFirst();

    void moveModeNeedsASelection();
    void movesTheSelected();
    void movesOverAnother();
    void movingOntoItsOwnPlaceLosesIt();
    void movingAStaleSelectionMakesAnEmptyMark();

    void thumbnailArrives_data();
    void thumbnailArrives();
    void nullFrameIsTold_data();
    void nullFrameIsTold();
    void aDeletedMarkStaysDeleted_data();
    void aDeletedMarkStaysDeleted();
    void aReplacedMarkTakesTheFrame();
    void framesMayComeInAnyOrder();
    void withoutAPlayerNoFrameIsAskedFor();
    void aDestroyedItemNeedsNoFrames();
    void thumbnailsDoNotHoldTheFramesMemory();
};

// --- The record ------------------------------------------------------------------------------

void TimelinePoiTest::scalesFrames_data()
{
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<QSize>("thumbnail");
    QTest::newRow("wide") << QSize(1920, 1080) << QSize(106, 60);
    QTest::newRow("tall") << QSize(1080, 1920) << QSize(60, 106);
    QTest::newRow("square") << QSize(500, 500) << QSize(60, 60);
    QTest::newRow("smaller than a thumbnail") << QSize(30, 20) << QSize(90, 60);
    QTest::newRow("a thumbnail already") << QSize(106, 60) << QSize(106, 60);
}

void TimelinePoiTest::scalesFrames()
{
    QFETCH(QSize, frame);
    QFETCH(QSize, thumbnail);
    QImage image(frame, QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixelColor(x, y, QColor(x % 256, y % 256, (x * 7 + y * 3) % 256));
    }
    const TimelinePoi poi(timeAt(5), image);
    QCOMPARE(poi.time(), timeAt(5));
    QCOMPARE(poi.thumbnailWidth(), thumbnail.width());
    QCOMPARE(poi.thumbnail().size(), thumbnail);
    QCOMPARE(poi.thumbnail(),
             image.scaled(thumbnail, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    QCOMPARE(thumbnailOf(poi.thumbnail()), poi.thumbnail());
}

void TimelinePoiTest::aNullFrameKeepsTheThumbnail()
{
    TimelinePoi poi(timeAt(5), QImage());
    QCOMPARE(poi.thumbnailWidth(), 0);
    poi.setThumbnail(frameOf(Qt::red));
    QCOMPARE(poi.thumbnailWidth(), 106);
    poi.setThumbnail(QImage());
    QCOMPARE(poi.thumbnailWidth(), 106);
}

void TimelinePoiTest::drawsAFlag_data()
{
    QTest::addColumn<bool>("hovered");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<bool>("dimmed");
    QTest::addColumn<bool>("omitThumbnail");
    QTest::addColumn<QColor>("flag");
    QTest::addColumn<QColor>("stem");
    QTest::addColumn<QColor>("thumbnail");
    const QColor white(Qt::white);
    const QColor red(255, 0, 0);
    const QColor green(0, 255, 0);
    QTest::newRow("plain") << false << false << false << false << ground << QColor(0, 0, 0)
                           << green;
    QTest::newRow("hovered") << true << false << false << false << white << QColor(0, 0, 0)
                             << green;
    QTest::newRow("selected") << false << true << false << false << red << QColor(0, 0, 0) << green;
    QTest::newRow("selected wins over hovered")
        << true << true << false << false << red << QColor(0, 0, 0) << green;
    QTest::newRow("no thumbnail") << true << true << false << true << red << QColor(0, 0, 0)
                                  << QColor(0, 0, 200);
    // 0.3 of the colour on 0.7 of the blue below it
    QTest::newRow("dimmed") << false << true << true << false << QColor(77, 0, 140)
                            << QColor(0, 0, 140) << QColor(0, 77, 140);
}

void TimelinePoiTest::drawsAFlag()
{
    QFETCH(bool, hovered);
    QFETCH(bool, selected);
    QFETCH(bool, dimmed);
    QFETCH(bool, omitThumbnail);
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(QColor(0, 0, 200));
    QPainter painter(&image);
    const TimelinePoi poi(timeAt(0), frameOf(QColor(0, 255, 0), QSize(60, 60)));
    PoiLook look;
    look.hovered = hovered;
    look.selected = selected;
    look.dimmed = dimmed;
    look.omitThumbnail = omitThumbnail;
    poi.drawPoi(painter, 20, look);
    QCOMPARE(painter.opacity(), 1.0);
    painter.end();

    const auto differ = [](const QColor& a, const QColor& b) {
        return qMax(qAbs(a.red() - b.red()),
                    qMax(qAbs(a.green() - b.green()), qAbs(a.blue() - b.blue())));
    };
    QFETCH(QColor, flag);
    QFETCH(QColor, stem);
    QFETCH(QColor, thumbnail);
    const QColor ground2(0, 0, 200);
    QVERIFY(differ(image.pixelColor(80, 33), flag) <= 1);
    QVERIFY(differ(image.pixelColor(80, 46), flag) <= 1);
    QCOMPARE(image.pixelColor(81, 40), ground2);
    QCOMPARE(image.pixelColor(50, 32), ground2);
    QVERIFY(differ(image.pixelColor(20, 26), stem) <= 1);
    QVERIFY(differ(image.pixelColor(20, 106), stem) <= 1);
    QCOMPARE(image.pixelColor(20, 108), ground2);
    QVERIFY2(differ(image.pixelColor(21, 47), thumbnail) <= 2,
             qPrintable(image.pixelColor(21, 47).name()));
    QVERIFY(differ(image.pixelColor(80, 106), thumbnail) <= 2);
    QCOMPARE(image.pixelColor(81, 106), ground2);
    QCOMPARE(image.pixelColor(80, 107), ground2);
}

void TimelinePoiTest::drawsTheNameInsideTheFlag()
{
    for (const bool selected : {false, true}) {
        QImage image(200, 160, QImage::Format_RGB32);
        image.fill(QColor(0, 0, 200));
        QPainter painter(&image);
        TimelinePoi poi(timeAt(0), frameOf(QColor(0, 255, 0), QSize(60, 60)));
        poi.setName(QString(5000, QLatin1Char('M')));
        PoiLook look;
        look.selected = selected;
        poi.drawPoi(painter, 20, look);
        painter.end();
        int inkPixels = 0;
        for (int y = 33; y < 47; ++y) {
            for (int x = 23; x < 81; ++x)
                inkPixels += image.pixelColor(x, y) == QColor(selected ? Qt::white : Qt::black);
            QCOMPARE(image.pixelColor(82, y), QColor(0, 0, 200));
        }
        QVERIFY2(inkPixels > 20, qPrintable(QString::number(inkPixels)));
    }
}

void TimelinePoiTest::aFlagWithoutThumbnailIsOnePixelWide()
{
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(QColor(0, 0, 200));
    QPainter painter(&image);
    TimelinePoi poi(timeAt(0), QImage());
    PoiLook look;
    look.selected = true;
    poi.drawPoi(painter, 20, look);
    painter.end();
    // The stem is drawn over all of the flag.
    for (int y = 33; y < 47; ++y) {
        QCOMPARE(image.pixelColor(20, y), QColor(0, 0, 0));
        QCOMPARE(image.pixelColor(19, y), QColor(0, 0, 200));
        QCOMPARE(image.pixelColor(21, y), QColor(0, 0, 200));
    }
}

void TimelinePoiTest::drawsAtAnyX_data()
{
    QTest::addColumn<int>("x");
    QTest::newRow("greatest") << std::numeric_limits<int>::max();
    QTest::newRow("far to the right") << 1000000;
    QTest::newRow("just outside on the right") << 200;
    QTest::newRow("least") << std::numeric_limits<int>::min();
    QTest::newRow("far to the left") << -1000000;
    QTest::newRow("just outside on the left") << -108;
}

void TimelinePoiTest::drawsAtAnyX()
{
    QFETCH(int, x);
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(Qt::blue);
    const QImage before = image;
    QPainter painter(&image);
    TimelinePoi poi(timeAt(0), frameOf(Qt::green));
    poi.setName(QStringLiteral("far"));
    poi.drawPoi(painter, x, PoiLook());
    painter.end();
    QCOMPARE(image, before);
}

// --- The user's operations -------------------------------------------------------------------

void TimelinePoiTest::addsOncePerPlace()
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

void TimelinePoiTest::listsInAscendingTime()
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

void TimelinePoiTest::replacesAllByAList()
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

void TimelinePoiTest::anEmptyListKeepsAStaleSelection()
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

void TimelinePoiTest::deletesAtTheCursor()
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

void TimelinePoiTest::deletesTheSelected()
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

void TimelinePoiTest::clearsAll()
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

void TimelinePoiTest::updatesTheSelectedWhateverTheTimeSays()
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

void TimelinePoiTest::updatingNothingIsTold()
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

void TimelinePoiTest::nothingIsSelectedAtFirst()
{
    Strip strip;
    QVERIFY(strip.timeline.getSelectedPOI().isEmpty());
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());
}

// --- Moving ----------------------------------------------------------------------------------

void TimelinePoiTest::moveModeNeedsASelection()
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

void TimelinePoiTest::movesTheSelected()
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

void TimelinePoiTest::movesOverAnother()
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

void TimelinePoiTest::movingOntoItsOwnPlaceLosesIt()
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

void TimelinePoiTest::movingAStaleSelectionMakesAnEmptyMark()
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

// Leaves a mark that waits for its picture, with the cursor on it, at 40 s.
void makeWaitingMark(Strip& strip, const QString& how)
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

void TimelinePoiTest::thumbnailArrives_data()
{
    addRowsOfOperations();
}

void TimelinePoiTest::thumbnailArrives()
{
    QFETCH(QString, how);
    Strip strip;
    makeWaitingMark(strip, how);
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

void TimelinePoiTest::nullFrameIsTold_data()
{
    addRowsOfOperations();
}

void TimelinePoiTest::nullFrameIsTold()
{
    QFETCH(QString, how);
    Strip strip;
    makeWaitingMark(strip, how);
    const MessageLog log;
    strip.player.answer(QImage());
    const QString expected =
        how == QLatin1String("listed") ? QStringLiteral("Null frame") : nullFrameAt(40000);
    QCOMPARE(log.messages(QtWarningMsg), QStringList{expected});
    deliver();
    QCOMPARE(strip.timeline.getPOIs().size(), 1);
    QCOMPARE(strip.thumbnailColour(40000), ground);
}

void TimelinePoiTest::aDeletedMarkStaysDeleted_data()
{
    addRowsOfOperations();
}

void TimelinePoiTest::aDeletedMarkStaysDeleted()
{
    QFETCH(QString, how);
    Strip strip;
    makeWaitingMark(strip, how);
    strip.timeline.deletePoiAtPosition();
    const MessageLog log;
    strip.player.answer(frameOf(Qt::green));
    QVERIFY(log.messages().isEmpty());
    deliver();
    QCOMPARE(log.messages(QtWarningMsg), QStringList{QStringLiteral("POI not found anymore")});
    QVERIFY(strip.timeline.getPOIs().isEmpty());
}

void TimelinePoiTest::aReplacedMarkTakesTheFrame()
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

void TimelinePoiTest::framesMayComeInAnyOrder()
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

void TimelinePoiTest::withoutAPlayerNoFrameIsAskedFor()
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

void TimelinePoiTest::aDestroyedItemNeedsNoFrames()
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

void TimelinePoiTest::thumbnailsDoNotHoldTheFramesMemory()
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

QTEST_MAIN(TimelinePoiTest)
#include "TimelinePoiTest.moc"
