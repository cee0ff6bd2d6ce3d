#include "ReviewSuite.h"

#include <QAccessible>

using namespace corv::test;

/// The transport, the sidebar and the status line: what they say, and to whom the keys go.
class StripsTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void toolTipsNameKeysAndUnits();
    void toolTipsSayWhyAToolCannotBeUsed();
    void aReaderKnowsWhatCannotBeUsed();
    void aShortenedNameIsInItsToolTip();
    void onlyAnOpenFileIsNamed();
    void namesStayWhereTheyAreWhileTheTimeCounts();
    void aHeldKeyActsOnce();
    void aRoundedFieldKeepsTheExactValue();
    void controlsFollowThePlayer();
    void tabReachesControlsAndSpaceActivatesThem();
    void theFirstTabOnTheStartPageReachesItsFirstChoice();
    void aFlightOpenedByKeysHasTheKeyboard();
    void lettersAreTheVideosAgainAfterAMenuOpenedByAlt();
    void theTabsAreChangedByKeys();
    void aClickLeavesTheKeyboardFocusOnTheVideo();
    void escapeGivesTheKeysBackToTheVideo_data();
    void escapeGivesTheKeysBackToTheVideo();

private:
    // The text of the tool tip of a control; nothing before it was first wanted.
    QString toolTipOf(QQuickItem* control) const
    {
        QObject* toolTip = m_ui->find("toolTip", control);
        return toolTip ? toolTip->property("text").toString() : QString();
    }
};

void StripsTest::aReaderKnowsWhatCannotBeUsed()
{
    const auto readerOf = [this](const char* name) {
        return QAccessible::queryAccessibleInterface(m_ui->item(name));
    };
    QAccessibleInterface* const timeline = readerOf("timelineContent");
    QCOMPARE(timeline->text(QAccessible::Description), QString("open a video first"));
    QVERIFY(m_ui->openVideo());
    QVERIFY(timeline->text(QAccessible::Description).endsWith(", f 0"));
    QVERIFY(m_ui->showAdjustments());
    m_ui->evaluate("videoPlayer.showIR = true; videoPlayer.autoIRMapping = true");
    for (const char* end : {"iRMinValueSlider", "iRMaxValueSlider"}) {
        QTRY_VERIFY(!m_ui->item(end)->isEnabled());
        QAccessibleInterface* const reader = readerOf(end);
        QVERIFY(!reader->state().focusable);
        QCOMPARE(reader->text(QAccessible::Description),
                 QString("switch the automatic color mapping off first"));
        const QVariant shown = m_ui->get(end, "value");
        reader->valueInterface()->setCurrentValue(shown.toDouble() + 100);
        QCOMPARE(m_ui->get(end, "value"), shown);
        m_ui->evaluate("videoPlayer.autoIRMapping = false");
        QTRY_VERIFY(reader->state().focusable);
        QCOMPARE(reader->text(QAccessible::Description), QString());
        const double other = m_ui->get(end, "value").toDouble() > 8000 ? 7000 : 9000;
        reader->valueInterface()->setCurrentValue(other);
        QCOMPARE(m_ui->get(end, "value").toDouble(), other);
        m_ui->evaluate("videoPlayer.autoIRMapping = true");
    }
}

void StripsTest::toolTipsSayWhyAToolCannotBeUsed()
{
    const auto tip = [this] { return toolTipOf(m_ui->item("saveButtonsToolTips")); };
    UiFixture::hover(m_ui->item("pictureAloneButton"));
    QTRY_COMPARE(toolTipOf(m_ui->item("panelButtonsToolTips")),
                 QString("Picture alone on full screen: open a video first"));
    QVERIFY(m_ui->showAdjustments());
    UiFixture::hover(m_ui->item("contrastSetter"));
    QTRY_COMPARE(toolTipOf(m_ui->item("setterToolTips")),
                 QString("Contrast, times: open a video first"));
    UiFixture::hover(m_ui->item("iRMinValueSlider"));
    QTRY_COMPARE(toolTipOf(m_ui->item("rangeToolTips")),
                 QString("Lowest mapped value 0: show the thermal picture first"));
    UiFixture::hover(m_ui->item("removePoiButton"));
    QTRY_COMPARE(tip(), QString("Delete selected POI: open a video first"));
    QVERIFY(m_ui->openVideo());
    UiFixture::hover(m_ui->item("removePoiButton"));
    QTRY_COMPARE(tip(), QString("Delete selected POI: select a POI first"));
    // One that can be used has its own.
    UiFixture::hover(m_ui->item("addPoiButton"));
    QTRY_COMPARE(toolTipOf(m_ui->item("addPoiButton")),
                 QString("Create POI at playhead position (N)"));
    QTRY_COMPARE(tip(), QString());
    QVERIFY(m_ui->showAdjustments());
    UiFixture::hover(m_ui->item("fullIRButton"));
    QTRY_COMPARE(toolTipOf(m_ui->item("thermalToolTips")),
                 QString("Thermal picture over the whole frame: show the thermal picture first"));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void StripsTest::toolTipsNameKeysAndUnits()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    const QVector<QPair<const char*, const char*>> expected{
        {"beginButton", "First frame (Home)"},
        {"prevFrameButton", "Previous frame (Left)"},
        {"playButton", "Play (Space)"},
        {"nextFrameButton", "Next frame (Right)"},
        {"endButton", "Last frame (End)"},
        {"addPoiButton", "Create POI at playhead position (N)"},
        {"removePoiButton", "Delete selected POI (X)"},
        {"showIRButton", "Show the thermal picture over the video"},
        {"lockIRMappingButton", "Keep the color range of the frame on screen"},
    };
    for (const auto& row : expected) {
        QQuickItem* button = m_ui->item(row.first);
        QVERIFY2(button, row.first);
        // A disabled button does not see the pointer.
        button->setEnabled(true);
        UiFixture::hover(button);
        QTRY_COMPARE(toolTipOf(button), QString(row.second));
    }
    QVERIFY(m_ui->get("timeShiftingLogCorrectionSetter", "description")
                .toString()
                .contains("milliseconds"));
    QVERIFY(m_ui->get("horizontalThermalCorrectionSetter", "description")
                .toString()
                .contains("of the picture's width"));
}

void StripsTest::aShortenedNameIsInItsToolTip()
{
    QVERIFY(m_ui->openVideo());
    m_ui->window()->resize(800, 700);
    QQuickItem* name = m_ui->item("videoFileText");
    QTRY_VERIFY(name->property("truncated").toBool());
    UiFixture::hover(name);
    QTRY_COMPARE(toolTipOf(name), FlightMedia::instance().video());
}

void StripsTest::onlyAnOpenFileIsNamed()
{
    m_ui->call("loadVideo", {"/nowhere/gone.mp4"});
    expectBox("Error", "Video file /nowhere/gone.mp4 could not be read.", QMessageBox::Critical);
    QCOMPARE(m_ui->get("videoFileText", "text").toString(), QString("No video file opened"));
    QVERIFY(m_ui->openVideo());
    QCOMPARE(m_ui->get("videoFileText", "text").toString(), FlightMedia::instance().video());
}

void StripsTest::namesStayWhereTheyAreWhileTheTimeCounts()
{
    QVERIFY(m_ui->openVideo());
    // The row places its items with the next frame.
    const QQuickItem* time = m_ui->item("videoDuration");
    QTRY_VERIFY(m_ui->item("videoFileText")->x() > time->x() + time->width());
    const double before = m_ui->item("videoFileText")->x();
    m_ui->evaluate("videoPlayer.seekAtFrame(111)");
    QTRY_COMPARE(m_ui->evaluate("videoPlayer.currentFrameIndex").toInt(), 111);
    QTRY_VERIFY(m_ui->get("videoDuration", "text").toString().endsWith("f 111"));
    QCOMPARE(m_ui->item("videoFileText")->x(), before);
    QVERIFY(m_ui->get("videoDuration", "contentWidth").toDouble() <=
            m_ui->item("videoDuration")->width());
}

void StripsTest::aHeldKeyActsOnce()
{
    QVERIFY(m_ui->openVideo());
    const auto press = [this](bool repeat) {
        QTest::simulateEvent(m_ui->window(), true, Qt::Key_Space, Qt::NoModifier,
                             QStringLiteral(" "), repeat);
    };
    press(false);
    QVERIFY(player("playing").toBool());
    press(true);
    QVERIFY(player("playing").toBool());
}

void StripsTest::aRoundedFieldKeepsTheExactValue()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("videoPlayer.contrast = 1.234");
    QVERIFY(m_ui->showAdjustments());
    QCOMPARE(player("contrast").toDouble(), 1.234);
    m_ui->evaluate("videoPlayer.contrast = 1.567");
    QTRY_COMPARE(m_ui->get("contrastSetter", "value").toDouble(), 1.567);
    QCOMPARE(player("contrast").toDouble(), 1.567);
    // Beyond the setter's range, as a project of another program may have it.
    m_ui->evaluate("videoPlayer.contrast = 2.5");
    QCOMPARE(player("contrast").toDouble(), 2.5);
}

void StripsTest::controlsFollowThePlayer()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    m_ui->evaluate("videoPlayer.showIR = true; videoPlayer.autoIRMapping = false;"
                   "videoPlayer.irMappingMinValue = 100.25; videoPlayer.fullScreenIR = true");
    QTRY_COMPARE(m_ui->get("showIRButton", "checked").toBool(), true);
    QTRY_COMPARE(m_ui->get("fullIRButton", "checked").toBool(), true);
    QCOMPARE(m_ui->get("lockIRMappingButton", "enabled").toBool(), true);
    QCOMPARE(m_ui->get("iRMinValueSlider", "enabled").toBool(), true);
    QCOMPARE(m_ui->get("iRMinValueSlider", "value").toInt(), 100);
    QCOMPARE(player("irMappingMinValue").toDouble(), 100.25);
    QVERIFY(m_ui->click("showIRButton"));
    QCOMPARE(player("showIR").toBool(), false);
    m_ui->evaluate("videoPlayer.showIR = true");
    QTRY_COMPARE(m_ui->get("showIRButton", "checked").toBool(), true);
    // These functions stay callable, and end no binding.
    m_ui->evaluate("videoPlayer.updateControlsStates(); videoPlayer.updatePropertiesStates()");
    m_ui->evaluate("videoPlayer.showIR = false");
    QTRY_COMPARE(m_ui->get("lockIRMappingButton", "enabled").toBool(), false);
}

void StripsTest::tabReachesControlsAndSpaceActivatesThem()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    QStringList reached;
    for (int i = 0; i < 60 && !reached.contains("showIRButton"); ++i) {
        QTest::keyClick(m_ui->window(), Qt::Key_Tab);
        reached << m_ui->window()->activeFocusItem()->objectName();
    }
    QVERIFY2(reached.contains("showIRButton"), qPrintable(reached.join(' ')));
    QVERIFY2(reached.contains("playButton"), qPrintable(reached.join(' ')));
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QCOMPARE(player("showIR").toBool(), true);
    QCOMPARE(player("playing").toBool(), false);
    // Return and Escape are nobody's here.
    QTest::keyClick(m_ui->window(), Qt::Key_Return);
    QCOMPARE(player("showIR").toBool(), true);
}

void StripsTest::theFirstTabOnTheStartPageReachesItsFirstChoice()
{
    QTRY_VERIFY(m_ui->item("videoTab")->hasActiveFocus());
    for (const char* choice :
         {"openProjectButton", "openVideoButton", "openRemovableDevicesButton"}) {
        QTest::keyClick(m_ui->window(), Qt::Key_Tab);
        QVERIFY2(m_ui->item(choice)->hasActiveFocus(), choice);
    }
}

// The choice that opened it is hidden, and no longer there to be pressed.
void StripsTest::aFlightOpenedByKeysHasTheKeyboard()
{
    m_ui->item("openVideoButton")->forceActiveFocus(Qt::TabFocusReason);
    QTRY_VERIFY(m_ui->item("openVideoButton")->hasActiveFocus());
    QVERIFY(m_ui->openVideo());
    QTRY_VERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QVERIFY(player("playing").toBool());
    QVERIFY(!UiFixture::fileDialog());
}

void StripsTest::lettersAreTheVideosAgainAfterAMenuOpenedByAlt()
{
    const auto popup = [this]() -> QWindow* {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (window->isVisible() && window != m_ui->window())
                return window;
        }
        return nullptr;
    };
    QVERIFY(m_ui->openVideo());
    QTRY_VERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QTest::keyPress(m_ui->window(), Qt::Key_Alt, Qt::AltModifier);
    QTest::keyPress(m_ui->window(), Qt::Key_H, Qt::AltModifier);
    QTRY_VERIFY(popup());
    QVERIFY(QTest::qWaitForWindowExposed(popup()));
    QTest::keyPress(popup(), Qt::Key_Escape);
    QTRY_VERIFY(!popup());
    QTRY_VERIFY(!m_ui->evaluate("menuBar.__contentItem.item.__altPressed").toBool());
    QTest::keyClick(m_ui->window(), Qt::Key_E);
    QVERIFY(!popup());
}

void StripsTest::theTabsAreChangedByKeys()
{
    QVERIFY(m_ui->openVideo());
    const auto tab = [this] { return m_ui->get("tabsContainer", "currentIndex").toInt(); };
    const auto focused = [this] {
        QQuickItem* item = m_ui->window()->activeFocusItem();
        return item ? item->objectName() : QString();
    };
    // Nothing else in the sidebar's head takes the keyboard, and something that shows a frame does.
    const QQuickItem* const tabs = m_ui->item("tabsContainer");
    for (int i = 0; i < 60 && focused() != "tabKeys"; ++i) {
        QTest::keyClick(m_ui->window(), Qt::Key_Tab);
        QVERIFY2(!focused().isEmpty() || !tabs->hasActiveFocus(), "an item without a name");
    }
    QCOMPARE(focused(), QString("tabKeys"));
    QTest::keyClick(m_ui->window(), Qt::Key_Right);
    QTRY_COMPARE(tab(), 1);
    QTRY_VERIFY(m_ui->item("adjustmentsTabContents"));
    QCOMPARE(focused(), QString("tabKeys"));
    QTest::keyClick(m_ui->window(), Qt::Key_Left);
    QTRY_COMPARE(tab(), 0);
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QTRY_COMPARE(tab(), 1);
    // The video has seen none of it.
    QCOMPARE(player("currentFrameIndex").toInt(), 0);
    QVERIFY(!player("playing").toBool());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void StripsTest::aClickLeavesTheKeyboardFocusOnTheVideo()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* tabs = m_ui->item("tabsContainer");
    QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier,
                      tabs->mapToScene(QPointF(tabs->width() * 0.75, 12)).toPoint());
    QTRY_VERIFY(m_ui->item("adjustmentsTabContents"));
    QTRY_VERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QVERIFY(m_ui->click("copyImageButton"));
    QVERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QVERIFY(player("playing").toBool());
}

void StripsTest::escapeGivesTheKeysBackToTheVideo_data()
{
    QTest::addColumn<QString>("control");
    QTest::newRow("a button") << "addPoiButton";
    QTest::newRow("a number") << "playSpeedBox";
    QTest::newRow("a field") << "curvesSearch";
}

void StripsTest::escapeGivesTheKeysBackToTheVideo()
{
    QFETCH(QString, control);
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    QTRY_VERIFY(m_ui->item("curvesSearch")->isVisible());
    m_ui->item(control)->forceActiveFocus(Qt::TabFocusReason);
    QTRY_VERIFY(m_ui->item(control)->hasActiveFocus());
    QTest::keyClick(m_ui->window(), Qt::Key_Escape);
    QTRY_VERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QTest::keyClick(m_ui->window(), Qt::Key_Space);
    QVERIFY(player("playing").toBool());
    QCOMPARE(m_ui->poiNames(), QStringList());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(StripsTest)
#include "StripsTest.moc"
