#include "Review/PoiModel.h"
#include "ReviewSuite.h"

using namespace corv::test;

/// The panel with the list of points of interest.
class PoiListTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void anEmptyListSaysWhy();
    void theListGoesToAPoint();
    void theListIsFilteredByTyping();
    void theListDeletesWhatIsChosen_data();
    void theListDeletesWhatIsChosen();
    void theListShowsWhatIsSelectedAfterAnUndo();
    void aLongListFetchesThePicturesOfItsRows();
    void aLongListIsScrolledByItsMark();
    void ctrlAddsToTheOneThatWasClicked();
    void aDoubleClickInTheListEdits();
    void severalAreChosenByKeys();
    void theTimelineSelectsOneOfThoseChosen();
    void aSelectionOnTheTimelineEndsTheChoice();
    void aMoveKeepsItsPoint();

private:
    void showList();
    /// Points of interest of these names, at the first second and each next one.
    void showListOf(const QStringList& names);
    void clickWithCtrl(const char* row)
    {
        const QQuickItem* const item = m_ui->item(row);
        const QPointF middle(item->width() / 2, item->height() / 2);
        QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::ControlModifier,
                          item->mapToScene(middle).toPoint());
    }
};

void PoiListTest::showList()
{
    openVideoAndLog();
    key(Qt::Key_F7);
    QTRY_VERIFY(m_ui->item("poiPanel")->isVisible());
    QTRY_VERIFY(m_ui->item("poiRow1"));
}

void PoiListTest::showListOf(const QStringList& names)
{
    showList();
    QVariantList pois;
    for (const QString& name : names)
        pois.append(QVariantMap{{"time", 1000 * (pois.size() + 1)}, {"name", name}});
    m_ui->evaluate("timelineContent.poiModel").value<corv::PoiModel*>()->setFromList(pois);
    QTRY_COMPARE(m_ui->get("poiList", "count").toInt(), names.size());
    QTRY_VERIFY(m_ui->item("poiRow" + QString::number(names.size() - 1)));
}

void PoiListTest::anEmptyListSaysWhy()
{
    key(Qt::Key_F7);
    QTRY_VERIFY(m_ui->item("poiPanel")->isVisible());
    const auto text = [this] { return m_ui->get("emptyText", "text").toString(); };
    QVERIFY2(text().startsWith("No video is open."), qPrintable(text()));
    QVERIFY(m_ui->openVideo());
    QTRY_VERIFY2(text().contains("N makes one"), qPrintable(text()));
}

void PoiListTest::theListGoesToAPoint()
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

void PoiListTest::theListIsFilteredByTyping()
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

void PoiListTest::theListDeletesWhatIsChosen_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("by the button") << false;
    QTest::newRow("by the key") << true;
}

void PoiListTest::theListDeletesWhatIsChosen()
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

void PoiListTest::theListShowsWhatIsSelectedAfterAnUndo()
{
    showListOf({"a", "b", "c"});
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
void PoiListTest::aLongListFetchesThePicturesOfItsRows()
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

void PoiListTest::aLongListIsScrolledByItsMark()
{
    showListOf({"a", "b"});
    QQuickItem* const mark = m_ui->item("poiListMark");
    QVERIFY(mark && !mark->isVisible());
    QVariantList many;
    for (int ms = 0; ms < 100; ++ms)
        many.append(QVariantMap{{"time", ms}, {"name", "A"}});
    m_ui->evaluate("timelineContent.poiModel").value<corv::PoiModel*>()->setFromList(many);
    QTRY_VERIFY(mark->isVisible());
    const QQuickItem* const list = m_ui->item("poiList");
    QTRY_COMPARE(list->property("contentHeight").toDouble(), 100 * 48.0);
    const auto place = [mark](double y) { return mark->mapToScene(QPointF(4, y)).toPoint(); };
    QTest::mousePress(m_ui->window(), Qt::LeftButton, Qt::NoModifier, place(5));
    QTest::mouseMove(m_ui->window(), place(mark->height() / 2));
    QTest::mouseMove(m_ui->window(), place(mark->height() + 20));
    QTest::mouseRelease(m_ui->window(), Qt::LeftButton, Qt::NoModifier, place(mark->height() + 20));
    QTRY_COMPARE(list->property("contentY").toDouble() - list->property("originY").toDouble(),
                 100 * 48.0 - list->height());
    const QQuickItem* const handle = m_ui->item("scrollMarkHandle", mark);
    QTRY_COMPARE(handle->y() + handle->height(), mark->height());
    // It scrolls, and chooses nothing.
    QCOMPARE(m_ui->get("poiList", "currentIndex").toInt(), -1);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PoiListTest::ctrlAddsToTheOneThatWasClicked()
{
    showListOf({"a", "b", "c"});
    QVERIFY(m_ui->click("poiRow0"));
    QTRY_COMPARE(position(), 1000);
    clickWithCtrl("poiRow2");
    QTRY_COMPARE(m_ui->get("deletePoisButton", "text").toString(), QString("Delete 2"));
    QVERIFY(m_ui->click("deletePoisButton"));
    QCOMPARE(m_ui->poiNames(), QStringList("b"));
}

void PoiListTest::aDoubleClickInTheListEdits()
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

void PoiListTest::severalAreChosenByKeys()
{
    showListOf({"a", "b", "c", "d"});
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

void PoiListTest::theTimelineSelectsOneOfThoseChosen()
{
    showListOf({"a", "b", "c"});
    QVERIFY(m_ui->click("poiRow1"));
    QTRY_COMPARE(position(), 2000);
    QCOMPARE(selected(), 2000);
    clickWithCtrl("poiRow0");
    QCOMPARE(selected(), 2000);
    clickWithCtrl("poiRow1");
    QTRY_COMPARE(selected(), 1000);
    // Choosing goes nowhere, and the tools leave alone what is no longer chosen.
    QCOMPARE(position(), 2000);
    key(Qt::Key_X);
    QTRY_COMPARE(m_ui->poiNames(), QStringList({"b", "c"}));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PoiListTest::aSelectionOnTheTimelineEndsTheChoice()
{
    showListOf({"a", "b", "c"});
    QVERIFY(m_ui->click("poiRow0"));
    QTRY_COMPARE(selected(), 1000);
    clickWithCtrl("poiRow1");
    QTRY_COMPARE(m_ui->get("deletePoisButton", "text").toString(), QString("Delete 2"));
    m_ui->evaluate("timelineContent.selectPoi(new Date(0, 0, 1, 0, 0, 3))");
    QTRY_COMPARE(selected(), 3000);
    QCOMPARE(m_ui->get("deletePoisButton", "text").toString(), QString("Delete"));
    QVERIFY(m_ui->click("deletePoisButton"));
    QTRY_COMPARE(m_ui->poiNames(), QStringList({"a", "b"}));
}

void PoiListTest::aMoveKeepsItsPoint()
{
    showListOf({"A", "B", "C"});
    QVERIFY(m_ui->click("poiRow1"));
    QTRY_COMPARE(position(), 2000);
    key(Qt::Key_M);
    // The place of another is gone to, and that one is not taken for the one that is moved.
    QVERIFY(m_ui->click("poiRow2"));
    QTRY_COMPARE(position(), 3000);
    QCOMPARE(selected(), 2000);
    const QPoint place = m_ui->item("poiRow2")->mapToScene(QPointF(120, 10)).toPoint();
    QTest::mouseDClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier, place);
    QVERIFY(!UiFixture::visibleWindow("poiPropertiesWindow"));
    key(Qt::Key_PageUp);
    QTRY_COMPARE(position(), 2000);
    key(Qt::Key_PageUp);
    QTRY_COMPARE(position(), 1000);
    QCOMPARE(selected(), 2000);
    clickWithCtrl("poiRow0");
    QCOMPARE(selected(), 2000);
    key(Qt::Key_N);
    QCOMPARE(selected(), 2000);
    key(Qt::Key_Right);
    QTRY_COMPARE(position(), 1040);
    key(Qt::Key_Return);
    QTRY_COMPARE(selected(), 1040);
    QCOMPARE(m_ui->poiNames(), QStringList({"A", "B", "C"}));
    QCOMPARE(m_ui->evaluate("timelineContent.getSelectedPOI().name").toString(), QString("B"));
}

QTEST_MAIN(PoiListTest)
#include "PoiListTest.moc"
