#include "Video/partialDrawing.h"
#include "Support/TestVideo.h"
#include "Video/frameConversion.h"
#include "Video/pictureScaling.h"

#include <QTest>

using namespace corv;
using namespace corv::test;

// Drawing on a part of a decoded picture: that part alone changes.
class PartialDrawingTest : public QObject
{
    Q_OBJECT

private slots:
    void partsHaveEvenEdges_data();
    void partsHaveEvenEdges();
    void onlyThePartChanges_data();
    void onlyThePartChanges();
    void everyColumnOfThePartIsDrawn_data();
    void everyColumnOfThePartIsDrawn();
    void theFrameItselfStays();
    void onlyPlanesOfEightBitsAreDrawnOnInPart();
};

namespace {

Frame planarFrame(Frame::Matrix matrix = Frame::Matrix::bt601,
                  Frame::Range range = Frame::Range::limited)
{
    Frame frame = makeI420({320, 240}, matrix, range);
    const Frame bgr = bgrFrame(testPicture(7, {320, 240}));
    scalePicture(viewOf(bgr), viewOf(frame));
    frame.index = 7;
    frame.timeMs = 70.0;
    return frame;
}

cv::Mat bgrOf(const Frame& frame)
{
    cv::Mat bgr;
    toBgr(frame, bgr);
    return bgr;
}

} // namespace

void PartialDrawingTest::partsHaveEvenEdges_data()
{
    QTest::addColumn<QRect>("place");
    QTest::addColumn<QRect>("part");
    QTest::newRow("even") << QRect(10, 20, 30, 40) << QRect(10, 20, 30, 40);
    QTest::newRow("odd start") << QRect(11, 21, 30, 40) << QRect(10, 20, 32, 42);
    QTest::newRow("odd size") << QRect(10, 20, 31, 41) << QRect(10, 20, 32, 42);
    QTest::newRow("over the edge") << QRect(-5, 201, 50, 100) << QRect(0, 200, 46, 40);
    QTest::newRow("outside") << QRect(400, 0, 10, 10) << QRect(0, 0, 0, 0);
}

void PartialDrawingTest::partsHaveEvenEdges()
{
    QFETCH(QRect, place);
    QFETCH(QRect, part);
    const cv::Rect found =
        evenPart({place.x(), place.y(), place.width(), place.height()}, {320, 240});
    QCOMPARE(QRect(found.x, found.y, found.width, found.height), part);
}

void PartialDrawingTest::onlyThePartChanges_data()
{
    QTest::addColumn<int>("matrix");
    QTest::addColumn<int>("range");
    QTest::newRow("BT.601") << int(Frame::Matrix::bt601) << int(Frame::Range::limited);
    QTest::newRow("BT.709") << int(Frame::Matrix::bt709) << int(Frame::Range::limited);
    QTest::newRow("full range") << int(Frame::Matrix::bt601) << int(Frame::Range::full);
}

void PartialDrawingTest::onlyThePartChanges()
{
    QFETCH(int, matrix);
    QFETCH(int, range);
    const Frame frame =
        planarFrame(static_cast<Frame::Matrix>(matrix), static_cast<Frame::Range>(range));
    const cv::Rect part(100, 60, 80, 50);
    const Frame drawn =
        drawOnPart(frame, part, [](cv::Mat& bgr) { bgr.setTo(cv::Scalar(20, 40, 200)); });
    QCOMPARE(drawn.size, frame.size);
    QCOMPARE(drawn.index, 7);
    QCOMPARE(drawn.timeMs, 70.0);
    cv::Mat difference;
    cv::absdiff(bgrOf(frame), bgrOf(drawn), difference);
    cv::Mat outside = difference.clone();
    const cv::Rect blurred(part.x - 2, part.y - 2, part.width + 4, part.height + 4);
    outside(blurred).setTo(cv::Scalar::all(0)); // chroma is shared over an edge
    QCOMPARE(cv::norm(outside, cv::NORM_INF), 0.0);
    const cv::Mat inside = bgrOf(drawn)(cv::Rect(104, 64, 72, 42));
    const cv::Mat wanted(inside.size(), CV_8UC3, cv::Scalar(20, 40, 200));
    QVERIFY(cv::norm(inside, wanted, cv::NORM_INF) <= 3.0);
}

void PartialDrawingTest::everyColumnOfThePartIsDrawn_data()
{
    QTest::addColumn<QRect>("part");
    for (const int width : {2, 4, 6, 8, 14, 30, 34, 66, 100, 158, 250})
        QTest::addRow("width %d", width) << QRect(40, 30, width, 100);
    QTest::newRow("at the right edge") << QRect(298, 30, 22, 100);
    QTest::newRow("the whole width") << QRect(0, 30, 320, 100);
}

// Drawn with what was there, the part looks as it did, up to its last column.
void PartialDrawingTest::everyColumnOfThePartIsDrawn()
{
    QFETCH(QRect, part);
    const Frame frame = planarFrame();
    const Frame drawn =
        drawOnPart(frame, {part.x(), part.y(), part.width(), part.height()}, [](cv::Mat&) {});
    cv::Mat difference;
    cv::absdiff(bgrOf(frame), bgrOf(drawn), difference);
    double largest = 0.0;
    cv::minMaxLoc(difference.reshape(1), nullptr, &largest);
    QVERIFY2(largest <= 24.0, qPrintable(QString::number(largest)));
}

void PartialDrawingTest::theFrameItselfStays()
{
    const Frame frame = planarFrame();
    const cv::Mat before = bgrOf(frame);
    drawOnPart(frame, {0, 0, 320, 240}, [](cv::Mat& bgr) { bgr.setTo(cv::Scalar::all(0)); });
    QCOMPARE(cv::norm(before, bgrOf(frame), cv::NORM_INF), 0.0);
}

void PartialDrawingTest::onlyPlanesOfEightBitsAreDrawnOnInPart()
{
    QVERIFY(canDrawOnPart(planarFrame()));
    QVERIFY(!canDrawOnPart(bgrFrame(testPicture(1, {320, 240}))));
    Frame deep = planarFrame();
    deep.bitsPerSample = 10;
    QVERIFY(!canDrawOnPart(deep));
    QVERIFY(!canDrawOnPart(Frame()));
}

QTEST_APPLESS_MAIN(PartialDrawingTest)
#include "PartialDrawingTest.moc"
