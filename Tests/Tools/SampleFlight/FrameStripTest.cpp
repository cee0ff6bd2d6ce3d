#include "SampleFlight/frameStrip.h"

#include <QTemporaryDir>
#include <QtTest>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

using namespace corv;

class FrameStripTest : public QObject
{
    Q_OBJECT

private slots:
    void numberComesBack_data();
    void numberComesBack();
    void survivesContrastAndBrightness();
    void survivesTheLossOfOddSides();
    void picturesWithoutStripHaveNoNumber();
    void aChangedBlockIsNoticed();
    void survivesCompression();
};

void FrameStripTest::numberComesBack_data()
{
    QTest::addColumn<int>("cols");
    QTest::addColumn<int>("rows");
    QTest::newRow("small") << 64 << 48;
    QTest::newRow("odd") << 321 << 181;
    QTest::newRow("hd") << 1280 << 720;
}

void FrameStripTest::numberComesBack()
{
    QFETCH(int, cols);
    QFETCH(int, rows);
    for (const int number : {0, 1, 2, 29, 30, 1259, 65535, 65536, maxStripNumber}) {
        cv::Mat picture(rows, cols, CV_8UC3, cv::Scalar(90, 120, 60));
        drawFrameNumber(picture, number);
        QCOMPARE(readFrameNumber(picture), number);
        cv::Mat grey;
        cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
        QCOMPARE(readFrameNumber(grey), number);
    }
}

void FrameStripTest::survivesContrastAndBrightness()
{
    for (const double contrast : {0.3, 1.0, 3.0}) {
        for (const double brightness : {-60.0, 0.0, 120.0}) {
            cv::Mat picture(240, 320, CV_8UC3, cv::Scalar(90, 120, 60));
            drawFrameNumber(picture, 4711);
            picture.convertTo(picture, -1, contrast, brightness);
            const bool apart = contrast > 0.3 || brightness >= 0.0;
            QCOMPARE(readFrameNumber(picture), apart ? 4711 : -1);
        }
    }
}

void FrameStripTest::survivesTheLossOfOddSides()
{
    cv::Mat picture(361, 641, CV_8UC3, cv::Scalar(90, 120, 60));
    drawFrameNumber(picture, 87654);
    QCOMPARE(readFrameNumber(picture(cv::Rect(0, 0, 640, 360))), 87654);
}

void FrameStripTest::picturesWithoutStripHaveNoNumber()
{
    QCOMPARE(readFrameNumber(cv::Mat()), -1);
    QCOMPARE(readFrameNumber(cv::Mat(48, 10, CV_8UC3, cv::Scalar::all(0))), -1);
    QCOMPARE(readFrameNumber(cv::Mat(48, 64, CV_16UC3, cv::Scalar::all(0))), -1);
    for (const int grey : {0, 128, 255})
        QCOMPARE(readFrameNumber(cv::Mat(240, 320, CV_8UC3, cv::Scalar::all(grey))), -1);
}

void FrameStripTest::aChangedBlockIsNoticed()
{
    const int blocks = 28;
    for (int block = 0; block < blocks; ++block) {
        cv::Mat picture(100, 10 * blocks, CV_8UC3, cv::Scalar::all(50));
        drawFrameNumber(picture, 12345);
        cv::Mat changed = picture(cv::Rect(10 * block, 0, 10, frameStripHeight(100)));
        cv::bitwise_not(changed, changed);
        QCOMPARE(readFrameNumber(picture), -1);
    }
}

void FrameStripTest::survivesCompression()
{
    QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("numbers.mp4")).toStdString();
    const int frames = 40;
    {
        cv::VideoWriter writer(path, cv::CAP_FFMPEG, cv::VideoWriter::fourcc('m', 'p', '4', 'v'),
                               30.0, cv::Size(160, 120));
        QVERIFY(writer.isOpened());
        cv::RNG noise(7);
        for (int i = 0; i < frames; ++i) {
            cv::Mat picture(120, 160, CV_8UC3);
            noise.fill(picture, cv::RNG::UNIFORM, 0, 256);
            drawFrameNumber(picture, i * 1021);
            writer.write(picture);
        }
    }
    cv::VideoCapture capture(path, cv::CAP_FFMPEG);
    for (int i = 0; i < frames; ++i) {
        cv::Mat picture;
        QVERIFY(capture.read(picture));
        QCOMPARE(readFrameNumber(picture), i * 1021);
    }
}

QTEST_GUILESS_MAIN(FrameStripTest)
#include "FrameStripTest.moc"
