#include "ReviewSuite.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>

using namespace corv::test;

/// Projects through the main window: saving in every way, opening them again, and those that are
/// not as they should be.
class ProjectWorkflowTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void bringsNumbersToTheEndsOfTheControls_data();
    void bringsNumbersToTheEndsOfTheControls();
    void savesAndReopens();
    void savesUnderANameWithoutSuffix();
    void asksBeforeAFileIsReplaced_data();
    void asksBeforeAFileIsReplaced();
    void savesUnderTheEscapedName();
    void saveWithoutAFileAsksForOne();
    void savingNeedsAVideo();
    void saveAsCopiesTheMedia();
    void aCopyThatEndsAtOnceGivesTheKeyboardBack();
    void anExportThatFailsAtOnceGivesTheKeyboardBack_data();
    void anExportThatFailsAtOnceGivesTheKeyboardBack();
    void warnsWhenTheMediaCannotBeCopied();
    void aPlainSaveThatFailsIsReported();
    void aCopyLeavesTheWorkWhereItWas();
    void reportsACorruptProject();
    void aProjectWithoutVideoLeavesTheWorkAlone();
    void projectWithoutLogStillOpens();
    void anotherProjectOfTheVideoThatIsOpen();
    void aProjectThatFailedLeavesTheNextVideoAlone();
    void theAdjustmentsShowTheLogOffsetOfAProject();
    void handEditedProjectsOpenAsFarAsTheyGo_data();
    void handEditedProjectsOpenAsFarAsTheyGo();

private:
    void givesTheKeyboardBack(QObject* window, const QSignalSpy& focusChanges);
};

namespace {

const QString copyWarningTitle = "Error copying files to a new destination";

QString copyWarning()
{
    return "Could not copy video or log next to the project file. Moving the project file to a "
           "different location after creation may break its association with log and video files. "
           "Make sure to keep those files in the same relative location from the project file. \n\n"
           "Video was loaded from:\n\n" +
           media().video() + "\n\nLog was loaded from\n\n" + media().log();
}

QString missing(const QString& kind, const QString& path)
{
    return QString("Project could be opened, but referenced %1 file not found.\nFile could have "
                   "been deleted, or project could have been copied/moved to a different place "
                   "without the associated log & video files. Be sure to keep video & log files in "
                   "the same relative location to the project file.\n\nExpected %1 file "
                   "location:\n%2")
        .arg(kind, path);
}

QJsonObject project(const QString& video, const QString& log)
{
    return {
        {"files", QJsonObject{{"video", video}, {"log", log}}},
        {"poi", QJsonArray{QJsonObject{{"time", 1500}, {"name", "Rust"}, {"comment", "c"}}}},
        {"properties", QJsonObject{{"display", QJsonObject{{"contrast", 1.5}, {"brightness", 10}}},
                                   {"correction", QJsonObject{{"log_offset", 300}}}}}};
}

QString writeProject(const QJsonObject& flight)
{
    const QString path = media().newFolder() + "/p.ecor";
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(
            QJsonDocument(QJsonObject{{"contents", QJsonObject{{"flights", QJsonArray{flight}}}}})
                .toJson());
    return path;
}

/// The one flight of a project, as it is on disk.
QJsonObject flightOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll())
        .object()["contents"]
        .toObject()["flights"]
        .toArray()[0]
        .toObject();
}

} // namespace

void ProjectWorkflowTest::bringsNumbersToTheEndsOfTheControls_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("too high") << 1e9 << QByteArray("maximumValue");
    QTest::newRow("too low") << -1e9 << QByteArray("minimumValue");
}

void ProjectWorkflowTest::bringsNumbersToTheEndsOfTheControls()
{
    QFETCH(double, number);
    QFETCH(QByteArray, end);
    QJsonObject flight = project(media().video(), media().log());
    flight["properties"] = QJsonObject{
        {"display", QJsonObject{{"contrast", number}, {"brightness", number}}},
        {"thermal_video", QJsonObject{{"align_offset_x", number}, {"align_offset_y", number}}}};
    m_ui->call("loadProject", {writeProject(flight)});
    QTRY_VERIFY(m_ui->hasVideo());
    QVERIFY(m_ui->showAdjustments());
    const std::array<std::pair<const char*, const char*>, 4> settings{
        {{"contrastSetter", "contrast"},
         {"brightnessSetter", "brightness"},
         {"horizontalThermalCorrectionSetter", "irOffsetX"},
         {"verticalThermalCorrectionSetter", "irOffsetY"}}};
    for (const auto& [setter, setting] : settings)
        QCOMPARE(player(setting).toDouble(), m_ui->get(setter, end.constData()).toDouble());
}

void ProjectWorkflowTest::savesAndReopens()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    m_ui->evaluate("videoPlayer.contrast = 1.5; videoPlayer.brightness = -10;"
                   "videoPlayer.irOffsetX = 0.05; videoPlayer.irOffsetY = -0.05;"
                   "videoPlayer.autoIRMapping = false; videoPlayer.irMappingMinValue = 2000;"
                   "videoPlayer.irMappingMaxValue = 9000; videoPlayer.irOverlayTransparent = true;"
                   "videoPlayer.showIR = true; LogParser.manualLogTimeOffset = 700");
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProject", {path});
    QCOMPARE(title(),
             "Vistrel " + m_ui->evaluate("AppInfo.versionString").toString() + " - " + path);
    const QJsonObject thermal = flightOf(path)["properties"].toObject()["thermal_video"].toObject();
    QCOMPARE(thermal, (QJsonObject{{"visible", true},
                                   {"translucent", true},
                                   {"colormap_auto", false},
                                   {"colormap_min", 2000},
                                   {"colormap_max", 9000},
                                   {"align_offset_x", 0.05},
                                   {"align_offset_y", -0.05}}));
    QCOMPARE(flightOf(path)["properties"].toObject()["designation"].toObject(),
             (QJsonObject{
                 {"mission_name", "Bridge"}, {"flight_name", "North pier"}, {"flight_number", 7}}));

    restart();
    m_ui->call("loadProject", {path});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QCOMPARE(m_ui->get("currentProject", "filePath").toString(), path);
    QCOMPARE(player("contrast").toDouble(), 1.5);
    QCOMPARE(player("brightness").toDouble(), -10.0);
    QCOMPARE(player("irOffsetX").toDouble(), 0.05);
    QCOMPARE(player("irOffsetY").toDouble(), -0.05);
    QCOMPARE(player("autoIRMapping").toBool(), false);
    QCOMPARE(player("irMappingMinValue").toInt(), 2000);
    QCOMPARE(player("irMappingMaxValue").toInt(), 9000);
    QCOMPARE(player("irOverlayTransparent").toBool(), true);
    QCOMPARE(player("showIR").toBool(), true);
    QCOMPARE(m_ui->evaluate("LogParser.manualLogTimeOffset").toInt(), 700);
    QCOMPARE(m_ui->evaluate("LogParser.flightNaming").toMap()["flightName"].toString(),
             QString("North pier"));
    QCOMPARE(m_ui->poiNames(), (QStringList{"POI 1", "POI 2"}));
    QCOMPARE(m_ui->scriptErrors(), QStringList());

    // Shown now for the first time, the adjustments change nothing of what was restored.
    QVERIFY(m_ui->showAdjustments());
    QCOMPARE(player("contrast").toDouble(), 1.5);
    QCOMPARE(player("brightness").toDouble(), -10.0);
    QCOMPARE(m_ui->evaluate("LogParser.manualLogTimeOffset").toInt(), 700);
    QCOMPARE(player("irMappingMinValue").toInt(), 2000);
    QCOMPARE(player("irMappingMaxValue").toInt(), 9000);
}

void ProjectWorkflowTest::savesUnderANameWithoutSuffix()
{
    QVERIFY(m_ui->openVideo());
    const QString path = media().newFolder() + "/my flight ü";
    QVERIFY(m_ui->trigger("saveProjectAsMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(path));
    QTRY_VERIFY(QFile::exists(path + ".ecor"));
    QCOMPARE(m_ui->get("currentProject", "filePath").toString(), path + ".ecor");
    if (UiFixture::messageBox())
        UiFixture::dismissMessageBox();
}

void ProjectWorkflowTest::asksBeforeAFileIsReplaced_data()
{
    QTest::addColumn<QString>("dialog");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("existing");
    QTest::newRow("project") << "saveProjectDialog"
                             << "a.ecor"
                             << "a.ecor";
    QTest::newRow("project without its suffix") << "saveProjectDialog"
                                                << "a"
                                                << "a.ecor";
    QTest::newRow("report without its suffix") << "createPoiReport"
                                               << "a"
                                               << "a.docx";
    QTest::newRow("image without its suffix") << "saveImageDialog"
                                              << "a"
                                              << "a.jpg";
}

/// Also when the suffix was left to the dialog: what is there may be another day's work.
void ProjectWorkflowTest::asksBeforeAFileIsReplaced()
{
    QFETCH(QString, dialog);
    QFETCH(QString, typed);
    QFETCH(QString, existing);
    QVERIFY(m_ui->openVideo());
    const QString folder = media().newFolder();
    QFile file(folder + '/' + existing);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write("earlier") && file.flush());
    m_ui->evaluate("fileDialogs." + dialog + ".open()");
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::questionAboutFile(folder + '/' + typed).contains(existing));
    UiFixture::fileDialog()->reject();
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), QByteArray("earlier"));
}

void ProjectWorkflowTest::savesUnderTheEscapedName()
{
    QVERIFY(m_ui->openVideo());
    const QString folder = media().newFolder();
    QVERIFY(m_ui->trigger("saveProjectAsMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(folder + "/a#b.ecor"));
    QTRY_VERIFY(QFile::exists(folder + "/a%23b.ecor"));
    if (UiFixture::messageBox())
        UiFixture::dismissMessageBox();
}

void ProjectWorkflowTest::saveWithoutAFileAsksForOne()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("saveProjectMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    UiFixture::fileDialog()->reject();
    QVERIFY(m_ui->log().contains("\"save_project\""));
    QVERIFY(m_ui->log().contains("\"save_project_as\""));
    QCOMPARE(m_ui->get("currentProject", "fileActive").toBool(), false);
}

void ProjectWorkflowTest::savingNeedsAVideo()
{
    for (const char* save : {"goSaveProject", "goSaveProjectAs", "goSaveProjectCopy"})
        m_ui->call(save);
    m_ui->call("goCreatePoiReport");
    QCoreApplication::processEvents();
    QVERIFY(!UiFixture::fileDialog());
    for (const char* event : {"\"save_project\"", "\"save_project_as\"", "\"save_project_copy\""})
        QVERIFY2(m_ui->log().contains(event), event);
}

void ProjectWorkflowTest::saveAsCopiesTheMedia()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    const QString folder = media().newFolder();
    QVERIFY(m_ui->trigger("saveProjectAsMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(folder + "/a.ecor"));
    QTRY_VERIFY(QFile::exists(folder + "/a.ecor"));
    QVERIFY(QFile::exists(folder + "/a_video.mp4"));
    QVERIFY(QFile::exists(folder + "/a_log.log"));
    QVERIFY(!UiFixture::messageBox());
    QCOMPARE(m_ui->get("currentProject", "filePath").toString(), folder + "/a.ecor");
}

void ProjectWorkflowTest::aCopyThatEndsAtOnceGivesTheKeyboardBack()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProjectAs", {path});
    QObject* const progress = m_ui->find("copyProgressWindow");
    QVERIFY(progress);
    QTRY_VERIFY(!progress->property("visible").toBool());
    QTRY_COMPARE(QGuiApplication::focusWindow(), m_ui->window());

    const QSignalSpy focusChanges(qGuiApp, &QGuiApplication::focusWindowChanged);
    // Onto its own copies: nothing is left to be copied.
    m_ui->call("doSaveProjectAs", {path});
    givesTheKeyboardBack(progress, focusChanges);
}

void ProjectWorkflowTest::anExportThatFailsAtOnceGivesTheKeyboardBack_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("video") << "secondaryWindows.exportVideo('file:///nowhere/video.mp4')";
    QTest::newRow("report") << "doCreatePoiReport('/nowhere/report.docx')";
}

void ProjectWorkflowTest::anExportThatFailsAtOnceGivesTheKeyboardBack()
{
    QFETCH(QString, script);
    QVERIFY(m_ui->openVideo());
    QTRY_COMPARE(QGuiApplication::focusWindow(), m_ui->window());
    const QSignalSpy focusChanges(qGuiApp, &QGuiApplication::focusWindowChanged);
    m_ui->evaluate(script);
    givesTheKeyboardBack(m_ui->find("exportProgressWindow"), focusChanges);
}

// A progress window whose work has ended is hidden once the desktop has given it the keyboard, not
// before.
void ProjectWorkflowTest::givesTheKeyboardBack(QObject* window, const QSignalSpy& focusChanges)
{
    QVERIFY(window);
    QTRY_VERIFY(std::any_of(focusChanges.begin(), focusChanges.end(), [window](const auto& change) {
        return change.first().template value<QWindow*>() == window;
    }));
    QTRY_VERIFY(!window->property("visible").toBool());
    QTRY_COMPARE(QGuiApplication::focusWindow(), m_ui->window());
    QTest::keyClick(QGuiApplication::focusWindow(), Qt::Key_End);
    QTRY_VERIFY(player("currentFrameIndex").toInt() > 0);
}

void ProjectWorkflowTest::warnsWhenTheMediaCannotBeCopied()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProjectAs", {path});
    QVERIFY(!UiFixture::messageBox());
    // Onto its own copies there is nothing to copy.
    m_ui->call("doSaveProjectAs", {path});
    QVERIFY(!UiFixture::messageBox());
    // Somebody else's files are in the way.
    const QString other = media().newFolder() + "/b.ecor";
    for (const char* name : {"/b_video.mp4", "/b_log.log"})
        QVERIFY(QFile::copy(media().brokenLog(), QFileInfo(other).absolutePath() + name));
    m_ui->call("goCloseProject");
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    m_ui->call("doSaveProjectAs", {other});
    expectBox(copyWarningTitle, copyWarning(), QMessageBox::Warning);
    QVERIFY(QFile::exists(other));
    QVERIFY(m_ui->log().contains(copyWarningTitle + ": " + copyWarning()));
}

void ProjectWorkflowTest::aPlainSaveThatFailsIsReported()
{
    QVERIFY(m_ui->openVideo());
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProject", {path});
    QVERIFY(!UiFixture::messageBox());
    const QString before = title();
    m_ui->call("doSaveProject", {"/proc/nowhere/a.ecor"});
    expectBox("Project not saved",
              "The project /proc/nowhere/a.ecor could not be saved: No such file or directory.",
              QMessageBox::Critical);
    QCOMPARE(title(), before);
    QCOMPARE(m_ui->get("currentProject", "filePath").toString(), path);
}

void ProjectWorkflowTest::aCopyLeavesTheWorkWhereItWas()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    const QString folder = media().newFolder();
    m_ui->call("doSaveProject", {folder + "/a.ecor"});
    const QString before = title();
    QVERIFY(m_ui->trigger("saveProjectCopyMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(folder + "/b.ecor"));
    QTRY_VERIFY(QFile::exists(folder + "/b.ecor"));
    QCOMPARE(title(), before);
    QCOMPARE(m_ui->get("currentProject", "filePath").toString(), folder + "/a.ecor");
}

void ProjectWorkflowTest::reportsACorruptProject()
{
    m_ui->call("loadProject", {"/tmp/not there.ecor"});
    QVERIFY(m_ui->log().contains("Trying to open project /tmp/not there.ecor"));
    expectBox("Error", "Failed to load project. Corrupt project file.", QMessageBox::Critical);
}

void ProjectWorkflowTest::aProjectWithoutVideoLeavesTheWorkAlone()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("doSaveProject", {media().newFolder() + "/a.ecor"});
    const QString before = title();
    const QString path = writeProject(project("gone.mp4", media().log()));
    m_ui->call("loadProject", {path});
    expectBox("Error", missing("video", QFileInfo(path).absolutePath() + "/gone.mp4"),
              QMessageBox::Critical);
    QVERIFY(m_ui->hasVideo());
    QCOMPARE(title(), before);
}

void ProjectWorkflowTest::projectWithoutLogStillOpens()
{
    const QString path = writeProject(project(media().video(), "gone.log"));
    m_ui->call("loadProject", {path});
    expectBox("Error", missing("log", QFileInfo(path).absolutePath() + "/gone.log"),
              QMessageBox::Critical);
    QVERIFY(m_ui->log().contains("Project opened"));
    QVERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->poiNames(), QStringList("Rust"));
    QCOMPARE(player("contrast").toDouble(), 1.5);
    QCOMPARE(m_ui->evaluate("LogParser.isParsing").toBool(), false);
    QVERIFY(m_ui->item("namingTextUndefined")->isVisible());
}

void ProjectWorkflowTest::anotherProjectOfTheVideoThatIsOpen()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 500, name: 'Crack', comment: ''}])");
    const QString path = writeProject(project(media().video(), media().log()));
    m_ui->call("loadProject", {path});
    QTRY_COMPARE(m_ui->get("currentProject", "filePath").toString(), path);
    QTRY_COMPARE(m_ui->poiNames(), (QStringList{"POI 1", "Rust", "POI 2"}));
    QCOMPARE(player("contrast").toDouble(), 1.5);
    QVERIFY(title().endsWith(path));
    // And the first one of them once more, as it is on disk.
    m_ui->evaluate("videoPlayer.contrast = 0.7");
    m_ui->call("loadProject", {path});
    QTRY_COMPARE(player("contrast").toDouble(), 1.5);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void ProjectWorkflowTest::aProjectThatFailedLeavesTheNextVideoAlone()
{
    const QString noVideo = media().newFolder() + "/none.mp4";
    QVERIFY(QFile::copy(media().brokenLog(), noVideo));
    m_ui->call("loadProject", {writeProject(project(noVideo, media().log()))});
    expectBox("Error", "Video file " + noVideo + " could not be read.", QMessageBox::Critical);
    const QString before = title();
    m_ui->call("afterVideoImportChoice", {QUrl::fromLocalFile(media().video())});
    QTRY_VERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->poiNames(), QStringList());
    QCOMPARE(title(), before);
    QCOMPARE(m_ui->get("currentProject", "fileActive").toBool(), false);
    QCOMPARE(player("contrast").toDouble(), 1.0);
}

void ProjectWorkflowTest::theAdjustmentsShowTheLogOffsetOfAProject()
{
    QQuickItem* panel = m_ui->showAdjustments();
    QVERIFY(panel);
    m_ui->call("loadProject", {writeProject(project(media().video(), media().log()))});
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QCOMPARE(panel->property("logTimeShiftingCorrection").toInt(), 300);
    QCOMPARE(m_ui->evaluate("LogParser.manualLogTimeOffset").toInt(), 300);
}

void ProjectWorkflowTest::handEditedProjectsOpenAsFarAsTheyGo_data()
{
    QTest::addColumn<QJsonValue>("properties");
    QTest::addColumn<QJsonValue>("poi");
    QTest::newRow("none") << QJsonValue() << QJsonValue();
    QTest::newRow("wrong types") << QJsonValue("x") << QJsonValue(3);
    QTest::newRow("empty") << QJsonValue(QJsonObject()) << QJsonValue(QJsonArray());
    QTest::newRow("wrong values") << QJsonValue(QJsonObject{
                                         {"display", 4},
                                         {"thermal_video",
                                          QJsonObject{{"visible", "yes"}, {"colormap_min", {}}}},
                                         {"correction", QJsonArray{1}},
                                         {"designation", true}})
                                  << QJsonValue(QJsonArray{1, "x", QJsonObject{{"time", -5}}});
}

void ProjectWorkflowTest::handEditedProjectsOpenAsFarAsTheyGo()
{
    QFETCH(QJsonValue, properties);
    QFETCH(QJsonValue, poi);
    QJsonObject flight = project(media().video(), media().log());
    flight["properties"] = properties;
    flight["poi"] = poi;
    m_ui->call("loadProject", {writeProject(flight)});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QCOMPARE(player("contrast").toDouble(), 1.0);
    QCOMPARE(player("irMappingMinValue").toDouble(), 0.0);
    QCOMPARE(player("showIR").toBool(), false);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(ProjectWorkflowTest)
#include "ProjectWorkflowTest.moc"
