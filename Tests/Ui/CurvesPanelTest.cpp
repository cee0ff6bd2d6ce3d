#include "ReviewSuite.h"

#include <QAccessible>

using namespace corv::test;

/// The curves of the flight log under the timeline.
class CurvesPanelTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void isFoldedAtFirst();
    void unfoldsUnderTheTimeline();
    void saysWhatToDoFirst();
    void showsWhatIsChosenFromTheLog();
    void findsByTyping();
    void isChosenByKeys();
    void listFoldsAwayFromTheEndOfTheFlight();
    void isOnTheScaleOfTheTimeline();
    void aShortenedNameIsInItsToolTip();
    void aScreenReaderHasTheValues();

private:
    QQuickItem* panel() const { return m_ui->item("curvesPanel"); }
    int found() const { return m_ui->evaluate("curvesPanel.found.length").toInt(); }
};

void CurvesPanelTest::isFoldedAtFirst()
{
    QCOMPARE(m_ui->evaluate("curvesPanel.height").toInt(), 0);
    QCOMPARE(m_ui->evaluate("timelineTab.y + timelineTab.height === infoTab.y").toBool(), true);
}

void CurvesPanelTest::unfoldsUnderTheTimeline()
{
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.height").toInt(), 160);
    QCOMPARE(m_ui->evaluate("timelineTab.y + timelineTab.height === curvesPanel.y").toBool(), true);
    QCOMPARE(m_ui->evaluate("curvesPanel.y + curvesPanel.height === infoTab.y").toBool(), true);
    QCOMPARE(m_ui->get("curvesMenuItem", "text").toString(),
             QString("Hide &curves of the flight log"));
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.height").toInt(), 0);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void CurvesPanelTest::saysWhatToDoFirst()
{
    key(Qt::Key_U, Qt::ControlModifier);
    QTRY_VERIFY(panel()->isVisible());
    QCOMPARE(m_ui->get("curvesHint", "text").toString(), QString("No flight log is open."));
    openVideoAndLog();
    QTRY_COMPARE(m_ui->get("curvesHint", "text").toString(),
                 QString("Choose values on the right to show them as curves."));
}

void CurvesPanelTest::showsWhatIsChosenFromTheLog()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QCOMPARE(found(), 0);
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(found(), 1);
    QTRY_VERIFY(m_ui->get("curvesList", "count").toInt() == 1);
    QQuickItem* row = m_ui->get("curvesList", "currentItem").value<QQuickItem*>();
    QVERIFY(row);
    QCOMPARE(row->property("name").toString(), QString("mission_info.flight_number"));
    UiFixture::click(row);
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.curves").toStringList(),
                 QStringList("mission_info.flight_number"));
    QTRY_VERIFY(row->property("isShown").toBool());
    m_ui->screenshot("curves");
    m_ui->call("goCloseProject");
    QTRY_COMPARE(found(), 0);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void CurvesPanelTest::findsByTyping()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QTRY_COMPARE(found(), 1);
    UiFixture::click(m_ui->item("curvesSearch"));
    for (const char letter : {'w', ' ', 'x'})
        QTest::keyClick(m_ui->window(), letter);
    QTRY_COMPARE(m_ui->get("curvesSearch", "text").toString(), QString("w x"));
    QCOMPARE(found(), 0);
}

void CurvesPanelTest::isChosenByKeys()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QTRY_COMPARE(m_ui->get("curvesList", "count").toInt(), 2);
    m_ui->item("curvesSearch")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_ui->window(), Qt::Key_Tab);
    QTRY_VERIFY(m_ui->item("curvesList")->hasActiveFocus());
    QTest::keyClick(m_ui->window(), Qt::Key_Down);
    QTRY_COMPARE(m_ui->get("curvesList", "currentIndex").toInt(), 1);
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.curves").toStringList(),
                 QStringList("lepton_status.frame_counter"));
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.curves").toStringList(), QStringList());
    QVERIFY(!m_ui->evaluate("videoPlayer.playing").toBool());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void CurvesPanelTest::listFoldsAwayFromTheEndOfTheFlight()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QTRY_COMPARE(found(), 1);
    // Without a curve there is nothing to see but the list.
    QVERIFY(!m_ui->item("curvesListButton")->isVisible());
    m_ui->evaluate("curvesPanel.curves = ['mission_info.flight_number']");
    QTRY_VERIFY(m_ui->item("curvesListButton")->isVisible());
    UiFixture::click(m_ui->item("curvesListButton"));
    QTRY_VERIFY(!m_ui->item("curvesList")->isVisible());
    QCOMPARE(m_ui->item("logCurves")->width(), panel()->width());
    UiFixture::click(m_ui->item("curvesListButton"));
    QTRY_VERIFY(m_ui->item("curvesList")->isVisible());
    UiFixture::click(m_ui->item("curvesListButton"));
    QTRY_VERIFY(!m_ui->item("curvesList")->isVisible());
    m_ui->evaluate("curvesPanel.curves = []");
    QTRY_VERIFY(m_ui->item("curvesList")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void CurvesPanelTest::isOnTheScaleOfTheTimeline()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    m_ui->evaluate("timelineContent.contentWidth = 5000");
    m_ui->evaluate("timelineContent.contentX = 70");
    QTRY_COMPARE(m_ui->evaluate("curvesPanel.msPerPx === timelineContent.msPerPx").toBool(), true);
    QCOMPARE(m_ui->evaluate("curvesPanel.contentX").toInt(), 70);
}

void CurvesPanelTest::aShortenedNameIsInItsToolTip()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    const QString name = "temperature_of_the_gimbal.filtered_by_the_second_estimator_of_all[11]";
    m_ui->evaluate("curvesPanel.found = [{name: '" + name + "', group: '', unit: 'K'}]");
    QTRY_VERIFY(m_ui->get("curvesList", "currentItem").value<QQuickItem*>());
    QQuickItem* const row = m_ui->get("curvesList", "currentItem").value<QQuickItem*>();
    const auto tip = [this, row] {
        QObject* toolTip = m_ui->find("toolTip", row);
        return toolTip ? toolTip->property("text").toString() : QString();
    };
    QTRY_VERIFY(row->width() > 0);
    UiFixture::hover(row);
    QTRY_COMPARE(tip(), name + " (K)");
}

void CurvesPanelTest::aScreenReaderHasTheValues()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    m_ui->evaluate("curvesPanel.curves = ['mission_info.flight_number']");
    const auto texts = [this] {
        QStringList read;
        for (QQuickItem* child : m_ui->item("logCurves")->childItems()) {
            QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(child);
            if (reader && reader->role() == QAccessible::StaticText)
                read << reader->text(QAccessible::Name);
        }
        return read;
    };
    QTRY_COMPARE(texts(), m_ui->get("logCurves", "readings").toStringList());
    QCOMPARE(texts().size(), 1);
    QVERIFY(texts().first().startsWith("mission_info.flight_number"));
    m_ui->evaluate("curvesPanel.curves = []");
    QTRY_COMPARE(texts(), QStringList());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(CurvesPanelTest)
#include "CurvesPanelTest.moc"
