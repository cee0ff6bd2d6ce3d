#include "ImporterSuite.h"

#include <QDir>
#include <QSettings>
#include <QTreeView>

using namespace corv;
using namespace corv::test;

/// Where the importer searches: drives and folders, found, chosen and remembered.
class ImporterLocationsTest : public ImporterSuite
{
    Q_OBJECT

private slots:
    void drivesAreListed();
    void autodetectShowsWhatItFound_data();
    void autodetectShowsWhatItFound();
    void autodetectReplacesAChosenFolder();
    void aChosenFolderGivesWayToADrive();
    void theLastOfQuickChoicesCounts();
    void cardsThatComeAndGoAreListed();
    void aChoiceStillOnItsWayIsSearched();
    void browseStartsAtTheLastFolder();
    void datesOfFoldersAreWhole();
    void locationsAreSearchedAsChosen_data();
    void locationsAreSearchedAsChosen();
    void choicesAreRememberedByLoading();
    void choicesAreNotRememberedByCancelling();
    void aDriveThatIsGoneSelectsTheFirst();
};

void ImporterLocationsTest::drivesAreListed()
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

void ImporterLocationsTest::autodetectShowsWhatItFound_data()
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

void ImporterLocationsTest::autodetectShowsWhatItFound()
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

void ImporterLocationsTest::autodetectReplacesAChosenFolder()
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

void ImporterLocationsTest::aChosenFolderGivesWayToADrive()
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
    QCOMPARE(evaluate("timerForDirOne.interval").toInt(), 500);
    QTest::keyClick(m_importer, Qt::Key_Up);
    QCOMPARE(dropdown->property("currentIndex").toInt(), 1);
    QVERIFY(m_importer->property("usePathForLog").toBool());
    QTRY_VERIFY(!m_importer->property("usePathForLog").toBool());
    QCOMPARE(evaluate("driveListModelOne.count").toInt(), 2);
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + card + " ");
}

void ImporterLocationsTest::theLastOfQuickChoicesCounts()
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

void ImporterLocationsTest::cardsThatComeAndGoAreListed()
{
    const QString disk = m_world->machine.addDrive("disk", "", false);
    openImporter();
    auto* parser = m_importer->findChild<DirectoryParser*>("directoryParser");
    QVERIFY(parser);
    const QString card = m_world->machine.addDrive("CARD", "", true);
    emit parser->drivesChanged();
    QCOMPARE(evaluate("driveListModelOne.count").toInt(), 2);
    evaluate("useLogDrive({path: '" + card + "'})");
    emit parser->drivesChanged();
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + card + " ");
    QCOMPARE(selectedText("cardTwoDriveDropdown"), "Drive " + disk + " ");
    m_world->machine.pullDrive(card);
    emit parser->drivesChanged();
    QCOMPARE(evaluate("driveListModelTwo.count").toInt(), 1);
    QCOMPARE(selectedText("cardOneDriveDropdown"), "Drive " + disk + " ");
}

void ImporterLocationsTest::aChoiceStillOnItsWayIsSearched()
{
    m_world->machine.addDrive("a", "", false);
    const QString card = m_world->machine.addDrive("b", "", false);
    openImporter();
    QMetaObject::invokeMethod(m_importer, "handleDirectoryChosen",
                              Q_ARG(QVariant, m_world->path("logs")));
    QQuickItem* dropdown = item("cardOneDriveDropdown");
    focus(dropdown);
    QTest::keyClick(m_importer, Qt::Key_Up); // from the folder to the drive above it
    QVERIFY(m_importer->property("usePathForLog").toBool());
    click("parseButton");
    dismissMessage();
    QCOMPARE(m_world->lastSearch.value(1).toString(), card);
    QVERIFY(m_world->lastSearch.value(3).toBool());
}

void ImporterLocationsTest::browseStartsAtTheLastFolder()
{
    m_world->machine.addDrive("disk", "", false);
    const QString folder = m_world->path("Flüge %20");
    QVERIFY(QDir().mkpath(folder + "/below"));
    openImporter();
    click("browseLogsButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(folder));
    QTRY_VERIFY(m_importer->property("usePathForLog").toBool());
    QTRY_VERIFY(!UiFixture::fileDialog());
    click("browseVideosButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->directory().absolutePath(), folder);
    QVERIFY(UiFixture::acceptFile(folder));
    QTRY_VERIFY(!UiFixture::fileDialog());
    // Also after a new start, when the dialogs of the system were last in another folder.
    QSettings().setValue("AutoImporter/lastFolder", QUrl::fromLocalFile(folder + "/below"));
    openImporter();
    click("browseLogsButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    QTRY_COMPARE(UiFixture::fileDialog()->directory().absolutePath(), folder + "/below");
    QVERIFY(UiFixture::acceptFile(folder));
    QTRY_VERIFY(!UiFixture::fileDialog());
}

void ImporterLocationsTest::datesOfFoldersAreWhole()
{
    m_world->machine.addDrive("disk", "", false);
    QVERIFY(QDir().mkpath(m_world->path("flights/monday")));
    openImporter();
    click("browseLogsButton");
    QTRY_VERIFY(UiFixture::fileDialog());
    UiFixture::fileDialog()->setDirectory(m_world->path("flights"));
    const auto* folders = UiFixture::fileDialog()->findChild<QTreeView*>("treeView");
    QVERIFY(folders);
    QTRY_COMPARE(folders->model()->index(0, 0, folders->rootIndex()).data().toString(),
                 QString("monday"));
    constexpr int dates = 3;
    const QAbstractItemView* const view = folders;
    QTRY_VERIFY(folders->columnWidth(dates) >= view->sizeHintForColumn(dates));
    UiFixture::fileDialog()->reject();
    QTRY_VERIFY(!UiFixture::fileDialog());
}

void ImporterLocationsTest::locationsAreSearchedAsChosen_data()
{
    QTest::addColumn<bool>("logFolder");
    QTest::addColumn<bool>("videoFolder");
    QTest::addColumn<bool>("fast");
    QTest::newRow("drives") << false << false << false;
    QTest::newRow("logs in a folder") << true << false << true;
    QTest::newRow("videos in a folder") << false << true << false;
    QTest::newRow("folders") << true << true << true;
}

void ImporterLocationsTest::locationsAreSearchedAsChosen()
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

void ImporterLocationsTest::choicesAreRememberedByLoading()
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

void ImporterLocationsTest::choicesAreNotRememberedByCancelling()
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

void ImporterLocationsTest::aDriveThatIsGoneSelectsTheFirst()
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

QTEST_MAIN(ImporterLocationsTest)
#include "ImporterLocationsTest.moc"
