#include "Video/frameConversion.h"
#include "Support/MessageLog.h"

#include <QAbstractVideoBuffer>
#include <QColor>
#include <QTest>
#include <array>
#include <cmath>
#include <exception>
#include <memory>
#include <opencv2/imgproc.hpp>

using namespace corv;
using corv::test::MessageLog;

namespace {

struct Weights
{
    double red;
    double blue;
};

Weights weightsOf(Frame::Matrix matrix)
{
    switch (matrix) {
    case Frame::Matrix::bt709:
        return {0.2126, 0.0722};
    case Frame::Matrix::bt2020:
        return {0.2627, 0.0593};
    case Frame::Matrix::bt601:
        break;
    }
    return {0.299, 0.114};
}

uchar rounded(double value)
{
    return static_cast<uchar>(std::lround(std::min(std::max(value, 0.0), 255.0)));
}

/// 16 x 16 pixels of one colour in 4:2:0, as the definition of the matrix has it.
Frame planarFrame(const QColor& colour, Frame::Matrix matrix, Frame::Range range)
{
    const Weights weights = weightsOf(matrix);
    const double y = weights.red * colour.redF() +
                     (1.0 - weights.red - weights.blue) * colour.greenF() +
                     weights.blue * colour.blueF();
    const double u = (colour.blueF() - y) / (1.0 - weights.blue) / 2.0;
    const double v = (colour.redF() - y) / (1.0 - weights.red) / 2.0;
    const bool full = range == Frame::Range::full;
    const double chroma = full ? 255.0 : 224.0;
    const auto planes = std::make_shared<std::array<cv::Mat, 3>>();
    (*planes)[0] = cv::Mat(16, 64, CV_8UC1, cv::Scalar(rounded(full ? 255.0 * y : 16 + 219.0 * y)));
    (*planes)[1] = cv::Mat(8, 64, CV_8UC1, cv::Scalar(rounded(128.0 + chroma * u)));
    (*planes)[2] = cv::Mat(8, 64, CV_8UC1, cv::Scalar(rounded(128.0 + chroma * v)));
    Frame frame;
    frame.layout = Frame::Layout::i420;
    frame.size = QSize(16, 16);
    frame.matrix = matrix;
    frame.range = range;
    for (size_t plane = 0; plane < 3; ++plane)
        frame.planes[plane] = {(*planes)[plane].data, 64};
    frame.pixels = planes;
    return frame;
}

/// What a screen shows that takes the planes for what they are called.
QColor onScreen(QVideoFrame frame)
{
    const QVideoSurfaceFormat format = surfaceFormatOf(frame);
    if (frame.pixelFormat() != QVideoFrame::Format_YUV420P ||
        !frame.map(QAbstractVideoBuffer::ReadOnly))
        return {};
    const bool full = format.yCbCrColorSpace() == QVideoSurfaceFormat::YCbCr_JPEG;
    const Weights weights = weightsOf(format.yCbCrColorSpace() == QVideoSurfaceFormat::YCbCr_BT709
                                          ? Frame::Matrix::bt709
                                          : Frame::Matrix::bt601);
    const double chroma = full ? 255.0 : 224.0;
    const double y = full ? *frame.bits(0) : (*frame.bits(0) - 16) * 255.0 / 219.0;
    const double u = (*frame.bits(1) - 128) * 255.0 / chroma;
    const double v = (*frame.bits(2) - 128) * 255.0 / chroma;
    frame.unmap();
    const double red = y + 2.0 * (1.0 - weights.red) * v;
    const double blue = y + 2.0 * (1.0 - weights.blue) * u;
    const double green =
        (y - weights.red * red - weights.blue * blue) / (1.0 - weights.red - weights.blue);
    return {rounded(red), rounded(green), rounded(blue)};
}

bool isNear(const QColor& seen, const QColor& colour, int tolerance = 2)
{
    const bool near = seen.isValid() && std::abs(seen.red() - colour.red()) <= tolerance &&
                      std::abs(seen.green() - colour.green()) <= tolerance &&
                      std::abs(seen.blue() - colour.blue()) <= tolerance;
    if (!near)
        qWarning() << seen << "instead of" << colour;
    return near;
}

struct Samples
{
    int y;
    int u;
    int v;
};

/// A picture of one colour in planes of any layout, with room behind each line as decoders leave
/// it.
Frame patchFrame(Frame::Layout layout, int bits, QSize size, const Samples& samples)
{
    const int type = bits > 8 ? CV_16UC1 : CV_8UC1;
    const int shift = bits - 8;
    const auto plane = [&](int columns, int rows, int value) {
        cv::Mat lines(rows, columns + 64, type, cv::Scalar(value << shift));
        return lines;
    };
    const int halfColumns = (size.width() + 1) / 2;
    const int halfRows = (size.height() + 1) / 2;
    const int columns = layout == Frame::Layout::i444 ? size.width() : halfColumns;
    const int rows = layout == Frame::Layout::i420 ? halfRows : size.height();
    const auto planes = std::make_shared<std::array<cv::Mat, 3>>();
    (*planes)[0] = plane(size.width(), size.height(), samples.y);
    if (layout == Frame::Layout::nv12) {
        cv::merge(std::array<cv::Mat, 2>{plane(halfColumns, halfRows, samples.u),
                                         plane(halfColumns, halfRows, samples.v)},
                  (*planes)[1]);
    } else {
        (*planes)[1] = plane(columns, rows, samples.u);
        (*planes)[2] = plane(columns, rows, samples.v);
    }
    Frame frame;
    frame.layout = layout;
    frame.bitsPerSample = bits;
    frame.size = size;
    for (size_t i = 0; i < 3; ++i)
        frame.planes[i] = {(*planes)[i].data, static_cast<int>((*planes)[i].step)};
    frame.pixels = planes;
    return frame;
}

} // namespace

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
    void everyColumnIsConverted_data();
    void everyColumnIsConverted();
    void planesOfTheDecoderAreNotCopied();
    void theScreenGetsNothingBehindAPicture();
    void aPictureWithoutPixelsThrows();
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
    QTest::addColumn<QColor>("colour");
    for (const QColor& colour :
         {QColor(255, 0, 0), QColor(0, 255, 0), QColor(0, 0, 255), QColor(255, 255, 255),
          QColor(255, 255, 0), QColor(128, 128, 128), QColor(30, 60, 90), QColor(0, 0, 0)})
        QTest::newRow(qPrintable(colour.name())) << colour;
}

// In whatever planes a frame comes, the screen shows the colour that the picture had, and so does
// the same picture once an effect has been at work in it.
void FrameConversionTest::coloursOnTheScreen()
{
    QFETCH(QColor, colour);
    const cv::Mat picture(16, 16, CV_8UC3, cv::Scalar(colour.blue(), colour.green(), colour.red()));
    QVERIFY(isNear(onScreen(cvMatToQVideoFrame(picture)), colour));
    QVERIFY(isNear(onScreen(toVideoFrame(bgrFrame(picture))), colour));
    for (const auto matrix : {Frame::Matrix::bt601, Frame::Matrix::bt709, Frame::Matrix::bt2020}) {
        for (const auto range : {Frame::Range::limited, Frame::Range::full}) {
            const Frame planar = planarFrame(colour, matrix, range);
            // What no screen knows is rounded once more on the way.
            const bool isKnown = matrix == Frame::Matrix::bt601 ||
                                 (matrix == Frame::Matrix::bt709 && range == Frame::Range::limited);
            const int tolerance = isKnown ? 2 : 3;
            QVERIFY(isNear(onScreen(toVideoFrame(planar)), colour, tolerance));
            cv::Mat bgr;
            toBgr(planar, bgr);
            const cv::Vec3b pixel = bgr.at<cv::Vec3b>(7, 7);
            QVERIFY(isNear(QColor(pixel[2], pixel[1], pixel[0]), colour));
            const QVideoFrame changed = toVideoFrame(bgr, planar);
            QVERIFY(isNear(onScreen(changed), QColor(pixel[2], pixel[1], pixel[0])));
            QCOMPARE(surfaceFormatOf(changed).yCbCrColorSpace(),
                     surfaceFormatOf(toVideoFrame(planar)).yCbCrColorSpace());
        }
    }
}

void FrameConversionTest::everyColumnIsConverted_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<int>("bits");
    using Layout = Frame::Layout;
    const auto row = [](const char* name, Layout layout, int bits) {
        QTest::newRow(name) << static_cast<int>(layout) << bits;
    };
    row("4:2:0", Layout::i420, 8);
    row("4:2:0 of 10 bits", Layout::i420, 10);
    row("4:2:0, chroma interleaved", Layout::nv12, 8);
    row("4:2:2", Layout::i422, 8);
    row("4:2:2 of 10 bits", Layout::i422, 10);
    row("4:4:4", Layout::i444, 8);
    row("4:4:4 of 10 bits", Layout::i444, 10);
}

// Vectors that convert many pixels at once leave a rest at the right edge for most widths.
void FrameConversionTest::everyColumnIsConverted()
{
    QFETCH(int, layout);
    QFETCH(int, bits);
    constexpr double tolerance = 4.0; // of the library's integers; what is not written is far off
    for (int width = 1; width <= 70; ++width) {
        for (const int height : {2, 3, 6}) {
            const Frame frame = patchFrame(static_cast<Frame::Layout>(layout), bits,
                                           QSize(width, height), {180, 90, 160});
            cv::Mat bgr;
            createForScaling(bgr, frame.size);
            bgr.setTo(cv::Scalar(1, 2, 3));
            toBgr(frame, bgr);
            QCOMPARE(QSize(bgr.cols, bgr.rows), frame.size);
            // By the definition of BT.601 in the limited range.
            const cv::Scalar expected(164 * 1.16438 + (90 - 128) * 2.01723 - 0.0,
                                      164 * 1.16438 - (90 - 128) * 0.39176 - 32 * 0.81297,
                                      164 * 1.16438 + 32 * 1.59603);
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const auto& pixel = bgr.at<cv::Vec3b>(y, x);
                    for (int channel = 0; channel < 3; ++channel) {
                        const double difference =
                            std::abs(pixel[channel] - std::min(expected[channel], 255.0));
                        QVERIFY2(difference <= tolerance,
                                 qPrintable(QStringLiteral("%1x%2: %3 in column %4, row %5")
                                                .arg(width)
                                                .arg(height)
                                                .arg(difference)
                                                .arg(x)
                                                .arg(y)));
                    }
                }
            }
        }
    }
}

void FrameConversionTest::planesOfTheDecoderAreNotCopied()
{
    Frame planar = planarFrame(QColor(30, 60, 90), Frame::Matrix::bt709, Frame::Range::limited);
    // Lines that end with the picture.
    planar.size.setWidth(64);
    planar.planes[1].bytesPerLine = 32;
    planar.planes[2].bytesPerLine = 32;
    QVideoFrame frame = toVideoFrame(planar);
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly));
    QCOMPARE(frame.planeCount(), 3);
    for (int plane = 0; plane < 3; ++plane) {
        const Frame::Plane& own = planar.planes[static_cast<size_t>(plane)];
        QCOMPARE(static_cast<const uchar*>(frame.bits(plane)), own.data);
        QCOMPARE(frame.bytesPerLine(plane), own.bytesPerLine);
    }
    frame.unmap();
    QVERIFY(!frame.map(QAbstractVideoBuffer::WriteOnly));
}

void FrameConversionTest::theScreenGetsNothingBehindAPicture()
{
    Frame planar = planarFrame(QColor(30, 60, 90), Frame::Matrix::bt709, Frame::Range::limited);
    planar.size.setWidth(14);
    QVideoFrame frame = toVideoFrame(planar);
    QVERIFY(frame.map(QAbstractVideoBuffer::ReadOnly));
    for (int plane = 0; plane < 3; ++plane) {
        const int columns = plane == 0 ? 14 : 7;
        const Frame::Plane& own = planar.planes[static_cast<size_t>(plane)];
        QCOMPARE(frame.bytesPerLine(plane), columns);
        for (int row = 0; row < (plane == 0 ? 16 : 8); ++row)
            QVERIFY(std::equal(own.data + row * own.bytesPerLine,
                               own.data + row * own.bytesPerLine + columns,
                               frame.bits(plane) + row * columns));
    }
    frame.unmap();
}

void FrameConversionTest::aPictureWithoutPixelsThrows()
{
    Frame frame = planarFrame(Qt::red, Frame::Matrix::bt601, Frame::Range::full);
    frame.size = QSize(0, 0);
    cv::Mat bgr;
    QVERIFY_EXCEPTION_THROWN(toBgr(frame, bgr), std::exception);
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
