#include "Bench.h"
#include "Playback.h"

#include "Log/LogParser.h"
#include "SampleFlight/FlightLogWriter.h"
#include "Timeline/HeadUpDisplay.h"
#include "Timeline/TimelineContent.h"
#include "Timeline/timelineGeometry.h"
#include "Video/VideoPlayer.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QPainter>
#include <QTimer>
#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

namespace corv::bench {
namespace {

constexpr unsigned recordingStartMs = 10000;
constexpr unsigned videoStartMs = recordingStartMs + 690; // the first recording's fixed delay

// The record types of a recording, and their packets for one that fits a video of this length.
struct Recording
{
    explicit Recording(FlightLogWriter* log)
        : start(log->describe("mobius_start_rec", {{"mobius_start_rec", "UINT32", 1}})),
          stop(log->describe("mobius_stop_rec", {{"mobius_stop_rec", "UINT32", 1}}))
    {
    }

    void write(FlightLogWriter* log, unsigned durationMs) const
    {
        log->write(start, Payload().u32(recordingStartMs));
        log->write(stop, Payload().u32(recordingStartMs + 1000 + durationMs));
    }

    int start;
    int stop;
};

void parse(LogParser& parser, const QString& path, int durationMs)
{
    parser.setDuration(timeOfMs(durationMs));
    bool complete = false;
    QObject::connect(&parser, &LogParser::logParsingComplete, [&complete] { complete = true; });
    parser.parseLog(path, true);
    waitUntil([&complete] { return complete; });
    parser.disconnect();
}

// --- Head-up display -------------------------------------------------------------------------

constexpr int flightMs = 2 * 60 * 60 * 1000;
constexpr int stateIntervalMs = 20;

QString twoHourLog(const QString& folder)
{
    const QString path = folder + QStringLiteral("/two-hours-50Hz.log");
    if (QFile::exists(path))
        return path;
    FlightLogWriter log(path);
    const Recording recording(&log);
    const int state = log.describe("state_estimation", {{"time", "UINT32", 1},
                                                        {"euler_angles", "FLOAT", 3},
                                                        {"heading_reference", "FLOAT", 1},
                                                        {"altitude", "FLOAT", 1},
                                                        {"altitude_telem_ref", "FLOAT", 1}});
    const int camera =
        log.describe("camera_cmd", {{"time", "UINT32", 1}, {"servo_angle", "FLOAT", 1}});
    log.begin();
    recording.write(&log, flightMs);
    for (int ms = 0; ms <= flightMs; ms += stateIntervalMs) {
        const unsigned timeMs = videoStartMs + static_cast<unsigned>(ms);
        // The same values throughout, so that both pictures are the same work.
        Payload values;
        values.u32(timeMs);
        for (const float value : {0.1F, -0.2F, 1.0F, 0.0F, 120.0F, 20.0F})
            values.f32(value);
        log.write(state, values);
        log.write(camera, Payload().u32(timeMs).f32(-30.0F));
    }
    log.finish(0);
    return path;
}

void benchHud(Report& report)
{
    LogParser parser;
    parse(parser, twoHourLog(report.inputFolder()), flightMs);
    HeadUpDisplay hud;
    hud.setSize(QSizeF(170, 500));
    hud.setLogParser(&parser);
    hud.updateLogData();
    QImage image(170, 500, QImage::Format_ARGB32_Premultiplied);
    const auto paintAt = [&](int ms) {
        hud.setVideoPosition(timeOfMs(ms));
        for (int paint = 0; paint < 100; ++paint) {
            QPainter painter(&image);
            hud.paint(&painter);
        }
    };
    const double ratio = timeRatio([&] { paintAt(flightMs - 1); }, [&] { paintAt(1000); }, 9);
    report.row(QStringLiteral("head-up display, end of flight / start"), ratio, 1.2,
               QStringLiteral("two hours at 50 Hz, 170x500"));
}

// --- Timeline --------------------------------------------------------------------------------

// Answers requests for frames by itself, at once.
class InstantPlayer : public VideoPlayer
{
public:
    bool getFrameAsync(QTime, std::function<void(const QImage&)> callback) override
    {
        QImage frame(640, 360, QImage::Format_RGB888);
        frame.fill(Qt::darkGreen);
        callback(frame);
        return true;
    }
};

void setPois(TimelineContent& timeline, int firstMs, int lastMs, int stepMs)
{
    QVariantList list;
    for (int ms = firstMs; ms <= lastMs; ms += stepMs)
        list.append(QVariantMap{{QStringLiteral("time"), ms},
                                {QStringLiteral("name"), QStringLiteral("poi")}});
    timeline.setPOIsFromList(list);
    QCoreApplication::sendPostedEvents();
}

void benchPaint(Report& report)
{
    // 10 ms per pixel: 16 s of 1600 in view, a point of interest every 0.8 s.
    InstantPlayer player;
    TimelineContent all;
    TimelineContent inView;
    for (TimelineContent* timeline : {&all, &inView}) {
        timeline->setVideoPlayer(&player);
        timeline->setSize(QSizeF(1600, 120));
        timeline->setDuration(timeOfMs(1600000));
        timeline->setContentWidth(160120);
        timeline->setContentX(80000);
    }
    setPois(all, 0, 1599999, 800);
    setPois(inView, 800000, 815999, 800);
    QImage image(1600, 120, QImage::Format_ARGB32_Premultiplied);
    const auto paint = [&image](TimelineContent& timeline) {
        for (int round = 0; round < 20; ++round) {
            QPainter painter(&image);
            timeline.paint(&painter);
        }
    };
    const double ratio = timeRatio([&] { paint(all); }, [&] { paint(inView); }, 9);
    report.row(QStringLiteral("timeline paint, 2000 pois / the 20 in view"), ratio, 1.5,
               QStringLiteral("1600x120, points of interest every 80 px"));
}

// --- Points of interest of a log while a video plays
// ------------------------------------------------------

constexpr int videoFps = 30;
constexpr int videoFrames = 900;
constexpr int videoMs = videoFrames * 1000 / videoFps;
constexpr int poiCount = 500;

QString testVideo(const QString& folder)
{
    const QString path = folder + QStringLiteral("/timeline-720p.mp4");
    if (QFile::exists(path))
        return path;
    cv::VideoWriter writer(path.toStdString(), cv::VideoWriter::fourcc('m', 'p', '4', 'v'),
                           videoFps, cv::Size(1280, 720));
    cv::Mat frame(720, 1280, CV_8UC3);
    for (int index = 0; index < videoFrames; ++index) {
        frame.setTo(cv::Scalar(index % 256, 90, 200 - index % 128));
        cv::circle(frame, {index * 7 % 1280, 360}, 120, {255, 255, 255}, cv::FILLED);
        writer.write(frame);
    }
    return path;
}

QString logWithPois(const QString& folder)
{
    const QString path = folder + QStringLiteral("/timeline-pois.log");
    if (QFile::exists(path))
        return path;
    FlightLogWriter log(path);
    const Recording recording(&log);
    const int pois = log.describe("point_of_interest", {{"point_of_interest", "UINT32", 1}});
    log.begin();
    recording.write(&log, videoMs);
    for (unsigned poi = 0; poi < poiCount; ++poi)
        log.write(pois, Payload().u32(videoStartMs + poi * videoMs / poiCount));
    log.finish(0);
    return path;
}

// Runs `start` and then the event loop for `forMs`. The longest time in milliseconds for which the
// loop could not answer, as a timer of 1 ms notices it.
double longestHoldMs(const std::function<void()>& start, int forMs)
{
    QElapsedTimer sinceBeat;
    double longest = 0;
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        longest = std::max(longest, static_cast<double>(sinceBeat.nsecsElapsed()) / 1e6);
        sinceBeat.start();
    });
    QEventLoop loop;
    QTimer::singleShot(forMs, &loop, &QEventLoop::quit);
    sinceBeat.start();
    heartbeat.start(1);
    start();
    loop.exec();
    return longest;
}

void benchPoisWhilePlaying(Report& report)
{
    LogParser parser;
    parse(parser, logWithPois(report.inputFolder()), videoMs);
    CountingSurface surface;
    VideoPlayer player;
    player.setVideoSurface(&surface);
    player.setSource(testVideo(report.inputFolder()));
    waitUntil([&] { return surface.presented > 0; });
    TimelineContent timeline;
    timeline.setSize(QSizeF(1600, 120));
    timeline.setLogParser(&parser);
    timeline.setVideoPlayer(&player);
    timeline.setDuration(player.duration());
    timeline.setContentWidth(1720);

    constexpr int windowMs = 3000;
    const auto presentedDuring = [&](const std::function<void()>& start, double* holdMs) {
        player.seekAtFrame(0);
        const int before = surface.presented;
        waitUntil([&] { return surface.presented > before; });
        player.play();
        waitUntil([&] { return surface.presented > before + 5; });
        const int first = surface.presented;
        *holdMs = longestHoldMs(start, windowMs);
        player.pause();
        return surface.presented - first;
    };
    // The longest of anything is at the mercy of whatever else the machine does: three tries.
    std::vector<double> holdsMs;
    std::vector<double> shares;
    for (int round = 0; round < 3; ++round) {
        double holdMs = 0;
        const int alone = presentedDuring([] {}, &holdMs);
        timeline.clearAllData();
        const int beside = presentedDuring([&] { timeline.updateLogData(); }, &holdMs);
        holdsMs.push_back(holdMs);
        shares.push_back(static_cast<double>(beside) / std::max(alone, 1));
        waitUntil([&] { return timeline.getPOIs().size() == poiCount; });
    }
    const QString input = QStringLiteral("%1 points of interest, 720p at 30 fps").arg(poiCount);
    report.row(QStringLiteral("pois of a log: longest hold / 50 ms"), median(holdsMs) / 50, 1,
               input);
    report.row(QStringLiteral("pois of a log: frames presented / without"), median(shares), 0.6,
               input, false);
}

const Benchmark hud("hud", benchHud);
const Benchmark paint("timelinePaint", benchPaint);
const Benchmark pois("timelinePois", benchPoisWhilePlaying);

} // namespace
} // namespace corv::bench
