#include "ReviewSuite.h"

using namespace corv::test;

/// What has the keys can be seen, whatever is hidden or closed meanwhile.
class HiddenFocusTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void theKeysLeaveWhatIsHidden_data();
    void theKeysLeaveWhatIsHidden();
};

void HiddenFocusTest::theKeysLeaveWhatIsHidden_data()
{
    QTest::addColumn<QString>("show");
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("hide");
    const QString list = "panelSettings.poiListShown = ";
    QTest::newRow("the filter of the list") << list + "true"
                                            << "filterField" << list + "false";
    QTest::newRow("the list") << list + "true"
                              << "poiList" << list + "false";
    const QString panel = "panelSettings.sidebarShown = ";
    QTest::newRow("the panel") << panel + "true"
                               << "unitsButton" << panel + "false";
    const QString tab = "tabsContainer.currentIndex = ";
    QTest::newRow("the other tab") << tab + "1"
                                   << "contrastSetter" << tab + "0";
    const QString jobs = "jobsPanel.open = ";
    QTest::newRow("the jobs") << jobs + "true"
                              << "closeJobsButton" << jobs + "false";
    const QString curves = "curvesPanel.open = ";
    QTest::newRow("the curves") << curves + "true"
                                << "curvesSearch" << curves + "false";
    QTest::newRow("the tools while moving") << "timelineContent.exitMovePOIMode()"
                                            << "enterMoveModeButton"
                                            << "timelineContent.enterMovePOIMode()";
    QTest::newRow("the tools after moving") << "timelineContent.enterMovePOIMode()"
                                            << "exitMoveModeButton"
                                            << "timelineContent.exitMovePOIMode()";
}

void HiddenFocusTest::theKeysLeaveWhatIsHidden()
{
    QFETCH(QString, show);
    QFETCH(QString, item);
    QFETCH(QString, hide);
    openVideoAndLog();
    QVERIFY(m_ui->selectPoiAt(1000));
    m_ui->evaluate(show);
    QTRY_VERIFY(m_ui->item(item) && m_ui->item(item)->isVisible());
    m_ui->item(item)->forceActiveFocus(Qt::TabFocusReason);
    const auto holder = [this] { return m_ui->evaluate("activeFocusItem").value<QQuickItem*>(); };
    QTRY_VERIFY(holder() && holder()->isVisible());
    m_ui->evaluate(hide);
    QTRY_VERIFY(!m_ui->item(item) || !m_ui->item(item)->isVisible());
    QVERIFY(holder());
    QVERIFY(holder()->isVisible());
    for (const Qt::Key next : {Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Backtab}) {
        key(next);
        QVERIFY(holder() && holder()->isVisible());
    }
    m_ui->evaluate("timelineContent.exitMovePOIMode()"); // Escape would end that first
    key(Qt::Key_Escape);
    QCOMPARE(holder(), m_ui->item("videoTab"));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(HiddenFocusTest)
#include "HiddenFocusTest.moc"
