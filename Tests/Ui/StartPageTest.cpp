#include "ReviewSuite.h"

#include <QFile>
#include <QSettings>

using namespace corv::test;

/// What is on screen before a flight is open, and the projects of before.
class StartPageTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void theButtonsOfTheStartPageAreBelowTheBars();
    void theNamesOnTheStartPageHaveRoomBetweenBothPanels();
    void recentProjectsAreOnTheStartPage();
    void aProjectGoneMeanwhileIsGreyedOnTheStartPage();
    void itsChoicesComeInTheOrderInWhichTheyAreRead();
    void returnPressesAChoice();
};

void StartPageTest::theButtonsOfTheStartPageAreBelowTheBars()
{
    m_ui->window()->resize(m_ui->window()->minimumSize());
    m_ui->root()->setProperty("crashNotice",
                              QString("Vistrel stopped unexpectedly. ").repeated(16));
    m_ui->evaluate("unfinishedBar.text = 'Not finished: ' + 'Save pictures; '.repeat(32)");
    QQuickItem* const bar = m_ui->item("unfinishedBar");
    const auto covered = [bar] { return bar->mapToScene(QPointF(0, bar->height())).y(); };
    // More than the half of the place of the video.
    QTRY_VERIFY(covered() > m_ui->item("videoRect")->height() / 2);
    for (const char* name :
         {"openProjectButton", "openVideoButton", "openRemovableDevicesButton"}) {
        QQuickItem* const button = m_ui->item(name);
        QTRY_VERIFY2(button->mapToScene(QPointF()).y() >= covered(), name);
        const double bottom = button->mapToScene(QPointF(0, button->height())).y();
        QVERIFY2(bottom < m_ui->item("controlsTab")->mapToScene(QPointF()).y(), name);
    }
    QQuickItem* const title = m_ui->item("quickStartTitle");
    QVERIFY(!title->isVisible() || title->mapToScene(QPointF()).y() >= covered());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void StartPageTest::theNamesOnTheStartPageHaveRoomBetweenBothPanels()
{
    m_ui->window()->resize(m_ui->window()->minimumSize());
    m_ui->evaluate("panelSettings.poiListShown = panelSettings.sidebarShown = true");
    QQuickItem* const narrow = m_ui->item("openRemovableDevicesButton");
    QTRY_VERIFY(narrow->width() < 120);
    for (QQuickItem* text : narrow->findChildren<QQuickItem*>()) {
        if (text->inherits("QQuickText"))
            QVERIFY(!text->property("truncated").toBool());
    }
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void StartPageTest::recentProjectsAreOnTheStartPage()
{
    QVERIFY(m_ui->openVideo());
    const QString folder = media().newFolder();
    m_ui->call("doSaveProject", {folder + "/first.ecor"});
    m_ui->call("doSaveProject", {folder + "/second.ecor"});
    QTRY_VERIFY(!m_ui->evaluate("projectPictures.pictureOf('" + folder + "/second.ecor')")
                     .toUrl()
                     .isEmpty());
    QVERIFY(QFile::remove(folder + "/first.ecor"));
    QVERIFY(m_ui->reload());
    QTRY_VERIFY(m_ui->item("recentProjectButton1"));
    QCOMPARE(m_ui->get("recentProjectButton0", "text").toString(), QString("second"));
    QCOMPARE(m_ui->get("recentProjectButton1", "text").toString(), QString("first"));
    QVERIFY(!m_ui->item("recentProjectButton1")->isEnabled());
    constexpr int ready = 1;
    QTRY_COMPARE(m_ui->get("recentPicture0", "status").toInt(), ready);
    QVERIFY(m_ui->click("recentProjectButton0"));
    QTRY_COMPARE(m_ui->get("currentProject", "filePath").toString(), folder + "/second.ecor");
    m_ui->call("goCloseProject");
    QVERIFY(m_ui->trigger("clearRecentProjectsMenuItem"));
    QTRY_VERIFY(!m_ui->item("recentProjectsList")->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

/// As one on a card that was pulled out.
void StartPageTest::aProjectGoneMeanwhileIsGreyedOnTheStartPage()
{
    QVERIFY(m_ui->openVideo());
    const QString folder = media().newFolder();
    m_ui->call("doSaveProject", {folder + "/first.ecor"});
    m_ui->call("doSaveProject", {folder + "/second.ecor"});
    QVERIFY(QFile::remove(folder + "/second.ecor"));
    m_ui->call("goCloseProject");
    QTRY_VERIFY(m_ui->item("recentProjectButton0") &&
                !m_ui->item("recentProjectButton0")->isEnabled());
    QVERIFY(m_ui->item("recentProjectButton1")->isEnabled());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void StartPageTest::itsChoicesComeInTheOrderInWhichTheyAreRead()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("doSaveProject", {media().newFolder() + "/first.ecor"});
    QTRY_VERIFY(m_ui->activate());
    // With a video open the tools of the strip come first.
    key(Qt::Key_Tab);
    QCOMPARE(m_ui->window()->activeFocusItem(), m_ui->item("beginButton"));
    key(Qt::Key_Escape);
    m_ui->call("goCloseProject");
    QTRY_VERIFY(m_ui->item("recentProjectButton0"));
    for (const char* choice : {"openProjectButton", "openVideoButton", "openRemovableDevicesButton",
                               "recentProjectButton0"}) {
        key(Qt::Key_Tab);
        QCOMPARE(m_ui->window()->activeFocusItem(), m_ui->item(choice));
    }
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void StartPageTest::returnPressesAChoice()
{
    QVERIFY(m_ui->openVideo());
    const QString project = media().newFolder() + "/first.ecor";
    m_ui->call("doSaveProject", {project});
    m_ui->call("goCloseProject");
    QTRY_VERIFY(m_ui->item("recentProjectButton0"));
    QTRY_VERIFY(m_ui->activate());
    m_ui->item("openRemovableDevicesButton")->forceActiveFocus(Qt::TabFocusReason);
    key(Qt::Key_Return);
    QTRY_VERIFY(UiFixture::visibleWindow("autoImporter"));
    UiFixture::visibleWindow("autoImporter")->close();
    QTRY_VERIFY(m_ui->activate());
    m_ui->item("recentProjectButton0")->forceActiveFocus(Qt::TabFocusReason);
    key(Qt::Key_Return);
    QTRY_COMPARE(m_ui->get("currentProject", "filePath").toString(), project);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

QTEST_MAIN(StartPageTest)
#include "StartPageTest.moc"
