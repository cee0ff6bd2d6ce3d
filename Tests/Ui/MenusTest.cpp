#include "ReviewSuite.h"

using namespace corv::test;

/// The commands of the main window: every menu entry, every key, what is enabled when, and what is
/// reported of their use.
class MenusTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void entriesHaveTheirTextsAndShortcuts_data();
    void entriesHaveTheirTextsAndShortcuts();
    void entriesAreEnabledByWhatIsOpen_data();
    void entriesAreEnabledByWhatIsOpen();
    void toolsFollowTheVideoAndTheSelection();
    void openersShowTheirDialog_data();
    void openersShowTheirDialog();
    void openersShowTheirWindow_data();
    void openersShowTheirWindow();
    void pointsOfInterestAreExportedAsATable_data();
    void pointsOfInterestAreExportedAsATable();
    void cornersOfExportsAreRemembered_data();
    void cornersOfExportsAreRemembered();
    void cornersAreChosenInTheExportWindows_data();
    void cornersAreChosenInTheExportWindows();
    void fullScreenIsToggled();
    void exitEndsTheProgram();
    void menuKeysOpenTheirDialogs_data();
    void menuKeysOpenTheirDialogs();
    void transportKeysMoveTheVideo();
    void transportButtonsMoveTheVideo();
    void poiKeysWorkOnTheSelectedOne();
    void moveModeTakesTheKeys();
    void returnOutsideMoveModeDoesNothing();
    void verbsReportTheirEvents_data();
    void verbsReportTheirEvents();
    void startIsReported();

private:
    int frame() const { return m_ui->evaluate("videoPlayer.currentFrameIndex").toInt(); }
};

void MenusTest::entriesHaveTheirTextsAndShortcuts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shortcut");
    const auto row = [](const char* name, const char* text, const char* shortcut) {
        QTest::newRow(name) << text << shortcut;
    };
    row("newFromVideoMenuItem", "From &video file...", "Ctrl+N");
    row("newFromDevicesMenuItem", "From removable devices / &directories...", "Ctrl+Shift+N");
    row("importLogMenuItem", "&Import flight log...", "Ctrl+L");
    row("openProjectMenuItem", "&Open project...", "Ctrl+O");
    row("saveProjectMenuItem", "&Save project", "Ctrl+S");
    row("saveProjectAsMenuItem", "&Save project as...", "Ctrl+Shift+S");
    row("saveProjectCopyMenuItem", "&Save project copy...", "");
    row("closeProjectMenuItem", "&Close current project", "Ctrl+W");
    row("exitMenuItem", "&Exit", "Ctrl+Q");
    row("undoMenuItem", "&Undo", "Ctrl+Z");
    row("redoMenuItem", "&Redo", "Ctrl+Shift+Z");
    row("createReportMenuItem", "Create inspection report...", "");
    row("exportFramesMenuItem", "Export frames as images...", "");
    row("exportVideoMenuItem", "Export video file...", "");
    row("exportPoiTableMenuItem", "Export points of interest as a table...", "");
    row("copyFrameMenuItem", "&Copy current frame to clipboard", "Ctrl+C");
    row("exportInstrumentsMenuItem", "Show flight &instruments in exports", "");
    row("exportThermalBarMenuItem", "Show thermal colour &bar in exports", "");
    row("generalSettingsMenuItem", "General settings", "");
    row("fullScreenMenuItem", "&Full screen", "F11");
    row("pictureAloneMenuItem", "&Picture alone on full screen", "F");
    row("curvesMenuItem", "Show &curves of the flight log", "Ctrl+U");
    row("restorePoisMenuItem", "Restore POIs from flight data...", "");
    row("userGuideMenuItem", "User guide...", "F1");
    row("shortcutsMenuItem", "Shortcuts...", "");
    row("aboutMenuItem", "About...", "");
}

void MenusTest::entriesHaveTheirTextsAndShortcuts()
{
    QFETCH(QString, text);
    QFETCH(QString, shortcut);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(m_ui->find(name));
    QCOMPARE(m_ui->get(name, "text").toString(), text);
    QCOMPARE(m_ui->get(name, "shortcut").toString(), shortcut);
}

void MenusTest::entriesAreEnabledByWhatIsOpen_data()
{
    QTest::addColumn<bool>("atStart");
    QTest::addColumn<bool>("withVideo");
    QTest::addColumn<bool>("withLog");
    QTest::addColumn<bool>("withProject");
    const auto row = [](const char* name, bool start, bool video, bool log, bool project) {
        QTest::newRow(name) << start << video << log << project;
    };
    for (const char* always :
         {"newFromVideoMenuItem", "newFromDevicesMenuItem", "openProjectMenuItem", "exitMenuItem",
          "exportInstrumentsMenuItem", "exportThermalBarMenuItem", "generalSettingsMenuItem",
          "fullScreenMenuItem", "userGuideMenuItem", "shortcutsMenuItem", "aboutMenuItem"})
        row(always, true, true, true, true);
    for (const char* video : {"importLogMenuItem", "saveProjectMenuItem", "saveProjectAsMenuItem",
                              "closeProjectMenuItem", "exportFramesMenuItem", "exportVideoMenuItem",
                              "exportPoiTableMenuItem", "copyFrameMenuItem", "restorePoisMenuItem"})
        row(video, false, true, true, true);
    row("createReportMenuItem", false, false, true, true);
    row("saveProjectCopyMenuItem", false, false, false, true);
}

void MenusTest::entriesAreEnabledByWhatIsOpen()
{
    QFETCH(bool, atStart);
    QFETCH(bool, withVideo);
    QFETCH(bool, withLog);
    QFETCH(bool, withProject);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const auto enabled = [&] { return m_ui->get(name, "enabled").toBool(); };
    QCOMPARE(enabled(), atStart);
    QVERIFY(m_ui->openVideo());
    QCOMPARE(enabled(), withVideo);
    QVERIFY(m_ui->importLog());
    QCOMPARE(enabled(), withLog);
    m_ui->call("doSaveProject", {FlightMedia::instance().newFolder() + "/a.ecor"});
    QCOMPARE(enabled(), withProject);
    m_ui->call("goCloseProject");
    QTRY_COMPARE(enabled(), atStart);
}

void MenusTest::toolsFollowTheVideoAndTheSelection()
{
    const QStringList ofVideo{"saveImageButton", "copyImageButton", "addPoiButton"};
    const QStringList ofSelection{"removePoiButton", "editPoiButton", "enterMoveModeButton"};
    const auto check = [this](const QStringList& names, bool expected) {
        for (const QString& name : names)
            QCOMPARE(m_ui->get(name, "enabled").toBool(), expected);
    };
    check(ofVideo + ofSelection, false);
    QVERIFY(m_ui->openVideo());
    check(ofVideo, true);
    check(ofSelection, false);
    QVERIFY(m_ui->selectPoiAt(2000));
    check(ofVideo + ofSelection, true);
    QVERIFY(m_ui->click("removePoiButton"));
    QCOMPARE(m_ui->poiNames(), QStringList());
    check(ofSelection, false);
}

void MenusTest::openersShowTheirDialog_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("filters");
    QTest::addColumn<bool>("saves");
    QTest::newRow("newFromVideoMenuItem")
        << "Please choose a video" << QStringList("Video files (*.mov *.avi *.3gp *.mp4)") << false;
    QTest::newRow("importLogMenuItem")
        << "Please choose a flight data file" << QStringList("Flight data files (*.log)") << false;
    QTest::newRow("openProjectMenuItem")
        << "Open project..." << QStringList("Vistrel projects (*.ecor)") << false;
    QTest::newRow("saveProjectMenuItem")
        << "Save project as..." << QStringList("Vistrel projects (*.ecor)") << true;
    QTest::newRow("saveProjectAsMenuItem")
        << "Save project as..." << QStringList("Vistrel projects (*.ecor)") << true;
    QTest::newRow("createReportMenuItem")
        << "Save POI report as..." << QStringList("Word Document (*.docx)") << true;
    QTest::newRow("exportPoiTableMenuItem")
        << "Save points of interest as..." << QStringList{"CSV table (*.csv)", "JSON (*.json)"}
        << true;
    QTest::newRow("saveImageButton")
        << "Save image as..." << QStringList{"JPEG (*.jpg)", "Bitmap (*.bmp)", "PNG (*.png)"}
        << true;
}

void MenusTest::openersShowTheirDialog()
{
    QFETCH(QString, title);
    QFETCH(QStringList, filters);
    QFETCH(bool, saves);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    m_ui->evaluate("videoPlayer.play()");
    QVERIFY(name.endsWith("Button") ? m_ui->click(name) : m_ui->trigger(name));
    QTRY_VERIFY(UiFixture::fileDialog());
    QFileDialog* dialog = UiFixture::fileDialog();
    QCOMPARE(dialog->windowTitle(), title);
    // More formats of pictures may follow.
    const int stated = name == "saveImageButton" ? filters.size() : -1;
    QCOMPARE(QStringList(dialog->nameFilters().mid(0, stated)), filters);
    QCOMPARE(dialog->acceptMode() == QFileDialog::AcceptSave, saves);
    dialog->reject();
    // Cancelled, it leaves the video paused.
    QCOMPARE(m_ui->evaluate("videoPlayer.playing").toBool(), false);
    QVERIFY(m_ui->hasVideo());
}

void MenusTest::openersShowTheirWindow_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<bool>("pauses");
    QTest::newRow("newFromDevicesMenuItem") << "autoImporter" << true;
    QTest::newRow("exportFramesMenuItem") << "framesExport" << true;
    QTest::newRow("exportVideoMenuItem") << "videoExport" << true;
    QTest::newRow("generalSettingsMenuItem") << "generalSettings" << true;
    QTest::newRow("restorePoisMenuItem") << "restorePoiChoice" << true;
    QTest::newRow("shortcutsMenuItem") << "shortcutsWindow" << false;
    QTest::newRow("aboutMenuItem") << "aboutWindow" << false;
    QTest::newRow("editPoiButton") << "poiPropertiesWindow" << false;
    QTest::newRow("namingEditButton") << "flightPropertiesWindow" << false;
}

void MenusTest::openersShowTheirWindow()
{
    QFETCH(QString, window);
    QFETCH(bool, pauses);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(1000));
    QVERIFY(!UiFixture::visibleWindow(window));
    m_ui->evaluate("videoPlayer.play()");
    QVERIFY(name.endsWith("Button") ? m_ui->click(name) : m_ui->trigger(name));
    QTRY_VERIFY(UiFixture::visibleWindow(window));
    QCOMPARE(m_ui->evaluate("videoPlayer.playing").toBool(), !pauses);
    QQuickWindow* opened = UiFixture::visibleWindow(window);
    m_ui->screenshot("window " + opened->title());
    // Else a click on the main window would hide the very window that blocks it.
    QCOMPARE(opened->transientParent(), m_ui->window());
    QCOMPARE(opened->type(), Qt::Dialog);
    opened->close();
    QTRY_VERIFY(!UiFixture::visibleWindow(window));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void MenusTest::pointsOfInterestAreExportedAsATable_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("CSV") << "points ü.csv" << QByteArray("time (ms),time,log time (ms),name,");
    QTest::newRow("JSON") << "points ü.json" << QByteArray("[\n    {\n");
    QTest::newRow("by the filter") << "points" << QByteArray("time (ms),time,log time (ms),name,");
}

void MenusTest::pointsOfInterestAreExportedAsATable()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, start);
    const QString folder = media().newFolder();
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(media().logWithInstruments()));
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    QVERIFY(m_ui->trigger("exportPoiTableMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(folder + '/' + file));
    QFile written(folder + '/' + file + (file.contains('.') ? "" : ".csv"));
    QTRY_VERIFY(written.exists());
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QByteArray text = written.readAll();
    QVERIFY2(text.startsWith(start), text.constData());
    QVERIFY(text.contains("-30"));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void MenusTest::cornersOfExportsAreRemembered_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("log");
    QTest::newRow("instruments") << "exportInstrumentsMenuItem"
                                 << "instruments" << media().logWithInstruments();
    QTest::newRow("thermal bar") << "exportThermalBarMenuItem"
                                 << "thermalBar" << media().logWithThermal();
}

void MenusTest::cornersOfExportsAreRemembered()
{
    QFETCH(QString, entry);
    QFETCH(QString, property);
    QFETCH(QString, log);
    const QByteArray item = entry.toLatin1();
    const auto shown = [&] {
        return m_ui->get("exportInsets", property.toLatin1().constData()).toBool();
    };
    const auto checked = [&] { return m_ui->get(item.constData(), "checked").toBool(); };
    QVERIFY(!shown() && !checked());
    const QString folder = FlightMedia::instance().newFolder();
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(log));
    m_ui->evaluate("videoPlayer.showIR = true");
    const auto saved = [&](const char* name) {
        const QString file = folder + '/' + name;
        m_ui->evaluate("videoPlayer.saveFrame(videoPlayer.timePosition, '" + file + "', true)");
        return QTest::qWaitFor([&] { return !QImage(file).isNull(); }) ? QImage(file) : QImage();
    };
    const QImage bare = saved("bare.png");
    QVERIFY(m_ui->trigger(item.constData()));
    QVERIFY(shown() && checked());
    const QImage corner = saved("corner.png");
    QVERIFY(!bare.isNull() && corner.size() == bare.size());
    QVERIFY(corner != bare);
    const QRect left(0, 0, bare.width() / 3, bare.height());
    QCOMPARE(corner.copy(left) != bare.copy(left), property == "thermalBar");
    QVERIFY(m_ui->reload());
    QVERIFY(shown() && checked());
    QVERIFY(m_ui->trigger(item.constData()));
    QVERIFY(!shown() && !checked());
    QVERIFY(m_ui->trigger(item.constData()));
    QVERIFY(shown() && checked());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void MenusTest::cornersAreChosenInTheExportWindows_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("unavailable");
    QTest::newRow("instruments")
        << "instruments"
        << "Show the flight instruments in a corner: import a flight log first";
    QTest::newRow("thermal bar")
        << "thermalBar"
        << "Show the thermal colour bar in a corner: show the thermal picture first";
}

void MenusTest::cornersAreChosenInTheExportWindows()
{
    QFETCH(QString, property);
    QFETCH(QString, unavailable);
    const QByteArray name = property.toLatin1();
    const QByteArray enabled = name + "Enabled";
    const auto shown = [&] { return m_ui->get("exportInsets", name.constData()).toBool(); };
    QVERIFY(m_ui->openVideo());
    for (const char* opener : {"exportFramesMenuItem", "exportVideoMenuItem"}) {
        const QString windowName =
            qstrcmp(opener, "exportVideoMenuItem") == 0 ? "videoExport" : "framesExport";
        QVERIFY(m_ui->trigger(opener));
        QTRY_VERIFY(UiFixture::visibleWindow(windowName));
        QQuickWindow* window = UiFixture::visibleWindow(windowName);
        QVERIFY(!window->property(enabled.constData()).toBool());
        QVERIFY(QTest::qWaitForWindowExposed(window));
        UiFixture::hover(m_ui->item((name + "CheckBox").constData(), window));
        QQuickItem* const toolTips = m_ui->item("cornerToolTips", window);
        QTRY_VERIFY(m_ui->find("toolTip", toolTips));
        QTRY_COMPARE(m_ui->find("toolTip", toolTips)->property("text").toString(), unavailable);
        window->close();
        QTRY_VERIFY(!UiFixture::visibleWindow(windowName));
    }
    QVERIFY(m_ui->importLog());
    m_ui->evaluate("videoPlayer.showIR = true");
    for (const bool wanted : {true, false}) {
        const QString folder = FlightMedia::instance().newFolder();
        QVERIFY(m_ui->trigger("exportFramesMenuItem"));
        QTRY_VERIFY(UiFixture::visibleWindow("framesExport"));
        QQuickWindow* window = UiFixture::visibleWindow("framesExport");
        QVERIFY(window->property(enabled.constData()).toBool());
        QCOMPARE(window->property(name.constData()).toBool(), !wanted);
        window->setProperty("framesUrl", QUrl::fromLocalFile(folder));
        QVERIFY(UiFixture::visibleWindow("framesExport") == window);
        UiFixture::click(m_ui->item((name + "CheckBox").constData(), window));
        QCOMPARE(window->property(name.constData()).toBool(), wanted);
        QCOMPARE(shown(), !wanted);
        m_ui->screenshot("Export frames with " + property);
        QMetaObject::invokeMethod(window, "exportImages");
        QTRY_VERIFY(!UiFixture::visibleWindow("framesExport"));
        QCOMPARE(shown(), wanted);
    }
}

void MenusTest::fullScreenIsToggled()
{
    key(Qt::Key_F11);
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::FullScreen);
    key(Qt::Key_F11);
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::Windowed);
}

void MenusTest::exitEndsTheProgram()
{
    QSignalSpy quit(&m_ui->engine(), &QQmlEngine::quit);
    QVERIFY(m_ui->trigger("exitMenuItem"));
    QCOMPARE(quit.count(), 1);
}

void MenusTest::menuKeysOpenTheirDialogs_data()
{
    QTest::addColumn<int>("pressed");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("dialog");
    QTest::newRow("Ctrl+N") << int(Qt::Key_N) << int(Qt::ControlModifier)
                            << "Please choose a video";
    QTest::newRow("Ctrl+L") << int(Qt::Key_L) << int(Qt::ControlModifier)
                            << "Please choose a flight data file";
    QTest::newRow("Ctrl+O") << int(Qt::Key_O) << int(Qt::ControlModifier) << "Open project...";
    QTest::newRow("Ctrl+S") << int(Qt::Key_S) << int(Qt::ControlModifier) << "Save project as...";
    QTest::newRow("Ctrl+Shift+S") << int(Qt::Key_S) << int(Qt::ControlModifier | Qt::ShiftModifier)
                                  << "Save project as...";
}

void MenusTest::menuKeysOpenTheirDialogs()
{
    QFETCH(int, pressed);
    QFETCH(int, modifiers);
    QFETCH(QString, dialog);
    QVERIFY(m_ui->openVideo());
    key(pressed, Qt::KeyboardModifiers(modifiers));
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->windowTitle(), dialog);
    UiFixture::fileDialog()->reject();
    // The window manager may take the focus once more while it puts the dialog away; with no video
    // open the key does nothing.
    const auto closes = [this] {
        if (m_ui->activate())
            key(Qt::Key_W, Qt::ControlModifier);
        return !m_ui->hasVideo();
    };
    QTRY_VERIFY(closes());
}

void MenusTest::transportKeysMoveTheVideo()
{
    QVERIFY(m_ui->openVideo());
    QCOMPARE(frame(), 0);
    key(Qt::Key_Left);
    QCOMPARE(frame(), 0);
    key(Qt::Key_Home);
    key(Qt::Key_Right);
    QTRY_COMPARE(frame(), 1);
    key(Qt::Key_Right);
    QTRY_COMPARE(frame(), 2);
    key(Qt::Key_Left);
    QTRY_COMPARE(frame(), 1);
    key(Qt::Key_Home);
    QTRY_COMPARE(frame(), 0);
    key(Qt::Key_Space);
    QVERIFY(m_ui->evaluate("videoPlayer.playing").toBool());
    QTRY_VERIFY(frame() > 2);
    key(Qt::Key_Space);
    QVERIFY(!m_ui->evaluate("videoPlayer.playing").toBool());
}

void MenusTest::transportButtonsMoveTheVideo()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->click("nextFrameButton"));
    QTRY_COMPARE(frame(), 1);
    QVERIFY(m_ui->click("prevFrameButton"));
    QTRY_COMPARE(frame(), 0);
    QVERIFY(m_ui->get("playButton", "source").toString().endsWith("images/play.png"));
    QVERIFY(m_ui->click("playButton"));
    QVERIFY(m_ui->get("playButton", "source").toString().endsWith("images/pause.png"));
    QVERIFY(m_ui->click("videoMouseArea"));
    QVERIFY(m_ui->get("playButton", "source").toString().endsWith("images/play.png"));
    QVERIFY(m_ui->click("beginButton"));
    QTRY_COMPARE(frame(), 0);
    m_ui->find("playSpeedBox")->setProperty("value", 9);
    QCOMPARE(m_ui->evaluate("videoPlayer.playSpeed").toInt(), 5);
}

void MenusTest::poiKeysWorkOnTheSelectedOne()
{
    QVERIFY(m_ui->openVideo());
    key(Qt::Key_X);
    key(Qt::Key_E);
    key(Qt::Key_M);
    QVERIFY(!UiFixture::visibleWindow("poiPropertiesWindow"));
    QVERIFY(!m_ui->evaluate("timelineContent.movePOIMode").toBool());
    key(Qt::Key_N);
    QCOMPARE(m_ui->poiNames(), QStringList("New POI"));
    QVERIFY(m_ui->selectPoiAt(2000));
    key(Qt::Key_E);
    QTRY_VERIFY(UiFixture::visibleWindow("poiPropertiesWindow"));
    UiFixture::visibleWindow("poiPropertiesWindow")->close();
    QVERIFY(m_ui->activate());
    key(Qt::Key_X);
    QCOMPARE(m_ui->poiNames(), QStringList());
}

void MenusTest::moveModeTakesTheKeys()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(2000));
    QVERIFY(m_ui->item("toolbarSaveButtons")->isVisible());
    key(Qt::Key_M);
    QVERIFY(m_ui->item("toolbarSpecialModeButtons")->isVisible());
    QVERIFY(!m_ui->item("toolbarSaveButtons")->isVisible());
    m_ui->screenshot("move mode");
    // The keys of points of interest are dead meanwhile, only "N" is not.
    key(Qt::Key_X);
    QCOMPARE(m_ui->poiNames().count("Crack"), 1);
    key(Qt::Key_Escape);
    QVERIFY(m_ui->item("toolbarSaveButtons")->isVisible());
    QVERIFY(m_ui->click("enterMoveModeButton"));
    QVERIFY(m_ui->click("exitMoveModeButton"));
    QVERIFY(!m_ui->evaluate("timelineContent.movePOIMode").toBool());
    key(Qt::Key_M);
    // The press that selected also seeks; the cursor is the player's and follows it there.
    m_ui->evaluate("videoPlayer.goToTime(new Date(1970, 0, 1, 0, 0, 4, 0))");
    QTRY_COMPARE(m_ui->item("timelineContent")->property("cursorPosition").toTime(),
                 QTime(0, 0, 4));
    key(Qt::Key_Return);
    QVERIFY(!m_ui->evaluate("timelineContent.movePOIMode").toBool());
    QCOMPARE(m_ui->evaluate("timelineContent.getPOIs()[0].time").toInt(), 4000);
}

void MenusTest::returnOutsideMoveModeDoesNothing()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(2000));
    key(Qt::Key_Return);
    QCOMPARE(m_ui->poiNames(), QStringList("Crack"));
    QCOMPARE(m_ui->evaluate("timelineContent.getPOIs()[0].time").toInt(), 2000);
}

void MenusTest::verbsReportTheirEvents_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("events");
    QTest::newRow("open a video") << "goOpenVideo('file_menu')"
                                  << QStringList("open_video_from_file_menu");
    QTest::newRow("open a video, welcome")
        << "goOpenVideo('welcome_screen')" << QStringList("open_video_from_welcome_screen");
    QTest::newRow("open a project")
        << "goOpenProject('file_menu')" << QStringList("open_project_from_file_menu");
    QTest::newRow("save") << "goSaveProject()" << QStringList("save_project");
    QTest::newRow("save as") << "goSaveProjectAs()" << QStringList("save_project_as");
    QTest::newRow("save a copy") << "goSaveProjectCopy()" << QStringList("save_project_copy");
    QTest::newRow("close") << "goCloseProject()" << QStringList("close_project");
}

void MenusTest::verbsReportTheirEvents()
{
    QFETCH(QString, call);
    QFETCH(QStringList, events);
    m_ui->log().clear();
    m_ui->evaluate(call);
    if (QTest::qWaitFor([] { return UiFixture::fileDialog() != nullptr; }, 200))
        UiFixture::fileDialog()->reject();
    for (const QString& event : events)
        QCOMPARE(m_ui->log().count(event), 1);
}

void MenusTest::startIsReported()
{
    QCOMPARE(m_ui->log().count("vistrel_started"), 1);
    QVERIFY(m_ui->log().contains(m_ui->evaluate("AppInfo.versionString").toString()));
}

QTEST_MAIN(MenusTest)
#include "MenusTest.moc"
