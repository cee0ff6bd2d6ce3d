#include "Log/LogParser.h"
#include "SampleFlight/SampleFlight.h"
#include "SampleFlight/frameStrip.h"
#include "Support/SourceBackend.h"
#include "Video/VideoPlayer.h"
#include "Video/frameConversion.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <future>
#include <opencv2/imgproc.hpp>

using namespace corv;

namespace {

/// The sample flight's video, painted as it is read.
class FlightSource : public FrameSource
{
public:
    explicit FlightSource(std::shared_ptr<const SampleFlight> flight) : m_flight(std::move(flight))
    {
    }

    double fps() const override { return SampleFlight::frameRate; }
    int frameCount() const override { return m_flight->frameCount(); }
    QSize size() const override { return {SampleFlight::videoCols, SampleFlight::videoRows}; }
    int nextFrame() const override { return m_next; }

    bool seekToFrame(int index) override
    {
        m_next = std::clamp(index, 0, frameCount());
        return true;
    }

    ReadOutcome read(Frame& frame) override
    {
        if (m_next >= frameCount())
            return ReadOutcome::end;
        frame = bgrFrame(m_flight->videoFrame(m_next));
        frame.index = m_next;
        frame.timeMs = frameTimeMs(m_next);
        ++m_next;
        return ReadOutcome::frame;
    }

    std::unique_ptr<FrameSource> clone() const override
    {
        return std::make_unique<FlightSource>(m_flight);
    }

private:
    std::shared_ptr<const SampleFlight> m_flight;
    int m_next = 0;
};

cv::Mat pictureOf(const QImage& image)
{
    const QImage bgr = image.convertToFormat(QImage::Format_BGR888);
    return cv::Mat(bgr.height(), bgr.width(), CV_8UC3, const_cast<uchar*>(bgr.constBits()),
                   static_cast<size_t>(bgr.bytesPerLine()))
        .clone();
}

cv::Point2d hotSpot(const cv::Mat& picture)
{
    const cv::Rect place = SampleFlight::thermalPlace();
    cv::Mat hot;
    cv::inRange(picture(place), cv::Scalar(0, 0, 120), cv::Scalar(8, 70, 255), hot);
    const cv::Moments moments = cv::moments(hot, true);
    return cv::Point2d(place.tl()) + cv::Point2d(moments.m10, moments.m01) / (moments.m00 + 1e-9);
}

} // namespace

/// A flight on the whole road: log decoded and matched, player, worker, overlay, picture.
class FlightUnderReviewTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void overlayFollowsTheVideoAndTheCorrection();
    void rangeIsReportedWithTheOverlayOff();

private:
    cv::Mat pictureAt(int timeMs);

    QTemporaryDir m_folder;
    std::shared_ptr<const SampleFlight> m_flight;
    LogParser m_parser;
    std::unique_ptr<VideoPlayer> m_player;
};

void FlightUnderReviewTest::initTestCase()
{
    SampleFlightOptions options;
    options.videoSeconds = 9.0;
    m_flight = std::make_shared<SampleFlight>(options);
    const QString log = m_folder.filePath(SampleFlight::logFile());
    QVERIFY(m_flight->writeLog(log));
    const QString video = m_folder.filePath(QStringLiteral("flight.mov"));
    QVERIFY(QFile(video).open(QIODevice::WriteOnly));

    m_player = std::make_unique<VideoPlayer>(std::make_shared<test::SourceBackend>(
        [this](const QString&) { return std::make_unique<FlightSource>(m_flight); }));
    m_player->setLogParser(&m_parser);
    QSignalSpy opened(m_player.get(), &VideoPlayer::durationChanged);
    m_player->setSource(video);
    QTRY_COMPARE(opened.count(), 1);
    m_parser.setDuration(m_player->duration());
    QSignalSpy parsed(&m_parser, &LogParser::logParsingComplete);
    m_parser.parseLog(log, false);
    QTRY_COMPARE(parsed.count(), 1);
    QVERIFY(m_parser.isSynced());
    QCOMPARE(m_parser.getLogTimeOffset(), m_flight->logTimeOffset());
    QCOMPARE(m_parser.thermalCameraVersion(), 30);
    m_player->updateLogData();
    m_player->setIrMappingMinValue(m_flight->rawValue(15.0));
    m_player->setIrMappingMaxValue(m_flight->rawValue(75.0));
}

cv::Mat FlightUnderReviewTest::pictureAt(int timeMs)
{
    const auto promise = std::make_shared<std::promise<cv::Mat>>();
    auto picture = promise->get_future();
    m_player->getFrameAsync(QTime(0, 0).addMSecs(timeMs), [promise](const QImage& image) {
        promise->set_value(pictureOf(image));
    });
    const bool isThere = QTest::qWaitFor([&picture] {
        return picture.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    return isThere ? picture.get() : cv::Mat();
}

void FlightUnderReviewTest::overlayFollowsTheVideoAndTheCorrection()
{
    const double cellSize = 13.0; // pixels
    m_player->setShowIR(true);
    for (const int timeMs : {6800, 7000, 7200}) {
        for (const int manualMs : {0, 500, -500, 0}) {
            m_parser.setManualLogTimeOffset(manualMs);
            const cv::Mat picture = pictureAt(timeMs);
            QCOMPARE(readFrameNumber(picture), timeMs * 30 / 1000);
            const cv::Point2d shown = m_flight->hotCellInFrame(timeMs + manualMs);
            QVERIFY(cv::norm(hotSpot(picture) - shown) < 1.5 * cellSize);
            const cv::Point2d cell = m_flight->hotCellInFrame(timeMs);
            QCOMPARE(cv::norm(hotSpot(picture) - cell) < 1.5 * cellSize, manualMs == 0);
        }
    }
}

void FlightUnderReviewTest::rangeIsReportedWithTheOverlayOff()
{
    pictureAt(7000);
    m_player->setShowIR(false);
    // The range is that of the frame composed last, the hot one.
    QVERIFY(m_player->seekAtFrame(60));
    QTRY_VERIFY(m_player->irDataMax() > m_flight->rawValue(75.0));
    QVERIFY(m_player->irDataMax() < m_flight->rawValue(95.0));
    QVERIFY(m_player->irDataMin() > m_flight->rawValue(10.0));
    QVERIFY(m_player->irDataMin() < m_flight->rawValue(25.0));
}

QTEST_MAIN(FlightUnderReviewTest)
#include "FlightUnderReviewTest.moc"
