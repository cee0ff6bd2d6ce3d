#include "PlayerFixture.h"

using namespace corv;
using namespace corv::test;

// How playback ends: at the last frame, short of it, in damage, and what can be done from there.
class PlayerEndTest : public QObject, private ShownPlayerFixture
{
    Q_OBJECT

private slots:
    void init();
    void playedToTheEndEveryFrameIsShown();
    void atTheEndARedrawMakesPicturesAvailable();
    void readToTheEndItHasNoPlace();
    void pausedShortOfTheEndItCanGetItsPlaceBack();
    void damageAtTheEndIsAnEndLikeOthers();
    void aMediumThatFailsIsNoEnd();
    void eachAttemptOnALostMediumIsReportedOnce();
    void whenAMediumIsBackPlaybackGoesOnFromTheScreen();
    void playedOnAtTheEndItStartsAgain();
    void playedOnBeforeTheEndItGoesOn();
};

void PlayerEndTest::init()
{
    makeFolder();
}

void PlayerEndTest::playedToTheEndEveryFrameIsShown()
{
    openJoined();
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_surface.lastNumber(), 44);
    QCOMPARE(m_player->currentFrameIndex(), 44);
    int last = -1;
    for (const int number : m_surface.numbers) {
        QVERIFY(number == last || number == last + 1);
        last = number;
    }
}

void PlayerEndTest::atTheEndARedrawMakesPicturesAvailable()
{
    openJoined();
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    m_player->redraw();
    StillFrame still(*m_player, m_player->timePosition());
    QTRY_COMPARE(still.number(), 44);
    QCOMPARE(m_surface.lastNumber(), 44);
}

void PlayerEndTest::readToTheEndItHasNoPlace()
{
    openJoined();
    QVERIFY(!m_player->isReadToEnd());
    const QSignalSpy changes(m_player.get(), &VideoPlayer::isReadToEndChanged);
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    QVERIFY(m_player->isReadToEnd());
    m_player->redraw();
    QVERIFY(!m_player->isReadToEnd());
    QCOMPARE(changes.size(), 2);
    m_player->play();
    QTRY_VERIFY(m_player->isReadToEnd());
    QVERIFY(m_player->goToFrame(3));
    QVERIFY(!m_player->isReadToEnd());
}

// Playback reads ahead: the end of the file comes before that of the pictures.
void PlayerEndTest::pausedShortOfTheEndItCanGetItsPlaceBack()
{
    addFile("a.mp4", 30, 2.0); // half a second from one to the next
    openPlayer("a.mp4");
    int shown = 29;
    // A machine that is held up may play to the end before it pauses: then it tries again.
    for (int attempt = 0; attempt < 10 && shown == 29; ++attempt) {
        QVERIFY(m_player->goToFrame(26));
        QTRY_COMPARE(m_surface.lastNumber(), 26);
        const auto pausing = connect(m_player.get(), &VideoPlayer::isReadToEndChanged,
                                     m_player.get(), &VideoPlayer::pause);
        m_player->play();
        QTRY_VERIFY(!m_player->playing());
        disconnect(pausing);
        QVERIFY(m_player->isReadToEnd());
        shown = m_surface.lastNumber();
    }
    QVERIFY(shown < 29);
    m_player->redraw();
    StillFrame still(*m_player, m_player->timePosition());
    QTRY_COMPARE(still.number(), shown);
    // And playback goes on to the end.
    m_surface.numbers.clear();
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_surface.lastNumber(), 29);
    QVERIFY(m_surface.numbers.contains(shown + 1));
}

void PlayerEndTest::damageAtTheEndIsAnEndLikeOthers()
{
    addFile("CORV0001.MP4", 20);
    const auto last = addFile("CORV0002.MP4", 20);
    last->firstNumber = 20;
    for (int frame = 15; frame < 20; ++frame)
        last->damaged.insert(frame);
    openPlayer("CORV0001.MP4");
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_player->currentFrameIndex(), 34);
    QVERIFY(m_player->isReadToEnd());
    m_player->redraw();
    StillFrame still(*m_player, m_player->timePosition());
    QTRY_COMPARE(still.number(), 34);

    // A seek to the same frame is a picture that a redraw need not read; it gives a place as well.
    QVERIFY(m_player->seekAtFrame(34));
    QTRY_COMPARE(m_surface.lastNumber(), 34);
    m_player->play();
    QTRY_VERIFY(m_player->isReadToEnd());
    m_player->redraw();
    StillFrame again(*m_player, m_player->timePosition());
    QTRY_COMPARE(again.number(), 34);

    m_surface.numbers.clear();
    QVERIFY(m_player->playOn());
    QTRY_VERIFY(m_surface.numbers.contains(0));
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_player->currentFrameIndex(), 34);
}

void PlayerEndTest::aMediumThatFailsIsNoEnd()
{
    const auto file = addFile("a.mp4", 30);
    file->unreadable.insert(10);
    openPlayer("a.mp4");
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_player->currentFrameIndex(), 9);
    QVERIFY(!m_player->isReadToEnd());
    m_surface.numbers.clear();
    QVERIFY(m_player->playOn());
    QTRY_VERIFY(!m_player->playing());
    QVERIFY(!m_surface.numbers.contains(0));
}

void PlayerEndTest::eachAttemptOnALostMediumIsReportedOnce()
{
    const auto file = addFile("a.mp4", 60);
    openPlayer("a.mp4");
    QVERIFY(m_player->goToFrame(10));
    QTRY_COMPARE(m_surface.lastNumber(), 10);
    QSignalSpy failures(m_player.get(), &VideoPlayer::readFailed);
    file->isGone = true;
    QVERIFY(m_player->playOn());
    QTRY_COMPARE(failures.count(), 1);
    QVERIFY(failures.last().first().toString().startsWith("a.mp4 can no longer be read."));
    QTRY_VERIFY(!m_player->playing());
    QVERIFY(m_player->step(1));
    QTRY_COMPARE(failures.count(), 2);
    QVERIFY(m_player->goToTime(timeAt(400)));
    QTRY_COMPARE(failures.count(), 3);
    QVERIFY(m_player->playOn());
    QTRY_COMPARE(failures.count(), 4);
    QTRY_VERIFY(!m_player->playing());
    // What was asked for before has been answered by now.
    StillFrame still(*m_player, timeAt(0));
    QTRY_VERIFY(still.came());
    QCOMPARE(failures.count(), 4);
}

void PlayerEndTest::whenAMediumIsBackPlaybackGoesOnFromTheScreen()
{
    addFile("CORV0001.MP4", 20);
    const auto second = addFile("CORV0002.MP4", 40);
    second->firstNumber = 20;
    openPlayer("CORV0001.MP4");
    QVERIFY(m_player->goToFrame(15));
    QTRY_COMPARE(m_surface.lastNumber(), 15);
    QSignalSpy failures(m_player.get(), &VideoPlayer::readFailed);
    QSignalSpy moves(m_player.get(), &VideoPlayer::timePositionChanged);
    second->isGone = true;
    QVERIFY(m_player->goToFrame(50));
    QTRY_COMPARE(failures.count(), 1);
    QTRY_COMPARE(m_player->source(), path("CORV0001.MP4"));
    QCOMPARE(m_player->currentFrameIndex(), 15);
    QCOMPARE(moves.count(), 1);
    QCOMPARE(moves.first().first().toTime(), timeAt(150));
    second->isGone = false;
    m_surface.numbers.clear();
    QVERIFY(m_player->playOn());
    QTRY_VERIFY(!m_player->playing());
    QList<int> rest;
    for (int number = 16; number < 60; ++number)
        rest << number;
    QCOMPARE(m_surface.numbers, rest);
}

void PlayerEndTest::playedOnAtTheEndItStartsAgain()
{
    openJoined();
    m_player->play();
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_player->currentFrameIndex(), 44);
    m_player->redraw(); // as the window does
    m_surface.numbers.clear();
    QVERIFY(m_player->playOn());
    QVERIFY(m_player->playing());
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_surface.lastNumber(), 44);
    m_surface.numbers.removeAll(44); // the redraw at the start, and the end
    QList<int> others;
    for (int i = 0; i < 44; ++i)
        others << i;
    QCOMPARE(m_surface.numbers, others);
}

void PlayerEndTest::playedOnBeforeTheEndItGoesOn()
{
    addFile("a.mp4", 30);
    openPlayer("a.mp4");
    QVERIFY(m_player->goToFrame(28));
    QTRY_COMPARE(m_surface.lastNumber(), 28);
    m_surface.numbers.clear();
    QVERIFY(m_player->playOn());
    QTRY_VERIFY(!m_player->playing());
    QCOMPARE(m_surface.lastNumber(), 29);
    QVERIFY(!m_surface.numbers.contains(0));
}

QTEST_MAIN(PlayerEndTest)
#include "PlayerEndTest.moc"
