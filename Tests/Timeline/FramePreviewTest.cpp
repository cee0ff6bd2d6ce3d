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
    void finePatternsAreAveraged();
    void theNewestWishReplacesTheOneThatWaits();
    void afterClearNothingArrives();
    void aFrameThatCannotBeHadLeavesTheNextWish();
    void aFrameThatCannotBeHadShowsNoOtherOne();
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

// Left out instead, the lines of a fence or of solar cells turn into false patterns.
void FramePreviewTest::finePatternsAreAveraged()
{
    QImage stripes(600, 400, QImage::Format_RGB888);
    for (int y = 0; y < stripes.height(); ++y)
        for (int x = 0; x < stripes.width(); ++x)
            stripes.setPixelColor(x, y, x % 2 == 0 ? Qt::black : Qt::white);
    FramePlayer player;
    FramePreview preview;
    preview.setPlayer(&player);
    preview.show(timeAt(4000));
    player.answer(stripes);
    deliver();
    for (int x = 20; x < 30; ++x) {
        const int grey = preview.picture().pixelColor(x, 60).lightness();
        QVERIFY2(grey > 60 && grey < 195, qPrintable(QString::number(grey)));
    }
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

// A card was pulled out.
void FramePreviewTest::aFrameThatCannotBeHadShowsNoOtherOne()
{
    FramePlayer player;
    FramePreview preview;
    preview.setPlayer(&player);
    preview.show(timeAt(1000));
    player.answer(frameOf(Qt::red));
    deliver();
    QVERIFY(!preview.picture().isNull());
    preview.show(timeAt(2000));
    preview.show(timeAt(3000));
    player.answer(QImage());
    deliver();
    QVERIFY(!preview.picture().isNull()); // the next one is on its way
    player.answer(QImage());
    deliver();
    QVERIFY(preview.picture().isNull());
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
