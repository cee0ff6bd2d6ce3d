#include "Support/MessageLog.h"
#include "timelineSupport.h"

#include <QQuickWindow>
#include <QSGRendererInterface>
#include <limits>

using namespace corv;
using namespace corv::test;

namespace {

const QColor ground(169, 169, 169);
const QColor pastEnd(120, 120, 120);
const QColor ruler(119, 119, 119);
const QColor white(255, 255, 255);
const QColor endMark(55, 55, 55);

// A minute of video on an item 720 pixels wide, at first at 100 ms per pixel, all of it in view.
// Whatever it signals is noted, in order.
struct Strip
{
    explicit Strip(int contentWidth = 720)
    {
        timeline.setVideoPlayer(&player);
        timeline.setSize(QSizeF(720, 160));
        timeline.setContentWidth(contentWidth);
        const auto note = [this](const QString& text) { return [this, text] { notes << text; }; };
        QObject::connect(&timeline, &TimelineContent::durationChanged, note("duration"));
        QObject::connect(&timeline, &TimelineContent::contentWidthChanged, note("contentWidth"));
        QObject::connect(&timeline, &TimelineContent::contentXChanged, [this] {
            notes << QStringLiteral("contentX %1").arg(timeline.contentX());
        });
        QObject::connect(&timeline, &TimelineContent::cursorPositionChanged, [this] {
            notes << QStringLiteral("cursor %1").arg(msOfTime(timeline.cursorPosition()));
        });
        QObject::connect(&timeline, &TimelineContent::msPerPxChanged, note("msPerPx"));
        QObject::connect(&timeline, &TimelineContent::seekRequest, [this](QTime time) {
            notes << QStringLiteral("seek %1").arg(msOfTime(time));
        });
        QObject::connect(&timeline, &TimelineContent::selectedPoiTimeChanged, [this] {
            const QTime selected = timeline.selectedPoiTime();
            notes << (selected.isValid() ? QStringLiteral("select %1").arg(msOfTime(selected))
                                         : QStringLiteral("select none"));
        });
        QObject::connect(&timeline, &TimelineContent::movePOIModeChanged, note("moveMode"));
        QObject::connect(&timeline, &TimelineContent::poiDoubleClicked, [this](QTime time) {
            notes << QStringLiteral("doubleClicked %1").arg(msOfTime(time));
        });
        QObject::connect(&timeline, &TimelineContent::clicked, note("clicked"));
    }

    QStringList taken() { return std::exchange(notes, {}); }

    // Each gives whether the event was accepted, having set the flag the other way round first
    // where `accepted` says so.
    bool mouse(QEvent::Type type, int x, int y)
    {
        QMouseEvent event(type, QPointF(x, y), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&timeline, &event);
        return event.isAccepted();
    }
    bool press(int x, int y) { return mouse(QEvent::MouseButtonPress, x, y); }
    bool release(int x, int y) { return mouse(QEvent::MouseButtonRelease, x, y); }
    bool move(int x, int y) { return mouse(QEvent::MouseMove, x, y); }
    bool doubleClick(int x, int y) { return mouse(QEvent::MouseButtonDblClick, x, y); }

    bool hover(int x, int y, QEvent::Type type = QEvent::HoverMove, bool accepted = true)
    {
        QHoverEvent event(type, QPointF(x, y), QPointF());
        event.setAccepted(accepted);
        QCoreApplication::sendEvent(&timeline, &event);
        return event.isAccepted();
    }

    void wheel(const QPoint& delta, Qt::KeyboardModifiers modifiers, int x = 0)
    {
        QWheelEvent event(QPointF(x, 60), QPointF(x, 60), QPoint(), delta, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&timeline, &event);
    }

    // Marks with thumbnails of one colour, 60 pixels wide.
    void addMarks(const QList<int>& timesMs, const QColor& colour = Qt::green)
    {
        QVariantList list;
        for (const int ms : timesMs)
            list.append(QVariantMap{{QStringLiteral("time"), ms}});
        timeline.setPOIsFromList(list);
        player.answerAll(frameOf(colour, QSize(120, 120)));
        deliver();
        painted(timeline);
    }

    FramePlayer player;
    TimelineContent timeline;
    QStringList notes;
};

// Adds up what differs from the colour along a line.
QList<int> columnsOfColour(const QImage& image, int y, const QColor& colour)
{
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y) == colour)
            columns.append(x);
    }
    return columns;
}

} // namespace

class TimelineContentTest : public QObject
{
    Q_OBJECT

private slots:
    // The platform without a screen has no OpenGL.
    void initTestCase() { QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software); }

    void startsAsStated();
    void settersTellInOrder();
    void settersIgnoreWhatIsUnchangedOrInvalid();
    void theScaleFollowsDurationAndWidth();
    void theCursorIsClamped_data();
    void theCursorIsClamped();
    void theCursorIsKeptInView_data();
    void theCursorIsKeptInView();

    void wheelScrolls_data();
    void wheelScrolls();
    void wheelZooms_data();
    void wheelZooms();
    void wheelZoomKeepsTheTimeUnderThePointer();
    void wheelWithoutDeltaDoesNothing();

    void pressMovesTheCursorAndSeeks_data();
    void pressMovesTheCursorAndSeeks();
    void pressOnTheRulerDrags();
    void pressBelowTheRulerDoesNotDrag_data();
    void pressBelowTheRulerDoesNotDrag();
    void dragPastTheStartWraps();
    void dragDoesNotScrollBeforeTheRelease();
    void pressOnAMarkSelectsAndSeeks();
    void pressOnBareStripClearsTheSelection();
    void pressInMoveModeOnlyMovesTheCursor();
    void doubleClickOnAMark();

    void hoverHitsMarks_data();
    void hoverHitsMarks();
    void theLatestOfOverlappingMarksIsHit();
    void aMarkWithoutThumbnailIsOnePixelWide();
    void hoverAcceptsInOppositeSenses_data();
    void hoverAcceptsInOppositeSenses();
    void hoverChangesTheCursorShape();
    void nothingIsHitBeforeTheFirstPaint();
    void hitTestUsesTheRangeOfTheLastPaint();

    void paintsGroundRulerAndEnd();
    void paintsTheZonePastTheEnd();
    void paintsTicksUpToTheEnd();
    void paintsLabels();
    void paintsTheCursor();
    void paintsMarksInOrder();
    void paintsTheHoveredMarkOnTop();
    void paintsMoveMode();
    void marksOutOfViewCostNothing();
    void aHundredThousandMarksArePaintedInTime();
    void goneMarksArePaintedHarmlessly();
    void oddScalesArePaintedHarmlessly_data();
    void oddScalesArePaintedHarmlessly();
    void worksInAWindow();
};

void TimelineContentTest::startsAsStated()
{
    TimelineContent timeline;
    QCOMPARE(timeline.duration(), timeAt(60000));
    QCOMPARE(timeline.contentWidth(), 0);
    QCOMPARE(timeline.contentX(), 0);
    QCOMPARE(timeline.cursorPosition(), timeAt(0));
    QCOMPARE(timeline.msPerPx(), 0.0F);
    QVERIFY(!timeline.selectedPoiTime().isValid());
    QVERIFY(!timeline.movePOIMode());
    QVERIFY(!timeline.logParser());
    QVERIFY(!timeline.videoPlayer());
    QCOMPARE(timeline.acceptedMouseButtons(), Qt::MouseButtons(Qt::AllButtons));
    QVERIFY(timeline.acceptHoverEvents());
}

void TimelineContentTest::settersTellInOrder()
{
    Strip strip;
    strip.timeline.setDuration(timeAt(120000));
    QCOMPARE(strip.taken(), (QStringList{"msPerPx", "duration"}));
    strip.timeline.setContentWidth(1320);
    QCOMPARE(strip.taken(), (QStringList{"msPerPx", "contentWidth"}));
    strip.timeline.setContentX(-4000);
    QCOMPARE(strip.taken(), QStringList{"contentX -4000"});
    strip.timeline.setContentX(50);
    QCOMPARE(strip.taken(), QStringList{"contentX 50"});
    strip.timeline.setCursorPosition(timeAt(30000));
    QCOMPARE(strip.taken(), QStringList{"cursor 30000"});
}

void TimelineContentTest::settersIgnoreWhatIsUnchangedOrInvalid()
{
    Strip strip;
    strip.timeline.setDuration(timeAt(60000));
    strip.timeline.setDuration(QTime());
    strip.timeline.setContentWidth(720);
    strip.timeline.setContentX(0);
    strip.timeline.setCursorPosition(timeAt(0));
    strip.timeline.setCursorPosition(QTime());
    QVERIFY(strip.taken().isEmpty());
    QCOMPARE(strip.timeline.duration(), timeAt(60000));
    QCOMPARE(strip.timeline.cursorPosition(), timeAt(0));
}

void TimelineContentTest::theScaleFollowsDurationAndWidth()
{
    Strip strip;
    QCOMPARE(strip.timeline.msPerPx(), 100.0F);
    strip.timeline.setDuration(timeAt(30000));
    QCOMPARE(strip.timeline.msPerPx(), 50.0F);
    strip.timeline.setContentWidth(3120);
    QCOMPARE(strip.timeline.msPerPx(), 10.0F);
}

void TimelineContentTest::theCursorIsClamped_data()
{
    QTest::addColumn<QTime>("cursor");
    QTest::addColumn<QTime>("expected");
    QTest::newRow("within") << timeAt(20000) << timeAt(20000);
    QTest::newRow("at the end") << timeAt(60000) << timeAt(60000);
    QTest::newRow("past the end") << timeAt(60001) << timeAt(60000);
    QTest::newRow("near midnight") << timeAt(-1) << timeAt(60000);
}

void TimelineContentTest::theCursorIsClamped()
{
    QFETCH(QTime, cursor);
    QFETCH(QTime, expected);
    Strip strip;
    strip.timeline.setCursorPosition(cursor);
    QCOMPARE(strip.timeline.cursorPosition(), expected);
    QVERIFY(!strip.taken().filter(QStringLiteral("seek")).size());
}

void TimelineContentTest::theCursorIsKeptInView_data()
{
    QTest::addColumn<int>("contentX");
    QTest::addColumn<int>("cursorMs");
    QTest::addColumn<QStringList>("notes");
    // 10 ms per pixel: the strip has 6120 pixels, the item 720
    QTest::newRow("in view") << 1000 << 11000 << QStringList{"cursor 11000"};
    QTest::newRow("in view at the right") << 1000 << 16200 << QStringList{"cursor 16200"};
    QTest::newRow("too near the left")
        << 1000 << 10990 << QStringList{"contentX 999", "cursor 10990"};
    QTest::newRow("too near the right")
        << 1000 << 16210 << QStringList{"contentX 1001", "cursor 16210"};
    QTest::newRow("left of the strip's margin, and clamped")
        << 1000 << 500 << QStringList{"contentX -50", "contentX 0", "cursor 500"};
    QTest::newRow("at the end: the margin past it is wide enough")
        << 1000 << 60000 << QStringList{"contentX 5380", "cursor 60000"};
    QTest::newRow("scrolled past the limit, and clamped")
        << 5990 << 60000 << QStringList{"contentX 5900", "contentX 5400", "cursor 60000"};
}

void TimelineContentTest::theCursorIsKeptInView()
{
    QFETCH(int, contentX);
    QFETCH(int, cursorMs);
    QFETCH(QStringList, notes);
    Strip strip(6120);
    strip.timeline.setContentX(contentX);
    strip.taken();
    strip.timeline.setCursorPosition(timeAt(cursorMs));
    QCOMPARE(strip.taken(), notes);
}

// --- Wheel -----------------------------------------------------------------------------------

void TimelineContentTest::wheelScrolls_data()
{
    QTest::addColumn<QPoint>("delta");
    QTest::addColumn<int>("contentX");
    QTest::addColumn<QStringList>("notes");
    QTest::newRow("forward: later") << QPoint(0, 120) << 1000 << QStringList{"contentX 1120"};
    QTest::newRow("back: earlier") << QPoint(0, -120) << 1000 << QStringList{"contentX 880"};
    QTest::newRow("sideways") << QPoint(15, 0) << 1000 << QStringList{"contentX 1120"};
    QTest::newRow("sideways back") << QPoint(-15, 0) << 1000 << QStringList{"contentX 880"};
    QTest::newRow("one forward counts as forward")
        << QPoint(-15, 1) << 1000 << QStringList{"contentX 1120"};
    QTest::newRow("no farther than the start")
        << QPoint(0, -120) << 50 << QStringList{"contentX -70", "contentX 0"};
    QTest::newRow("no farther than the end")
        << QPoint(0, 120) << 5350 << QStringList{"contentX 5470", "contentX 5400"};
}

void TimelineContentTest::wheelScrolls()
{
    QFETCH(QPoint, delta);
    QFETCH(int, contentX);
    QFETCH(QStringList, notes);
    Strip strip(6120);
    strip.timeline.setContentX(contentX);
    strip.taken();
    strip.wheel(delta, Qt::NoModifier);
    QCOMPARE(strip.taken(), notes);
}

void TimelineContentTest::wheelZooms_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("contentX");
    QTest::addColumn<int>("delta");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("newWidth");
    QTest::addColumn<int>("newContentX");
    // at 6120 the scale is 10 ms/px; at 7344 it is 60000/7224; at 5100, 60000/4980
    QTest::newRow("in, at the left edge") << 6120 << 1000 << 120 << 0 << 7344 << 1204;
    QTest::newRow("in, under the pointer") << 6120 << 1000 << 120 << 300 << 7344 << 1265;
    QTest::newRow("out, at the left edge") << 6120 << 1000 << -120 << 0 << 5100 << 830;
    QTest::newRow("out, under the pointer") << 6120 << 1000 << -120 << 300 << 5100 << 779;
    QTest::newRow("out, and the end comes into view") << 6120 << 5400 << -120 << 0 << 5100 << 4380;
    QTest::newRow("no narrower than the item") << 800 << 80 << -120 << 700 << 720 << 0;
    QTest::newRow("no wider than 200 px per ms") << 11000000 << 0 << 120 << 0 << 12000000 << 0;
}

void TimelineContentTest::wheelZooms()
{
    QFETCH(int, width);
    QFETCH(int, contentX);
    QFETCH(int, delta);
    QFETCH(int, x);
    Strip strip(width);
    strip.timeline.setContentX(contentX);
    strip.taken();
    strip.wheel(QPoint(0, delta), Qt::ControlModifier, x);
    QTEST(strip.timeline.contentWidth(), "newWidth");
    QTEST(strip.timeline.contentX(), "newContentX");
    const QStringList notes = strip.taken();
    QCOMPARE(notes.mid(0, 2), (QStringList{"msPerPx", "contentWidth"}));
    QVERIFY(notes.filter(QStringLiteral("cursor")).isEmpty());
}

void TimelineContentTest::wheelZoomKeepsTheTimeUnderThePointer()
{
    for (const Qt::KeyboardModifier modifier :
         {Qt::ControlModifier, Qt::ShiftModifier, Qt::AltModifier, Qt::MetaModifier}) {
        Strip strip(20000);
        strip.timeline.setContentX(7000);
        const int before = static_cast<int>((7000 + 350) * strip.timeline.msPerPx());
        for (int step = 0; step < 5; ++step)
            strip.wheel(QPoint(0, 120), modifier, 350);
        for (int step = 0; step < 10; ++step)
            strip.wheel(QPoint(0, -120), modifier, 350);
        const float after =
            static_cast<float>(strip.timeline.contentX() + 350) * strip.timeline.msPerPx();
        QVERIFY2(qAbs(after - static_cast<float>(before)) < 60, qPrintable(QString::number(after)));
        QVERIFY(strip.timeline.contentWidth() < 20000);
    }
}

void TimelineContentTest::wheelWithoutDeltaDoesNothing()
{
    Strip strip(6120);
    strip.timeline.setContentX(-5);
    strip.taken();
    strip.wheel(QPoint(), Qt::NoModifier);
    strip.wheel(QPoint(), Qt::ControlModifier);
    QVERIFY(strip.taken().isEmpty());
    QCOMPARE(strip.timeline.contentX(), -5);
}

// --- Mouse -----------------------------------------------------------------------------------

void TimelineContentTest::pressMovesTheCursorAndSeeks_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<QStringList>("notes");
    QTest::newRow("on the strip") << 200 << 100
                                  << QStringList{"clicked", "cursor 20000", "seek 20000"};
    QTest::newRow("between ruler and hover band")
        << 200 << 30 << QStringList{"clicked", "cursor 20000", "seek 20000"};
    QTest::newRow("past the end: the seek is not clamped")
        << 650 << 100
        << QStringList{"clicked", "contentX 80", "contentX 0", "cursor 60000", "seek 65000"};
}

void TimelineContentTest::pressMovesTheCursorAndSeeks()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(QStringList, notes);
    Strip strip;
    painted(strip.timeline);
    strip.hover(x, y);
    QVERIFY(strip.press(x, y));
    QStringList taken = strip.taken();
    // At the item's width the cursor's margin pushes the view, and the limit pulls it back.
    QCOMPARE(taken.first(), notes.first());
    QCOMPARE(taken.mid(taken.size() - 2), notes.mid(notes.size() - 2));
    QCOMPARE(strip.timeline.contentX(), 0);
}

void TimelineContentTest::pressOnTheRulerDrags()
{
    Strip strip;
    painted(strip.timeline);
    strip.hover(200, 24);
    strip.press(200, 24);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "cursor 20000", "seek 20000"}));
    strip.move(300, 90);
    QCOMPARE(strip.taken(), (QStringList{"cursor 30000", "seek 30000"}));
    strip.move(900, 90);
    QCOMPARE(strip.taken(), (QStringList{"cursor 60000", "seek 60000"}));
    strip.move(310, 90);
    strip.taken();
    strip.release(310, 90);
    QVERIFY(strip.taken().isEmpty());
    strip.move(400, 90);
    QVERIFY(strip.taken().isEmpty());
}

void TimelineContentTest::pressBelowTheRulerDoesNotDrag_data()
{
    QTest::addColumn<int>("y");
    QTest::newRow("just below the ruler") << 25;
    QTest::newRow("between ruler and hover band") << 36;
    QTest::newRow("bare strip") << 100;
}

void TimelineContentTest::pressBelowTheRulerDoesNotDrag()
{
    QFETCH(int, y);
    Strip strip;
    strip.addMarks({18000});
    strip.hover(200, y);
    if (y < 37) {
        QVERIFY(strip.press(200, y));
        QCOMPARE(strip.taken(), (QStringList{"clicked", "cursor 20000", "seek 20000"}));
    } else {
        strip.hover(100, y);
        strip.press(100, y);
        QCOMPARE(strip.taken().last(), QStringLiteral("seek 10000"));
    }
    strip.move(300, y);
    strip.release(300, y);
    QVERIFY(strip.taken().isEmpty());
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());
}

void TimelineContentTest::dragPastTheStartWraps()
{
    Strip strip;
    painted(strip.timeline);
    strip.hover(200, 10);
    strip.press(200, 10);
    strip.taken();
    strip.move(-1, 10);
    QCOMPARE(strip.taken(), (QStringList{"cursor 60000", "seek 60000"}));
}

void TimelineContentTest::dragDoesNotScrollBeforeTheRelease()
{
    Strip strip(6120);
    strip.timeline.setContentX(1000);
    painted(strip.timeline);
    strip.hover(200, 10);
    strip.press(200, 10);
    strip.taken();
    strip.move(710, 10);
    QCOMPARE(strip.taken(), (QStringList{"cursor 17100", "seek 17100"}));
    strip.release(710, 10);
    QCOMPARE(strip.taken(), QStringList{"contentX 1090"});
}

void TimelineContentTest::pressOnAMarkSelectsAndSeeks()
{
    Strip strip;
    strip.addMarks({20000});
    strip.hover(230, 100);
    QVERIFY(strip.press(230, 100));
    QCOMPARE(strip.taken(), (QStringList{"clicked", "select 20000", "seek 20000"}));
    QCOMPARE(strip.timeline.cursorPosition(), timeAt(0));
    strip.move(300, 100);
    QVERIFY(strip.taken().isEmpty());
    strip.release(300, 100);
    strip.press(230, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "seek 20000"}));
}

void TimelineContentTest::pressOnBareStripClearsTheSelection()
{
    Strip strip;
    strip.addMarks({20000});
    strip.hover(230, 100);
    strip.press(230, 100);
    strip.taken();
    strip.hover(400, 100);
    strip.press(400, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "select none", "cursor 40000", "seek 40000"}));
}

void TimelineContentTest::pressInMoveModeOnlyMovesTheCursor()
{
    Strip strip;
    strip.addMarks({20000, 40000});
    strip.hover(230, 100);
    strip.press(230, 100);
    strip.timeline.enterMovePOIMode();
    strip.taken();
    strip.hover(430, 100);
    strip.press(430, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "cursor 43000", "seek 43000"}));
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(20000));
}

void TimelineContentTest::doubleClickOnAMark()
{
    Strip strip;
    strip.addMarks({20000});
    strip.hover(230, 100);
    QVERIFY(strip.doubleClick(230, 100));
    QCOMPARE(strip.taken(), QStringList{"doubleClicked 20000"});
    strip.press(230, 100);
    strip.timeline.enterMovePOIMode();
    strip.taken();
    QVERIFY(!strip.doubleClick(230, 100));
    strip.timeline.exitMovePOIMode();
    strip.taken();
    strip.hover(500, 100);
    QVERIFY(!strip.doubleClick(500, 100));
    QVERIFY(strip.taken().isEmpty());
}

// --- Hover -----------------------------------------------------------------------------------

void TimelineContentTest::hoverHitsMarks_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<bool>("hit");
    QTest::newRow("first pixel") << 200 << 37 << true;
    QTest::newRow("left of it") << 199 << 37 << false;
    QTest::newRow("last pixel") << 260 << 100 << true;
    QTest::newRow("right of it") << 261 << 100 << false;
    QTest::newRow("above the band") << 230 << 36 << false;
    QTest::newRow("bottom of the band") << 230 << 151 << true;
    QTest::newRow("below the band") << 230 << 152 << false;
}

void TimelineContentTest::hoverHitsMarks()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Strip strip;
    strip.addMarks({20000});
    strip.hover(x, y);
    QTEST(strip.doubleClick(x, y), "hit");
}

void TimelineContentTest::theLatestOfOverlappingMarksIsHit()
{
    Strip strip;
    strip.addMarks({20000, 22000, 24000});
    strip.hover(245, 100);
    strip.doubleClick(245, 100);
    strip.hover(235, 100);
    strip.doubleClick(235, 100);
    QCOMPARE(strip.taken(), (QStringList{"doubleClicked 24000", "doubleClicked 22000"}));
}

void TimelineContentTest::aMarkWithoutThumbnailIsOnePixelWide()
{
    Strip strip;
    strip.timeline.setPOIsFromList({QVariantMap{{QStringLiteral("time"), 20000}}});
    painted(strip.timeline);
    strip.hover(200, 100);
    QVERIFY(strip.doubleClick(200, 100));
    strip.hover(201, 100);
    QVERIFY(!strip.doubleClick(201, 100));
}

void TimelineContentTest::hoverAcceptsInOppositeSenses_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::addColumn<bool>("onMark");
    QTest::addColumn<bool>("acceptedBefore");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("enter on a mark") << QEvent::HoverEnter << true << false << true;
    QTest::newRow("enter beside") << QEvent::HoverEnter << false << true << false;
    QTest::newRow("move on a mark") << QEvent::HoverMove << true << true << false;
    QTest::newRow("move beside, accepted before") << QEvent::HoverMove << false << true << true;
    QTest::newRow("move beside, ignored before") << QEvent::HoverMove << false << false << false;
}

void TimelineContentTest::hoverAcceptsInOppositeSenses()
{
    QFETCH(QEvent::Type, type);
    QFETCH(bool, onMark);
    QFETCH(bool, acceptedBefore);
    Strip strip;
    strip.addMarks({20000});
    QTEST(strip.hover(onMark ? 230 : 500, 100, type, acceptedBefore), "accepted");
    QCOMPARE(strip.doubleClick(230, 100), onMark);
}

void TimelineContentTest::hoverChangesTheCursorShape()
{
    Strip strip;
    strip.addMarks({20000});
    const auto shape = [&strip] { return strip.timeline.cursor().shape(); };
    strip.hover(230, 24);
    QCOMPARE(shape(), Qt::SizeHorCursor);
    strip.hover(230, 25);
    QCOMPARE(shape(), Qt::ArrowCursor);
    strip.hover(230, 100);
    QCOMPARE(shape(), Qt::PointingHandCursor);
    strip.press(230, 100);
    strip.timeline.enterMovePOIMode();
    strip.hover(231, 100);
    QCOMPARE(shape(), Qt::ArrowCursor);
    strip.timeline.exitMovePOIMode();
    strip.hover(230, 100);
    QCOMPARE(shape(), Qt::PointingHandCursor);
    strip.hover(230, 10);
    strip.hover(0, 0, QEvent::HoverLeave);
    QCOMPARE(shape(), Qt::ArrowCursor);
    // Neither ruler nor mark are under the pointer any more.
    strip.taken();
    QVERIFY(!strip.doubleClick(230, 100));
    strip.press(300, 10);
    strip.taken();
    strip.move(310, 10);
    QVERIFY(strip.taken().isEmpty());
}

void TimelineContentTest::nothingIsHitBeforeTheFirstPaint()
{
    Strip strip;
    strip.timeline.setPOIsFromList({QVariantMap{{QStringLiteral("time"), 20000}}});
    strip.hover(200, 100);
    QVERIFY(!strip.doubleClick(200, 100));
    painted(strip.timeline);
    strip.hover(200, 100);
    QVERIFY(strip.doubleClick(200, 100));
}

void TimelineContentTest::hitTestUsesTheRangeOfTheLastPaint()
{
    Strip strip(6120);
    strip.addMarks({50000});
    strip.timeline.setContentX(4900);
    strip.hover(100, 100);
    QVERIFY(!strip.doubleClick(100, 100));
    painted(strip.timeline);
    strip.hover(100, 100);
    QVERIFY(strip.doubleClick(100, 100));
}

// --- Painting --------------------------------------------------------------------------------

void TimelineContentTest::paintsGroundRulerAndEnd()
{
    Strip strip;
    strip.timeline.setCursorPosition(timeAt(30000));
    const QImage image = painted(strip.timeline);
    QCOMPARE(image.pixelColor(5, 150), ground);
    QCOMPARE(image.pixelColor(599, 150), ground);
    QCOMPARE(image.pixelColor(600, 150), pastEnd);
    QCOMPARE(image.pixelColor(719, 159), pastEnd);
    QCOMPARE(image.pixelColor(650, 24), ruler);
    QCOMPARE(image.pixelColor(650, 1), ruler);
    QCOMPARE(image.pixelColor(650, 25), QColor(153, 153, 153));
    QCOMPARE(image.pixelColor(650, 26), pastEnd);
    // The end mark, where no tick lies on it.
    QCOMPARE(image.pixelColor(600, 2), endMark);
    QCOMPARE(image.pixelColor(600, 24), ruler);
    QCOMPARE(image.pixelColor(601, 18), ruler);
    // Below the ruler nothing but the cursor.
    QCOMPARE(columnsOfColour(image, 100, ground).size(), 600 - 7);
}

void TimelineContentTest::paintsTheZonePastTheEnd()
{
    Strip strip(6120);
    painted(strip.timeline);
    for (int step = 0; step < 100; ++step)
        strip.wheel(QPoint(0, 120), Qt::NoModifier);
    QCOMPARE(strip.timeline.contentX(), 5400);
    QCOMPARE(columnsOfColour(painted(strip.timeline), 150, pastEnd).size(), 120);
    strip.timeline.setContentX(5280);
    QCOMPARE(columnsOfColour(painted(strip.timeline), 150, pastEnd).size(), 0);
}

void TimelineContentTest::paintsTicksUpToTheEnd()
{
    Strip strip(6120); // 10 ms per pixel
    strip.timeline.setDuration(timeAt(59870));
    strip.timeline.setContentWidth(5987 + 120);
    strip.timeline.setContentX(5387);
    const QImage image = painted(strip.timeline);
    const QList<int> major = columnsOfColour(image, 16, white);
    const QList<int> medium = columnsOfColour(image, 18, white);
    const QList<int> minor = columnsOfColour(image, 21, white);
    // Whatever the font, the spacing divides 10 s: every whole 10 s has a tick of each height.
    QVERIFY(medium.size() >= major.size());
    QVERIFY(minor.size() > medium.size());
    const int end = 5987 - 5387;
    for (const QList<int>& ticks : {medium, minor}) {
        QVERIFY(!ticks.isEmpty());
        QVERIFY(ticks.last() <= end);
    }
    // The last whole second is drawn, the one after it is not.
    QVERIFY(minor.contains(5900 - 5387));
    QVERIFY(!minor.contains(6000 - 5387));
    QVERIFY(minor.last() > 5900 - 5387);
    QCOMPARE(image.pixelColor(5900 - 5387, 23), ruler);
}

void TimelineContentTest::paintsLabels()
{
    // An hour and a bit: the minutes of the labels go round.
    Strip strip;
    strip.timeline.setDuration(timeAt(3720000));
    strip.timeline.setContentWidth(37200 + 120);
    strip.timeline.setContentX(36000 - 300);
    const QImage image = painted(strip.timeline);
    QImage expected(160, 12, QImage::Format_ARGB32_Premultiplied);
    expected.fill(ruler);
    QPainter painter(&expected);
    painter.setPen(QPen(white, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawText(40, 0, 80, 20, Qt::AlignHCenter | Qt::AlignTop, QStringLiteral("00:00.000"));
    painter.end();
    QCOMPARE(image.copy(300 - 80, 0, 160, 12), expected);
}

void TimelineContentTest::paintsTheCursor()
{
    Strip strip;
    strip.timeline.setCursorPosition(timeAt(30000));
    const QImage image = painted(strip.timeline);
    const QColor lighter(194, 194, 194); // 75/255 of white on the ground
    for (const int x : {297, 299, 301, 303}) {
        const QColor colour = image.pixelColor(x, 120);
        QVERIFY2(qAbs(colour.red() - lighter.red()) <= 1, qPrintable(colour.name()));
    }
    QCOMPARE(image.pixelColor(296, 120), ground);
    QCOMPARE(image.pixelColor(304, 120), ground);
    QCOMPARE(image.pixelColor(300, 120), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(300, 159), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(300, 15), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(298, 13), QColor(0, 0, 0));
    QVERIFY(image.pixelColor(294, 13) != QColor(0, 0, 0));
}

void TimelineContentTest::paintsMarksInOrder()
{
    Strip strip;
    strip.timeline.setPOIsFromList({QVariantMap{{QStringLiteral("time"), 20000}},
                                    QVariantMap{{QStringLiteral("time"), 22000}}});
    strip.player.answer(frameOf(Qt::red, QSize(60, 60)));
    strip.player.answer(frameOf(Qt::blue, QSize(60, 60)));
    deliver();
    const QImage image = painted(strip.timeline);
    QCOMPARE(image.pixelColor(210, 70), QColor(Qt::red));
    QCOMPARE(image.pixelColor(219, 70), QColor(Qt::red));
    QCOMPARE(image.pixelColor(220, 70), QColor(0, 0, 0));
    QCOMPARE(image.pixelColor(230, 70), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(280, 106), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(280, 107), ground);
}

void TimelineContentTest::paintsTheHoveredMarkOnTop()
{
    Strip strip;
    strip.addMarks({20000, 22000}, QColor(0, 100, 0));
    strip.hover(215, 100);
    const QImage image = painted(strip.timeline);
    QCOMPARE(image.pixelColor(255, 40), white);
    // The light of the pointer on the thumbnail: 64/255 of white.
    const QColor light = image.pixelColor(255, 70);
    QVERIFY2(qAbs(light.red() - 64) <= 1 && qAbs(light.green() - 139) <= 1,
             qPrintable(light.name()));
    QCOMPARE(image.pixelColor(270, 70), QColor(0, 100, 0));
    QCOMPARE(image.pixelColor(270, 40), ground);
    strip.press(215, 100);
    QCOMPARE(painted(strip.timeline).pixelColor(255, 40), QColor(255, 0, 0));
}

void TimelineContentTest::paintsMoveMode()
{
    Strip strip;
    strip.addMarks({20000, 40000}, QColor(0, 200, 0));
    strip.hover(215, 100);
    strip.press(215, 100);
    strip.timeline.enterMovePOIMode();
    strip.timeline.setCursorPosition(timeAt(50000));
    strip.hover(415, 100);
    const QImage image = painted(strip.timeline);
    // The flag at the cursor, without its thumbnail, and the others dimmed: 0.3 of their colour.
    QCOMPARE(image.pixelColor(550, 34), QColor(255, 0, 0));
    QCOMPARE(image.pixelColor(530, 80), ground);
    const QColor dimmed = image.pixelColor(430, 80);
    QVERIFY2(qAbs(dimmed.red() - 118) <= 1 && qAbs(dimmed.green() - 178) <= 1,
             qPrintable(dimmed.name()));
    // A dashed red box, two pixels wide, where the thumbnail would land.
    QList<int> top;
    for (int x = 502; x < 560; ++x) {
        if (image.pixelColor(x, 48) == QColor(255, 0, 0))
            top.append(x);
    }
    QVERIFY2(top.size() > 20 && top.size() < 57, qPrintable(QString::number(top.size())));
    int right = 0;
    for (int y = 50; y < 105; ++y)
        right += image.pixelColor(560, y) == QColor(255, 0, 0) ? 1 : 0;
    QVERIFY2(right > 20 && right < 55, qPrintable(QString::number(right)));
    strip.timeline.exitMovePOIMode();
    QCOMPARE(painted(strip.timeline).pixelColor(430, 34), white);
}

void TimelineContentTest::marksOutOfViewCostNothing()
{
    Strip strip(60120); // 1 ms per pixel
    QList<int> times;
    for (int i = 0; i < 2000; ++i)
        times.append(i * 30);
    strip.addMarks(times);
    strip.timeline.setContentX(30000);
    const QImage all = painted(strip.timeline);
    strip.addMarks(times.mid(970, 90));
    QCOMPARE(painted(strip.timeline), all);
}

void TimelineContentTest::aHundredThousandMarksArePaintedInTime()
{
    // A mark for each of 600 pixels, and then a hundred thousand more on the same pixels.
    const auto fill = [](Strip& strip, int stepMs) {
        QVariantList list;
        for (int ms = 0; ms < 600000; ms += stepMs)
            list.append(QVariantMap{{QStringLiteral("time"), ms}});
        strip.timeline.setDuration(timeAt(600000));
        strip.timeline.setPOIsFromList(list);
    };
    Strip few;
    fill(few, 1000);
    Strip many;
    fill(many, 6);
    painted(many.timeline);
    QElapsedTimer clock;
    clock.start();
    const QImage image = painted(many.timeline);
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
    // Up to the last column, to which only the denser list rounds.
    QCOMPARE(image.copy(0, 26, 599, 134), painted(few.timeline).copy(0, 26, 599, 134));
}

void TimelineContentTest::goneMarksArePaintedHarmlessly()
{
    Strip strip;
    const QImage bare = painted(strip.timeline);
    strip.addMarks({20000});
    strip.hover(215, 100);
    strip.press(215, 100);
    strip.timeline.setPOIsFromList({});
    QCOMPARE(painted(strip.timeline), bare);
    strip.timeline.enterMovePOIMode();
    QCOMPARE(painted(strip.timeline), bare);
    strip.timeline.exitMovePOIMode();
    strip.taken();
    // The pointer has not moved: a press still seeks to where the mark was.
    strip.press(215, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "seek 20000"}));
}

void TimelineContentTest::oddScalesArePaintedHarmlessly_data()
{
    QTest::addColumn<int>("durationMs");
    QTest::addColumn<int>("contentWidth");
    QTest::addColumn<int>("contentX");
    constexpr int intMax = std::numeric_limits<int>::max();
    constexpr int intMin = std::numeric_limits<int>::min();
    for (const int duration : {0, 1, 60000, 86399999}) {
        for (const int width : {intMin, -500, 0, 119, 120, 121, 720, 1000000, intMax}) {
            for (const int x : {intMin, -1000, 0, 1000000, intMax})
                QTest::newRow(qPrintable(
                    QStringLiteral("%1 ms, %2 px at %3").arg(duration).arg(width).arg(x)))
                    << duration << width << x;
        }
    }
}

void TimelineContentTest::oddScalesArePaintedHarmlessly()
{
    QFETCH(int, durationMs);
    QFETCH(int, contentWidth);
    QFETCH(int, contentX);
    Strip strip;
    strip.addMarks({0, 1, 30000, 86399999});
    strip.timeline.setDuration(timeAt(durationMs));
    strip.timeline.setContentWidth(contentWidth);
    strip.timeline.setContentX(contentX);
    QCOMPARE(painted(strip.timeline).pixelColor(300, 159).alpha(), 255);
    strip.hover(300, 100);
    strip.press(300, 100);
    strip.hover(300, 10);
    strip.press(300, 10);
    strip.move(-50, 10);
    strip.release(-50, 10);
    strip.wheel(QPoint(0, 120), Qt::NoModifier, 300);
    strip.wheel(QPoint(0, 120), Qt::ControlModifier, 300);
    strip.wheel(QPoint(0, -120), Qt::ControlModifier, 300);
    painted(strip.timeline);
    QVERIFY(strip.timeline.cursorPosition().isValid());
    QVERIFY(strip.timeline.cursorPosition() <= strip.timeline.duration());
}

void TimelineContentTest::worksInAWindow()
{
    Strip strip;
    strip.addMarks({20000});
    QQuickWindow window;
    window.resize(720, 160);
    strip.timeline.setParentItem(window.contentItem());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTest::mouseMove(&window, QPoint(300, 100));
    QTest::mouseMove(&window, QPoint(230, 100));
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, QPoint(230, 100));
    QTRY_COMPARE(strip.timeline.selectedPoiTime(), timeAt(20000));
    QTest::mouseMove(&window, QPoint(400, 100));
    QTest::mouseClick(&window, Qt::RightButton, Qt::NoModifier, QPoint(400, 100));
    QTRY_COMPARE(strip.timeline.cursorPosition(), timeAt(40000));
    QVERIFY(!strip.timeline.selectedPoiTime().isValid());
    strip.timeline.setParentItem(nullptr);
}

QTEST_MAIN(TimelineContentTest)
#include "TimelineContentTest.moc"
