#include "timelineStrip.h"

using namespace corv;
using namespace corv::test;

/// Its properties, its scale, its cursor and the wheel.
class TimelineContentTest : public QObject
{
    Q_OBJECT

private slots:
    void startsAsStated();
    void settersEmitInOrder();
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

void TimelineContentTest::settersEmitInOrder()
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

QTEST_MAIN(TimelineContentTest)
#include "TimelineContentTest.moc"
