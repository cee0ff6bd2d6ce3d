#include "CardWorld.h"
#include "Discovery/PersistentData.h"
#include "ReviewFixture.h"

#include <memory>

using namespace corv;
using namespace corv::test;

/// From a card, through the importer, to the flight on the screen: the whole main window.
class CardToScreenTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void aCardIsFoundSearchedAndOpened();
    void aSecondFlightReplacesTheFirst();
    void aFlightWithoutALogOpensItsVideo();
    void aLaterPartOpensTheWholeFlightAtItsPlace();
    void cancellingChangesNothing();

private:
    void openImporter();
    void awaitRow(const QString& name);
    void autodetectAndSearch();
    void load(int row);
    void awaitFlight(const QString& video, const QString& log);

    std::unique_ptr<CardWorld> m_world;
    std::unique_ptr<ReviewFixture> m_ui;
    QQuickWindow* m_importer = nullptr;
    QString m_videos;
    QString m_logs;
};

void CardToScreenTest::initTestCase()
{
    UiFixture::prepare();
    CardParser::registerInPlaceOfTheReal();
}

void CardToScreenTest::init()
{
    PersistentData::instance()->setDirectoryList({});
    m_world = std::make_unique<CardWorld>();
    m_world->machine.addDrive("disk", "", false);
    m_logs = m_world->machine.addDrive("Logs CARD %20", "LOGS", true);
    m_videos = m_world->machine.addDrive("Video CARD #1 ü", "VIDEO", true) + "/DCIM/100HDDVR";
    const QString video = FlightMedia::instance().video();
    m_world->addCopy(m_videos + "/First 100%.mp4", 0, video);
    m_world->addLog(m_logs + "/first.log", 100, "North", 6000);
    m_world->addCopy(m_videos + "/second.mp4", 5000, video);
    m_world->addLog(m_logs + "/second.log", 5100, "South", 6000);
    m_world->addCopy(m_videos + "/third.mp4", 10'000, video);
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
}

void CardToScreenTest::cleanup()
{
    const QStringList scriptErrors = m_ui->scriptErrors();
    m_ui.reset();
    m_world.reset();
    QCOMPARE(scriptErrors, QStringList());
}

void CardToScreenTest::openImporter()
{
    QVERIFY(m_ui->trigger("newFromDevicesMenuItem"));
    QTRY_VERIFY(UiFixture::visibleWindow("autoImporter"));
    m_importer = UiFixture::visibleWindow("autoImporter");
    QVERIFY(QTest::qWaitForWindowActive(m_importer));
}

// Until the row below the first is in its place, so that a click meets it.
void CardToScreenTest::awaitRow(const QString& name)
{
    QTRY_VERIFY(m_ui->item(name, m_importer) && m_ui->item(name, m_importer)->y() > 0);
}

void CardToScreenTest::autodetectAndSearch()
{
    UiFixture::click(m_ui->item("autodetectButton", m_importer));
    QVERIFY(!UiFixture::messageBox());
    UiFixture::click(m_ui->item("parseButton", m_importer));
    QTRY_VERIFY(!m_importer->property("isBusy").toBool());
    awaitRow("matchingRow2");
}

void CardToScreenTest::load(int row)
{
    UiFixture::click(m_ui->item(QString("matchingRow%1").arg(row), m_importer));
    UiFixture::click(m_ui->item("okButton", m_importer));
    QTRY_VERIFY(!m_importer->isVisible());
}

void CardToScreenTest::awaitFlight(const QString& video, const QString& log)
{
    QTRY_COMPARE(m_ui->evaluate("LogParser.source").toString(), log);
    QTRY_VERIFY(!m_ui->evaluate("LogParser.isParsing").toBool());
    QVERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->get("videoPlayer", "source").toString(), video);
    QTRY_COMPARE(m_ui->get("videoFileText", "text").toString(), video);
    QCOMPARE(m_ui->get("logFileText", "text").toString(), log);
    QVERIFY(!UiFixture::messageBox());
}

void CardToScreenTest::aCardIsFoundSearchedAndOpened()
{
    openImporter();
    autodetectAndSearch();
    load(0);
    awaitFlight(m_videos + "/First 100%.mp4", m_logs + "/first.log");
    QCOMPARE(m_ui->evaluate("LogParser.flightNaming.flightName").toString(), QString("North"));
    QTRY_COMPARE(m_ui->get("namingText", "text").toString(),
                 QString("<b>Mission:</b><br>Line 12<br><b>Flight:</b><br>North<br><b>Num. </b>7"));
    QVERIFY(!m_ui->root()->property("title").toString().contains(" - "));
    QVERIFY(!m_ui->item("welcomeMessage")->isVisible());
}

void CardToScreenTest::aSecondFlightReplacesTheFirst()
{
    openImporter();
    autodetectAndSearch();
    load(0);
    awaitFlight(m_videos + "/First 100%.mp4", m_logs + "/first.log");
    m_ui->evaluate("timelineContent.setPOIsFromList([{time: 1000, name: 'Crack', comment: ''}])");
    m_ui->evaluate("LogParser.manualLogTimeOffset = 500");

    openImporter();
    awaitRow("matchingRow1"); // the last result, without a search
    load(1);
    awaitFlight(m_videos + "/second.mp4", m_logs + "/second.log");
    QCOMPARE(m_ui->evaluate("LogParser.flightNaming.flightName").toString(), QString("South"));
    QCOMPARE(m_ui->poiNames(), QStringList());
    QCOMPARE(m_ui->evaluate("LogParser.manualLogTimeOffset").toInt(), 0);
}

void CardToScreenTest::aFlightWithoutALogOpensItsVideo()
{
    openImporter();
    autodetectAndSearch();
    load(0);
    awaitFlight(m_videos + "/First 100%.mp4", m_logs + "/first.log");
    openImporter();
    awaitRow("matchingRow2");
    load(2);
    QTRY_COMPARE(m_ui->get("videoPlayer", "source").toString(), m_videos + "/third.mp4");
    QTRY_VERIFY(m_ui->hasVideo());
    QVERIFY(!UiFixture::messageBox());
    QCOMPARE(m_ui->evaluate("LogParser.source").toString(), QString());
    QVERIFY(m_ui->evaluate("LogParser.flightNaming.undefined").toBool());
}

void CardToScreenTest::aLaterPartOpensTheWholeFlightAtItsPlace()
{
    constexpr int partMs = 6000;
    const QStringList parts{m_videos + "/First 100%.mp4", m_videos + "/second.mp4"};
    m_world->addLog(m_logs + "/long.log", 20'000, "West", 2 * partMs);
    FlightMatchData match;
    match.videoFile = QFileInfo(parts[1]);
    match.logFile = QFileInfo(m_logs + "/long.log");
    match.matchFound = true;
    match.flightFiles = parts;
    match.part = 2;
    match.partStartMs = partMs;
    PersistentData::instance()->setDirectoryList({match});
    openImporter();
    QTRY_VERIFY(m_ui->item("matchingRow0", m_importer)); // chosen, as the first of the list
    UiFixture::click(m_ui->item("okButton", m_importer));
    QTRY_VERIFY(!m_importer->isVisible());
    QTRY_COMPARE(m_ui->evaluate("LogParser.source").toString(), m_logs + "/long.log");
    const auto ms = [this](const char* time) {
        return QTime(0, 0).msecsTo(m_ui->get("videoPlayer", time).toTime());
    };
    QTRY_VERIFY2(qAbs(ms("timePosition") - partMs) <= 1,
                 qPrintable(QString::number(ms("timePosition"))));
    QCOMPARE(ms("duration"), 2 * partMs);
}

void CardToScreenTest::cancellingChangesNothing()
{
    openImporter();
    autodetectAndSearch();
    UiFixture::click(m_ui->item("checkBoxFastSearch", m_importer));
    UiFixture::click(m_ui->item("cancelButton", m_importer));
    QTRY_VERIFY(!m_importer->isVisible());
    QVERIFY(!m_ui->hasVideo());
    openImporter();
    QVERIFY(m_ui->item("checkBoxFastSearch", m_importer)->property("checked").toBool());
}

QTEST_MAIN(CardToScreenTest)
#include "CardToScreenTest.moc"
