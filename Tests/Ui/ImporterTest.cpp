#include "Discovery/PersistentData.h"
#include "ImporterSuite.h"
#include "Review/JobList.h"

#include <QAccessible>

using namespace corv;
using namespace corv::test;

/// What the importer finds, shows and loads, and the welcome panel that leads to it.
class ImporterTest : public ImporterSuite
{
    Q_OBJECT

private slots:
    void opensEmptyAndWithoutADialog();
    void showsTheLastResultAtOnce();
    void aSearchShowsItsRows();
    void searchThatFindsNothingShowsAMessage();
    void progressIsOneFigureOverAllFiles_data();
    void progressIsOneFigureOverAllFiles();
    void anAbortedSearchLeavesNothing();
    void loadingAnEmptyListEmits();
    void loadingWithoutAClickTakesTheFirstRow();
    void loadsAFlightWithoutALog();
    void theKeyboardChoosesAndLoads();
    void returnPressesTheButtonWithTheKeyboard();
    void theKeyboardStaysWhereItWasMovedTo_data();
    void theKeyboardStaysWhereItWasMovedTo();
    void aDoubleClickLoads();
    void escapeCloses();
    void searchAfterAbortStartsWhenTheOldHasEnded();
    void aSearchCancelledInTheListOfJobsEnds();
    void closingTheWindowAborts();
    void videosAreCountedWhileTheirLengthsAreRead();
    void pairIconShowsTheEvidence_data();
    void pairIconShowsTheEvidence();
    void remarksAreShown();
    void theFastSearchBoxIsHandedOn();
    void longNamesStayInTheirColumns();
    void theWelcomePanelReportsItsButtons_data();
    void theWelcomePanelReportsItsButtons();
};

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

void ImporterTest::aSearchShowsItsRows()
{
    const QString card = openWithACard();
    startHeldSearch();
    QVERIFY(m_importer->property("isBusy").toBool());
    QVERIFY(!item("parseButton")->isEnabled());
    QVERIFY(!item("matchingsListHeader")->isVisible());
    QVERIFY(!item("matchingsListView")->isVisible());
    QVERIFY(item("abortProcessingButton")->isVisible());
    QVERIFY(item("progressBar")->property("indeterminate").toBool());
    QCOMPARE(item("txtMatchingBusyIndicator")->property("text").toString(),
             QString("Reading log files..."));
    QCOMPARE(QAccessible::queryAccessibleInterface(item("progressBar"))->text(QAccessible::Name),
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
                     R"("namingDefined":true,"evidence":"timeAndLength","doubtful":false,)"
                     R"("evidenceText":"Time and length agree","partText":"",)"
                     R"("fileText":"Written 2018-06-01 12:00:00, 0 kB, in %1/DCIM/100HDDVR"})")
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
    const QString readOut =
        QAccessible::queryAccessibleInterface(item("matchingRow0"))->text(QAccessible::Description);
    QVERIFY2(readOut.startsWith("60s, mission: Line 12, flight: Tower 1, number 7\n"),
             qPrintable(readOut));
    QCOMPARE(cell(1, "name", "shownText").toString(), QString("noon : No match"));
    QCOMPARE(cell(1, "missionName", "shownText").toString(), QString("-"));
    QCOMPARE(cell(1, "missionName", "shownColor").value<QColor>(), QColor("#777"));
    QCOMPARE(cell(1, "flightNumber", "shownText").toString(), QString("-"));
    QCOMPARE(cell(1, "mark", "color").value<QColor>(), QColor("#999999"));
    grab("importer-rows");
}

void ImporterTest::searchThatFindsNothingShowsAMessage()
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
    openWithACard();
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

void ImporterTest::loadingAnEmptyListEmits()
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

void ImporterTest::loadsAFlightWithoutALog()
{
    const QString card = openWithACard();
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
    const QString card = openWithACard();
    search();
    QQuickItem* list = item("matchingsListView");
    QTRY_VERIFY(list->hasActiveFocus());
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

void ImporterTest::returnPressesTheButtonWithTheKeyboard()
{
    openWithACard();
    search();
    item("cancelButton")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_importer, Qt::Key_Return);
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(!m_importer->property("ok").toBool());
    openImporter();
    search();
    item("okButton")->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyClick(m_importer, Qt::Key_Enter, Qt::KeypadModifier);
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(m_importer->property("ok").toBool());
}

void ImporterTest::theKeyboardStaysWhereItWasMovedTo_data()
{
    QTest::addColumn<bool>("messageInFront");
    QTest::newRow("in the window") << false;
    QTest::newRow("below a message") << true;
}

void ImporterTest::theKeyboardStaysWhereItWasMovedTo()
{
    QFETCH(bool, messageInFront);
    openWithACard();
    startHeldSearch();
    focus(item("cardTwoDriveDropdown"));
    if (messageInFront) {
        evaluate("showMessage('A message', 'in front')");
        QTRY_VERIFY(!item("cardTwoDriveDropdown")->hasActiveFocus());
    }
    m_world->release();
    QTRY_COMPARE(rowCount(), 3);
    if (messageInFront)
        dismissMessage();
    QTRY_VERIFY(item("cardTwoDriveDropdown")->hasActiveFocus());
}

void ImporterTest::aDoubleClickLoads()
{
    const QString card = openWithACard();
    search();
    QTRY_VERIFY(item("matchingRow2") && item("matchingRow2")->y() > 0); // laid out
    QQuickItem* row = item("matchingRow2");
    const QPoint middle = row->mapToScene({row->width() / 2, row->height() / 2}).toPoint();
    QTest::mouseClick(m_importer, Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseDClick(m_importer, Qt::LeftButton, Qt::NoModifier, middle);
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(m_importer->property("ok").toBool());
    QCOMPARE(m_importer->property("chosenVideoFile").toUrl(),
             QUrl::fromLocalFile(card + "/DCIM/100HDDVR/evening.mp4"));
    QCOMPARE(evaluate("chosenMatching.flightFiles").toStringList(),
             QStringList(card + "/DCIM/100HDDVR/evening.mp4"));
}

void ImporterTest::escapeCloses()
{
    openImporter();
    focus(item("matchingsListView"));
    QTest::keyClick(m_importer, Qt::Key_Escape);
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(!m_importer->property("ok").toBool());
}

void ImporterTest::searchAfterAbortStartsWhenTheOldHasEnded()
{
    openWithACard();
    startHeldSearch();
    click("abortProcessingButton");
    click("parseButton");
    QVERIFY(m_importer->property("isBusy").toBool());
    m_world->release();
    QTRY_VERIFY(!m_importer->property("isBusy").toBool());
    QCOMPARE(rowCount(), 3);
    QVERIFY(!m_ui->log().contains("Previous parsing didn't finish!"));
}

void ImporterTest::aSearchCancelledInTheListOfJobsEnds()
{
    openWithACard();
    JobList jobs;
    m_importer->setProperty("jobs", QVariant::fromValue(&jobs));
    startHeldSearch();
    QCOMPARE(jobs.running(), 1);
    jobs.job(0)->cancel();
    m_world->release();
    QTRY_VERIFY(!m_importer->property("isBusy").toBool());
    QCOMPARE(jobs.job(0)->state(), Job::Cancelled);
    search();
    QCOMPARE(rowCount(), 3);
    QCOMPARE(jobs.job(1)->resultText(), QString("3 videos found, 2 with a log."));
}

void ImporterTest::closingTheWindowAborts()
{
    openWithACard();
    startHeldSearch();
    m_importer->close();
    QTRY_VERIFY(!m_importer->isVisible());
    m_world->release();
    QTRY_VERIFY(m_ui->log().contains("Aborted (directoryParser)"));
}

void ImporterTest::videosAreCountedWhileTheirLengthsAreRead()
{
    openImporter();
    m_importer->setProperty("isBusy", true);
    QMetaObject::invokeMethod(m_importer, "onVideoProgress", Q_ARG(QVariant, 3),
                              Q_ARG(QVariant, 20));
    QCOMPARE(item("txtMatchingBusyIndicator")->property("text").toString(),
             QString("Reading video file 3/20"));
    QCOMPARE(item("progressBar")->property("value").toDouble(), 2.0);
    QCOMPARE(item("progressBar")->property("maximumValue").toDouble(), 20.0);
    QVERIFY(!item("progressBar")->property("indeterminate").toBool());
}

void ImporterTest::pairIconShowsTheEvidence_data()
{
    QTest::addColumn<int>("evidence");
    QTest::addColumn<bool>("doubtful");
    QTest::addColumn<QString>("shape");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, PairingEvidence evidence, bool doubtful,
                        const char* shape, const char* text) {
        QTest::newRow(name) << static_cast<int>(evidence) << doubtful << shape << text;
    };
    row("both", PairingEvidence::TimeAndLength, false, "check", "Time and length agree");
    row("length", PairingEvidence::Length, false, "arrow", "Length agrees");
    row("length, not certain", PairingEvidence::Length, true, "triangle", "not for certain");
    row("time alone", PairingEvidence::LengthDiffers, true, "triangle", "21 s against 35 s");
    row("quick search", PairingEvidence::Time, false, "triangle", "lengths not compared");
    row("none", PairingEvidence::None, false, "dash", "No log found");
}

void ImporterTest::pairIconShowsTheEvidence()
{
    QFETCH(int, evidence);
    QFETCH(bool, doubtful);
    QFETCH(QString, shape);
    QFETCH(QString, text);
    FlightMatchData match;
    match.videoFile = QFileInfo("/card/DCIM/100HDDVR/CORV0002.mp4");
    match.matchFound = static_cast<PairingEvidence>(evidence) != PairingEvidence::None;
    match.evidence = static_cast<PairingEvidence>(evidence);
    match.doubtful = doubtful;
    match.flightLengthMs = 21'000;
    match.recordingLengthMs = 35'000;
    match.flightFiles =
        QStringList({"/card/DCIM/100HDDVR/CORV0001.mp4", "/card/DCIM/100HDDVR/CORV0002.mp4"});
    match.part = 2;
    PersistentData::instance()->setDirectoryList({match});
    openImporter();
    QTRY_VERIFY(item("matchingRow0"));
    QQuickItem* row = item("matchingRow0");
    QQuickItem* mark = m_ui->item("evidenceMark", row);
    QCOMPARE(mark->property("shape").toString(), shape);
    const QString details = row->property("details").toString();
    QVERIFY2(details.contains(text), qPrintable(details));
    QVERIFY(details.contains("/card/DCIM/100HDDVR"));
    QCOMPARE(QAccessible::queryAccessibleInterface(row)->text(QAccessible::Description), details);
    QCOMPARE(m_ui->item("name", row)->property("shownText").toString(),
             QString("CORV0002 (part 2 of CORV0001) : ") + (match.matchFound ? "" : "No match"));
}

void ImporterTest::remarksAreShown()
{
    const QString card = openWithACard();
    startHeldSearch();
    m_world->machine.pullDrive(card);
    m_world->release();
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY2(dialogText().contains(card + " can no longer be read"), qPrintable(dialogText()));
    dismissMessage();
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
