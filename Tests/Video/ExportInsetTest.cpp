#include "ExportFixture.h"
#include "SampleFlight/frameStrip.h"
#include "Video/insetBlending.h"
#include "openVideo.h"

#include <QClipboard>
#include <QGuiApplication>

using namespace corv;
using namespace corv::test;

namespace {

const QRect place(100, 60, 40, 30);

// A square whose red is the time in frames of 40 ms. Remembers the times that it was asked for.
class ClockInset : public PictureInset
{
public:
    Part partAt(const Moment& moment) override
    {
        times << moment.videoMs;
        sizes << moment.picture;
        QImage image(place.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(qRgba(std::min(moment.videoMs / 40 * 5, 255), 0, 0, 255));
        return {image, place.topLeft()};
    }

    // Read once the worker has answered.
    QList<int> times;
    QList<QSize> sizes;
};

class PlainInset : public PictureInset
{
public:
    PlainInset(const QRect& rect, const QColor& colour)
        : m_topLeft(rect.topLeft()), m_image(rect.size(), QImage::Format_ARGB32_Premultiplied)
    {
        m_image.fill(colour);
    }

    Part partAt(const Moment&) override { return {m_image, m_topLeft}; }

private:
    QPoint m_topLeft;
    QImage m_image;
};

int shownFrame(const QImage& picture)
{
    return qRound(picture.pixelColor(place.center()).red() / 5.0);
}

} // namespace

/// What is shown in a part of the pictures and videos that leave the player.
class ExportInsetTest : public QObject, private ExportFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void blendsByTheOpacity();
    void blendsOnlyWhatLiesOnThePicture();
    void picturesForExportHaveTheirOwnTime_data();
    void picturesForExportHaveTheirOwnTime();
    void otherPicturesHaveNone();
    void aSeriesKeepsTheInsetItWasAskedWith();
    void allInsetsAreShown_data();
    void allInsetsAreShown();
    void everyFrameOfAVideoHasItsOwnTime_data();
    void everyFrameOfAVideoHasItsOwnTime();

private:
    QImage picture(int timeMs, bool isForExport);
};

QImage ExportInsetTest::picture(int timeMs, bool isForExport)
{
    const auto answer = std::make_shared<QImage>();
    const auto isThere = std::make_shared<std::atomic<bool>>(false);
    const auto take = [answer, isThere](const QImage& image) {
        *answer = image;
        isThere->store(true);
    };
    if (isForExport)
        m_player->getExportFrameAsync(timeAt(timeMs), take);
    else
        m_player->getFrameAsync(timeAt(timeMs), take);
    return QTest::qWaitFor([&] { return isThere->load(); }) ? *answer : QImage();
}

void ExportInsetTest::blendsByTheOpacity()
{
    cv::Mat bgr(4, 6, CV_8UC3, cv::Scalar(200, 100, 50));
    QImage image(2, 2, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setPixelColor(0, 0, QColor(255, 255, 255));
    image.setPixelColor(1, 0, QColor(0, 0, 0, 128));
    blendInset(bgr, {image, {3, 1}});
    QCOMPARE(bgr.at<cv::Vec3b>(1, 3), cv::Vec3b(255, 255, 255));
    QCOMPARE(bgr.at<cv::Vec3b>(1, 4), cv::Vec3b(100, 50, 25));
    QCOMPARE(bgr.at<cv::Vec3b>(2, 3), cv::Vec3b(200, 100, 50));
    QCOMPARE(bgr.at<cv::Vec3b>(0, 0), cv::Vec3b(200, 100, 50));
}

void ExportInsetTest::blendsOnlyWhatLiesOnThePicture()
{
    QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    for (const QPoint& topLeft : {QPoint(-2, -2), QPoint(4, 2), QPoint(-9, 0), QPoint(100, 100)}) {
        cv::Mat bgr(4, 6, CV_8UC3, cv::Scalar(0, 0, 0));
        const PictureInset::Part part{image, topLeft};
        blendInset(bgr, part);
        const cv::Rect changed = changedBy(part, bgr.size());
        QCOMPARE(cv::countNonZero(bgr.reshape(1)), changed.area() * 3);
    }
    cv::Mat bgr(4, 6, CV_8UC3, cv::Scalar(7, 7, 7));
    blendInset(bgr, {});
    QVERIFY(changedBy({}, bgr.size()).empty());
    // On a part of the picture it is drawn where it is in the whole.
    cv::Mat part = bgr({2, 1, 4, 3});
    blendInset(part, {image, {4, 2}}, {2, 1});
    QCOMPARE(bgr.at<cv::Vec3b>(2, 4), cv::Vec3b(255, 255, 255));
    QCOMPARE(bgr.at<cv::Vec3b>(1, 4), cv::Vec3b(7, 7, 7));
    QCOMPARE(bgr.at<cv::Vec3b>(2, 3), cv::Vec3b(7, 7, 7));
}

void ExportInsetTest::picturesForExportHaveTheirOwnTime_data()
{
    QTest::addColumn<int>("askedMs");
    QTest::addColumn<int>("frameMs");
    QTest::newRow("start") << 0 << 0;
    QTest::newRow("between two frames") << 170 << 160;
    QTest::newRow("second file") << 1040 << 1040;
    QTest::newRow("in the second file") << 1119 << 1120;
}

// Of the frame that is shown, in the whole flight: not of the wish, and not inside its file.
void ExportInsetTest::picturesForExportHaveTheirOwnTime()
{
    QFETCH(int, askedMs);
    addFile("CORV0001.MP4", 25);
    addFile("CORV0002.MP4", 25, 25);
    open("CORV0001.MP4");
    const auto inset = std::make_shared<ClockInset>();
    m_player->setExportInsets({inset});
    const QImage image = picture(askedMs, true);
    QVERIFY(!image.isNull());
    QFETCH(int, frameMs);
    QCOMPARE(inset->times, QList<int>{frameMs});
    QCOMPARE(inset->sizes, QList<QSize>{image.size()});
    QCOMPARE(shownFrame(image), frameMs / 40);
}

void ExportInsetTest::otherPicturesHaveNone()
{
    addFile("a.mp4", 30);
    open("a.mp4");
    const QImage bare = picture(400, true);
    const auto inset = std::make_shared<ClockInset>();
    m_player->setExportInsets({inset});
    QCOMPARE(picture(400, false), bare);
    QVERIFY(picture(400, true) != bare);
    QSignalSpy copied(m_player.get(), &VideoPlayer::frameCopyComplete);
    m_player->copyFrameToClipboard(timeAt(400));
    QTRY_COMPARE(copied.size(), 1);
    QCOMPARE(shownFrame(QGuiApplication::clipboard()->image()), 10);
    m_player->setExportInsets({});
    QCOMPARE(picture(400, true), bare);
}

void ExportInsetTest::aSeriesKeepsTheInsetItWasAskedWith()
{
    addFile("a.mp4", 30);
    open("a.mp4");
    m_player->setExportInsets({std::make_shared<ClockInset>()});
    QSignalSpy complete(m_player.get(), &VideoPlayer::framesExportComplete);
    QVERIFY(m_player->exportSpecificFrames({0, 400, 800}, m_folder->path(), "Frame"));
    m_player->setExportInsets({});
    QTRY_COMPARE(complete.size(), 1);
    QVERIFY(qAbs(shownFrame(QImage(path("Frame001.jpg"))) - 10) <= 1);
    QVERIFY(qAbs(shownFrame(QImage(path("Frame002.jpg"))) - 20) <= 1);
}

void ExportInsetTest::allInsetsAreShown_data()
{
    QTest::addColumn<bool>("withEffects");
    QTest::newRow("alone") << false;
    QTest::newRow("over effects") << true;
}

// In pictures and in videos; the later lies over the earlier.
void ExportInsetTest::allInsetsAreShown()
{
    QFETCH(bool, withEffects);
    addFile("a.mp4", 3);
    open("a.mp4");
    const QRect red(10, 10, 30, 20);
    const QRect green(120, 90, 30, 20);
    const QRect blue(15, 12, 8, 8);
    m_player->setExportInsets({std::make_shared<PlainInset>(red, Qt::red),
                               std::make_shared<PlainInset>(green, Qt::green),
                               std::make_shared<PlainInset>(blue, Qt::blue)});
    if (withEffects)
        m_player->setBrightness(-10);
    const QImage still = picture(0, true);
    QCOMPARE(still.pixelColor(red.bottomRight()), QColor(Qt::red));
    QCOMPARE(still.pixelColor(green.center()), QColor(Qt::green));
    QCOMPARE(still.pixelColor(blue.center()), QColor(Qt::blue));
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results, QList<bool>{true}, 60000);
    const auto source = openVideo(path("out.mp4"));
    QVERIFY(source != nullptr);
    const cv::Mat frame = readPicture(*source);
    const auto channelAt = [&frame](const QPoint& point, int channel) {
        return int(frame.at<cv::Vec3b>(point.y(), point.x())[channel]);
    };
    QVERIFY(channelAt(red.center() + QPoint(8, 4), 2) > 200);
    QVERIFY(channelAt(green.center(), 1) > 200);
    QVERIFY(channelAt(blue.center(), 0) > 200);
}

void ExportInsetTest::everyFrameOfAVideoHasItsOwnTime_data()
{
    QTest::addColumn<bool>("withEffects");
    QTest::newRow("alone") << false;
    QTest::newRow("over effects") << true;
}

void ExportInsetTest::everyFrameOfAVideoHasItsOwnTime()
{
    QFETCH(bool, withEffects);
    addFile("CORV0001.MP4", 20);
    addFile("CORV0002.MP4", 20, 20);
    open("CORV0001.MP4");
    const auto inset = std::make_shared<ClockInset>();
    m_player->setExportInsets({inset});
    if (withEffects)
        m_player->setBrightness(-10);
    const ExportRecord record(*m_player);
    QVERIFY(m_player->exportVideo(path("out.mp4")));
    QTRY_COMPARE_WITH_TIMEOUT(record.results, QList<bool>{true}, 60000);
    QList<int> times;
    for (int i = 0; i < 40; ++i)
        times << i * 40;
    QCOMPARE(inset->times, times);
    const auto source = openVideo(path("out.mp4"));
    QVERIFY(source != nullptr);
    for (int i = 0; i < 40; ++i) {
        const cv::Mat frame = readPicture(*source);
        QVERIFY(!frame.empty());
        QCOMPARE(readFrameNumber(frame), i);
        const cv::Vec3b colour = frame.at<cv::Vec3b>(place.center().y(), place.center().x());
        QVERIFY2(qAbs(colour[2] - i * 5) <= 12 && colour[0] < 20 && colour[1] < 20,
                 qPrintable(QString::number(colour[2])));
    }
}

QTEST_MAIN(ExportInsetTest)
#include "ExportInsetTest.moc"
