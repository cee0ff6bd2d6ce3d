#include "CardWorld.h"
#include "Discovery/PersistentData.h"
#include "UiFixture.h"

#include <QDir>
#include <QQmlContext>
#include <QQmlExpression>
#include <QSettings>
#include <memory>

using namespace corv;
using namespace corv::test;

/// The importer in a real window over an empty main one, and the welcome panel that leads to it.
class ImporterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void opensEmptyAndWithoutADialog();
    void showsTheLastResultAtOnce();
    void drivesAreListed();
    void autodetectTellsWhatItFound_data();
    void autodetectTellsWhatItFound();
    void autodetectReplacesAChosenFolder();
    void aChosenFolderGivesWayToADrive();
    void theLastOfQuickChoicesCounts();
    void locationsAreSearchedAsChosen_data();
    void locationsAreSearchedAsChosen();
    void choicesAreRememberedByLoading();
    void choicesAreNotRememberedByCancelling();
    void aDriveThatIsGoneSelectsTheFirst();
    void aSearchShowsItsRows();
    void aSearchThatFindsNothingTells();
    void progressIsOneFigureOverAllFiles_data();
    void progressIsOneFigureOverAllFiles();
    void anAbortedSearchLeavesNothing();
    void loadingAnEmptyListTells();
    void loadingWithoutAClickTakesTheFirstRow();
    void loadingAFlightWithoutALog();
    void theKeyboardChoosesAndLoads();
    void theFastSearchBoxIsHandedOn();
    void longNamesStayInTheirColumns();
    void theWelcomePanelReportsItsButtons_data();
    void theWelcomePanelReportsItsButtons();

private:
    void openImporter();
    QVariant evaluate(const QString& expression) const;
    QQuickItem* item(const QString& objectName) const { return m_ui->item(objectName, m_importer); }
    void click(const QString& objectName) const;
    QString dialogText() const;
    static void dismissMessage();
    void focus(QQuickItem* item) const;
    void search();
    int rowCount() const { return evaluate("matchingsListModel.count").toInt(); }
    QString selectedText(const QString& dropdown) const;
    void grab(const QString& name) const;
    void addDay(const QString& videos, const QString& logs);

    std::unique_ptr<CardWorld> m_world;
    std::unique_ptr<UiFixture> m_ui;
    QQuickWindow* m_importer = nullptr;
};

void ImporterTest::initTestCase()
{
    UiFixture::prepare();
    CardParser::registerInPlaceOfTheReal();
}

void ImporterTest::init()
{
    PersistentData::instance()->setDirectoryList({});
    m_world = std::make_unique<CardWorld>();
    const QString host = m_world->machine.addFile(m_world->path("host.qml"), R"(
        import QtQuick 2.7
        import QtQuick.Window 2.2
        Window {
            id: host
            width: 1000; height: 760; visible: true; color: "#222222"
            property string clicked
            function openImporter() {
                var component = Qt.createComponent("qrc:/AutoImporter.qml");
                var window = component.createObject(host);
                if (!window)
                    console.warn("Error: " + component.errorString());
                return window;
            }
            Loader {
                anchors.centerIn: parent
                source: "qrc:/WelcomeMessage.qml"
                onLoaded: {
                    item.openProjectClicked.connect(function() { host.clicked = "project"; });
                    item.openSingleClicked.connect(function() { host.clicked = "video"; });
                    item.browseRemovableDevicesClicked.connect(function() { host.clicked = "scan"; });
                }
            }
        })");
    m_ui = std::make_unique<UiFixture>();
    QVERIFY(m_ui->load(QUrl::fromLocalFile(host)));
}

void ImporterTest::cleanup()
{
    if (QTest::currentTestFailed())
        m_world->release();
    const QStringList scriptErrors = m_ui->scriptErrors();
    m_importer = nullptr;
    m_ui.reset();
    m_world.reset();
    QCOMPARE(scriptErrors, QStringList());
}

void ImporterTest::openImporter()
{
    m_importer = qobject_cast<QQuickWindow*>(m_ui->call("openImporter").value<QObject*>());
    QVERIFY(m_importer);
    QMetaObject::invokeMethod(m_importer, "init");
    m_importer->show();
    QVERIFY(QTest::qWaitForWindowActive(m_importer));
}

QVariant ImporterTest::evaluate(const QString& expression) const
{
    QQmlExpression script(qmlContext(m_importer), m_importer, expression);
    bool undefined = false;
    const QVariant value = script.evaluate(&undefined);
    if (script.hasError())
        qWarning("Error: %s", qPrintable(script.error().toString()));
    return undefined ? QVariant() : value;
}

void ImporterTest::click(const QString& objectName) const
{
    QQuickItem* target = item(objectName);
    QVERIFY2(target && target->isVisible(), qPrintable(objectName));
    UiFixture::click(target);
}

QString ImporterTest::dialogText() const
{
    const QMessageBox* box = UiFixture::messageBox();
    return box ? box->windowTitle() + ": " + box->text() : QString();
}

void ImporterTest::dismissMessage()
{
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY(UiFixture::dismissMessageBox());
}

void ImporterTest::focus(QQuickItem* item) const
{
    QVERIFY(QTest::qWaitForWindowActive(m_importer));
    item->forceActiveFocus();
    QTRY_VERIFY(item->hasActiveFocus());
}

void ImporterTest::search()
{
    click("parseButton");
    QTRY_VERIFY(!m_importer->property("isBusy").toBool());
}

QString ImporterTest::selectedText(const QString& dropdown) const
{
    return item(dropdown)->property("currentText").toString();
}

void ImporterTest::grab(const QString& name) const
{
    const QString folder = qEnvironmentVariable("VISTREL_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QSignalSpy drawn(m_importer, &QQuickWindow::frameSwapped);
    m_importer->update();
    QTRY_VERIFY(drawn.count() > 0);
    QDir().mkpath(folder);
    QVERIFY(m_importer->grabWindow().save(folder + '/' + name + ".png"));
}

// Three flights: named, unnamed for want of a log, named.
void ImporterTest::addDay(const QString& videos, const QString& logs)
{
    m_world->addVideo(videos + "/morning.mp4", 0);
    m_world->addLog(logs + "/l1.log", 100, "Tower 1");
    m_world->addVideo(videos + "/noon.mp4", 5000);
    m_world->addVideo(videos + "/evening.mp4", 10'000);
    m_world->addLog(logs + "/l2.log", 10'100, "Tower 2");
}

void ImporterTest::opensEmptyAndWithoutADialog()
{
    m_world->machine.addDrive("disk", "", false);
    openImporter();
    grab("importer-empty");
    QCOMPARE(m_importer->title(), QString("Auto importer"));
    QCOMPARE(m_importer->size(), QSize(840, 620));
    QCOMPARE(m_importer->minimumSize(), QSize(840, 620));
    QCOMPARE(m_importer->modality(), Qt::WindowModal);
    QCOMPARE(rowCount(), 0);
    QVERIFY(!UiFixture::messageBox());
    QVERIFY(!m_importer->property("ok").toBool());
    QVERIFY(item("matchingsListHeader")->isVisible());
    QVERIFY(!item("abortProcessingButton")->isVisible());
}

void ImporterTest::showsTheLastResultAtOnce()
{
    QList<FlightMatchData> remembered = {FlightMatchData(), FlightMatchData()};
    remembered[0].videoFile = QFileInfo("/card/one.mp4");
    remembered[1].videoFile = QFileInfo("/card/two.mp4");
    PersistentData::instance()->setDirectoryList(remembered);
    openImporter();
    QCOMPARE(rowCount(), 2);
    QCOMPARE(evaluate("matchingsListModel.get(1).name").toString(), QString("two : No match"));
    QCOMPARE(item("matchingsListView")->property("currentIndex").toInt(), 0);
    QVERIFY(!UiFixture::messageBox());
}

void ImporterTest::drivesAreListed()
{
    const QString disk = m_world->machine.addDrive("disk", "", false);
    const QString card = m_world->machine.addDrive("My Card", "KARTE Ä", true);
    openImporter();
    for (const QString model : {"driveListModelOne", "driveListModelTwo"}) {
        QCOMPARE(evaluate(model + ".count").toInt(), 2);
        QCOMPARE(evaluate(model + ".get(0).text").toString(), "Drive " + disk + " ");
        QCOMPARE(evaluate(model + ".get(1).text").toString(), "Drive " + card + " KARTE Ä");
    }
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + disk + " ");
}

void ImporterTest::autodetectTellsWhatItFound_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("logDrive");
    QTest::addColumn<int>("videoDrive");

    const QString noLogs = "- No log files found on any of the connected drives\n";
    const QString noVideos = "- No video files found on any of the connected drives\n";
    const QString manyLogs =
        "- Multiple drives contain logs, please select the one you wish to use. "
        "The first eligible drive is automatically selected.\n";
    const QString manyVideos =
        "- Multiple drives contain videos, please select the one you wish to use. "
        "The first eligible drive is automatically selected.\n";
    const QString one = "Logs %20 CARD";
    const QString two = "Video Card Ä#1";
    QTest::newRow("none") << QStringList{} << noLogs + noVideos << 0 << 0;
    QTest::newRow("only the fixed disk")
        << QStringList{"disk/a.log", "disk/DCIM/100HDDVR/a.mp4"} << noLogs + noVideos << 0 << 0;
    QTest::newRow("one of each") << QStringList{one + "/a.log", two + "/DCIM/100HDDVR/a.mp4"} << ""
                                 << 1 << 2;
    QTest::newRow("all on one") << QStringList{two + "/a.log", two + "/DCIM/101_CORV/a.mov"} << ""
                                << 2 << 2;
    QTest::newRow("logs on two") << QStringList{one + "/a.log", two + "/b.log",
                                                two + "/DCIM/100HDDVR/a.mp4"}
                                 << manyLogs << 1 << 2;
    QTest::newRow("videos on two")
        << QStringList{one + "/a.log", one + "/DCIM/101_CORV/a.mov", two + "/DCIM/100HDDVR/a.mp4"}
        << manyVideos << 1 << 1;
    QTest::newRow("no logs, videos of both models")
        << QStringList{two + "/DCIM/101_CORV/a.mov", two + "/DCIM/100HDDVR/a.mp4"}
        << noLogs + manyVideos << 0 << 2;
}

void ImporterTest::autodetectTellsWhatItFound()
{
    QFETCH(QStringList, files);
    QFETCH(QString, text);
    QFETCH(int, logDrive);
    QFETCH(int, videoDrive);
    m_world->machine.addDrive("disk", "", false);
    m_world->machine.addDrive("Logs %20 CARD", "", true);
    m_world->machine.addDrive("Video Card Ä#1", "", true);
    for (const QString& file : files)
        m_world->machine.addFile(m_world->path("media/" + file));
    openImporter();
    click("autodetectButton");
    if (text.isEmpty()) {
        QTRY_VERIFY(m_ui->log().contains("Successfully found drives with video and log files"));
        QVERIFY(!UiFixture::messageBox());
    } else {
        QTRY_VERIFY(UiFixture::messageBox());
        QCOMPARE(dialogText(), "Removable devices autodetection: " + text);
        QCOMPARE(UiFixture::messageBox()->icon(), QMessageBox::Warning);
        dismissMessage();
    }
    QCOMPARE(item("cardOneDriveDropdown")->property("currentIndex").toInt(), logDrive);
    QCOMPARE(item("cardTwoDriveDropdown")->property("currentIndex").toInt(), videoDrive);
    QVERIFY(m_world->lastSearch.isEmpty());
}

void ImporterTest::autodetectReplacesAChosenFolder()
{
    m_world->machine.addDrive("disk", "", false);
    const QString card = m_world->machine.addDrive("CARD", "", true);
    m_world->machine.addFile(card + "/a.log");
    openImporter();
    evaluate("handleDirectoryChosen('/tmp/logs')");
    QVERIFY(m_importer->property("usePathForLog").toBool());
    click("autodetectButton");
    dismissMessage();
    QVERIFY(!m_importer->property("usePathForLog").toBool());
    QCOMPARE(evaluate("driveListModelOne.count").toInt(), 2);
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + card + " ");
    QCOMPARE(m_importer->property("logDrive").toUrl(), QUrl::fromLocalFile(card));
}

void ImporterTest::aChosenFolderGivesWayToADrive()
{
    m_world->machine.addDrive("disk", "", false);
    const QString card = m_world->machine.addDrive("CARD", "", true);
    const QString folder = m_world->path("Meine Flüge %20 #2");
    QVERIFY(QDir().mkpath(folder));
    openImporter();
    click("browseLogsButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->windowTitle(), QString("Please choose a directory"));
    QVERIFY(UiFixture::acceptFile(folder));
    QTRY_COMPARE(evaluate("driveListModelOne.count").toInt(), 3);
    QVERIFY(m_ui->log().contains("Directory choice accept"));
    QVERIFY(m_ui->log().contains("Chose " + folder));
    QCOMPARE(evaluate("driveListModelOne.get(2).path").toString(), QString("DIR"));
    QCOMPARE(selectedText("cardOneDriveDropdown"), folder);
    QCOMPARE(evaluate("driveListModelTwo.count").toInt(), 2);
    QCOMPARE(m_importer->property("logUrl").toUrl(), QUrl::fromLocalFile(folder));

    QQuickItem* dropdown = item("cardOneDriveDropdown");
    focus(dropdown);
    QElapsedTimer sinceChoice;
    sinceChoice.start();
    QTest::keyClick(m_importer, Qt::Key_Up);
    QCOMPARE(dropdown->property("currentIndex").toInt(), 1);
    QVERIFY(m_importer->property("usePathForLog").toBool());
    QTRY_VERIFY(!m_importer->property("usePathForLog").toBool());
    // 500 ms by the clock of the interface, which counts in frames.
    QVERIFY(sinceChoice.elapsed() >= 450);
    QCOMPARE(evaluate("driveListModelOne.count").toInt(), 2);
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + card + " ");
}

void ImporterTest::theLastOfQuickChoicesCounts()
{
    m_world->machine.addDrive("a", "", false);
    m_world->machine.addDrive("b", "", false);
    const QString last = m_world->machine.addDrive("c", "", false);
    openImporter();
    QQuickItem* dropdown = item("cardTwoDriveDropdown");
    focus(dropdown);
    QSignalSpy changes(m_importer, SIGNAL(videoDriveChanged()));
    QTest::keyClick(m_importer, Qt::Key_Down);
    QTest::keyClick(m_importer, Qt::Key_Down);
    QTRY_COMPARE(changes.size(), 1);
    QCOMPARE(m_importer->property("videoDrive").toUrl(), QUrl::fromLocalFile(last));
    QVERIFY(!m_importer->property("logDrive").toUrl().isValid());
}

void ImporterTest::locationsAreSearchedAsChosen_data()
{
    QTest::addColumn<bool>("logFolder");
    QTest::addColumn<bool>("videoFolder");
    QTest::addColumn<bool>("fast");
    QTest::newRow("drives") << false << false << false;
    QTest::newRow("logs in a folder") << true << false << true;
    QTest::newRow("videos in a folder") << false << true << false;
    QTest::newRow("folders") << true << true << true;
}

void ImporterTest::locationsAreSearchedAsChosen()
{
    QFETCH(bool, logFolder);
    QFETCH(bool, videoFolder);
    QFETCH(bool, fast);
    const QString drive = m_world->machine.addDrive("My CARD %20", "", true);
    const QString logs = m_world->path("Ordner %41/logs");
    const QString videos = m_world->path("Ordner %41/videos");
    openImporter();
    if (logFolder)
        QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen", Q_ARG(QVariant, logs));
    if (videoFolder) {
        m_importer->setProperty("isSelectingDirectoryForVideo", true);
        QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen", Q_ARG(QVariant, videos));
    }
    if (fast)
        click("checkBoxFastSearch");
    click("parseButton");
    dismissMessage();
    const QString log = logFolder ? logs : drive;
    const QString video = videoFolder ? videos : drive;
    QCOMPARE(m_world->lastSearch, QVariantList({video, log, !videoFolder, !logFolder, fast}));
    QVERIFY(m_ui->log().contains("Will parse log from " + log + ", video from " + video));
}

void ImporterTest::choicesAreRememberedByLoading()
{
    m_world->machine.addDrive("disk", "", false);
    const QString card = m_world->machine.addDrive("My CARD %20", "", true);
    const QString videos = m_world->path("Videos #1");
    addDay(videos, card);
    openImporter();
    focus(item("cardOneDriveDropdown"));
    QTest::keyClick(m_importer, Qt::Key_Down);
    QTRY_COMPARE(m_importer->property("logDrive").toUrl(), QUrl::fromLocalFile(card));
    m_importer->setProperty("isSelectingDirectoryForVideo", true);
    QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen", Q_ARG(QVariant, videos));
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + card + " ");
    search();
    click("okButton");
    QTRY_VERIFY(!m_importer->isVisible());
    QTRY_VERIFY(QSettings().value("AutoImporter/usePathForVideo").toBool()); // written with a delay

    openImporter();
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + card + " ");
    QCOMPARE(selectedText("cardTwoDriveDropdown"), videos);
    QVERIFY(!m_importer->property("usePathForLog").toBool());
    QVERIFY(m_importer->property("usePathForVideo").toBool());
    QCOMPARE(rowCount(), 3);
}

void ImporterTest::choicesAreNotRememberedByCancelling()
{
    m_world->machine.addDrive("disk", "", false);
    openImporter();
    QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen",
                              Q_ARG(QVariant, m_world->path("logs")));
    click("cancelButton");
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(!m_importer->property("ok").toBool());
    QVERIFY(m_ui->log().contains("Aborting..."));
    openImporter();
    QVERIFY(!m_importer->property("usePathForLog").toBool());
    QCOMPARE(evaluate("driveListModelOne.count").toInt(), 1);
}

void ImporterTest::aDriveThatIsGoneSelectsTheFirst()
{
    const QString disk = m_world->machine.addDrive("disk", "", false);
    {
        QSettings settings;
        settings.setValue("AutoImporter/logDrive", "file:///media/GONE");
        settings.setValue("AutoImporter/videoDrive", "file:///media/gone");
    }
    openImporter();
    QCOMPARE(m_importer->property("logDrive").toUrl(), QUrl("file:///media/GONE"));
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + disk + " ");
    QCOMPARE(selectedText("cardTwoDriveDropdown"), "Drive " + disk + " ");
}

void ImporterTest::aSearchShowsItsRows()
{
    const QString card = m_world->machine.addDrive("CARD", "", true);
    addDay(card + "/DCIM/100HDDVR", card);
    openImporter();
    m_world->held = true;
    click("parseButton");
    m_world->reached.acquire();
    QVERIFY(m_importer->property("isBusy").toBool());
    QVERIFY(!item("parseButton")->isEnabled());
    QVERIFY(!item("matchingsListHeader")->isVisible());
    QVERIFY(!item("matchingsListView")->isVisible());
    QVERIFY(item("abortProcessingButton")->isVisible());
    QVERIFY(item("progressBar")->property("indeterminate").toBool());
    QCOMPARE(item("txtMatchingBusyIndicator")->property("text").toString(),
             QString("Reading log files..."));
    grab("importer-busy");
    m_world->release();
    QTRY_VERIFY(!m_importer->property("isBusy").toBool());
    QVERIFY(item("matchingsListView")->isVisible());
    QCOMPARE(rowCount(), 3);
    QCOMPARE(evaluate("JSON.stringify(matchingsListModel.get(0))").toString(),
             QString(R"({"name":"morning : l1","videoPath":"%1/DCIM/100HDDVR/morning.mp4",)"
                     R"("logPath":"%1/l1.log","matchFound":true,"duration":60000,)"
                     R"("missionName":"Line 12","flightName":"Tower 1","flightNumber":7,)"
                     R"("namingDefined":true})")
                 .arg(card));
    const auto cell = [this](int row, const QString& name, const char* property) {
        return m_ui->item(name, item("matchingRow" + QString::number(row)))->property(property);
    };
    QTRY_VERIFY(item("matchingRow2"));
    QCOMPARE(cell(0, "name", "shownText").toString(), QString("morning : l1"));
    QCOMPARE(cell(0, "time", "shownText").toString(), QString("60s"));
    QCOMPARE(cell(0, "missionName", "shownText").toString(), QString("Line 12"));
    QCOMPARE(cell(0, "flightName", "shownText").toString(), QString("Tower 1"));
    QCOMPARE(cell(0, "flightNumber", "shownText").toString(), QString("7"));
    QCOMPARE(cell(0, "mark", "color").value<QColor>(), QColor("#12ff54"));
    QCOMPARE(cell(1, "name", "shownText").toString(), QString("noon : No match"));
    QCOMPARE(cell(1, "missionName", "shownText").toString(), QString("-"));
    QCOMPARE(cell(1, "missionName", "shownColor").value<QColor>(), QColor("#777"));
    QCOMPARE(cell(1, "flightNumber", "shownText").toString(), QString("-"));
    QCOMPARE(cell(1, "mark", "color").value<QColor>(), QColor("#999999"));
    grab("importer-rows");
}

void ImporterTest::aSearchThatFindsNothingTells()
{
    m_world->machine.addDrive("CARD", "", true);
    openImporter();
    click("parseButton");
    QTRY_VERIFY(UiFixture::messageBox());
    QCOMPARE(dialogText(), QString("Flight search: No matches found. Please check your drive or "
                                   "directory selection."));
    dismissMessage();
    QVERIFY(!m_importer->property("isBusy").toBool());
    QVERIFY(item("parseButton")->isEnabled());
}

void ImporterTest::progressIsOneFigureOverAllFiles_data()
{
    QTest::addColumn<QVariantList>("progress");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("maximum");
    QTest::newRow("first, counting")
        << QVariantList{1, 4, 1, 0, 0} << "1/4 - 0% completed" << 0.0 << 4.0;
    QTest::newRow("third, structure")
        << QVariantList{3, 4, 0, 0, 0} << "3/4 - 50% completed" << 2.0 << 4.0;
    QTest::newRow("second, storing")
        << QVariantList{2, 4, 2, 500, 1000} << "2/4 - 38% completed" << 1500.0 << 4000.0;
    QTest::newRow("the end") << QVariantList{4, 4, 2, 1000, 1000} << "4/4 - 100% completed"
                             << 4000.0 << 4000.0;
    QTest::newRow("no packets") << QVariantList{1, 2, 2, 0, 0} << "1/2 - NaN% completed" << 0.0
                                << 0.0;
}

void ImporterTest::progressIsOneFigureOverAllFiles()
{
    QFETCH(QVariantList, progress);
    QFETCH(QString, text);
    QFETCH(double, value);
    QFETCH(double, maximum);
    openImporter();
    m_importer->setProperty("isBusy", true);
    item("progressBar")->setProperty("indeterminate", true);
    QMetaObject::invokeMethod(m_importer, "onParsingProgress", Q_ARG(QVariant, progress[0]),
                              Q_ARG(QVariant, progress[1]), Q_ARG(QVariant, progress[2]),
                              Q_ARG(QVariant, progress[3]), Q_ARG(QVariant, progress[4]));
    QCOMPARE(item("txtMatchingBusyIndicator")->property("text").toString(),
             "Reading log file " + text);
    QQuickItem* bar = item("progressBar");
    QVERIFY(!bar->property("indeterminate").toBool());
    QCOMPARE(bar->property("minimumValue").toDouble(), 0.0);
    QCOMPARE(bar->property("maximumValue").toDouble(), maximum);
    QCOMPARE(bar->property("value").toDouble(), value);
    QCOMPARE(bar->property("ratio").toDouble(), maximum > 0 ? value / maximum : 0.0);
    if (value == 1500.0)
        grab("importer-progress");
}

void ImporterTest::anAbortedSearchLeavesNothing()
{
    const QString card = m_world->machine.addDrive("CARD", "", true);
    addDay(card + "/DCIM/100HDDVR", card);
    openImporter();
    search();
    QCOMPARE(rowCount(), 3);
    m_world->held = true;
    click("parseButton");
    QCOMPARE(rowCount(), 0);
    m_world->reached.acquire();
    click("abortProcessingButton");
    QVERIFY(!m_importer->property("isBusy").toBool());
    m_world->release();
    QTRY_VERIFY(m_ui->log().contains("Aborted (directoryParser)"));
    QCOMPARE(rowCount(), 0);
    QVERIFY(!UiFixture::messageBox());
    search();
    QCOMPARE(rowCount(), 3);
}

void ImporterTest::loadingAnEmptyListTells()
{
    openImporter();
    click("okButton");
    QTRY_VERIFY(UiFixture::messageBox());
    QCOMPARE(dialogText(),
             QString("Auto importer: Please perform a flight search first, then select "
                     "a flight from the list."));
    dismissMessage();
    QVERIFY(m_importer->isVisible());
    QVERIFY(!m_importer->property("ok").toBool());
}

void ImporterTest::loadingWithoutAClickTakesTheFirstRow()
{
    const QString card = m_world->machine.addDrive("My CARD %20", "", true);
    addDay(card + "/DCIM/100HDDVR", card);
    openImporter();
    search();
    click("okButton");
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(m_importer->property("ok").toBool());
    QCOMPARE(m_importer->property("chosenVideoFile").toUrl(),
             QUrl::fromLocalFile(card + "/DCIM/100HDDVR/morning.mp4"));
    QCOMPARE(m_importer->property("chosenLogFile").toUrl(), QUrl::fromLocalFile(card + "/l1.log"));
}

void ImporterTest::loadingAFlightWithoutALog()
{
    const QString card = m_world->machine.addDrive("CARD", "", true);
    addDay(card + "/DCIM/100HDDVR", card);
    openImporter();
    search();
    QTRY_VERIFY(item("matchingRow1") && item("matchingRow1")->y() > 0); // laid out
    click("matchingRow1");
    QCOMPARE(item("matchingsListView")->property("currentIndex").toInt(), 1);
    click("okButton");
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(m_importer->property("ok").toBool());
    QCOMPARE(m_importer->property("chosenVideoFile").toUrl(),
             QUrl::fromLocalFile(card + "/DCIM/100HDDVR/noon.mp4"));
    QCOMPARE(evaluate("Paths.chosenPath(chosenLogFile)").toString(), QString("no_match"));
}

void ImporterTest::theKeyboardChoosesAndLoads()
{
    const QString card = m_world->machine.addDrive("CARD", "", true);
    addDay(card + "/DCIM/100HDDVR", card);
    openImporter();
    search();
    QQuickItem* list = item("matchingsListView");
    focus(list);
    QTest::keyClick(m_importer, Qt::Key_Down);
    QTest::keyClick(m_importer, Qt::Key_Down);
    QTest::keyClick(m_importer, Qt::Key_Down);
    QCOMPARE(list->property("currentIndex").toInt(), 2);
    QTest::keyClick(m_importer, Qt::Key_Up);
    QCOMPARE(list->property("currentIndex").toInt(), 1);
    QTest::keyClick(m_importer, Qt::Key_Down);
    QTest::keyClick(m_importer, Qt::Key_Return);
    QTRY_VERIFY(!m_importer->isVisible());
    QCOMPARE(m_importer->property("chosenVideoFile").toUrl(),
             QUrl::fromLocalFile(card + "/DCIM/100HDDVR/evening.mp4"));
}

void ImporterTest::theFastSearchBoxIsHandedOn()
{
    openImporter();
    QVERIFY(!item("checkBoxFastSearch")->property("checked").toBool());
    m_importer->setProperty("fastLoadingChecked", true);
    QMetaObject::invokeMethod(m_importer, "init");
    QVERIFY(item("checkBoxFastSearch")->property("checked").toBool());
    click("checkBoxFastSearch");
    click("cancelButton");
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(!m_importer->property("fastLoadingChecked").toBool());
}

void ImporterTest::longNamesStayInTheirColumns()
{
    const QString folder = m_world->path("flights");
    const QString longName =
        QString("Inspection of the high voltage line between the valley and the "
                "pass ")
            .repeated(2);
    addDay(folder, folder);
    m_world->addVideo(folder + '/' + longName + ".mov", 20'000);
    m_world->addLog(folder + '/' + longName + ".log", 20'100, "a flight named at length");
    openImporter();
    QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen", Q_ARG(QVariant, folder));
    m_importer->setProperty("isSelectingDirectoryForVideo", true);
    QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen", Q_ARG(QVariant, folder));
    search();
    QTRY_VERIFY(item("matchingRow3"));
    evaluate("matchingsListModel.setProperty(3, 'missionName', 'first\\nsecond <b>line</b>')");
    evaluate("matchingsListModel.setProperty(3, 'flightName', 'A very long name of a flight '"
             " + 'that no column can hold')");
    grab("importer-long");
    QQuickItem* row = item("matchingRow3");
    qreal end = 0;
    for (const QString name : {"name", "time", "missionName", "flightName", "flightNumber"}) {
        QQuickItem* cell = m_ui->item(name, row);
        const qreal start = cell->mapToScene({0, 0}).x();
        QVERIFY2(start >= end, qPrintable(name));
        end = start + cell->width();
        QCOMPARE(start, item(name + "Heading")->mapToScene({0, 0}).x());
    }
    QVERIFY(end <= row->mapToScene({row->width(), 0}).x());
    QVERIFY(m_ui->item("name", row)->property("truncated").toBool());
    QVERIFY(m_ui->item("flightName", row)->property("truncated").toBool());
    QVERIFY(!m_ui->item("flightNumber", row)->property("truncated").toBool());
    QVERIFY(!m_ui->item("time", row)->property("truncated").toBool());
}

void ImporterTest::theWelcomePanelReportsItsButtons_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("signal");
    QTest::newRow("project") << "openProjectButton"
                             << "Open project"
                             << "project";
    QTest::newRow("video") << "openVideoButton"
                           << "Import video"
                           << "video";
    QTest::newRow("scan") << "openRemovableDevicesButton"
                          << "Scan removable devices"
                          << "scan";
}

void ImporterTest::theWelcomePanelReportsItsButtons()
{
    QFETCH(QString, button);
    QFETCH(QString, text);
    QFETCH(QString, signal);
    m_ui->screenshot("welcome");
    QCOMPARE(m_ui->get(button, "text").toString(), text);
    QCOMPARE(m_ui->item(button)->size(), QSizeF(180, 50));
    QVERIFY(m_ui->click(button));
    QCOMPARE(m_ui->root()->property("clicked").toString(), signal);
}

QTEST_MAIN(ImporterTest)
#include "ImporterTest.moc"
