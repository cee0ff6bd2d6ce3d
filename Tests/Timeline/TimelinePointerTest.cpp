#include "timelineStrip.h"

#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QSignalSpy>

using namespace corv;
using namespace corv::test;

/// What presses, drags, double clicks and hovering do.
class TimelinePointerTest : public QObject
{
    Q_OBJECT

private slots:
    // The platform without a screen has no OpenGL.
    void initTestCase() { QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software); }

    void pressMovesTheCursorAndSeeks_data();
    void pressMovesTheCursorAndSeeks();
    void pressOnTheRulerDrags();
    void pressBelowTheRulerDoesNotDrag_data();
    void pressBelowTheRulerDoesNotDrag();
    void dragPastTheStartWraps();
    void dragDoesNotScrollBeforeTheRelease();
    void pressOnAPoiSelectsAndSeeks();
    void selectingThePoiAtThePlayheadIsSeen();
    void pressOnBareStripClearsTheSelection();
    void pressInMoveModeOnlyMovesTheCursor();
    void doubleClickOnAPoiIsReportedOutsideMoveMode();

    void hoverHitsPois_data();
    void hoverHitsPois();
    void latestOfOverlappingPoisIsHit();
    void poiWithoutThumbnailIsOnePixelWide();
    void hoverAcceptsInOppositeSenses_data();
    void hoverAcceptsInOppositeSenses();
    void hoverChangesTheCursorShape();
    void nothingIsHitBeforeTheFirstPaint();
    void hitTestUsesTheRangeOfTheLastPaint();

    void worksInAWindow();
};

// --- Mouse -----------------------------------------------------------------------------------

void TimelinePointerTest::pressMovesTheCursorAndSeeks_data()
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

void TimelinePointerTest::pressMovesTheCursorAndSeeks()
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

void TimelinePointerTest::pressOnTheRulerDrags()
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

void TimelinePointerTest::pressBelowTheRulerDoesNotDrag_data()
{
    QTest::addColumn<int>("y");
    QTest::newRow("just below the ruler") << 25;
    QTest::newRow("between ruler and hover band") << 36;
    QTest::newRow("bare strip") << 100;
}

void TimelinePointerTest::pressBelowTheRulerDoesNotDrag()
{
    QFETCH(int, y);
    Strip strip;
    strip.addPois({18000});
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

void TimelinePointerTest::dragPastTheStartWraps()
{
    Strip strip;
    painted(strip.timeline);
    strip.hover(200, 10);
    strip.press(200, 10);
    strip.taken();
    strip.move(-1, 10);
    QCOMPARE(strip.taken(), (QStringList{"cursor 60000", "seek 60000"}));
}

void TimelinePointerTest::dragDoesNotScrollBeforeTheRelease()
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

void TimelinePointerTest::pressOnAPoiSelectsAndSeeks()
{
    Strip strip;
    strip.addPois({20000});
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

void TimelinePointerTest::selectingThePoiAtThePlayheadIsSeen()
{
    Strip strip;
    strip.addPois({20000});
    QQuickWindow window;
    window.resize(720, 160);
    strip.timeline.setParentItem(window.contentItem());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    strip.timeline.setCursorPosition(timeAt(20000));
    QTest::mouseMove(&window, QPoint(300, 100));
    QTest::mouseMove(&window, QPoint(230, 100));
    // With everything on the screen, the next frame is the one that the selection asks for.
    window.grabWindow();
    QCoreApplication::processEvents();
    const QImage before = painted(strip.timeline);
    QSignalSpy frames(&window, &QQuickWindow::frameSwapped);
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, QPoint(230, 100));
    QTRY_COMPARE(strip.timeline.selectedPoiTime(), timeAt(20000));
    QTRY_VERIFY(!frames.isEmpty());
    QVERIFY(painted(strip.timeline) != before);
    strip.timeline.setParentItem(nullptr);
}

void TimelinePointerTest::pressOnBareStripClearsTheSelection()
{
    Strip strip;
    strip.addPois({20000});
    strip.hover(230, 100);
    strip.press(230, 100);
    strip.taken();
    strip.hover(400, 100);
    strip.press(400, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "select none", "cursor 40000", "seek 40000"}));
}

void TimelinePointerTest::pressInMoveModeOnlyMovesTheCursor()
{
    Strip strip;
    strip.addPois({20000, 40000});
    strip.hover(230, 100);
    strip.press(230, 100);
    strip.timeline.enterMovePOIMode();
    strip.taken();
    strip.hover(430, 100);
    strip.press(430, 100);
    QCOMPARE(strip.taken(), (QStringList{"clicked", "cursor 43000", "seek 43000"}));
    QCOMPARE(strip.timeline.selectedPoiTime(), timeAt(20000));
}

void TimelinePointerTest::doubleClickOnAPoiIsReportedOutsideMoveMode()
{
    Strip strip;
    strip.addPois({20000});
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

void TimelinePointerTest::hoverHitsPois_data()
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

void TimelinePointerTest::hoverHitsPois()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Strip strip;
    strip.addPois({20000});
    strip.hover(x, y);
    QTEST(strip.doubleClick(x, y), "hit");
}

void TimelinePointerTest::latestOfOverlappingPoisIsHit()
{
    Strip strip;
    strip.addPois({20000, 22000, 24000});
    strip.hover(245, 100);
    strip.doubleClick(245, 100);
    strip.hover(235, 100);
    strip.doubleClick(235, 100);
    QCOMPARE(strip.taken(), (QStringList{"doubleClicked 24000", "doubleClicked 22000"}));
}

void TimelinePointerTest::poiWithoutThumbnailIsOnePixelWide()
{
    Strip strip;
    strip.timeline.setPOIsFromList({QVariantMap{{QStringLiteral("time"), 20000}}});
    painted(strip.timeline);
    strip.hover(200, 100);
    QVERIFY(strip.doubleClick(200, 100));
    strip.hover(201, 100);
    QVERIFY(!strip.doubleClick(201, 100));
}

void TimelinePointerTest::hoverAcceptsInOppositeSenses_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::addColumn<bool>("onPoi");
    QTest::addColumn<bool>("acceptedBefore");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("enter on a point of interest") << QEvent::HoverEnter << true << false << true;
    QTest::newRow("enter beside") << QEvent::HoverEnter << false << true << false;
    QTest::newRow("move on a point of interest") << QEvent::HoverMove << true << true << false;
    QTest::newRow("move beside, accepted before") << QEvent::HoverMove << false << true << true;
    QTest::newRow("move beside, ignored before") << QEvent::HoverMove << false << false << false;
}

void TimelinePointerTest::hoverAcceptsInOppositeSenses()
{
    QFETCH(QEvent::Type, type);
    QFETCH(bool, onPoi);
    QFETCH(bool, acceptedBefore);
    Strip strip;
    strip.addPois({20000});
    QTEST(strip.hover(onPoi ? 230 : 500, 100, type, acceptedBefore), "accepted");
    QCOMPARE(strip.doubleClick(230, 100), onPoi);
}

void TimelinePointerTest::hoverChangesTheCursorShape()
{
    Strip strip;
    strip.addPois({20000});
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
    // Neither ruler nor point of interest are under the pointer any more.
    strip.taken();
    QVERIFY(!strip.doubleClick(230, 100));
    strip.press(300, 10);
    strip.taken();
    strip.move(310, 10);
    QVERIFY(strip.taken().isEmpty());
}

void TimelinePointerTest::nothingIsHitBeforeTheFirstPaint()
{
    Strip strip;
    strip.timeline.setPOIsFromList({QVariantMap{{QStringLiteral("time"), 20000}}});
    strip.hover(200, 100);
    QVERIFY(!strip.doubleClick(200, 100));
    painted(strip.timeline);
    strip.hover(200, 100);
    QVERIFY(strip.doubleClick(200, 100));
}

void TimelinePointerTest::hitTestUsesTheRangeOfTheLastPaint()
{
    Strip strip(6120);
    strip.addPois({50000});
    strip.timeline.setContentX(4900);
    strip.hover(100, 100);
    QVERIFY(!strip.doubleClick(100, 100));
    painted(strip.timeline);
    strip.hover(100, 100);
    QVERIFY(strip.doubleClick(100, 100));
}

// --- In a window ------------------------------------------------------------------------------

void TimelinePointerTest::worksInAWindow()
{
    Strip strip;
    strip.addPois({20000});
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

QTEST_MAIN(TimelinePointerTest)
#include "TimelinePointerTest.moc"
