#include "CardWorld.h"
#include "Discovery/PersistentData.h"
#include "ReviewFixture.h"
#include "WindowTexts.h"

#include <QApplication>
#include <QDir>
#include <QQmlContext>
#include <QQmlExpression>
#include <QScreen>
#include <QSettings>
#include <functional>
#include <memory>

using namespace corv::test;

/// Every window in every state, in both themes, in small and large windows and with names in
/// several scripts: no text is cut off or over another, and each can be read. The display of the
/// test sets the scale. Pictures of all are kept where VISTREL_SCREENSHOTS says. VISTREL_TEST_LOOK
/// chooses one look, such as "light, screen, German".
class EveryWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void isWholeAndReadable_data();
    void isWholeAndReadable();

private:
    struct Names
    {
        QString file;
        QString mission;
        QString flight;
        QString poi;
    };

    using Step = std::function<void()>;

    static Names namesOf(const QString& language);
    void start(bool light, const QString& size, const Names& names);
    void openFlight(const Names& names);
    void lookAt(const QString& state);
    void lookAtShown(const QString& state, QQuickWindow* shown, QImage* seen = nullptr);
    void lookAtMenus();
    void lookAtWindow(const QString& state, const QString& name, const Step& open);
    void lookAtDialog(const QString& state, const Step& open);
    void lookAtPanels(const Names& names);
    void lookAtImporter(const Names& names);
    void lookAtMarks(const Names& names);
    void lookAtPlayback();
    void lookUnderThePointer(const Names& names);
    void lookAtNotices(const Names& names);
    void lookAtMissingFiles();
    void report(const QString& state, const QStringList& faults);
    void keep(const QString& state, const QImage& picture) const;
    static QVariant evaluateIn(QObject* window, const QString& expression);

    std::unique_ptr<CardWorld> m_world;
    std::unique_ptr<ReviewFixture> m_ui;
    QString m_video;
    QStringList m_faults;
};

void EveryWindowTest::initTestCase()
{
    UiFixture::prepare();
    CardParser::registerInPlaceOfTheReal();
}

void EveryWindowTest::isWholeAndReadable_data()
{
    QTest::addColumn<bool>("light");
    QTest::addColumn<QString>("size");
    QTest::addColumn<QString>("language");
    const auto add = [](bool light, const char* size, const char* language) {
        QTest::addRow("%s, %s, %s", light ? "light" : "dark", size, language)
            << light << size << language;
    };
    const QStringList look = qEnvironmentVariable("VISTREL_TEST_LOOK").split(", ");
    if (look.size() == 3) {
        add(look[0] == "light", qPrintable(look[1]), qPrintable(look[2]));
        return;
    }
    const int dpi = qEnvironmentVariableIntValue("VISTREL_TEST_DPI");
    if (dpi == 120) {
        add(false, "screen", "Arabic");
        add(true, "screen", "long");
        return;
    }
    // On the other displays together, each theme, each size and each script meet each other.
    add(false, dpi == 96 || dpi == 192 ? "screen" : "smallest",
        dpi == 144   ? "Arabic"
        : dpi == 192 ? "English"
        : dpi == 288 ? "German"
                     : "Japanese");
    add(true, dpi == 96 || dpi == 192 ? "smallest" : "screen",
        dpi == 144   ? "German"
        : dpi == 192 ? "Japanese"
        : dpi == 288 ? "Arabic"
                     : "English");
}

EveryWindowTest::Names EveryWindowTest::namesOf(const QString& language)
{
    if (language == "German")
        return {QString::fromUtf8("Hochspannungsfreileitung Großräschen–Überlingen, Abschnitt Süd"),
                QString::fromUtf8("Freileitungsüberwachung Großkreutz"),
                QString::fromUtf8("Isolatorenprüfung Mast 117 (Öst)"),
                QString::fromUtf8("Längsriss am Überspannungsableiter der Traverse")};
    if (language == "Japanese")
        return {QString::fromUtf8("太陽光発電所点検飛行第七回午前の記録"),
                QString::fromUtf8("太陽光発電所の定期点検飛行"),
                QString::fromUtf8("第七ストリング北側列"),
                QString::fromUtf8("パネルの亀裂と過熱の疑い")};
    if (language == "Arabic")
        return {QString::fromUtf8("رحلة تفتيش خط الكهرباء الشمالي"),
                QString::fromUtf8("تفتيش خطوط الضغط العالي"), QString::fromUtf8("البرج رقم ١١٧"),
                QString::fromUtf8("شق في العازل العلوي")};
    if (language == "long")
        return {QString("Inspection of the northern transmission line ").repeated(3).trimmed(),
                QString("Quarterly inspection of all towers and insulators ").repeated(3).trimmed(),
                QString("Tower117WithoutAnyBlank").repeated(4),
                QString("Insulator string cracked at the third disc ").repeated(4).trimmed()};
    return {"CORV0001", "Line 12", "North pier", "Crack"};
}

QVariant EveryWindowTest::evaluateIn(QObject* window, const QString& expression)
{
    return QQmlExpression(qmlContext(window), window, expression).evaluate();
}

void EveryWindowTest::keep(const QString& state, const QImage& picture) const
{
    const QString folder = qEnvironmentVariable("VISTREL_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QDir().mkpath(folder);
    picture.save(
        QString("%1/%2 - %3.png").arg(folder, QString::fromLatin1(QTest::currentDataTag()), state));
}

void EveryWindowTest::report(const QString& state, const QStringList& faults)
{
    for (const QString& fault : faults)
        m_faults << state + ": " + fault;
}

// Each window that shows, but for the main one where others are in front of it.
void EveryWindowTest::lookAt(const QString& state)
{
    QTest::mouseMove(m_ui->window(), QPoint(5, 5));
    QQuickWindow* shown = m_ui->window();
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        auto* quick = qobject_cast<QQuickWindow*>(window);
        if (quick && quick->isVisible() && quick != m_ui->window())
            shown = quick;
    }
    QTest::mouseMove(shown, QPoint(5, 5));
    lookAtShown(state, shown);
}

// Gives the picture in `seen`, if that is set.
void EveryWindowTest::lookAtShown(const QString& state, QQuickWindow* shown, QImage* seen)
{
    // What has changed is drawn, and the colours that fade have arrived.
    QSignalSpy drawn(shown, &QQuickWindow::frameSwapped);
    shown->update();
    QTRY_VERIFY2(drawn.count() > 0, qPrintable(state));
    const QImage picture = shown->grabWindow();
    report(state, faultsOf(shown, picture));
    keep(state, picture);
    if (seen)
        *seen = picture;
}

void EveryWindowTest::lookAtWindow(const QString& state, const QString& name, const Step& open)
{
    open();
    QTRY_VERIFY2(UiFixture::visibleWindow(name), qPrintable(state));
    QQuickWindow* window = UiFixture::visibleWindow(name);
    QVERIFY(QTest::qWaitForWindowExposed(window));
    lookAt(state);
    if (window->minimumSize() != window->size()) {
        // One after the other: a window may take the height that its texts need at a width.
        window->setWidth(window->minimumWidth());
        QTRY_COMPARE(window->contentItem()->width(), double(window->minimumWidth()));
        window->setHeight(window->minimumHeight());
        QTRY_COMPARE(window->contentItem()->height(), double(window->minimumHeight()));
        lookAt(state + ", smallest");
    }
    window->close();
    window->setVisible(false);
}

void EveryWindowTest::lookAtDialog(const QString& state, const Step& open)
{
    open();
    const auto dialog = []() -> QWidget* {
        if (QWidget* box = UiFixture::messageBox())
            return box;
        return UiFixture::fileDialog();
    };
    QTRY_VERIFY2(dialog() && dialog()->isVisible(), qPrintable(state));
    report(state, faultsOf(dialog()));
    keep(state, dialog()->grab().toImage());
    QVERIFY(QGuiApplication::primaryScreen()->geometry().contains(dialog()->frameGeometry()) ||
            dialog()->height() > QGuiApplication::primaryScreen()->size().height());
    dialog()->close();
    QTRY_VERIFY(!dialog());
}

void EveryWindowTest::start(bool light, const QString& size, const Names& names)
{
    m_ui = std::make_unique<ReviewFixture>();
    const QString folder = media().newFolder();
    m_video = folder + '/' + names.file + ".mp4";
    QVERIFY(QFile::copy(media().video(), m_video));
    QFile project(folder + '/' + names.file + ".ecor");
    QVERIFY(project.open(QIODevice::WriteOnly));
    QSettings().setValue("recentProjects/paths",
                         QStringList{project.fileName(), folder + "/" + names.mission + ".ecor"});
    QSettings().setValue("userPreferences/lightTheme", light);
    QVERIFY(m_ui->load());
    const QSize most = m_ui->window()->screen()->availableSize() - QSize(20, 60);
    const QSize wanted = size == "smallest" ? m_ui->window()->minimumSize()
                                            : most.expandedTo(m_ui->window()->minimumSize());
    m_ui->window()->resize(wanted);
    QTRY_COMPARE(m_ui->window()->size(), wanted);
    QTRY_COMPARE(m_ui->item("infoTab")->width(), double(wanted.width()));
}

void EveryWindowTest::openFlight(const Names& names)
{
    m_ui->call("loadVideo", {m_video});
    QTRY_VERIFY(m_ui->hasVideo());
    lookAt("flight without a log");
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    m_ui->evaluate(
        QString("timelineContent.setPOIsFromList([{time: 1000, name: '%1', comment: '%1'},"
                "{time: 1200, name: '%1', comment: ''}])")
            .arg(names.poi));
    m_ui->call("nameFlight", {names.mission, names.flight, 117});
    QTRY_VERIFY(!m_ui->evaluate("videoPlayer.isBusy").toBool());
}

namespace {

// The caption of a menu in the bar, whose letter of access may be underlined.
QQuickItem* menuTitle(QQuickItem* from, const QString& title)
{
    QString text = from->property("text").toString();
    if (from->inherits("QQuickText") && from->isVisible() &&
        text.remove("<u>").remove("</u>") == title)
        return from;
    for (QQuickItem* child : from->childItems())
        if (QQuickItem* found = menuTitle(child, title))
            return found;
    return nullptr;
}

} // namespace

void EveryWindowTest::lookAtMenus()
{
    QVector<QImage> menus;
    for (const char* title : {"File", "Review", "Export", "Settings", "Help"}) {
        QQuickItem* caption = menuTitle(m_ui->window()->contentItem(), title);
        QVERIFY2(caption, title);
        UiFixture::click(caption);
        const auto popup = [this]() -> QQuickWindow* {
            for (QWindow* window : QGuiApplication::topLevelWindows()) {
                auto* quick = qobject_cast<QQuickWindow*>(window);
                if (quick && quick->isVisible() && quick != m_ui->window())
                    return quick;
            }
            return nullptr;
        };
        // Its entries have made it as high as they are.
        QTRY_VERIFY(popup() && popup()->height() > caption->height());
        QVERIFY(QTest::qWaitForWindowExposed(popup()));
        // The pointer stays on the caption: over another one it would open that menu instead.
        QImage menu;
        lookAtShown(QString("menu %1").arg(title), popup(), &menu);
        QVERIFY2(!menu.isNull() && !menus.contains(menu), title);
        menus.append(menu);
        // It is gone before the key is released.
        QTest::keyPress(popup(), Qt::Key_Escape);
        QTRY_VERIFY(!popup());
    }
    m_ui->call("refocusMainActions");
}

void EveryWindowTest::lookAtPanels(const Names& names)
{
    m_ui->evaluate("panelSettings.poiListShown = true; curvesPanel.open = true;"
                   "curvesPanel.curves = ['mission_info.flight_number']");
    QTRY_VERIFY(m_ui->item("poiRow1"));
    lookAt("list and curves");
    m_ui->evaluate("curvesPanel.choosing = false");
    lookAt("curves alone");
    m_ui->evaluate("curvesPanel.choosing = true");
    m_ui->evaluate("panelSettings.sidebarShown = false; curvesPanel.open = false");
    m_ui->evaluate("jobsPanel.open = true");
    lookAt("jobs, sidebar folded");
    m_ui->evaluate("jobsPanel.open = false; panelSettings.sidebarShown = true;"
                   "panelSettings.poiListShown = false");
    QVERIFY(m_ui->showAdjustments());
    lookAt("adjustments");
    m_ui->evaluate("videoPlayer.showIR = true; videoPlayer.autoIRMapping = false;"
                   "videoPlayer.updateControlsStates(); videoPlayer.redraw()");
    QTRY_VERIFY(m_ui->item("thermalBar")->isVisible());
    lookAt("thermal");
    m_ui->evaluate("videoPlayer.showIR = false; tabsContainer.currentIndex = 0");
    m_ui->evaluate("videoRect.zoom = 2");
    m_ui->evaluate("infoTab.showNotice('Deleted: " + names.poi + "')");
    lookAt("zoomed, notice");
    m_ui->evaluate("videoRect.fit()");
    QVERIFY(m_ui->selectPoiAt(2000));
    m_ui->call("startMovingPoi");
    lookAt("move mode");
    m_ui->call("stopMovingPoi");
    m_ui->evaluate("LogParser.isParsing = true");
    m_ui->call("logParsingProgress", {2, 80, 100});
    lookAt("reading a log");
    m_ui->evaluate("LogParser.isParsing = false");
    m_ui->root()->setProperty("crashNotice", "Vistrel stopped while it wrote " + m_video + ".");
    m_ui->root()->setProperty("crashReportPath", m_video);
    lookAt("crash of the last run");
    m_ui->root()->setProperty("crashNotice", "");
    m_ui->call("togglePictureAlone");
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::FullScreen);
    lookAt("picture alone");
    m_ui->call("togglePictureAlone");
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::Windowed);
}

void EveryWindowTest::lookAtImporter(const Names& names)
{
    const QString card = m_world->machine.addDrive("CARD", names.mission, true);
    m_world->addVideo(card + "/DCIM/100HDDVR/" + names.file + ".mp4", 0);
    m_world->addLog(card + "/" + names.file + ".log", 100, names.flight.toUtf8().left(40));
    m_world->addVideo(card + "/DCIM/100HDDVR/noon.mp4", 5000);
    m_world->addVideo(card + "/DCIM/100HDDVR/evening.mp4", 10'000);
    m_world->addLog(card + "/late.log", 10'100, "Tower 2", 20'000);
    m_ui->call("goExploreRemovableDevices");
    QTRY_VERIFY(UiFixture::visibleWindow("autoImporter"));
    QQuickWindow* importer = UiFixture::visibleWindow("autoImporter");
    lookAt("importer idle");
    m_world->held = true;
    evaluateIn(importer, "parseChosenDirs()");
    m_world->reached.acquire();
    lookAt("importer searching");
    m_world->release();
    QTRY_VERIFY(!importer->property("isBusy").toBool());
    QTRY_VERIFY(m_ui->item("matchingRow2", importer));
    lookAt("importer results");
    evaluateIn(importer, "matchingsTable.currentIndex = 1");
    lookAt("importer second row");
    lookAtDialog("importer message", [&] {
        evaluateIn(importer, "showMessage('Flight search', 'No matches found. Please check your "
                             "drive or directory selection.')");
    });
    evaluateIn(importer, "cancelAndClose()");
    QTRY_VERIFY(!importer->isVisible());
}

// A row for each of the four marks.
void EveryWindowTest::lookAtMarks(const Names& names)
{
    using corv::PairingEvidence;
    QList<corv::FlightMatchData> flights;
    for (const auto evidence :
         {PairingEvidence::TimeAndLength, PairingEvidence::Length, PairingEvidence::LengthDiffers,
          PairingEvidence::Time, PairingEvidence::None}) {
        corv::FlightMatchData flight;
        flight.videoFile = QFileInfo("/card/DCIM/" + names.file + ".mp4");
        flight.matchFound = evidence != PairingEvidence::None;
        if (flight.matchFound)
            flight.logFile = QFileInfo("/card/" + names.file + ".log");
        flight.evidence = evidence;
        flight.doubtful = evidence == PairingEvidence::LengthDiffers;
        flight.flightLengthMs = 21'000;
        flight.recordingLengthMs = 35'000;
        flight.flightFiles = QStringList{"/card/DCIM/first.mp4", flight.videoFile.filePath()};
        flight.part = 2;
        flights.append(flight);
    }
    corv::PersistentData::instance()->setDirectoryList(flights);
    m_ui->call("goExploreRemovableDevices");
    QTRY_VERIFY(UiFixture::visibleWindow("autoImporter"));
    QQuickWindow* importer = UiFixture::visibleWindow("autoImporter");
    QVERIFY(QTest::qWaitForWindowExposed(importer));
    for (int i = 0; i < flights.size(); ++i) {
        const QString name = "matchingRow" + QString::number(i);
        QTRY_VERIFY(m_ui->item(name, importer));
        // The window may have come up under the pointer, which lightens a row with its text.
        // The desktop may say so late, and a row notices only a pointer that it saw moving.
        const auto isLeft = [&] {
            QQuickItem* row = m_ui->item(name, importer);
            UiFixture::hover(row);
            QTest::mouseMove(importer, QPoint(5, 5));
            return !row->property("hovered").toBool();
        };
        QTRY_VERIFY(isLeft());
        evaluateIn(importer, "matchingsTable.currentIndex = " + QString::number(i));
        lookAt("importer mark " + QString::number(i));
    }
    evaluateIn(importer, "cancelAndClose()");
    QTRY_VERIFY(!importer->isVisible());
    corv::PersistentData::instance()->setDirectoryList({});
}

void EveryWindowTest::lookAtPlayback()
{
    m_ui->evaluate("videoPlayer.playOn()");
    QTRY_VERIFY(m_ui->evaluate("videoPlayer.playing").toBool());
    lookAt("playing");
    m_ui->evaluate("videoPlayer.pause()");
    QTRY_VERIFY(!m_ui->evaluate("videoPlayer.playing").toBool());
    m_ui->evaluate("videoPlayer.goToFrame(videoPlayer.frameCount - 1)");
    QTRY_VERIFY(
        m_ui->evaluate("videoPlayer.currentFrameIndex == videoPlayer.frameCount - 1").toBool());
    lookAt("end of the video");
    m_ui->evaluate("videoPlayer.goToFrame(0)");
    QTRY_COMPARE(m_ui->evaluate("videoPlayer.currentFrameIndex").toInt(), 0);
}

// What comes with the pointer lies over other texts, on a ground of its own.
void EveryWindowTest::lookUnderThePointer(const Names& names)
{
    QQuickItem* const button = m_ui->item("addPoiButton");
    UiFixture::hover(button);
    QTRY_VERIFY(m_ui->find("toolTip", button) &&
                m_ui->find("toolTip", button)->property("visible").toBool());
    keep("tool tip", m_ui->window()->grabWindow());
    m_ui->evaluate(QString("timelineContent.setPOIsFromList([{time: 0, name: '%1'},"
                           "{time: 20, name: '%1'}, {time: 40, name: '%1'},"
                           "{time: 3000, name: '%1'}])")
                       .arg(names.poi));
    QQuickItem* const strip = m_ui->item("timelineContent");
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(40, 70)).toPoint());
    QTRY_VERIFY(m_ui->item("overlapList")->isVisible());
    keep("covered flags", m_ui->window()->grabWindow());
    const double x = 3020 / m_ui->get("timelineContent", "msPerPx").toDouble();
    QTest::mouseMove(m_ui->window(), strip->mapToScene(QPointF(x, 70)).toPoint());
    QTRY_VERIFY(!m_ui->item("overlapList")->isVisible());
    QTRY_VERIFY(m_ui->item("timelinePreview")->isVisible());
    QTest::qWait(300);
    keep("picture at the pointer", m_ui->window()->grabWindow());
    QTest::mouseMove(m_ui->window(), QPoint(5, 5));
}

void EveryWindowTest::lookAtNotices(const Names& names)
{
    m_ui->evaluate("unfinishedBar.text = 'Not finished when Vistrel last ended: Save pictures (" +
                   names.poi + ").'");
    lookAt("unfinished jobs");
    m_ui->evaluate("unfinishedBar.text = ''");
    m_ui->evaluate("copyProgressWindow.problem = 'The video " + m_video + " cannot be copied.'");
    // It stays for as long as it is at work.
    lookAtWindow("copying", "copyProgressWindow",
                 [this] { m_ui->evaluate("copyProgressWindow.isAtWork = true"); });
    m_ui->evaluate("copyProgressWindow.isAtWork = false");
    QTRY_VERIFY(!UiFixture::visibleWindow("copyProgressWindow"));
    // One that would write over the flight fails.
    m_ui->evaluate("videoPlayer.saveFrame(videoPlayer.timePosition, '" + m_video + "', true)");
    m_ui->evaluate("fileDialogs.imageRefused('" + m_video + "')");
    QTRY_COMPARE(m_ui->get("jobsButton", "text").toString(), QString("Jobs: failed"));
    m_ui->evaluate("jobsPanel.open = true");
    lookAt("a failed job");
    m_ui->evaluate("jobsPanel.open = false");
}

void EveryWindowTest::lookAtMissingFiles()
{
    const QString project = QFileInfo(m_video).path() + "/moved.ecor";
    m_ui->call("doSaveProject", {project});
    QTRY_VERIFY(QFile::exists(project));
    m_ui->call("goCloseProject");
    QTRY_VERIFY(!m_ui->hasVideo());
    QVERIFY(QFile::remove(m_video));
    lookAtDialog("a file is missing", [&] { m_ui->call("loadProject", {project}); });
    QTRY_VERIFY(m_ui->item("missingMediaBar")->isVisible());
    lookAt("files missing");
}

void EveryWindowTest::isWholeAndReadable()
{
    QFETCH(bool, light);
    QFETCH(QString, size);
    QFETCH(QString, language);
    m_faults.clear();
    const Names names = namesOf(language);
    corv::PersistentData::instance()->setDirectoryList({});
    m_world = std::make_unique<CardWorld>();
    start(light, size, names);
    lookAt("start");
    m_ui->evaluate("videoRect.recentProjects = []");
    lookAt("start, nothing opened yet");
    lookAtImporter(names);
    lookAtMarks(names);
    openFlight(names);
    lookAt("flight");
    lookAtPlayback();
    lookAtMenus();
    lookAtPanels(names);
    const auto script = [this](const QString& text) {
        return [this, text] { m_ui->evaluate(text); };
    };
    lookAtWindow("settings", "generalSettings", script("goSettings()"));
    lookAtWindow("shortcuts", "shortcutsWindow",
                 script("secondaryWindows.openPlain('ShortcutsWindow.qml')"));
    lookAtWindow("about", "aboutWindow", script("secondaryWindows.openPlain('AboutWindow.qml')"));
    lookAtWindow("frames export", "framesExport", script("secondaryWindows.openFramesExport()"));
    lookAtWindow("video export", "videoExport", script("secondaryWindows.openVideoExport()"));
    lookAtWindow("restore", "restorePoiChoice", script("goChooseRestorePOIsAction()"));
    lookAtWindow("restore, the longest outcome", "restorePoiChoice", [this] {
        m_ui->evaluate("goChooseRestorePOIsAction()");
        QQuickWindow* window = UiFixture::visibleWindow("restorePoiChoice");
        QVERIFY(window);
        evaluateIn(window, "missingCount = 10000");
        evaluateIn(window, "allCount = 20000");
        evaluateIn(window, "actionFillBlanks.checked = true");
    });
    lookAtWindow("properties of a point", "poiPropertiesWindow", script("editSelectedPoi()"));
    lookAtWindow("flight properties", "flightPropertiesWindow", script("editFlightProperties()"));
    lookAtWindow("update", "newUpdateWindow",
                 script("launchUpdateWindow('2.1.0.7', ['" + names.poi + "', 'Faster'])"));
    lookAtWindow("export operation", "exportProgressWindow", script("showVideoExport()"));
    lookAtDialog("error", [&] {
        m_ui->call("displayErrorDialog",
                   {"Invalid file", "Video file " + m_video + " could not be read."});
    });
    lookAtDialog("question",
                 script("question.ask('Replace file', '" + m_video +
                        " already exists.\\nDo you want to replace it?', function() {})"));
    lookAtDialog("save dialog", script("goSaveProjectAs()"));
    lookAtNotices(names);
    lookUnderThePointer(names);
    // The log says of missing files what the box says.
    const QStringList scriptErrors = m_ui->scriptErrors();
    lookAtMissingFiles();
    m_ui.reset();
    m_world.reset();
    m_faults << scriptErrors;
    QVERIFY2(m_faults.isEmpty(), qPrintable('\n' + m_faults.join('\n')));
}

QTEST_MAIN(EveryWindowTest)
#include "EveryWindowTest.moc"
