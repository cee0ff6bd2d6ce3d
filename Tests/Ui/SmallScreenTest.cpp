#include "ReviewSuite.h"

#include <QScreen>

using namespace corv::test;

/// A screen lower than the window may be: what is needed to play, to add points of interest and to
/// save stays on it.
class SmallScreenTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void whatIsNeededIsOnTheScreen();
    void theSidebarIsFoldedAtFirst();
};

void SmallScreenTest::whatIsNeededIsOnTheScreen()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(screen.size(), QSize(1024, 600));
    QVERIFY(m_ui->openVideo());
    m_ui->window()->resize(1000, 700);
    m_ui->window()->setPosition(0, 20);
    QCOMPARE(m_ui->window()->minimumHeight(), 700);
    for (const char* name : {"playButton", "addPoiButton", "saveImageButton", "timelineContent",
                             "infoTab", "poiListButton", "sidebarButton", "videoOutput"}) {
        QQuickItem* item = m_ui->item(name);
        QVERIFY2(item && item->isVisible(), name);
        const auto bottom = [&] { return item->mapToGlobal(QPointF(0, item->height())).y(); };
        QTRY_VERIFY2(bottom() <= screen.bottom() + 2,
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

QTEST_MAIN(SmallScreenTest)
#include "SmallScreenTest.moc"
