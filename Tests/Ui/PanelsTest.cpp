#include "ReviewSuite.h"
#include "Support/contrast.h"

#include <QAbstractItemModel>
#include <QAccessible>
#include <QDir>
#include <QQmlComponent>
#include <QQmlProperty>
#include <algorithm>
#include <memory>

using namespace corv::test;

namespace {

QVector<QQuickItem*> allBelow(QQuickItem* item)
{
    QVector<QQuickItem*> items;
    for (QQuickItem* child : item->childItems())
        items << child << allBelow(child);
    return items;
}

} // namespace

/// What is beside the stated window: the pictures at the pointer, jobs, zoom, the keys of a review,
/// the thermal bar.
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
    void aDragOnTheRulerHasNoPictureAtThePointer();
    void aPointerThatLeavesWithItsFirstMoveHasNoPicture();
    void thePictureAtThePointerGoesWithItsFlight();
    void aPointerThatRestsHasThePictureOfTheFlightThatOpens();
    void theTimeAtAPointerThatRestsFollowsTheZoom();
    void flagsShowTheOverlayAsItIs();
    void poisThatCoverEachOtherAreListed();
    void coveredFlagsLeaveTheToolsFree();
    void theTimelineShowsTheWholeNameOfAFlag();
    void theThermalBarHasTheEndsOfTheRange();
    void theHottestPointIsSeenOnColoursLikeItsOwn();
    void aScreenReaderHasTheHottestPoint();
    void aScreenReaderHasTheSentences_data();
    void aScreenReaderHasTheSentences();
    void aBarHasRoomForItsSentence_data();
    void aBarHasRoomForItsSentence();
    void unitsSwitchAtOnce();
    void settingsThatAreSavedTogetherAllStay();
    void aSeriesOfPicturesIsAJobWithAnEnd();
    void jobsAreListed();
};

void PanelsTest::panelsFoldAndStayFolded()
{
    const double beside = m_ui->item("videoRect")->width();
    QVERIFY(m_ui->click("sidebarButton"));
    QTRY_VERIFY(!m_ui->item("hUDRectangle")->isVisible());
    QTRY_COMPARE(m_ui->item("videoRect")->width(), beside + 273);
    QVERIFY(m_ui->click("poiListButton"));
    QTRY_COMPARE(m_ui->item("videoRect")->width(), beside + 273 - 240);
    QTRY_COMPARE(QSettings().value("panels/sidebarShown").toBool(), false);
    QVERIFY(m_ui->reload());
    QVERIFY(!m_ui->item("hUDRectangle")->isVisible());
    QVERIFY(m_ui->item("poiPanel")->isVisible());
    key(Qt::Key_F8);
    QTRY_VERIFY(m_ui->item("hUDRectangle")->isVisible());
}

void PanelsTest::keysJumpAndFollowThePoints()
{
    openVideoAndLog();
    key(Qt::Key_Right, Qt::ControlModifier);
    QTRY_COMPARE(position(), 1000);
    key(Qt::Key_PageDown);
    QTRY_COMPARE(position(), 3000);
    QCOMPARE(selected(), 3000);
    key(Qt::Key_PageUp);
    QTRY_COMPARE(position(), 1000);
    QCOMPARE(selected(), 1000);
    key(Qt::Key_Left, Qt::ControlModifier | Qt::ShiftModifier);
    QTRY_COMPARE(position(), 0);
}

void PanelsTest::keysZoomTheTimeline()
{
    openVideoAndLog();
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
    openVideoAndLog();
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

// The picture itself follows the pointer then; small ones would be decoded in between.
void PanelsTest::aDragOnTheRulerHasNoPictureAtThePointer()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* strip = m_ui->item("timelineContent");
    const auto at = [strip](int x) { return strip->mapToScene(QPointF(x, 8)).toPoint(); };
    QTest::mouseMove(m_ui->window(), at(195));
    QTest::mouseMove(m_ui->window(), at(200));
    QTRY_VERIFY(m_ui->item("timelinePreview")->isVisible());
    QTest::mousePress(m_ui->window(), Qt::LeftButton, {}, at(200));
    QTest::mouseMove(m_ui->window(), at(230));
    QTRY_VERIFY(!m_ui->item("timelinePreview")->isVisible());
    QTest::mouseRelease(m_ui->window(), Qt::LeftButton, {}, at(230));
    QTest::mouseMove(m_ui->window(), at(231));
    QTRY_VERIFY(m_ui->item("timelinePreview")->isVisible());
}

void PanelsTest::aPointerThatLeavesWithItsFirstMoveHasNoPicture()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* strip = m_ui->item("timelineContent");
    const QPoint inside = strip->mapToScene(QPointF(200, 8)).toPoint();
    QTest::mouseMove(m_ui->window(), inside - QPoint(5, 0));
    QTest::mouseMove(m_ui->window(), inside);
    QTRY_VERIFY(m_ui->item("timelinePreview")->isVisible());
    QTest::mouseClick(m_ui->window(), Qt::LeftButton, {}, inside);
    QTest::mouseMove(m_ui->window(),
                     m_ui->item("videoRect")->mapToScene(QPointF(100, 50)).toPoint());
    QTRY_VERIFY(!m_ui->item("timelinePreview")->isVisible());
}

void PanelsTest::thePictureAtThePointerGoesWithItsFlight()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* strip = m_ui->item("timelineContent");
    const double x = 3000 / m_ui->evaluate("timelineContent.msPerPx").toDouble();
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x - 5, 80)).toPoint());
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x, 80)).toPoint());
    const auto picture = [this] {
        return m_ui->get("timelinePreviewPicture", "picture").value<QImage>();
    };
    QTRY_VERIFY(!picture().isNull());
    m_ui->evaluate("videoPlayer.close()");
    QTRY_VERIFY(picture().isNull());
    QVERIFY(m_ui->openVideo());
    QTRY_VERIFY(!picture().isNull()); // the pointer has not moved
}

// Alone: the timeline of the main window gives up the pointer while no flight is open, and finds it
// again.
void PanelsTest::aPointerThatRestsHasThePictureOfTheFlightThatOpens()
{
    QQmlComponent component(&m_ui->engine());
    component.setData(R"(
        import Timeline 1.0
        import VideoPlayer 1.0
        TimelinePreview {
            id: preview
            width: 600
            height: 100
            pointed: true
            pointerX: 300
            player: VideoPlayer {}
            timeline: TimelineContent { contentWidth: 600 }
            navigator: TimelineNavigator { timeline: preview.timeline }
        }
    )",
                      QUrl("qrc:/TestDocument.qml"));
    const std::unique_ptr<QObject> preview(component.create());
    QVERIFY2(preview, qPrintable(component.errorString()));
    preview->property("timeline").value<QObject*>()->setProperty("duration", QTime(0, 0, 6));
    auto* video = preview->property("player").value<QObject*>();
    const auto picture = [&] {
        return m_ui->find("timelinePreviewPicture", preview.get())
            ->property("picture")
            .value<QImage>();
    };
    video->setProperty("source", media().video());
    QTRY_VERIFY(!picture().isNull());
    QVERIFY(QMetaObject::invokeMethod(video, "close"));
    QTRY_VERIFY(picture().isNull());
}

void PanelsTest::theTimeAtAPointerThatRestsFollowsTheZoom()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* strip = m_ui->item("timelineContent");
    constexpr int x = 700;
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x - 5, 80)).toPoint());
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x, 80)).toPoint());
    const auto shown = [this] { return m_ui->get("timelinePreviewTime", "text").toString(); };
    const auto expected = [this] {
        return m_ui->evaluate(QString("timelineNavigator.timeTextAt(%1)").arg(x)).toString();
    };
    QTRY_COMPARE(shown(), expected());
    const QString before = shown();
    QVERIFY(before != "00:00.000");
    key(Qt::Key_Plus);
    QVERIFY(expected() != before);
    QTRY_COMPARE(shown(), expected());
}

void PanelsTest::theTimelineShowsTheWholeNameOfAFlag()
{
    openVideoAndLog();
    const QString name = "Loose <clamp> below the third insulator of the upper traverse";
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 3000, name: '" + name + "'}])");
    QQuickItem* const strip = m_ui->item("timelineContent");
    const double x = 3000 / strip->property("msPerPx").toDouble() + 20;
    const auto flagsAt = [&](double y) {
        return m_ui->evaluate(QString("timelineNavigator.poisAt(%1, %2).length").arg(x).arg(y))
            .toInt();
    };
    QTRY_COMPARE(flagsAt(70), 1); // it has its picture
    const auto shown = [this] { return m_ui->get("timelinePreviewName", "text").toString(); };
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x, 70)).toPoint());
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x + 1, 70)).toPoint());
    QTRY_COMPARE(shown(), name);
    QVERIFY(m_ui->item("timelinePreviewName")->isVisible());
    const QQuickItem* frame = m_ui->item("timelinePreview");
    QTRY_VERIFY(m_ui->get("timelinePreviewName", "lineCount").toInt() > 1);
    QVERIFY(m_ui->item("timelinePreviewName")->y() + m_ui->item("timelinePreviewName")->height() <=
            frame->height());
    // On the ruler above it there is no flag.
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x + 1, 10)).toPoint());
    QTRY_COMPARE(shown(), QString());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::theHottestPointIsSeenOnColoursLikeItsOwn()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    m_ui->evaluate("videoPlayer.showIR = true; videoRect.extremesShown = true;"
                   "videoPlayer.redraw()");
    for (const char* point : {"hottestPoint", "coldestPoint"}) {
        QTRY_VERIFY2(m_ui->item(point) && m_ui->item(point)->isVisible(), point);
        QQuickItem* const edge = m_ui->item("thermalPointEdge", m_ui->item(point));
        QVERIFY2(edge && edge->isVisible() && edge->width() > 11, point);
        const QColor ring = m_ui->item(point)->property("mark").value<QColor>();
        const QColor around = QQmlProperty::read(edge, "border.color").value<QColor>();
        QVERIFY2(contrast(ring, around) >= 3, point);
    }
}

void PanelsTest::aScreenReaderHasTheHottestPoint()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    m_ui->evaluate("videoPlayer.showIR = true; videoRect.extremesShown = true;"
                   "videoPlayer.redraw()");
    const auto textsOf = [this](const char* point) {
        QStringList texts;
        for (QQuickItem* child : allBelow(m_ui->item(point))) {
            QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(child);
            if (reader && reader->role() == QAccessible::StaticText)
                texts << reader->text(QAccessible::Name);
        }
        return texts;
    };
    QTRY_COMPARE(textsOf("hottestPoint"), QStringList("Hottest point 7159"));
    QTRY_COMPARE(textsOf("coldestPoint"), QStringList("Coldest point 7000"));
}

void PanelsTest::aScreenReaderHasTheSentences_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text :
         {"poiPanelTitle", "emptyText", "emptyJobsText", "missingMediaText", "moveModeText"})
        QTest::newRow(text) << text;
}

void PanelsTest::aScreenReaderHasTheSentences()
{
    QFETCH(QString, text);
    QQuickItem* const item = m_ui->item(text);
    QAccessibleInterface* const reader = QAccessible::queryAccessibleInterface(item);
    QVERIFY(reader);
    QCOMPARE(reader->role(), QAccessible::StaticText);
    QCOMPARE(reader->text(QAccessible::Name), item->property("text").toString());
}

void PanelsTest::theThermalBarHasTheEndsOfTheRange()
{
    QVERIFY(m_ui->openVideo());
    const auto ends = [this] {
        return m_ui->get("thermalScale", "lowestText").toString() + " to " +
               m_ui->get("thermalScale", "highestText").toString();
    };
    m_ui->evaluate("videoPlayer.showIR = true");
    QVERIFY(!m_ui->item("thermalBar")->isVisible()); // without thermal pictures
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    m_ui->evaluate("videoPlayer.autoIRMapping = true; videoPlayer.redraw()");
    QTRY_VERIFY(m_ui->item("thermalBar")->isVisible());
    QTRY_COMPARE(ends(), QString("7000 to 7159"));
    m_ui->evaluate("videoPlayer.goToFrame(100)");
    QTRY_COMPARE(ends(), QString("8000 to 8159"));
    m_ui->screenshot("thermal bar");
    m_ui->evaluate("videoPlayer.goToFrame(10)");
    QTRY_COMPARE(ends(), QString("7000 to 7159"));
    m_ui->evaluate("videoPlayer.autoIRMapping = false;"
                   "videoPlayer.irMappingMinValue = 7100; videoPlayer.irMappingMaxValue = 9000;"
                   "videoPlayer.redraw()");
    QTRY_COMPARE(ends(), QString("7100 to 9000"));
    m_ui->evaluate("videoPlayer.showIR = false");
    QTRY_VERIFY(!m_ui->item("thermalBar")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::flagsShowTheOverlayAsItIs()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("videoPlayer.showIR = true; videoPlayer.irOverlayTransparent = false;"
                   "videoPlayer.fullScreenIR = true; videoPlayer.autoIRMapping = false;"
                   "videoPlayer.irMappingMinValue = 7000; videoPlayer.irMappingMaxValue = 8200");
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    const auto* const pois = m_ui->evaluate("review.pois").value<QAbstractItemModel*>();
    QVERIFY(pois);
    const int thumbnail = pois->roleNames().key("thumbnail");
    const auto pictures = [pois, thumbnail] {
        QList<QImage> images;
        for (int row = 0; row < pois->rowCount(); ++row)
            images << pois->index(row, 0).data(thumbnail).value<QImage>();
        return images;
    };
    const auto areAll = [pictures](bool grey) {
        const QList<QImage> images = pictures();
        return std::all_of(images.begin(), images.end(), [grey](const QImage& picture) {
            const QColor middle = picture.pixelColor(picture.rect().center());
            return !picture.isNull() && (middle.hsvSaturation() <= 8) == grey;
        });
    };
    QTRY_VERIFY(areAll(false));
    m_ui->evaluate("videoPlayer.irPalette = 2");
    QTRY_VERIFY(areAll(true));
    // One changed where it is not to be seen is seen later.
    m_ui->evaluate("videoPlayer.showIR = false; videoPlayer.irPalette = 0");
    m_ui->evaluate("videoPlayer.showIR = true");
    QTRY_VERIFY(areAll(false));
    const QList<QImage> before = pictures();
    m_ui->evaluate("LogParser.manualLogTimeOffset = -1500");
    QTRY_VERIFY(pictures() != before);
    m_ui->evaluate("LogParser.manualLogTimeOffset = 0");
    QTRY_VERIFY(pictures() == before);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::coveredFlagsLeaveTheToolsFree()
{
    openVideoAndLog();
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 0, name: 'lowest'},"
                   "{time: 20, name: 'middle'}, {time: 40, name: 'top'}])");
    QQuickItem* const strip = m_ui->item("timelineContent");
    QTRY_COMPARE(m_ui->evaluate("timelineNavigator.poisAt(40, 70).length").toInt(), 3);
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(40, 70)).toPoint());
    const QQuickItem* const list = m_ui->item("overlapList");
    QTRY_VERIFY(list->isVisible());
    QQuickItem* const button = m_ui->item("prevFrameButton");
    QVERIFY(list->mapToScene(QPointF(0, list->height())).y() <= button->mapToScene(QPointF()).y());
    UiFixture::hover(button);
    QTRY_VERIFY(m_ui->find("toolTip", button) &&
                m_ui->find("toolTip", button)->property("visible").toBool());
    QVERIFY(!list->isVisible());

    // Once it was hidden under the pointer, it still knows where that is.
    for (int round = 0; round < 2; ++round) {
        QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(40 + round, 70)).toPoint());
        QTRY_VERIFY(list->isVisible());
        QTRY_VERIFY(m_ui->item("overlapRow0"));
        UiFixture::hover(m_ui->item("overlapRow0"));
        QTRY_VERIFY(m_ui->get("overlapRow0", "containsMouse").toBool());
        QVERIFY(list->isVisible());
        UiFixture::hover(m_ui->item("playSpeedBox"));
        QTRY_VERIFY(!list->isVisible());
    }
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::poisThatCoverEachOtherAreListed()
{
    openVideoAndLog();
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 1000, name: 'lowest'},"
                   "{time: 1040, name: 'middle'}, {time: 1080, name: 'top'},"
                   "{time: 4000, name: 'apart'}])");
    QQuickItem* const strip = m_ui->item("timelineContent");
    const double msPerPx = strip->property("msPerPx").toDouble();
    const auto at = [&](int ms) {
        return strip->mapToScene(QPointF(ms / msPerPx + 20, 70)).toPoint();
    };
    const auto flagsAt = [&](int ms) {
        return m_ui->evaluate(QString("timelineNavigator.poisAt(%1, 70).length").arg(ms / msPerPx))
            .toInt();
    };
    QTRY_COMPARE(flagsAt(1090), 3); // each has its picture
    QTest::mouseMove(m_ui->window(), at(4000));
    QTest::mouseMove(m_ui->window(), at(4000) + QPoint(1, 0));
    QTRY_VERIFY(m_ui->item("timelinePreview")->isVisible());
    QVERIFY(!m_ui->item("overlapList")->isVisible());

    QTest::mouseMove(m_ui->window(), at(1080));
    QTRY_VERIFY(m_ui->item("overlapList")->isVisible());
    QVERIFY(!m_ui->item("timelinePreview")->isVisible());
    m_ui->screenshot("overlap");
    // On the way to the list the pointer is over the ruler.
    QTest::mouseMove(m_ui->window(), at(1080) - QPoint(0, 60));
    QVERIFY(m_ui->item("overlapList")->isVisible());
    QTRY_VERIFY(m_ui->item("overlapRow0"));
    UiFixture::click(m_ui->item("overlapRow0"));
    QTRY_COMPARE(selected(), 1000);
    QTRY_COMPARE(position(), 1000);
    QTRY_VERIFY(!m_ui->item("overlapList")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::aBarHasRoomForItsSentence_data()
{
    QTest::addColumn<bool>("panels");
    QTest::newRow("beside its buttons") << false;
    QTest::newRow("above them, between both panels") << true;
}

void PanelsTest::aBarHasRoomForItsSentence()
{
    QFETCH(bool, panels);
    m_ui->window()->resize(m_ui->window()->minimumSize());
    m_ui->evaluate(QString("panelSettings.poiListShown = panelSettings.sidebarShown = %1")
                       .arg(panels ? "true" : "false"));
    m_ui->root()->setProperty("crashNotice", "Vistrel stopped unexpectedly in its last run.");
    m_ui->root()->setProperty("crashReportPath", "/somewhere");
    QQuickItem* const sentence = m_ui->item("crashText");
    QQuickItem* const button = m_ui->item("showCrashReportButton");
    QTRY_VERIFY(sentence->isVisible() && button->width() > 0);
    const auto isAbove = [&] {
        return button->mapToScene({}).y() >=
               sentence->mapToScene(QPointF(0, sentence->height())).y();
    };
    QTRY_COMPARE(isAbove(), panels);
    QVERIFY(sentence->width() >= 200);
    QVERIFY(sentence->property("contentWidth").toDouble() <= sentence->width());
    const QQuickItem* const bar = m_ui->item("recoveryBar");
    const double bottom = button->mapToItem(bar, QPointF(0, button->height())).y();
    QTRY_VERIFY(bottom < bar->height());
}

void PanelsTest::unitsSwitchAtOnce()
{
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), false);
    QVERIFY(m_ui->click("unitsButton"));
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), true);
    QTRY_COMPARE(QSettings().value("userPreferences/imperialUnits").toBool(), true);
}

// The settings window and the main window store in the same place.
void PanelsTest::settingsThatAreSavedTogetherAllStay()
{
    const auto stored = [](const char* name) {
        return QSettings().value(QString("userPreferences/%1").arg(name)).toBool();
    };
    QVERIFY(m_ui->trigger("generalSettingsMenuItem"));
    QTRY_VERIFY(UiFixture::visibleWindow("generalSettings"));
    QQuickWindow* const window = UiFixture::visibleWindow("generalSettings");
    for (const char* choice : {"radioUnitImperial", "radioThermalOnScreen", "finishJobsBox"})
        UiFixture::click(m_ui->item(choice, window));
    UiFixture::click(m_ui->item("okButton", window));
    QTRY_VERIFY(!UiFixture::visibleWindow("generalSettings"));
    QVERIFY(m_ui->get("videoPlayer", "thermalAsOnScreen").toBool());
    QTRY_VERIFY(stored("imperialUnits") && stored("thermalAsOnScreen") &&
                stored("finishJobsFirst"));
    // What the main window writes later leaves the others as they are.
    QVERIFY(m_ui->click("unitsButton"));
    QVERIFY(m_ui->click("unitsButton"));
    QTRY_VERIFY(!stored("imperialUnits"));
    QVERIFY(stored("thermalAsOnScreen") && stored("finishJobsFirst"));
    QVERIFY(m_ui->reload());
    QVERIFY(stored("thermalAsOnScreen") && stored("finishJobsFirst"));
    QVERIFY(m_ui->get("videoPlayer", "thermalAsOnScreen").toBool());
}

void PanelsTest::aSeriesOfPicturesIsAJobWithAnEnd()
{
    openVideoAndLog();
    const QString folder = FlightMedia::instance().newFolder();
    m_ui->evaluate("videoPlayer.exportFrames(0, 1000, 5, '" + folder + "', 'Frame')");
    QTRY_VERIFY(m_ui->get("noticeText", "text").toString().contains("pictures saved"));
    QVERIFY(m_ui->item("noticeText")->isVisible());
    QCOMPARE(m_ui->evaluate("review.jobs.running").toInt(), 0);
    QVERIFY(!QDir(folder).entryList({"Frame*.jpg"}).isEmpty());
}

void PanelsTest::jobsAreListed()
{
    openVideoAndLog();
    QVERIFY(!m_ui->item("jobsPanel")->isVisible());
    QVERIFY(m_ui->click("jobsButton"));
    QTRY_VERIFY(m_ui->item("jobsPanel")->isVisible());
    // The log was read.
    QTRY_VERIFY(m_ui->get("jobList", "count").toInt() >= 1);
    m_ui->screenshot("jobs");
    QVERIFY(m_ui->click("closeJobsButton"));
    QTRY_VERIFY(!m_ui->item("jobsPanel")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(PanelsTest)
#include "PanelsTest.moc"
