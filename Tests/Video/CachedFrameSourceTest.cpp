#include "Video/CachedFrameSource.h"
#include "FakeFrameSource.h"
#include "SampleFlight/frameStrip.h"

#include <QTest>

using namespace corv;
using namespace corv::test;

namespace {

constexpr qint64 frameBytes = 320 * 240 * 3;

std::unique_ptr<CachedFrameSource> cached(const std::shared_ptr<FakeFile>& file, qint64 frames)
{
    return std::make_unique<CachedFrameSource>(std::make_unique<FakeFrameSource>(file),
                                               frames * frameBytes);
}

int numberAt(FrameSource& source, int index)
{
    Frame frame;
    if (!source.seekToFrame(index) || source.read(frame) != ReadOutcome::frame)
        return -1;
    cv::Mat picture;
    toBgr(frame, picture);
    return readFrameNumber(picture);
}

} // namespace

class CachedFrameSourceTest : public QObject
{
    Q_OBJECT

private slots:
    void everyOrderGivesTheSameFrames();
    void aStepBackInsideDecodesNothing();
    void stepsBackOverAGroupDecodeItOnce();
    void theFramesNearestToTheLastOneAreKept();
    void aFailureIsPassedOn();
    void aCloneKeepsNothingOfTheOther();
};

void CachedFrameSourceTest::everyOrderGivesTheSameFrames()
{
    const auto file = std::make_shared<FakeFile>();
    file->keyframeSpacing = 10;
    const auto source = cached(file, 5);
    for (const int index : {0, 1, 2, 7, 6, 5, 4, 3, 29, 28, 0, 15, 14, 13, 12, 11, 10, 9, 8})
        QCOMPARE(numberAt(*source, index), index);
    QVERIFY(source->seekToFrame(30));
    Frame frame;
    QVERIFY(source->read(frame) == ReadOutcome::end);
}

void CachedFrameSourceTest::aStepBackInsideDecodesNothing()
{
    const auto file = std::make_shared<FakeFile>();
    const auto source = cached(file, 10);
    for (int i = 0; i < 8; ++i)
        QCOMPARE(numberAt(*source, i), i);
    const int decoded = file->reads;
    for (int i = 6; i >= 0; --i)
        QCOMPARE(numberAt(*source, i), i);
    for (int i = 1; i < 8; ++i)
        QCOMPARE(numberAt(*source, i), i);
    QCOMPARE(file->reads.load(), decoded);
}

void CachedFrameSourceTest::stepsBackOverAGroupDecodeItOnce()
{
    const auto file = std::make_shared<FakeFile>();
    file->keyframeSpacing = 20;
    const auto source = cached(file, 30);
    QCOMPARE(numberAt(*source, 20), 20);
    const int decoded = file->reads;
    for (int i = 19; i >= 0; --i)
        QCOMPARE(numberAt(*source, i), i);
    QCOMPARE(file->reads.load(), decoded + 20);
}

void CachedFrameSourceTest::theFramesNearestToTheLastOneAreKept()
{
    const auto file = std::make_shared<FakeFile>();
    const auto source = cached(file, 6);
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(numberAt(*source, i), i);
        QVERIFY(source->keptBytes() <= 6 * frameBytes);
    }
    QCOMPARE(source->keptBytes(), 6 * frameBytes);
    const int decoded = file->reads;
    for (int i = 18; i >= 14; --i)
        QCOMPARE(numberAt(*source, i), i);
    QCOMPARE(file->reads.load(), decoded);
}

void CachedFrameSourceTest::aFailureIsPassedOn()
{
    const auto file = std::make_shared<FakeFile>();
    file->unreadable = {3};
    file->unreachable = {9};
    const auto source = cached(file, 6);
    QCOMPARE(numberAt(*source, 2), 2);
    Frame frame;
    QVERIFY(source->read(frame) == ReadOutcome::failed);
    QVERIFY(!source->seekToFrame(9));
    QCOMPARE(numberAt(*source, 2), 2);
}

void CachedFrameSourceTest::aCloneKeepsNothingOfTheOther()
{
    const auto file = std::make_shared<FakeFile>();
    const auto source = cached(file, 6);
    QCOMPARE(numberAt(*source, 4), 4);
    const auto clone = source->clone();
    QVERIFY(clone);
    QCOMPARE(clone->nextFrame(), 0);
    const int decoded = file->reads;
    QCOMPARE(numberAt(*clone, 4), 4);
    QCOMPARE(file->reads.load(), decoded + 1);
    file->canBeCloned = false;
    QVERIFY(!source->clone());
}

QTEST_GUILESS_MAIN(CachedFrameSourceTest)
#include "CachedFrameSourceTest.moc"
