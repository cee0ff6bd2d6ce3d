#include "Video/frameConversion.h"
#include "Support/MessageLog.h"

#include <QAbstractVideoBuffer>
#include <QTest>
#include <opencv2/imgproc.hpp>

using namespace corv;
using corv::test::MessageLog;

class FrameConversionTest : public QObject
{
    Q_OBJECT

private slots:
    void imagesKeepTheirColours();
    void anImageOutlivesItsPicture();
    void picturesOfMoreThan8BitsGiveNoImage();
    void framesArePlanar();
    void coloursOnTheScreen_data();
    void coloursOnTheScreen();
    void mappingTwiceIsRefused();
};

void FrameConversionTest::imagesKeepTheirColours()
{
    cv::Mat picture(4, 7, CV_8UC3, cv::Scalar(10, 20, 30));
    picture.at<cv::Vec3b>(3, 6) = {200, 100, 50};
    const QImage image = cvMatToQImage(picture);
    QCOMPARE(image.size(), QSize(7, 4));
    QCOMPARE(image.format(), QImage::Format_RGB888);
    QCOMPARE(image.pixelColor(0, 0), QColor(30, 20, 10));
    QCOMPARE(image.pixelColor(6, 3), QColor(50, 100, 200));
}

void FrameConversionTest::anImageOutlivesItsPicture()
{
    QImage copy;
    {
        cv::Mat picture(200, 300, CV_8UC3, cv::Scalar(1, 2, 3));
        const QImage image = cvMatToQImage(picture);
        picture.setTo(cv::Scalar(0, 0, 0));
        copy = image;
    }
    QCOMPARE(copy.pixelColor(299, 199), QColor(3, 2, 1));
}

void FrameConversionTest::picturesOfMoreThan8BitsGiveNoImage()
{
    const MessageLog log;
    QVERIFY(cvMatToQImage(cv::Mat(4, 4, CV_16UC3, cv::Scalar(1, 2, 3))).isNull());
    QVERIFY(
        log.contains(QStringLiteral("cv::Mat image type not handled in switch: %1").arg(CV_16UC3)));
}

void FrameConversionTest::framesArePlanar()
{
    QVideoFrame frame = cvMatToQVideoFrame(cv::Mat(48, 64, CV_8UC3, cv::Scalar(9, 9, 9)));
    QCOMPARE(frame.size(), QSize(64, 48));
    QCOMPARE(frame.pixelFormat(), QVideoFrame::Format_YUV420P);
    QCOMPARE(frame.handleType(), QAbstractVideoBuffer::NoHandle);
    QVERIFY(!frame.handle().isValid());
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly));
    QCOMPARE(frame.mappedBytes(), 64 * 48 * 3 / 2);
    QCOMPARE(frame.bytesPerLine(0), 64);
    QCOMPARE(frame.planeCount(), 3);
    frame.unmap();
    QVideoFrame withAlpha = cvMatToQVideoFrame(cv::Mat(48, 64, CV_8UC4, cv::Scalar::all(9)));
    QVERIFY(withAlpha.map(QAbstractVideoBuffer::ReadOnly));
    QCOMPARE(withAlpha.mappedBytes(), 64 * 48 * 3 / 2);
    withAlpha.unmap();
}

void FrameConversionTest::coloursOnTheScreen_data()
{
    QTest::addColumn<QColor>("recorded");
    QTest::addColumn<QColor>("shown");
    QTest::newRow("red") << QColor(255, 0, 0) << QColor(209, 0, 0);
    QTest::newRow("green") << QColor(0, 255, 0) << QColor(33, 247, 0);
    QTest::newRow("blue") << QColor(0, 0, 255) << QColor(17, 63, 255);
    QTest::newRow("white") << QColor(255, 255, 255) << QColor(255, 254, 255);
    QTest::newRow("yellow") << QColor(255, 255, 0) << QColor(241, 192, 0);
    QTest::newRow("grey") << QColor(128, 128, 128) << QColor(129, 127, 129);
}

// What a screen that takes the planes for U before V makes of the exchanged channels.
void FrameConversionTest::coloursOnTheScreen()
{
    QFETCH(QColor, recorded);
    QFETCH(QColor, shown);
    const cv::Mat picture(16, 16, CV_8UC3,
                          cv::Scalar(recorded.blue(), recorded.green(), recorded.red()));
    QVideoFrame frame = cvMatToQVideoFrame(picture);
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly));
    const double y = 1.164 * (*frame.bits(0) - 16);
    const double u = *frame.bits(1) - 128;
    const double v = *frame.bits(2) - 128;
    frame.unmap();
    const auto near = [](double value, int expected) {
        return std::abs(std::min(std::max(value, 0.0), 255.0) - expected) <= 4.0;
    };
    QVERIFY(near(y + 1.596 * v, shown.red()));
    QVERIFY(near(y - 0.391 * u - 0.813 * v, shown.green()));
    QVERIFY(near(y + 2.018 * u, shown.blue()));
}

void FrameConversionTest::mappingTwiceIsRefused()
{
    const QVideoFrame frame = cvMatToQVideoFrame(cv::Mat(48, 64, CV_8UC3, cv::Scalar(9, 9, 9)));
    QAbstractVideoBuffer* buffer = frame.buffer();
    QVERIFY(buffer);
    int bytes = 0;
    int bytesPerLine = 0;
    QCOMPARE(buffer->mapMode(), QAbstractVideoBuffer::NotMapped);
    QVERIFY(!buffer->map(QAbstractVideoBuffer::NotMapped, &bytes, &bytesPerLine));
    QVERIFY(buffer->map(QAbstractVideoBuffer::ReadOnly, &bytes, &bytesPerLine));
    QCOMPARE(bytes, 64 * 72);
    QCOMPARE(bytesPerLine, 64);
    QCOMPARE(buffer->mapMode(), QAbstractVideoBuffer::ReadOnly);
    QVERIFY(!buffer->map(QAbstractVideoBuffer::ReadOnly, nullptr, nullptr));
    buffer->unmap();
    QVERIFY(buffer->map(QAbstractVideoBuffer::ReadWrite, nullptr, nullptr));
    buffer->unmap();
}

QTEST_GUILESS_MAIN(FrameConversionTest)
#include "FrameConversionTest.moc"
