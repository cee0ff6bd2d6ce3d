#include "ReviewSuite.h"

using namespace corv::test;

/// What stands beside the stated window: the list of points of interest, jobs, zoom, the keys of a
/// review, the thermal bar.
class PanelsTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void panelsFoldAndStayFolded();
    void keysJumpAndFollowThePoints();
    void keysZoomTheTimeline();
    void keysPlayFasterAndPause();
    void theWheelZoomsThePictureAndADragMovesIt();
    void theTimelineShowsThePictureAtThePointer();
    void theThermalBarHasTheEndsOfTheRange();
    void unitsSwitchAtOnce();

private:
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(m_ui->window(), static_cast<Qt::Key>(key), modifiers);
    }
    void openFlight();
    int position() const
    {
        return QTime(0, 0).msecsTo(m_ui->evaluate("videoPlayer.timePosition").toTime());
    }
};

// Points of interest at 1 and 3 seconds of six.
void PanelsTest::openFlight()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    QTRY_VERIFY(!player("isBusy").toBool());
}

void PanelsTest::panelsFoldAndStayFolded()
{
    const double beside = m_ui->item("videoRect")->width();
    QVERIFY(m_ui->click("sidebarButton"));
    QTRY_VERIFY(!m_ui->item("hUDRectangle")->isVisible());
    QTRY_COMPARE(m_ui->item("videoRect")->width(), beside + 273);
    QTRY_COMPARE(QSettings().value("panels/sidebarShown").toBool(), false);
    QVERIFY(m_ui->reload());
    QVERIFY(!m_ui->item("hUDRectangle")->isVisible());
    key(Qt::Key_F8);
    QTRY_VERIFY(m_ui->item("hUDRectangle")->isVisible());
}

void PanelsTest::keysJumpAndFollowThePoints()
{
    openFlight();
    key(Qt::Key_Right, Qt::ControlModifier);
    QTRY_COMPARE(position(), 1000);
    key(Qt::Key_PageDown);
    QTRY_COMPARE(position(), 3000);
    key(Qt::Key_PageUp);
    QTRY_COMPARE(position(), 1000);
    key(Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
    QTRY_COMPARE(position(), 0);
}

void PanelsTest::keysZoomTheTimeline()
{
    openFlight();
    const int fitted = m_ui->evaluate("timelineContent.contentWidth").toInt();
    key(Qt::Key_Plus);
    QVERIFY(m_ui->evaluate("timelineContent.contentWidth").toInt() > fitted);
    key(Qt::Key_Plus);
    key(Qt::Key_Right, Qt::AltModifier);
    QVERIFY(m_ui->evaluate("timelineContent.contentX").toInt() > 0);
    key(Qt::Key_0);
    QCOMPARE(m_ui->evaluate("timelineContent.contentWidth").toInt(), fitted);
    QCOMPARE(m_ui->evaluate("timelineContent.contentX").toInt(), 0);
    key(Qt::Key_Minus);
    QCOMPARE(m_ui->evaluate("timelineContent.contentWidth").toInt(), fitted);
}

void PanelsTest::keysPlayFasterAndPause()
{
    openFlight();
    key(Qt::Key_L);
    QVERIFY(player("playing").toBool());
    key(Qt::Key_L);
    QCOMPARE(player("playSpeed").toInt(), 2);
    key(Qt::Key_K);
    QVERIFY(!player("playing").toBool());
    QCOMPARE(player("playSpeed").toInt(), 1);
}

void PanelsTest::theWheelZoomsThePictureAndADragMovesIt()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* area = m_ui->item("videoRect");
    UiFixture::wheel(area, 120);
    QTRY_COMPARE(area->property("zoom").toDouble(), 1.25);
    UiFixture::wheel(area, 120);
    const QPointF before = area->property("pan").toPointF();
    // The middle, where the pointer is, keeps its place.
    QVERIFY(qAbs(before.x() + area->width() * 0.28125) < 2);
    const QPoint middle =
        area->mapToScene(QPointF(area->width() / 2, area->height() / 2)).toPoint();
    QTest::mousePress(m_ui->window(), Qt::LeftButton, Qt::NoModifier, middle);
    for (int x = 10; x <= 60; x += 10)
        QTest::mouseMove(m_ui->window(), middle + QPoint(x, 0));
    QTest::mouseRelease(m_ui->window(), Qt::LeftButton, Qt::NoModifier, middle + QPoint(60, 0));
    QTRY_VERIFY(area->property("pan").toPointF().x() > before.x() + 20);
    QVERIFY(!player("playing").toBool());
    // Nothing but picture is shown at the edges.
    QVERIFY(area->property("pan").toPointF().x() <= 0);
    QVERIFY(m_ui->click("videoMouseArea"));
    QVERIFY(player("playing").toBool());
    key(Qt::Key_1);
    QTRY_COMPARE(area->property("zoom").toDouble(), 1.0);
}

void PanelsTest::theTimelineShowsThePictureAtThePointer()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(!m_ui->item("timelinePreview")->isVisible());
    QQuickItem* strip = m_ui->item("timelineContent");
    const double x = 3000 / m_ui->evaluate("timelineContent.msPerPx").toDouble();
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x - 5, 80)).toPoint());
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x, 80)).toPoint());
    QTRY_VERIFY(m_ui->item("timelinePreview")->isVisible());
    QVERIFY(m_ui->get("timelinePreviewTime", "text").toString().startsWith("00:0"));
    QTRY_VERIFY(!m_ui->get("timelinePreviewPicture", "picture").value<QImage>().isNull());
    // The place of playback stays.
    QCOMPARE(position(), 0);
    QTest::mouseMove(m_ui->window(), QPoint(300, 200));
    QTRY_VERIFY(!m_ui->item("timelinePreview")->isVisible());
}

void PanelsTest::theThermalBarHasTheEndsOfTheRange()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(!m_ui->item("thermalBar")->isVisible());
    m_ui->evaluate("videoPlayer.showIR = true; videoPlayer.autoIRMapping = false;"
                   "videoPlayer.irMappingMinValue = 7000; videoPlayer.irMappingMaxValue = 9000");
    QTRY_VERIFY(m_ui->item("thermalBar")->isVisible());
    QCOMPARE(m_ui->get("lowestText", "text").toString(), QString("7000"));
    QCOMPARE(m_ui->get("highestText", "text").toString(), QString("9000"));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::unitsSwitchAtOnce()
{
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), false);
    QVERIFY(m_ui->click("unitsButton"));
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), true);
    QTRY_COMPARE(QSettings().value("userPreferences/imperialUnits").toBool(), true);
}

QTEST_MAIN(PanelsTest)
#include "PanelsTest.moc"
