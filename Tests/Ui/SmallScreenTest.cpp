#include "ReviewSuite.h"

#include <QScreen>
#include <QSettings>

using namespace corv::test;

/// A screen lower than the window may be: what is needed to play, to add points of interest and to
/// save stays on it.
class SmallScreenTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void whatIsNeededIsOnTheScreen();
    void theSidebarIsFoldedAtFirst();
    void allInstrumentsCanBeScrolledTo();
    void recentProjectsAreShownWhereARowHasRoom();
    void theButtonsOfAnUpdateAreOnTheScreen();
};

void SmallScreenTest::whatIsNeededIsOnTheScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    QCOMPARE(screen->size(), QSize(1024, 600));
    QTRY_COMPARE(screen->availableSize(), QSize(1024, 570)); // without the panel of the desk
    const QRect desk = screen->availableGeometry();
    QVERIFY(m_ui->openVideo());
    m_ui->window()->resize(1000, 700);
    m_ui->window()->setPosition(0, 20);
    QCOMPARE(m_ui->window()->minimumHeight(), 700);
    for (const char* name : {"playButton", "addPoiButton", "saveImageButton", "timelineContent",
                             "infoTab", "poiListButton", "sidebarButton", "videoOutput"}) {
        QQuickItem* item = m_ui->item(name);
        QVERIFY2(item && item->isVisible(), name);
        const auto bottom = [&] { return item->mapToGlobal(QPointF(0, item->height())).y(); };
        QTRY_VERIFY2(bottom() <= desk.bottom() + 2,
                     qPrintable(QString("%1 ends at %2").arg(name).arg(bottom())));
        QVERIFY2(item->height() >= 20, name);
    }
    QVERIFY(m_ui->item("videoOutput")->height() > 200);
    m_ui->screenshot("small screen");
}

void SmallScreenTest::theSidebarIsFoldedAtFirst()
{
    QVERIFY(!m_ui->item("hUDRectangle")->isVisible());
    QTest::keyClick(m_ui->window(), Qt::Key_F8);
    QTRY_VERIFY(m_ui->item("hUDRectangle")->isVisible());
}

void SmallScreenTest::allInstrumentsCanBeScrolledTo()
{
    QVERIFY(m_ui->openVideo());
    QTest::keyClick(m_ui->window(), Qt::Key_F8);
    QQuickItem* const panel = m_ui->item("headUpDisplay");
    QTRY_VERIFY(panel && panel->isVisible() && panel->width() > 200);
    // The lowest is the dial of the camera: each part of it can be brought into the view.
    const auto needed = [panel] {
        double height = 0;
        QMetaObject::invokeMethod(panel, "heightAt", Q_RETURN_ARG(double, height),
                                  Q_ARG(double, panel->width()));
        return height;
    };
    QQuickItem* const view = m_ui->item("readingsView");
    QVERIFY(view);
    QTRY_VERIFY(view->height() < needed());
    QTRY_COMPARE(panel->height(), needed());
    const auto lowest = [&] { return panel->mapToItem(view, QPointF(0, needed())).y(); };
    const auto scrolledToTheEnd = [&] {
        UiFixture::wheel(view, -120);
        return lowest() <= view->height() + 1;
    };
    QTRY_VERIFY2(scrolledToTheEnd(), qPrintable(QString::number(lowest())));
}

void SmallScreenTest::recentProjectsAreShownWhereARowHasRoom()
{
    QSettings().setValue("recentProjects/paths", QStringList{"/one.ecor", "/two.ecor"});
    QVERIFY(m_ui->reload());
    m_ui->window()->resize(1000, 700);
    m_ui->window()->setPosition(0, 20);
    QQuickItem* const list = m_ui->item("recentProjectsList");
    QTRY_VERIFY(list->isVisible());
    // The lower part of the window is off the screen, and nothing is put there.
    m_ui->window()->setPosition(0, 160);
    QTRY_VERIFY(!list->isVisible());
    m_ui->window()->setPosition(0, 20);
    QTRY_VERIFY(list->isVisible());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void SmallScreenTest::theButtonsOfAnUpdateAreOnTheScreen()
{
    m_ui->call("launchUpdateWindow", {"2.1.0.7", QStringList{"Faster"}});
    QTRY_VERIFY(UiFixture::visibleWindow("newUpdateWindow"));
    QQuickWindow* window = UiFixture::visibleWindow("newUpdateWindow");
    QVERIFY(QTest::qWaitForWindowExposed(window));
    const int bottom = window->screen()->availableGeometry().bottom();
    window->setPosition(100, 40);
    QTRY_VERIFY(window->y() >= 40 && window->y() + window->height() > bottom);
    for (const char* name : {"btn_install_now", "btn_later"}) {
        QQuickItem* button = m_ui->item(name, window);
        QVERIFY2(button, name);
        QTRY_VERIFY2(button->mapToGlobal(QPointF(0, button->height())).y() <= bottom, name);
    }
    window->close();
}

QTEST_MAIN(SmallScreenTest)
#include "SmallScreenTest.moc"
