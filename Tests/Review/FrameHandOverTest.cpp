#include "../Timeline/timelineSupport.h"

#include "Review/FrameHandOver.h"

#include <QThread>
#include <atomic>
#include <memory>

using namespace corv;
using namespace corv::test;

namespace {

// A player that answers every request by itself, from a thread of its own that never rests.
class BusyPlayer : public FramePlayer
{
public:
    ~BusyPlayer() override { finish(); }

    void start()
    {
        m_thread = std::thread([this, waiting = std::move(requests)] {
            const QImage frame = frameOf(Qt::green);
            for (size_t i = 0; i < waiting.size(); ++i) {
                waiting[i].callback(i % 5 == 4 ? QImage() : frame);
                answered.store(static_cast<int>(i) + 1);
            }
        });
    }

    void finish()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    std::atomic<int> answered{0};

private:
    std::thread m_thread;
};

} // namespace

class FrameHandOverTest : public QObject
{
    Q_OBJECT

private slots:
    void storesOnTheOwnersThread();
    void ownersDieWhileFramesArrive();
    void theItemIsUsedWhileFramesArrive();
};

void FrameHandOverTest::storesOnTheOwnersThread()
{
    BusyPlayer player;
    FrameHandOver frames;
    int stored = 0;
    int onOtherThreads = 0;
    for (int i = 0; i < 200; ++i) {
        frames.request(player, timeAt(i), FrameHandOver::NullFrameWarning::withoutTime,
                       [&](const QImage& thumbnail) {
                           ++stored;
                           onOtherThreads += QThread::currentThread() != thread() ? 1 : 0;
                           QCOMPARE(thumbnail.size(), QSize(106, 60));
                       });
    }
    player.start();
    QTRY_COMPARE(stored, 160);
    QCOMPARE(onOtherThreads, 0);
}

void FrameHandOverTest::ownersDieWhileFramesArrive()
{
    for (int round = 0; round < 20; ++round) {
        BusyPlayer player;
        auto timeline = std::make_unique<TimelineContent>();
        timeline->setVideoPlayer(&player);
        QVariantList list;
        for (int i = 0; i < 100; ++i)
            list.append(QVariantMap{{QStringLiteral("time"), i}});
        timeline->setPOIsFromList(list);
        player.start();
        // At another moment in each round: with frames before, on their way, and after.
        while (player.answered.load() < round * 5)
            QCoreApplication::processEvents();
        timeline.reset();
        QCoreApplication::processEvents();
        player.finish();
        QCoreApplication::processEvents();
        QCOMPARE(player.answered.load(), 100);
    }
}

void FrameHandOverTest::theItemIsUsedWhileFramesArrive()
{
    BusyPlayer player;
    TimelineContent timeline;
    timeline.setSize(QSizeF(720, 160));
    timeline.setContentWidth(720);
    timeline.setVideoPlayer(&player);
    QVariantList list;
    for (int i = 0; i < 300; ++i)
        list.append(QVariantMap{{QStringLiteral("time"), i * 100}});
    timeline.setPOIsFromList(list);
    player.start();
    int round = 0;
    while (player.answered.load() < 300) {
        timeline.setCursorPosition(timeAt(++round % 300 * 100));
        timeline.deletePoiAtPosition();
        timeline.addPoiAtPosition();
        painted(timeline);
        QCoreApplication::processEvents();
    }
    player.finish();
    QCoreApplication::processEvents();
    QVERIFY(timeline.getPOIs().size() <= 300);
    QVERIFY(!timeline.getPOIs().isEmpty());
}

QTEST_MAIN(FrameHandOverTest)
#include "FrameHandOverTest.moc"
