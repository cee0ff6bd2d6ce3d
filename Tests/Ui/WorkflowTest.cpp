#include "ReviewFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <memory>

using namespace corv::test;

/// The road of one review through the main window: opening a video, a log and a project, saving in
/// every way, closing; what the user is told when something is wrong; and the order of it all.
class WorkflowTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void startsEmpty();
    void opensAVideoFromTheDialog();
    void refusesAnotherKindOfVideo_data();
    void refusesAnotherKindOfVideo();
    void reportsAVideoThatCannotBeRead();
    void anotherVideoStartsANewProject();
    void importsALog();
    void refusesAnotherKindOfLog();
    void reportsALogThatCannotBeRead();
    void warnsOfALogThatDoesNotMatch();
    void showsTheProgressOfALog_data();
    void showsTheProgressOfALog();
    void savesAndReopens();
    void savesUnderANameWithoutSuffix();
    void asksBeforeAFileIsReplaced_data();
    void asksBeforeAFileIsReplaced();
    void savesUnderTheEscapedName();
    void saveWithoutAFileAsksForOne();
    void savingNeedsAVideo();
    void saveAsCopiesTheMedia();
    void warnsWhenTheMediaCannotBeCopied();
    void aPlainSaveNeverWarns();
    void aCopyLeavesTheWorkWhereItWas();
    void closingForgetsTheWork();
    void reportsACorruptProject();
    void aProjectWithoutVideoLeavesTheWorkAlone();
    void aProjectWithoutLogOpensAllTheSame();
    void anotherProjectOfTheVideoThatIsOpen();
    void aProjectThatFailedLeavesTheNextVideoAlone();
    void theAdjustmentsShowTheLogOffsetOfAProject();
    void handEditedProjectsOpenAsFarAsTheyGo_data();
    void handEditedProjectsOpenAsFarAsTheyGo();
    void theContinuationRunsOnce();
    void savesTheFrameAsAnImage();
    void importantDialogsCanStandTogether();
    void progressOfAnExport();
    void aRefusedReportEnds();
    void aRefusedVideoEnds();
    void theExporterGoesBeforeThePlayer();

private:
    QString title() const { return m_ui->window()->title(); }
    QVariant player(const char* property) const
    {
        return m_ui->evaluate(QString("videoPlayer.") + property);
    }
    static QString boxText() { return UiFixture::messageBox()->text(); }
    static QJsonObject flightOf(const QString& project);

    /// The quoted text was shown in a box of this title and kind, and is answered.
    static void expectBox(const QString& boxTitle, const QString& text, QMessageBox::Icon icon);

    std::unique_ptr<ReviewFixture> m_ui;
};

namespace {

const FlightMedia& media()
{
    return FlightMedia::instance();
}

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

} // namespace

void WorkflowTest::initTestCase()
{
    UiFixture::prepare();
}

void WorkflowTest::init()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
}

void WorkflowTest::cleanup()
{
    m_ui.reset();
}

void WorkflowTest::expectBox(const QString& boxTitle, const QString& text, QMessageBox::Icon icon)
{
    QTRY_VERIFY(UiFixture::messageBox());
    QMessageBox* box = UiFixture::messageBox();
    QCOMPARE(box->windowTitle(), boxTitle);
    QCOMPARE(box->text(), text);
    QCOMPARE(box->icon(), icon);
    QCOMPARE(box->standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
    QVERIFY(UiFixture::dismissMessageBox());
}

QJsonObject WorkflowTest::flightOf(const QString& path)
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

void WorkflowTest::startsEmpty()
{
    QCOMPARE(title(), "Vistrel " + m_ui->evaluate("AppInfo.versionString").toString());
    QCOMPARE(m_ui->window()->minimumSize(), QSize(800, 700));
    QVERIFY(m_ui->item("welcomeMessage")->isVisible());
    QVERIFY(!m_ui->item("videoMouseArea")->isVisible());
    QVERIFY(!m_ui->item("videoDuration")->isVisible());
    QCOMPARE(m_ui->get("videoFileText", "text").toString(), QString("No video file opened"));
    QCOMPARE(m_ui->get("logFileText", "text").toString(), QString("No log file opened"));
    QCOMPARE(player("autoIRMapping").toBool(), true);
    QCOMPARE(player("irMappingMaxValue").toInt(), 16383);
    QCOMPARE(player("contrast").toDouble(), 1.0);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
    m_ui->screenshot("start");
}

void WorkflowTest::opensAVideoFromTheDialog()
{
    QVERIFY(m_ui->trigger("newFromVideoMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(media().video()));
    QTRY_VERIFY(m_ui->hasVideo());
    QCOMPARE(player("source").toString(), media().video());
    QVERIFY(!m_ui->item("welcomeMessage")->isVisible());
    QCOMPARE(m_ui->get("videoFileText", "text").toString(), media().video());
    QTRY_COMPARE(m_ui->get("videoDuration", "text").toString(),
                 QString("00:00.000 / 00:06.000, f 0"));
    QVERIFY(m_ui->evaluate("loadFileSettings.folder").toString().startsWith("file:///"));
    m_ui->screenshot("video");
}

void WorkflowTest::refusesAnotherKindOfVideo_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("text") << "file:///tmp/a.txt";
    QTest::newRow("none") << "file:///tmp/mp4";
}

void WorkflowTest::refusesAnotherKindOfVideo()
{
    QFETCH(QString, url);
    QVERIFY(m_ui->openVideo());
    m_ui->call("afterVideoImportChoice", {QUrl(url)});
    expectBox("Invalid file",
              "Invalid file extension, choose a \".mov\", \".avi\", \".3gp\" or \".mp4\" file",
              QMessageBox::Critical);
    QVERIFY(m_ui->hasVideo());
}

void WorkflowTest::reportsAVideoThatCannotBeRead()
{
    m_ui->call("afterVideoImportChoice", {QUrl("file:///tmp/not there.MP4")});
    expectBox("Error", "Video file /tmp/not there.MP4 could not be read.", QMessageBox::Critical);
    QVERIFY(m_ui->log().contains("Error: Video file /tmp/not there.MP4 could not be read."));
}

void WorkflowTest::anotherVideoStartsANewProject()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    m_ui->call("doSaveProject", {media().newFolder() + "/a.ecor"});
    m_ui->call("afterVideoImportChoice", {QUrl::fromLocalFile(media().video())});
    QTRY_VERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->get("currentProject", "fileActive").toBool(), false);
    QCOMPARE(m_ui->get("currentProject", "filePath").toString(), QString());
    QCOMPARE(m_ui->evaluate("LogParser.source").toString(), QString());
}

void WorkflowTest::importsALog()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("LogParser.manualLogTimeOffset = 400; videoPlayer.irOffsetX = 0.1");
    QVERIFY(m_ui->trigger("importLogMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(media().log()));
    QTRY_COMPARE(m_ui->get("logFileText", "text").toString(), media().log());
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QCOMPARE(m_ui->evaluate("LogParser.isParsing").toBool(), false);
    QCOMPARE(m_ui->evaluate("LogParser.manualLogTimeOffset").toInt(), 0);
    QCOMPARE(player("irOffsetX").toDouble(), 0.0);
    QVERIFY(m_ui->item("namingText")->isVisible());
    QVERIFY(!m_ui->item("namingTextUndefined")->isVisible());
    QCOMPARE(m_ui->get("namingText", "text").toString(),
             QString("<b>Mission:</b><br>Bridge<br><b>Flight:</b><br>North pier<br><b>Num. </b>7"));
    QTRY_COMPARE(m_ui->poiNames(), (QStringList{"POI 1", "POI 2"}));
    QVERIFY(!UiFixture::messageBox());
    QVERIFY(m_ui->log().contains("Setting values for older thermal camera") == false);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
    m_ui->screenshot("flight");
}

void WorkflowTest::refusesAnotherKindOfLog()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("afterFlightDataImportChoice", {QUrl("file:///tmp/a.txt")});
    expectBox("Invalid file", "Invalid file extension, chose a \".log\" file",
              QMessageBox::Critical);
    QCOMPARE(m_ui->evaluate("LogParser.isParsing").toBool(), false);
}

void WorkflowTest::reportsALogThatCannotBeRead()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("afterFlightDataImportChoice", {QUrl::fromLocalFile(media().brokenLog())});
    expectBox("Error", "Log file could not be read.", QMessageBox::Critical);
    QCOMPARE(m_ui->evaluate("LogParser.isParsing").toBool(), false);
    QVERIFY(m_ui->hasVideo());
}

void WorkflowTest::warnsOfALogThatDoesNotMatch()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("afterFlightDataImportChoice", {QUrl::fromLocalFile(media().otherLog())});
    expectBox("Flight data match issue",
              "The log file that was just loaded does not match with the currently opened "
              "video.\n\nData is available for playback but may not be related to the flight seen "
              "on the video.",
              QMessageBox::Warning);
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
}

void WorkflowTest::showsTheProgressOfALog_data()
{
    QTest::addColumn<int>("stage");
    QTest::addColumn<int>("done");
    QTest::addColumn<int>("total");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("version") << 0 << 0 << 0 << "Reading logs version" << 0.0;
    QTest::newRow("counting") << 1 << 1 << 3 << "Counting logs 33%" << 1.0 / 3;
    QTest::newRow("parsing") << 2 << 3 << 4 << "Parsing logs 75%" << 0.75;
    QTest::newRow("done") << 2 << 4 << 4 << "Parsing logs 100%" << 1.0;
    QTest::newRow("unknown stage") << 3 << 1 << 2 << " 50%" << 0.5;
    QTest::newRow("unknown stage and total") << 3 << 1 << 0 << "" << 0.0;
}

void WorkflowTest::showsTheProgressOfALog()
{
    QFETCH(int, stage);
    QFETCH(int, done);
    QFETCH(int, total);
    m_ui->evaluate("LogParser.isParsing = true");
    QVERIFY(m_ui->item("logLoadingIndicator")->isVisible());
    QVERIFY(!m_ui->item("filesRow")->isVisible());
    QCOMPARE(m_ui->get("logLoadingIndicator", "text").toString(), QString("Loading logs..."));
    m_ui->call("logParsingProgress", {stage, done, total});
    QTEST(m_ui->get("logLoadingIndicator", "text").toString(), "text");
    QTEST(m_ui->get("taskProgressBar", "value").toDouble(), "value");
}

void WorkflowTest::savesAndReopens()
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

    cleanup();
    init();
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

void WorkflowTest::savesUnderANameWithoutSuffix()
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

void WorkflowTest::asksBeforeAFileIsReplaced_data()
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
void WorkflowTest::asksBeforeAFileIsReplaced()
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

void WorkflowTest::savesUnderTheEscapedName()
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

void WorkflowTest::saveWithoutAFileAsksForOne()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->trigger("saveProjectMenuItem"));
    QTRY_VERIFY(UiFixture::fileDialog());
    UiFixture::fileDialog()->reject();
    QCOMPARE(m_ui->log().count("save_project"), 2);
    QCOMPARE(m_ui->log().count("save_project_as"), 1);
    QCOMPARE(m_ui->get("currentProject", "fileActive").toBool(), false);
}

void WorkflowTest::savingNeedsAVideo()
{
    for (const char* save : {"goSaveProject", "goSaveProjectAs", "goSaveProjectCopy"})
        m_ui->call(save);
    m_ui->call("goCreatePoiReport");
    QCoreApplication::processEvents();
    QVERIFY(!UiFixture::fileDialog());
    QCOMPARE(m_ui->log().count("save_project"), 3);
}

void WorkflowTest::saveAsCopiesTheMedia()
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

void WorkflowTest::warnsWhenTheMediaCannotBeCopied()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    const QString path = media().newFolder() + "/a.ecor";
    m_ui->call("doSaveProjectAs", {path});
    QVERIFY(!UiFixture::messageBox());
    QFile::remove(path);
    // The copies of the first time are in the way.
    m_ui->call("doSaveProjectAs", {path});
    expectBox(copyWarningTitle, copyWarning(), QMessageBox::Warning);
    QVERIFY(QFile::exists(path));
    QVERIFY(m_ui->log().contains(copyWarningTitle + ": " + copyWarning()));
}

void WorkflowTest::aPlainSaveNeverWarns()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("doSaveProject", {"/proc/nowhere/a.ecor"});
    QCoreApplication::processEvents();
    QVERIFY(!UiFixture::messageBox());
}

void WorkflowTest::aCopyLeavesTheWorkWhereItWas()
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

void WorkflowTest::closingForgetsTheWork()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    m_ui->call("doSaveProject", {media().newFolder() + "/a.ecor"});
    m_ui->evaluate("videoPlayer.contrast = 1.3");
    m_ui->call("goCloseProject");
    QTRY_VERIFY(!m_ui->hasVideo());
    QCOMPARE(m_ui->evaluate("LogParser.source").toString(), QString());
    QCOMPARE(m_ui->poiNames(), QStringList());
    QVERIFY(!title().contains("ecor"));
    QVERIFY(m_ui->item("welcomeMessage")->isVisible());
    QCOMPARE(player("contrast").toDouble(), 1.3);
}

void WorkflowTest::reportsACorruptProject()
{
    m_ui->call("loadProject", {"/tmp/not there.ecor"});
    QVERIFY(m_ui->log().contains("Trying to open project /tmp/not there.ecor"));
    expectBox("Error", "Failed to load project. Corrupt project file.", QMessageBox::Critical);
}

void WorkflowTest::aProjectWithoutVideoLeavesTheWorkAlone()
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

void WorkflowTest::aProjectWithoutLogOpensAllTheSame()
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

void WorkflowTest::anotherProjectOfTheVideoThatIsOpen()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 500, name: 'Crack', comment: ''}])");
    const QString path = writeProject(project(media().video(), media().log()));
    m_ui->call("loadProject", {path});
    QTRY_COMPARE(m_ui->get("currentProject", "filePath").toString(), path);
    QTRY_COMPARE(m_ui->poiNames(), (QStringList{"POI 1", "Rust", "POI 2"}));
    QCOMPARE(player("contrast").toDouble(), 1.5);
    QVERIFY(title().endsWith(path));
    // And the first one of them once more, as it stands on disk.
    m_ui->evaluate("videoPlayer.contrast = 0.7");
    m_ui->call("loadProject", {path});
    QTRY_COMPARE(player("contrast").toDouble(), 1.5);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void WorkflowTest::aProjectThatFailedLeavesTheNextVideoAlone()
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

void WorkflowTest::theAdjustmentsShowTheLogOffsetOfAProject()
{
    QQuickItem* panel = m_ui->showAdjustments();
    QVERIFY(panel);
    m_ui->call("loadProject", {writeProject(project(media().video(), media().log()))});
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QCOMPARE(panel->property("logTimeShiftingCorrection").toInt(), 300);
    QCOMPARE(m_ui->evaluate("LogParser.manualLogTimeOffset").toInt(), 300);
}

void WorkflowTest::handEditedProjectsOpenAsFarAsTheyGo_data()
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

void WorkflowTest::handEditedProjectsOpenAsFarAsTheyGo()
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

void WorkflowTest::theContinuationRunsOnce()
{
    m_ui->evaluate("videoPlayer.onVideoSucessfullyOpened = function() { console.log('it runs'); }");
    QVERIFY(m_ui->openVideo());
    QCOMPARE(m_ui->log().count("it runs"), 1);
    m_ui->call("goCloseProject");
    QVERIFY(m_ui->openVideo());
    QCOMPARE(m_ui->log().count("it runs"), 1);
}

void WorkflowTest::savesTheFrameAsAnImage()
{
    QVERIFY(m_ui->openVideo());
    const QString folder = media().newFolder();
    QVERIFY(m_ui->click("saveImageButton"));
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(folder + "/frame ü"));
    QTRY_VERIFY(QFile::exists(folder + "/frame ü.jpg"));
    QVERIFY(m_ui->evaluate("saveImageSettings.folder").toString().startsWith("file:///"));
}

void WorkflowTest::importantDialogsCanStandTogether()
{
    m_ui->call("displayErrorDialog", {"one", "first"});
    m_ui->call("displayWarningDialog", {"two", "second"});
    QVERIFY(m_ui->log().contains("one: first"));
    QVERIFY(m_ui->log().contains("two: second"));
    QTRY_VERIFY(UiFixture::messageBox());
    QCOMPARE(boxText(), QString("second"));
    QVERIFY(UiFixture::dismissMessageBox());
    QTRY_VERIFY(UiFixture::messageBox());
    QCOMPARE(boxText(), QString("first"));
    QVERIFY(UiFixture::dismissMessageBox());
    QVERIFY(!UiFixture::messageBox());
}

void WorkflowTest::progressOfAnExport()
{
    QObject* window = m_ui->find("exportProgressWindow");
    QVERIFY(window);
    m_ui->evaluate("showExportProgress(Cst.activeExportVideo, 'Exporting video file...')");
    QVERIFY(UiFixture::visibleWindow("Export operation"));
    m_ui->call("videoExportProgress", {30, 120});
    QCOMPARE(m_ui->evaluate("exportProgressContent.value").toInt(), 30);
    QCOMPARE(m_ui->evaluate("exportProgressContent.maximumValue").toInt(), 120);
    QCOMPARE(m_ui->evaluate("exportProgressContent.text").toString(),
             QString("Exporting video file..."));
    m_ui->call("videoExportComplete", {false});
    QVERIFY(!UiFixture::visibleWindow("Export operation"));
    QCOMPARE(m_ui->get("currentProject", "activeExportOperation").toInt(), 1);
}

// The progress window is modal: nothing but the end of the export takes it away.
void WorkflowTest::aRefusedReportEnds()
{
    m_ui->call("doCreatePoiReport", {"/nowhere/report.docx"});
    QVERIFY(UiFixture::visibleWindow("Export operation"));
    QCOMPARE(m_ui->evaluate("exportProgressContent.text").toString(),
             QString("Generating document..."));
    QCOMPARE(m_ui->evaluate("exportProgressContent.value").toInt(), 0);
    QCOMPARE(m_ui->get("currentProject", "activeExportOperation").toInt(), 2);
    QTRY_VERIFY(!UiFixture::visibleWindow("Export operation"));
}

void WorkflowTest::aRefusedVideoEnds()
{
    m_ui->evaluate("secondaryWindows.exportVideo('file:///nowhere/video.mp4')");
    QVERIFY(m_ui->log().contains("Will export video"));
    QVERIFY(UiFixture::visibleWindow("Export operation"));
    QCOMPARE(m_ui->evaluate("exportProgressContent.text").toString(),
             QString("Exporting video file..."));
    QTRY_VERIFY(!UiFixture::visibleWindow("Export operation"));
}

// A report that is being written waits for frames of the player: it has to be given up first.
void WorkflowTest::theExporterGoesBeforeThePlayer()
{
    QStringList order;
    for (const char* id : {"videoPlayer", "poiReportExporter"}) {
        QObject* object = m_ui->evaluate(id).value<QObject*>();
        QVERIFY(object);
        connect(object, &QObject::destroyed, this, [&order, id] { order << id; });
    }
    m_ui.reset();
    QCOMPARE(order, QStringList({"poiReportExporter", "videoPlayer"}));
}

QTEST_MAIN(WorkflowTest)
#include "WorkflowTest.moc"
