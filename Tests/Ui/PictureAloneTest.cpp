#include "ReviewSuite.h"

#include <QScreen>

using namespace corv::test;

/// The picture alone on the full screen.
class PictureAloneTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void fillsTheScreen();
    void escapeLeavesAsItWas();
    void controlsComeWithThePointerAndGo();
    void controlsStayUnderThePointer();
    void keysAndZoomWork();
    void tabBringsTheControls();
    void keysLeaveTheControlsAsTheyGo();
    void escapeFirstEndsTheMoveOfAPoint();
    void closingTheFlightLeavesIt();
    void theDesktopMayEndIt();

private:
    void enter();
    void move(int x, int y) { QTest::mouseMove(m_ui->window(), QPoint(x, y)); }
    bool isOn() const { return m_ui->evaluate("pictureAlone.on").toBool(); }
    bool keysAreWithTheVideo() const { return m_ui->item("videoTab")->hasActiveFocus(); }
    bool hasControls() const { return m_ui->item("controlsTab")->isVisible(); }
};

void PictureAloneTest::enter()
{
    QVERIFY(m_ui->openVideo());
    m_ui->evaluate("pictureAlone.restMs = 200");
    QVERIFY(m_ui->activate());
    key(Qt::Key_F);
    QTRY_VERIFY(isOn());
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::FullScreen);
    QTRY_COMPARE(m_ui->window()->size(), m_ui->window()->screen()->size());
}

void PictureAloneTest::fillsTheScreen()
{
    key(Qt::Key_F);
    QVERIFY(!isOn());
    enter();
    QQuickItem* const picture = m_ui->item("videoRect");
    QTRY_COMPARE(QSizeF(picture->width(), picture->height()),
                 QSizeF(m_ui->window()->screen()->size()));
    QVERIFY(!m_ui->item("hUDRectangle")->isVisible());
    m_ui->screenshot("picture-alone-controls");
    QTRY_VERIFY(!hasControls());
    m_ui->screenshot("picture-alone");
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void PictureAloneTest::escapeLeavesAsItWas()
{
    const QSize before = m_ui->window()->size();
    enter();
    key(Qt::Key_Escape);
    QTRY_VERIFY(!isOn());
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::Windowed);
    QTRY_COMPARE(m_ui->window()->size(), before);
    QVERIFY(hasControls());
    QVERIFY(m_ui->item("hUDRectangle")->isVisible());
    // The menu bar is back above the picture.
    QVERIFY(m_ui->item("videoRect")->mapToScene({}).y() > 10);
}

void PictureAloneTest::controlsComeWithThePointerAndGo()
{
    enter();
    QTRY_VERIFY(!hasControls());
    move(300, 300);
    QTRY_VERIFY(hasControls());
    QTRY_VERIFY(!hasControls());
}

void PictureAloneTest::controlsStayUnderThePointer()
{
    enter();
    m_ui->evaluate("pictureAlone.restMs = 20");
    QQuickItem* const play = m_ui->item("playButton");
    const QPoint place = play->mapToScene(QPointF(4, 4)).toPoint();
    move(300, 300);
    move(place.x(), place.y());
    QSignalSpy rest(m_ui->find("pictureAlone"), SIGNAL(controlsShownChanged()));
    QVERIFY(m_ui->click("playButton"));
    QTRY_VERIFY(player("playing").toBool());
    QTRY_VERIFY(m_ui->evaluate("videoPlayer.currentFrameIndex > 5").toBool());
    QVERIFY(hasControls());
    QCOMPARE(rest.size(), 0);
}

void PictureAloneTest::keysAndZoomWork()
{
    enter();
    QTRY_VERIFY(!hasControls());
    key(Qt::Key_Space);
    QTRY_VERIFY(player("playing").toBool());
    key(Qt::Key_K);
    QTRY_VERIFY(!player("playing").toBool());
    const int frame = player("currentFrameIndex").toInt();
    key(Qt::Key_Right);
    QTRY_COMPARE(player("currentFrameIndex").toInt(), frame + 1);
    UiFixture::wheel(m_ui->item("videoRect"), 120);
    QTRY_VERIFY(m_ui->get("videoRect", "zoom").toDouble() > 1);
    UiFixture::click(m_ui->item("videoMouseArea"));
    QTRY_VERIFY(player("playing").toBool());
    QVERIFY(isOn());
}

void PictureAloneTest::tabBringsTheControls()
{
    enter();
    QTRY_VERIFY(!hasControls());
    key(Qt::Key_Tab);
    QVERIFY(hasControls());
    QVERIFY(!keysAreWithTheVideo());
    // They stay while one of them has the keys, also those of a slow hand.
    QTest::qWait(600);
    QVERIFY(hasControls());
    key(Qt::Key_Tab);
    QVERIFY(!keysAreWithTheVideo());
    UiFixture::click(m_ui->item("videoMouseArea"));
    QVERIFY(keysAreWithTheVideo());
    QTRY_VERIFY(!hasControls());
}

void PictureAloneTest::keysLeaveTheControlsAsTheyGo()
{
    enter();
    move(300, 300);
    QTRY_VERIFY(hasControls());
    m_ui->item("endButton")->forceActiveFocus();
    QVERIFY(!keysAreWithTheVideo());
    QTRY_VERIFY(!hasControls());
    QVERIFY(keysAreWithTheVideo());
    key(Qt::Key_Space);
    QTRY_VERIFY(player("playing").toBool());
    // With the keys in a control that is hidden, the search for the next one would not end.
    key(Qt::Key_Tab);
    QVERIFY(hasControls());
}

void PictureAloneTest::escapeFirstEndsTheMoveOfAPoint()
{
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->selectPoiAt(1000));
    enter();
    key(Qt::Key_M);
    QTRY_VERIFY(m_ui->evaluate("timelineContent.movePOIMode").toBool());
    key(Qt::Key_Escape);
    QTRY_VERIFY(!m_ui->evaluate("timelineContent.movePOIMode").toBool());
    QVERIFY(isOn());
    key(Qt::Key_Escape);
    QTRY_VERIFY(!isOn());
}

void PictureAloneTest::closingTheFlightLeavesIt()
{
    enter();
    m_ui->call("goCloseProject");
    QTRY_VERIFY(!isOn());
    QTRY_COMPARE(m_ui->window()->visibility(), QWindow::Windowed);
}

void PictureAloneTest::theDesktopMayEndIt()
{
    enter();
    m_ui->window()->showNormal();
    QTRY_VERIFY(!isOn());
    QVERIFY(hasControls());
}

QTEST_MAIN(PictureAloneTest)
#include "PictureAloneTest.moc"
