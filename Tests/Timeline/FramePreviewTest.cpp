#include "Timeline/FramePreview.h"
#include "timelineSupport.h"

#include <QSignalSpy>

using namespace corv;
using namespace corv::test;

/// The picture of the video at the pointer.
class FramePreviewTest : public QObject
{
    Q_OBJECT

private slots:
    void showsTheFrameOfTheTime();
    void theNewestWishReplacesTheOneThatWaits();
    void afterClearNothingArrives();
    void aFrameThatCannotBeHadLeavesTheNextWish();
    void aPictureMayOutliveItsRequester();
};

void FramePreviewTest::showsTheFrameOfTheTime()
{
    FramePlayer player;
    FramePreview preview;
    preview.setPlayer(&player);
    QSignalSpy changed(&preview, &FramePreview::pictureChanged);
    preview.show(timeAt(4000));
    QCOMPARE(player.requestedTimes(), std::vector<QTime>{timeAt(4000)});
    player.answer(frameOf(Qt::red));
    QVERIFY(preview.picture().isNull());
    deliver();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(preview.picture().width(), FramePreview::picturePx);
    QCOMPARE(preview.picture().pixelColor(10, 10), QColor(Qt::red));
}

void FramePreviewTest::theNewestWishReplacesTheOneThatWaits()
{
    FramePlayer player;
    FramePreview preview;
    preview.setPlayer(&player);
    for (int ms = 1000; ms <= 9000; ms += 1000)
        preview.show(timeAt(ms));
    QCOMPARE(player.requestedTimes(), std::vector<QTime>{timeAt(1000)});
    player.answer(frameOf(Qt::red));
    deliver();
    QCOMPARE(player.requestedTimes(), std::vector<QTime>{timeAt(9000)});
    player.answer(frameOf(Qt::blue));
    deliver();
    QVERIFY(player.requests.empty());
    QCOMPARE(preview.picture().pixelColor(10, 10), QColor(Qt::blue));
}

void FramePreviewTest::afterClearNothingArrives()
{
    FramePlayer player;
    FramePreview preview;
    preview.setPlayer(&player);
    preview.show(timeAt(1000));
    preview.show(timeAt(2000));
    preview.clear();
    player.answer(frameOf(Qt::red));
    deliver();
    QVERIFY(preview.picture().isNull());
    QVERIFY(player.requests.empty());
}

void FramePreviewTest::aFrameThatCannotBeHadLeavesTheNextWish()
{
    FramePlayer player;
    FramePreview preview;
    preview.setPlayer(&player);
    preview.show(timeAt(1000));
    preview.show(timeAt(2000));
    player.answer(QImage());
    deliver();
    QCOMPARE(player.requestedTimes(), std::vector<QTime>{timeAt(2000)});
}

void FramePreviewTest::aPictureMayOutliveItsRequester()
{
    FramePlayer player;
    {
        FramePreview preview;
        preview.setPlayer(&player);
        preview.show(timeAt(1000));
    }
    player.answer(frameOf(Qt::red));
    deliver();
    QVERIFY(player.requests.empty());
}

QTEST_MAIN(FramePreviewTest)
#include "FramePreviewTest.moc"
