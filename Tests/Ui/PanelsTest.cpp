#include "Review/PoiModel.h"
#include "ReviewSuite.h"

#include <QAbstractItemModel>
#include <QAccessible>
#include <QDir>
#include <QQmlComponent>
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

/// What is beside the stated window: the list of points of interest, jobs, zoom, the keys of a
/// review, the thermal bar.
class PanelsTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void theListGoesToAPoint();
    void theListIsFilteredByTyping();
    void theListDeletesWhatIsChosen_data();
    void theListDeletesWhatIsChosen();
    void theListShowsWhatIsSelectedAfterAnUndo();
    void aLongListFetchesThePicturesOfItsRows();
    void ctrlAddsToTheOneThatWasClicked();
    void aDoubleClickInTheListEdits();
    void severalAreChosenByKeys();
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
    void aScreenReaderHasTheHottestPoint();
    void aScreenReaderHasTheSentences_data();
    void aScreenReaderHasTheSentences();
    void unitsSwitchAtOnce();
    void aSeriesOfPicturesIsAJobWithAnEnd();
    void jobsAreListed();

private:
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(m_ui->window(), static_cast<Qt::Key>(key), modifiers);
    }
    void clickWithCtrl(const char* row)
    {
        const QQuickItem* const item = m_ui->item(row);
        const QPointF middle(item->width() / 2, item->height() / 2);
        QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::ControlModifier,
                          item->mapToScene(middle).toPoint());
    }
    void openFlight();
    void showList();
    int position() const
    {
        return QTime(0, 0).msecsTo(m_ui->evaluate("videoPlayer.timePosition").toTime());
    }
    int selected() const
    {
        return QTime(0, 0).msecsTo(m_ui->evaluate("timelineContent.selectedPoiTime").toTime());
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

void PanelsTest::showList()
{
    openFlight();
    key(Qt::Key_F7);
    QTRY_VERIFY(m_ui->item("poiPanel")->isVisible());
    QTRY_VERIFY(m_ui->item("poiRow1"));
}

void PanelsTest::theListGoesToAPoint()
{
    showList();
    QTRY_COMPARE(m_ui->get("poiPanelTitle", "text").toString(), QString("Points of interest: 2"));
    QVERIFY(m_ui->click("poiRow1"));
    QTRY_COMPARE(position(), 3000);
    QCOMPARE(selected(), 3000);
    // The keys stay with the video.
    QVERIFY(m_ui->item("videoTab")->hasActiveFocus());
    m_ui->screenshot("list");
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelsTest::theListIsFilteredByTyping()
{
    showList();
    UiFixture::click(m_ui->item("filterField"));
    QTRY_VERIFY(m_ui->get("filterField", "activeFocus").toBool());
    QTest::keyClick(m_ui->window(), '2');
    QTRY_COMPARE(m_ui->get("poiList", "count").toInt(), 1);
    QTest::keyClick(m_ui->window(), 'x');
    QTRY_VERIFY(m_ui->item("emptyText")->isVisible());
    // Letters are typed, and run no command of the window.
    QCOMPARE(m_ui->poiNames().size(), 2);
    key(Qt::Key_Escape);
    QTRY_COMPARE(m_ui->get("poiList", "count").toInt(), 2);
    QVERIFY(m_ui->item("videoTab")->hasActiveFocus());
}

void PanelsTest::theListDeletesWhatIsChosen_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("by the button") << false;
    QTest::newRow("by the key") << true;
}

void PanelsTest::theListDeletesWhatIsChosen()
{
    QFETCH(bool, byKey);
    showList();
    clickWithCtrl("poiRow0");
    clickWithCtrl("poiRow1");
    QTRY_COMPARE(m_ui->get("deletePoisButton", "text").toString(), QString("Delete 2"));
    if (byKey)
        key(Qt::Key_Delete);
    else
        QVERIFY(m_ui->click("deletePoisButton"));
    QTRY_COMPARE(m_ui->poiNames(), QStringList());
}

void PanelsTest::theListShowsWhatIsSelectedAfterAnUndo()
{
    showList();
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 1000, name: 'a'},"
                   "{time: 2000, name: 'b'}, {time: 3000, name: 'c'}])");
    QTRY_VERIFY(m_ui->item("poiRow2"));
    QVERIFY(m_ui->click("poiRow1"));
    QTRY_COMPARE(selected(), 2000);
    clickWithCtrl("poiRow0");
    key(Qt::Key_Delete);
    QTRY_COMPARE(m_ui->poiNames(), QStringList({"c"}));
    // Nothing that is not there can be edited, moved or deleted.
    QTRY_VERIFY(!m_ui->item("editPoiButton")->isEnabled());
    QTRY_COMPARE(m_ui->get("poiList", "currentIndex").toInt(), -1);
    QVERIFY(m_ui->trigger("undoMenuItem"));
    QTRY_COMPARE(m_ui->poiNames(), QStringList({"a", "b", "c"}));
    QCOMPARE(selected(), 2000);
    QTRY_COMPARE(m_ui->get("poiList", "currentIndex").toInt(), 1);
    QVERIFY(m_ui->item("editPoiButton")->isEnabled());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

// On the timeline each of them but the last is covered by the next.
void PanelsTest::aLongListFetchesThePicturesOfItsRows()
{
    showList();
    auto* pois = m_ui->evaluate("timelineContent.poiModel").value<corv::PoiModel*>();
    QVERIFY(pois);
    QVariantList many;
    for (int ms = 0; ms < static_cast<int>(corv::PoiModel::fetchedUnseen) + 100; ++ms)
        many.append(QVariantMap{{"time", ms}, {"name", "A"}});
    pois->setFromList(many);
    constexpr int row = 1000;
    const QTime time = QTime(0, 0).addMSecs(row);
    QVERIFY(pois->isUnseen(time));
    QMetaObject::invokeMethod(m_ui->item("poiList"), "positionViewAtIndex", Q_ARG(int, row),
                              Q_ARG(int, 1)); // in the middle
    QTRY_VERIFY(!pois->find(time)->thumbnail.isNull());
    QVERIFY(pois->isUnseen(QTime(0, 0).addMSecs(row / 2)));
}

void PanelsTest::ctrlAddsToTheOneThatWasClicked()
{
    showList();
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 1000, name: 'a'},"
                   "{time: 2000, name: 'b'}, {time: 3000, name: 'c'}])");
    QTRY_COMPARE(m_ui->get("poiList", "count").toInt(), 3);
    QTRY_VERIFY(m_ui->item("poiRow2"));
    QVERIFY(m_ui->click("poiRow0"));
    QTRY_COMPARE(position(), 1000);
    clickWithCtrl("poiRow2");
    QTRY_COMPARE(m_ui->get("deletePoisButton", "text").toString(), QString("Delete 2"));
    QVERIFY(m_ui->click("deletePoisButton"));
    QCOMPARE(m_ui->poiNames(), QStringList("b"));
}

void PanelsTest::aDoubleClickInTheListEdits()
{
    showList();
    QQuickItem* row = m_ui->item("poiRow0");
    const QPoint place = row->mapToScene(QPointF(120, 20)).toPoint();
    QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier, place);
    QTRY_VERIFY(UiFixture::visibleWindow("poiPropertiesWindow"));
    QCOMPARE(UiFixture::visibleWindow("poiPropertiesWindow")->property("poiName").toString(),
             QString("POI 1"));
    UiFixture::visibleWindow("poiPropertiesWindow")->close();
}

void PanelsTest::severalAreChosenByKeys()
{
    showList();
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 1000, name: 'a'},"
                   "{time: 2000, name: 'b'}, {time: 3000, name: 'c'}, {time: 4000, name: 'd'}])");
    QTRY_COMPARE(m_ui->get("poiList", "count").toInt(), 4);
    const auto chosen = [this] { return m_ui->get("deletePoisButton", "text").toString(); };
    m_ui->item("poiList")->forceActiveFocus(Qt::TabFocusReason);
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    QTRY_COMPARE(position(), 2000);
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_Down, Qt::ShiftModifier);
    QTRY_COMPARE(chosen(), QString("Delete 3"));
    key(Qt::Key_Up, Qt::ShiftModifier);
    QTRY_COMPARE(chosen(), QString("Delete 2"));
    // Choosing goes nowhere.
    QCOMPARE(position(), 2000);
    key(Qt::Key_Delete);
    QTRY_COMPARE(m_ui->poiNames(), QStringList({"a", "d"}));
    // The next one is selected by a key of its own, so that a second Delete takes nothing along.
    key(Qt::Key_Delete);
    QCOMPARE(m_ui->poiNames(), QStringList({"a", "d"}));
    key(Qt::Key_Down);
    QTRY_COMPARE(selected(), 4000);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

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
    openFlight();
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
    openFlight();
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
    openFlight();
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
    openFlight();
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

void PanelsTest::unitsSwitchAtOnce()
{
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), false);
    QVERIFY(m_ui->click("unitsButton"));
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), true);
    QTRY_COMPARE(QSettings().value("userPreferences/imperialUnits").toBool(), true);
}

void PanelsTest::aSeriesOfPicturesIsAJobWithAnEnd()
{
    openFlight();
    const QString folder = FlightMedia::instance().newFolder();
    m_ui->evaluate("videoPlayer.exportFrames(0, 1000, 5, '" + folder + "', 'Frame')");
    QTRY_VERIFY(m_ui->get("noticeText", "text").toString().contains("pictures saved"));
    QVERIFY(m_ui->item("noticeText")->isVisible());
    QCOMPARE(m_ui->evaluate("review.jobs.running").toInt(), 0);
    QVERIFY(!QDir(folder).entryList({"Frame*.jpg"}).isEmpty());
}

void PanelsTest::jobsAreListed()
{
    openFlight();
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
