#include "ReviewSuite.h"

using namespace corv::test;

/// The road of one review through the main window: opening a video and a log, closing, exporting;
/// the messages when something is wrong; and the order of it all.
class WorkflowTest : public ReviewSuite
{
    Q_OBJECT

private slots:
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
    void closingForgetsTheWork();
    void theContinuationRunsOnce();
    void savesTheFrameAsAnImage();
    void importantDialogsCanBeOpenTogether();
    void progressOfAnExport();
    void aRefusedReportEnds();
    void aRefusedVideoEnds();
    void theExporterGoesBeforeThePlayer();

private:
    static QString boxText() { return UiFixture::messageBox()->text(); }
};

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

void WorkflowTest::importantDialogsCanBeOpenTogether()
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
    QTRY_VERIFY(UiFixture::visibleWindow("exportProgressWindow"));
    QCOMPARE(window->property("title").toString(), QString("Export operation"));
    m_ui->call("videoExportProgress", {30, 120});
    QCOMPARE(m_ui->evaluate("exportProgressWindow.content.value").toInt(), 30);
    QCOMPARE(m_ui->evaluate("exportProgressWindow.content.maximumValue").toInt(), 120);
    QCOMPARE(m_ui->evaluate("exportProgressWindow.content.text").toString(),
             QString("Exporting video file..."));
    m_ui->call("videoExportComplete", {false});
    QTRY_VERIFY(!UiFixture::visibleWindow("exportProgressWindow"));
    QCOMPARE(m_ui->get("currentProject", "activeExportOperation").toInt(), 1);
}

// The progress window is modal: nothing but the end of the export takes it away.
void WorkflowTest::aRefusedReportEnds()
{
    m_ui->call("doCreatePoiReport", {"/nowhere/report.docx"});
    QVERIFY(UiFixture::visibleWindow("exportProgressWindow"));
    QCOMPARE(m_ui->evaluate("exportProgressWindow.content.text").toString(),
             QString("Generating document..."));
    QCOMPARE(m_ui->evaluate("exportProgressWindow.content.value").toInt(), 0);
    QCOMPARE(m_ui->get("currentProject", "activeExportOperation").toInt(), 2);
    QTRY_VERIFY(!UiFixture::visibleWindow("exportProgressWindow"));
}

void WorkflowTest::aRefusedVideoEnds()
{
    m_ui->evaluate("secondaryWindows.exportVideo('file:///nowhere/video.mp4')");
    QVERIFY(m_ui->log().contains("Will export video"));
    QVERIFY(UiFixture::visibleWindow("exportProgressWindow"));
    QCOMPARE(m_ui->evaluate("exportProgressWindow.content.text").toString(),
             QString("Exporting video file..."));
    QTRY_VERIFY(!UiFixture::visibleWindow("exportProgressWindow"));
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
