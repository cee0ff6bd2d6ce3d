#include "ReviewSuite.h"

#include <QDesktopServices>
#include <QSettings>

using namespace corv::test;

/// The sidebar: the adjustments, made only when they are first shown, and what they do to the
/// player; the flight's names; and the settings that a run leaves to the next.
class PanelTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void theAdjustmentsAreMadeLate();
    void everythingWorksWithoutThem();
    void controlsThatComeLateShowTheState();
    void thermalButtonsNeedTheOverlay();
    void mappingIsAutomaticOrLocked();
    void slidersWriteOnlyAFixedMapping();
    void theRangeFollowsTheCamera_data();
    void theRangeFollowsTheCamera();
    void aProjectIsShownByAnOpenPanel();
    void setterChangesItsSettingAndResetsIt_data();
    void setterChangesItsSettingAndResetsIt();
    void settersNeedAVideo();
    void clickingThePanelGivesTheKeysBack();
    void theAutomaticRangeIsShown();
    void namesAreTextAndNeverBoth();
    void longNamesAreInTheirToolTip();
    void editedNamesAreWritten_data();
    void editedNamesAreWritten();
    void editedPoiIsWritten();
    void poisCanBeRestored_data();
    void poisCanBeRestored();
    void aNewInstallationHasItsDefaults();
    void settingsAreRemembered();
    void unitsChangeAtTheNextStart();
    void helpAndInstallersGoToTheShell();
    void anInstallerThatChangedIsNotOpened();
    void aCrashIsSaidUntilItIsClosed();
    void theWindowOffersAnUpdate();
};

namespace {

class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    UrlCatcher() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler("file"); }
    QList<QUrl> urls;

public slots:
    void open(const QUrl& url) { urls.append(url); }
};

} // namespace

void PanelTest::theAdjustmentsAreMadeLate()
{
    QVERIFY(!m_ui->item("adjustmentsTabContents"));
    QVERIFY(!m_ui->log().contains("Loading adjustments tab!"));
    QVERIFY(m_ui->showAdjustments());
    QVERIFY(m_ui->log().contains("Loading adjustments tab!"));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelTest::everythingWorksWithoutThem()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    m_ui->call("updateCorrectionParameters");
    m_ui->call("doAdjustThermalRange");
    m_ui->evaluate("videoPlayer.updateControlsStates(); videoPlayer.updatePropertiesStates()");
    QVERIFY(!m_ui->item("adjustmentsTabContents"));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelTest::controlsThatComeLateShowTheState()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("videoPlayer.showIR = true; videoPlayer.irOverlayTransparent = true;"
                   "videoPlayer.autoIRMapping = false; videoPlayer.irMappingMinValue = 1200;"
                   "videoPlayer.irMappingMaxValue = 5400; videoPlayer.irOffsetX = 0.1;"
                   "videoPlayer.irOffsetY = -0.1; videoPlayer.brightness = 12;"
                   "LogParser.manualLogTimeOffset = -300");
    QVERIFY(m_ui->showAdjustments());
    QCOMPARE(m_ui->get("showIRButton", "checked").toBool(), true);
    QCOMPARE(m_ui->get("irOverlayTransparentButton", "checked").toBool(), true);
    QCOMPARE(m_ui->get("autoIRMappingButton", "checked").toBool(), false);
    QCOMPARE(m_ui->get("iRMinValueSlider", "value").toDouble(), 1200.0);
    QCOMPARE(m_ui->get("iRMaxValueSlider", "value").toDouble(), 5400.0);
    QCOMPARE(m_ui->get("iRMinValueSlider", "enabled").toBool(), true);
    QCOMPARE(m_ui->get("horizontalThermalCorrectionSetter", "value").toDouble(), 0.1);
    QCOMPARE(m_ui->get("verticalThermalCorrectionSetter", "value").toDouble(), -0.1);
    QCOMPARE(m_ui->get("brightnessSetter", "value").toDouble(), 12.0);
    QCOMPARE(m_ui->get("timeShiftingLogCorrectionSetter", "value").toDouble(), -300.0);
    QCOMPARE(player("irMappingMaxValue").toInt(), 5400);
    m_ui->screenshot("adjustments");
}

void PanelTest::thermalButtonsNeedTheOverlay()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    const QStringList dependent{"fullIRButton", "irOverlayTransparentButton", "autoIRMappingButton",
                                "lockIRMappingButton"};
    for (const QString& name : dependent)
        QCOMPARE(m_ui->get(name, "enabled").toBool(), false);
    QVERIFY(m_ui->click("showIRButton"));
    QCOMPARE(player("showIR").toBool(), true);
    for (const QString& name : dependent)
        QCOMPARE(m_ui->get(name, "enabled").toBool(), true);
    QVERIFY(m_ui->click("fullIRButton"));
    QCOMPARE(player("fullScreenIR").toBool(), true);
    QVERIFY(m_ui->click("irOverlayTransparentButton"));
    QCOMPARE(player("irOverlayTransparent").toBool(), true);
    QVERIFY(m_ui->click("showIRButton"));
    QCOMPARE(player("showIR").toBool(), false);
}

void PanelTest::mappingIsAutomaticOrLocked()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    QVERIFY(m_ui->click("showIRButton"));
    QCOMPARE(m_ui->get("iRMinValueSlider", "enabled").toBool(), false);
    QVERIFY(m_ui->click("autoIRMappingButton"));
    QCOMPARE(player("autoIRMapping").toBool(), false);
    QCOMPARE(m_ui->get("iRMinValueSlider", "enabled").toBool(), true);
    QCOMPARE(m_ui->get("iRMaxValueSlider", "value").toInt(), player("irMappingMaxValue").toInt());
    QVERIFY(m_ui->click("autoIRMappingButton"));
    QCOMPARE(player("autoIRMapping").toBool(), true);
    QCOMPARE(m_ui->get("iRMaxValueSlider", "value").toInt(),
             qMin(16383, player("irDataMax").toInt()));
    QVERIFY(m_ui->click("lockIRMappingButton"));
    QCOMPARE(player("autoIRMapping").toBool(), false);
    QCOMPARE(player("irMappingMinValue"), player("irDataMin"));
    QCOMPARE(player("irMappingMaxValue"), player("irDataMax"));
    QCOMPARE(m_ui->get("autoIRMappingButton", "checked").toBool(), false);
}

void PanelTest::slidersWriteOnlyAFixedMapping()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    m_ui->find("iRMinValueSlider")->setProperty("value", 3000);
    QCOMPARE(player("irMappingMinValue").toInt(), 0);
    m_ui->evaluate("videoPlayer.autoIRMapping = false");
    m_ui->find("iRMinValueSlider")->setProperty("value", 4000);
    m_ui->find("iRMaxValueSlider")->setProperty("value", 8000);
    QCOMPARE(player("irMappingMinValue").toInt(), 4000);
    QCOMPARE(player("irMappingMaxValue").toInt(), 8000);
}

void PanelTest::theRangeFollowsTheCamera_data()
{
    QTest::addColumn<int>("leptonType");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::newRow("older") << 30 << 0 << 16383;
    QTest::newRow("newer") << 35 << 16383 << 40000;
    QTest::newRow("unknown") << -1 << 0 << 16383;
}

void PanelTest::theRangeFollowsTheCamera()
{
    QFETCH(int, leptonType);
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    QVERIFY(m_ui->importLog(FlightMedia::instance().logOfCamera(leptonType)));
    QTRY_COMPARE(m_ui->get("adjustmentsTabContents", "irRangeMax").toInt(), maximum);
    QCOMPARE(m_ui->get("adjustmentsTabContents", "irRangeMin").toInt(), minimum);
    QCOMPARE(m_ui->get("iRMinValueSlider", "minimumValue").toInt(), minimum);
    QCOMPARE(m_ui->get("iRMaxValueSlider", "maximumValue").toInt(), maximum);
    QVERIFY(m_ui->log().contains(leptonType == 35 ? "Setting values for newer thermal camera"
                                                  : "Setting values for older thermal camera"));
}

void PanelTest::aProjectIsShownByAnOpenPanel()
{
    const QString path = FlightMedia::instance().newFolder() + "/a.ecor";
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(FlightMedia::instance().logOfCamera(35)));
    m_ui->evaluate("videoPlayer.autoIRMapping = false; videoPlayer.irMappingMinValue = 20000;"
                   "videoPlayer.irMappingMaxValue = 30000; videoPlayer.showIR = true");
    m_ui->call("doSaveProject", {path});
    restart();
    QVERIFY(m_ui->showAdjustments());
    m_ui->call("loadProject", {path});
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QCOMPARE(player("irMappingMinValue").toInt(), 20000);
    QCOMPARE(player("irMappingMaxValue").toInt(), 30000);
    QCOMPARE(m_ui->get("iRMinValueSlider", "value").toInt(), 20000);
    QCOMPARE(m_ui->get("iRMaxValueSlider", "value").toInt(), 30000);
    QCOMPARE(m_ui->get("showIRButton", "checked").toBool(), true);
}

void PanelTest::setterChangesItsSettingAndResetsIt_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("reset");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<double>("step");
    QTest::addColumn<int>("decimals");
    const auto row = [](const char* setter, const char* target, double value, double reset,
                        double minimum, double maximum, double step, int decimals) {
        QTest::newRow(setter) << target << value << reset << minimum << maximum << step << decimals;
    };
    row("horizontalThermalCorrectionSetter", "videoPlayer.irOffsetX", 0.1, 0, -0.2, 0.2, 0.005, 3);
    row("verticalThermalCorrectionSetter", "videoPlayer.irOffsetY", -0.1, 0, -0.16, 0.16, 0.005, 3);
    row("timeShiftingLogCorrectionSetter", "LogParser.manualLogTimeOffset", 1500, 0, -5000, 5000,
        100, 0);
    row("contrastSetter", "videoPlayer.contrast", 1.5, 1, 0.5, 2, 0.01, 1);
    row("brightnessSetter", "videoPlayer.brightness", -20, 0, -50, 50, 1, 0);
}

void PanelTest::setterChangesItsSettingAndResetsIt()
{
    QFETCH(QString, target);
    QFETCH(double, value);
    QFETCH(double, reset);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    QObject* setter = m_ui->find(name);
    QVERIFY(setter);
    QTEST(setter->property("minimumValue").toDouble(), "minimum");
    QTEST(setter->property("maximumValue").toDouble(), "maximum");
    QTEST(setter->property("stepSize").toDouble(), "step");
    QTEST(setter->property("decimals").toInt(), "decimals");
    QCOMPARE(setter->property("value").toDouble(), reset);

    m_ui->find("horizontalSlider", setter)->setProperty("value", value);
    QCOMPARE(m_ui->evaluate(target).toDouble(), value);
    UiFixture::click(m_ui->item("resetButton", setter));
    QCOMPARE(m_ui->evaluate(target).toDouble(), reset);
    QCOMPARE(setter->property("value").toDouble(), reset);
}

void PanelTest::settersNeedAVideo()
{
    QVERIFY(m_ui->showAdjustments());
    QObject* setter = m_ui->find("contrastSetter");
    QCOMPARE(setter->property("enabled").toBool(), false);
    m_ui->evaluate("videoPlayer.contrast = 1.4");
    UiFixture::click(m_ui->item("resetButton", setter));
    QCOMPARE(player("contrast").toDouble(), 1.4);
    QVERIFY(m_ui->openVideo());
    QCOMPARE(setter->property("enabled").toBool(), true);
}

void PanelTest::clickingThePanelGivesTheKeysBack()
{
    QVERIFY(m_ui->openVideo());
    QQuickItem* panel = m_ui->showAdjustments();
    QVERIFY(panel);
    UiFixture::click(m_ui->item("valueBox", m_ui->find("contrastSetter")));
    QVERIFY(!m_ui->item("videoTab")->hasActiveFocus());
    QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier,
                      panel->mapToScene(QPointF(5, panel->height() - 5)).toPoint());
    QVERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QVERIFY(m_ui->log().contains("Giving back focus"));
}

void PanelTest::theAutomaticRangeIsShown()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->showAdjustments());
    m_ui->find("iRMaxValueSlider")->setProperty("value", 777);
    m_ui->evaluate("videoPlayer.irDataChanged()");
    QCOMPARE(m_ui->get("iRMaxValueSlider", "value").toInt(),
             qMin(16383, player("irDataMax").toInt()));
    m_ui->evaluate("videoPlayer.autoIRMapping = false");
    m_ui->find("iRMaxValueSlider")->setProperty("value", 777);
    m_ui->evaluate("videoPlayer.irDataChanged()");
    QCOMPARE(m_ui->get("iRMaxValueSlider", "value").toInt(), 777);
}

void PanelTest::namesAreTextAndNeverBoth()
{
    const auto shown = [this](const char* name) { return m_ui->item(name)->isVisible(); };
    QVERIFY(!shown("namingText") && shown("namingTextUndefined"));
    m_ui->evaluate("LogParser.flightNaming = {missionName: '<b>A&B', flightName: 'x', "
                   "flightNumber: 3, undefined: false}");
    QVERIFY(shown("namingText") && !shown("namingTextUndefined"));
    QCOMPARE(m_ui->get("namingText", "text").toString(),
             QString("<b>Mission:</b><br>&lt;b>A&amp;B<br><b>Flight:</b><br>x<br><b>Num. </b>3"));
    m_ui->evaluate("LogParser.flightNaming = {undefined: true}");
    QVERIFY(!shown("namingText") && shown("namingTextUndefined"));
}

void PanelTest::longNamesAreInTheirToolTip()
{
    const auto tip = [this] {
        QObject* toolTip = m_ui->find("toolTip", m_ui->item("namingText"));
        return toolTip ? toolTip->property("text").toString() : QString();
    };
    const auto name = [this](const QString& mission) {
        m_ui->evaluate("LogParser.flightNaming = {missionName: '" + mission +
                       "', flightName: 'North', flightNumber: 3, undefined: false}");
    };
    const QString mission = QString("Inspection of the line ").repeated(12).trimmed();
    name(mission);
    UiFixture::hover(m_ui->item("namingText"));
    QTRY_COMPARE(tip(), "Mission: " + mission + "\nFlight: North\nNum. 3");
    // Small, but readable.
    QVERIFY(m_ui->get("namingText", "minimumPixelSize").toInt() >= 9);
    name("Line 12");
    QTRY_COMPARE(tip(), QString());
}

void PanelTest::editedNamesAreWritten_data()
{
    QTest::addColumn<QString>("mission");
    QTest::addColumn<QString>("flight");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("defined");
    QTest::newRow("all") << "M"
                         << "F" << 12 << true;
    QTest::newRow("no number") << "M"
                               << "" << 0 << true;
    QTest::newRow("only a number") << ""
                                   << "" << 3 << true;
    QTest::newRow("nothing") << ""
                             << "" << 0 << false;
}

void PanelTest::editedNamesAreWritten()
{
    QFETCH(QString, mission);
    QFETCH(QString, flight);
    QFETCH(int, number);
    QFETCH(bool, defined);
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_VERIFY(m_ui->item("namingText")->isVisible());
    QVERIFY(m_ui->click("namingEditButton"));
    QTRY_VERIFY(UiFixture::visibleWindow("flightPropertiesWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("flightPropertiesWindow");
    QCOMPARE(window->property("missionName").toString(), QString("Bridge"));
    QCOMPARE(window->property("flightNumber").toInt(), 7);
    window->setProperty("missionName", mission);
    window->setProperty("flightName", flight);
    window->setProperty("flightNumber", number);
    window->setProperty("ok", true);
    window->close();
    QTRY_VERIFY(m_ui->log().contains("Save flight properties changes"));
    const QVariantMap naming = m_ui->evaluate("LogParser.flightNaming").toMap();
    QCOMPARE(naming["undefined"].toBool(), !defined);
    QCOMPARE(naming["missionName"].toString(), mission);
    QCOMPARE(naming["flightName"].toString(), flight);
    QCOMPARE(naming["flightNumber"].toInt(), number);
}

void PanelTest::editedPoiIsWritten()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(2000));
    QVERIFY(m_ui->click("editPoiButton"));
    QTRY_VERIFY(UiFixture::visibleWindow("poiPropertiesWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("poiPropertiesWindow");
    QCOMPARE(window->property("poiName").toString(), QString("Crack"));
    window->setProperty("poiName", "Rust");
    window->setProperty("poiDescription", "below");
    window->setProperty("ok", true);
    window->close();
    QTRY_COMPARE(m_ui->poiNames(), QStringList("Rust"));
    QCOMPARE(m_ui->evaluate("timelineContent.getSelectedPOI().comment").toString(),
             QString("below"));
    QVERIFY(m_ui->log().contains("Save POI changes"));
}

void PanelTest::poisCanBeRestored_data()
{
    QTest::addColumn<bool>("eraseAll");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("reload") << true << QStringList{"POI 1", "POI 2"};
    QTest::newRow("missing only") << false << QStringList{"POI 1", "POI 2"};
}

void PanelTest::poisCanBeRestored()
{
    QFETCH(bool, eraseAll);
    QFETCH(QStringList, names);
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    m_ui->evaluate("timelineContent.clearAllData(); videoPlayer.play()");
    QVERIFY(m_ui->trigger("restorePoisMenuItem"));
    QTRY_VERIFY(UiFixture::visibleWindow("restorePoiChoice"));
    QQuickWindow* window = UiFixture::visibleWindow("restorePoiChoice");
    window->setProperty("eraseAll", eraseAll);
    window->setProperty("ok", true);
    window->close();
    QTRY_COMPARE(m_ui->poiNames(), names);
    QCOMPARE(player("playing").toBool(), false);
}

void PanelTest::aNewInstallationHasItsDefaults()
{
    QCOMPARE(m_ui->evaluate("generalSettings.imperialUnits").toBool(), false);
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), false);
    QCOMPARE(m_ui->evaluate("loadFileSettings.folder").toString(), QString());
    QCOMPARE(m_ui->evaluate("saveImageSettings.folder").toString(), QString());
    QCOMPARE(m_ui->window()->size(), QSize(1600, 900));
}

void PanelTest::settingsAreRemembered()
{
    m_ui->window()->resize(1000, 800);
    QTRY_COMPARE(m_ui->window()->size(), QSize(1000, 800));
    m_ui->evaluate("loadFileSettings.folder = 'file:///tmp'");
    // Written a little later, once the window has come to rest.
    QTRY_COMPARE(QSettings().value("mainWindow/width").toInt(), 1000);
    QVERIFY(m_ui->reload());
    QTRY_COMPARE(m_ui->window()->size(), QSize(1000, 800));
    QCOMPARE(m_ui->evaluate("loadFileSettings.folder").toString(), QString("file:///tmp"));
}

void PanelTest::unitsChangeAtTheNextStart()
{
    QVERIFY(m_ui->trigger("generalSettingsMenuItem"));
    QTRY_VERIFY(UiFixture::visibleWindow("generalSettings"));
    QQuickWindow* window = UiFixture::visibleWindow("generalSettings");
    m_ui->find("radioUnitImperial", window)->setProperty("checked", true);
    QVERIFY(QMetaObject::invokeMethod(m_ui->find("okButton", window), "pressButton"));
    QTRY_VERIFY(m_ui->log().contains("Settings have changed : true"));
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), false);
    // The one script error that is expected.
    QCOMPARE(m_ui->scriptErrors().size(), 1);
    QVERIFY(m_ui->scriptErrors().first().contains("TypeError"));
    QVERIFY(m_ui->reload());
    QCOMPARE(m_ui->get("headUpDisplay", "imperialUnits").toBool(), true);
}

void PanelTest::helpAndInstallersGoToTheShell()
{
    UrlCatcher shell;
    QVERIFY(m_ui->trigger("userGuideMenuItem"));
    QTRY_COMPARE(shell.urls.size(), 1);
    QCOMPARE(shell.urls.first(),
             QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + "/manual.pdf"));
    m_ui->call("showNewInstallationFailedError", {"/tmp/new one/setup"});
    QTRY_COMPARE(shell.urls.size(), 2);
    QCOMPARE(shell.urls.last(), QUrl::fromLocalFile("/tmp/new one/setup"));
    QVERIFY(UiFixture::messageBox());
    QCOMPARE(UiFixture::messageBox()->windowTitle(), QString("Installing new Vistrel"));
    QCOMPARE(UiFixture::messageBox()->text(),
             QString("Failed to automatically install the new Vistrel. Please proceed with manual "
                     "installation."));
    QVERIFY(UiFixture::dismissMessageBox());
}

void PanelTest::anInstallerThatChangedIsNotOpened()
{
    UrlCatcher shell;
    m_ui->call("showInstallerRefused", {"9.1.0.0"});
    QVERIFY(UiFixture::messageBox());
    QVERIFY(UiFixture::messageBox()->text().startsWith(
        "The installer of Vistrel 9.1.0.0 has changed since it was downloaded."));
    QVERIFY(UiFixture::dismissMessageBox());
    QVERIFY(shell.urls.isEmpty());
}

void PanelTest::aCrashIsSaidUntilItIsClosed()
{
    UrlCatcher shell;
    QVERIFY(!m_ui->item("recoveryBar")->isVisible());
    m_ui->root()->setProperty("crashNotice", "Vistrel crashed on 21 November, 20:55 (SIGSEGV).");
    m_ui->root()->setProperty("crashReportPath", "/tmp/a folder/Vistrel-crash-1.txt");
    QTRY_VERIFY(m_ui->item("recoveryBar")->isVisible());
    QVERIFY(m_ui->get("crashText", "text").toString().contains("(SIGSEGV)"));
    QVERIFY(!m_ui->item("discardRecoveryButton")->isVisible());

    // Also over an open flight, where no start page is.
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->item("crashText")->isVisible());
    QVERIFY(m_ui->click("showCrashReportButton"));
    QTRY_COMPARE(shell.urls.size(), 1);
    QCOMPARE(shell.urls.first(), QUrl::fromLocalFile("/tmp/a folder/Vistrel-crash-1.txt"));
    QVERIFY(m_ui->click("closeCrashNoticeButton"));
    QTRY_VERIFY(!m_ui->item("recoveryBar")->isVisible());
    QVERIFY(m_ui->item("videoTab")->hasActiveFocus());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PanelTest::theWindowOffersAnUpdate()
{
    QSignalSpy install(m_ui->root(), SIGNAL(installNewVersion(QString)));
    m_ui->call("launchUpdateWindow", {"9.1.0.0", QStringList{"faster", "better"}});
    QTRY_VERIFY(UiFixture::visibleWindow("newUpdateWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("newUpdateWindow");
    QCOMPARE(window->property("versionString").toString(), QString("9.1.0.0"));
    QVERIFY(QMetaObject::invokeMethod(m_ui->find("btn_install_now", window), "clicked"));
    QCOMPARE(install.count(), 1);
    QCOMPARE(install.first().first().toString(), QString("9.1.0.0"));
    QTRY_VERIFY(!UiFixture::visibleWindow("newUpdateWindow"));
}

QTEST_MAIN(PanelTest)
#include "PanelTest.moc"
