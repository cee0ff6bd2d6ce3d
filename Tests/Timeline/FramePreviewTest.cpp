#include "Timeline/FramePreview.h"
#include "timelineSupport.h"

#include <QSignalSpy>

using namespace corv;
using namespace corv::test;

namespace {

/// The preview of a player whose frames the test answers.
struct Bench
{
    Bench() { preview.setPlayer(&player); }

    void answer(const QImage& frame)
    {
        player.answer(frame);
        deliver();
    }

    FramePlayer player;
    FramePreview preview;
};

} // namespace

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
    Bench bench;
    QSignalSpy changed(&bench.preview, &FramePreview::pictureChanged);
    bench.preview.show(timeAt(4000));
    QCOMPARE(bench.player.requestedTimes(), std::vector<QTime>{timeAt(4000)});
    bench.player.answer(frameOf(Qt::red));
    QVERIFY(bench.preview.picture().isNull());
    deliver();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(bench.preview.picture().width(), FramePreview::picturePx);
    QCOMPARE(bench.preview.picture().pixelColor(10, 10), QColor(Qt::red));
}

// Left out instead, the lines of a fence or of solar cells turn into false patterns.
void FramePreviewTest::finePatternsAreAveraged()
{
    QImage stripes(600, 400, QImage::Format_RGB888);
    for (int y = 0; y < stripes.height(); ++y)
        for (int x = 0; x < stripes.width(); ++x)
            stripes.setPixelColor(x, y, x % 2 == 0 ? Qt::black : Qt::white);
    Bench bench;
    bench.preview.show(timeAt(4000));
    bench.answer(stripes);
    for (int x = 20; x < 30; ++x) {
        const int grey = bench.preview.picture().pixelColor(x, 60).lightness();
        QVERIFY2(grey > 60 && grey < 195, qPrintable(QString::number(grey)));
    }
}

void FramePreviewTest::theNewestWishReplacesTheOneThatWaits()
{
    Bench bench;
    for (int ms = 1000; ms <= 9000; ms += 1000)
        bench.preview.show(timeAt(ms));
    QCOMPARE(bench.player.requestedTimes(), std::vector<QTime>{timeAt(1000)});
    bench.answer(frameOf(Qt::red));
    QCOMPARE(bench.player.requestedTimes(), std::vector<QTime>{timeAt(9000)});
    bench.answer(frameOf(Qt::blue));
    QVERIFY(bench.player.requests.empty());
    QCOMPARE(bench.preview.picture().pixelColor(10, 10), QColor(Qt::blue));
}

void FramePreviewTest::afterClearNothingArrives()
{
    Bench bench;
    bench.preview.show(timeAt(1000));
    bench.preview.show(timeAt(2000));
    bench.preview.clear();
    bench.answer(frameOf(Qt::red));
    QVERIFY(bench.preview.picture().isNull());
    QVERIFY(bench.player.requests.empty());
}

void FramePreviewTest::aFrameThatCannotBeHadLeavesTheNextWish()
{
    Bench bench;
    bench.preview.show(timeAt(1000));
    bench.preview.show(timeAt(2000));
    bench.answer(QImage());
    QCOMPARE(bench.player.requestedTimes(), std::vector<QTime>{timeAt(2000)});
}

// A card was pulled out.
void FramePreviewTest::aFrameThatCannotBeHadShowsNoOtherOne()
{
    Bench bench;
    bench.preview.show(timeAt(1000));
    bench.answer(frameOf(Qt::red));
    QVERIFY(!bench.preview.picture().isNull());
    bench.preview.show(timeAt(2000));
    bench.preview.show(timeAt(3000));
    bench.answer(QImage());
    QVERIFY(!bench.preview.picture().isNull()); // the next one is on its way
    bench.answer(QImage());
    QVERIFY(bench.preview.picture().isNull());
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
