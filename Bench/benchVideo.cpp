// The road of a frame from the decoder to the screen, against the decoder alone.

#include "Bench.h"
#include "Playback.h"
#include "VideoInputs.h"

#include "Threads/post.h"
#include "Video/OpenCvWorker.h"
#include "Video/VideoPlayer.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <algorithm>
#include <opencv2/videoio.hpp>
#include <random>
#include <vector>

namespace corv::bench {
namespace {

void readAll(const QString& file, int frames)
{
    cv::VideoCapture capture(file.toStdString(), cv::CAP_FFMPEG);
    cv::Mat frame;
    for (int i = 0; i < frames; ++i)
        capture.read(frame);
}

/// Drops what the worker hands over.
class NoClient : public WorkerClient
{
public:
    void onVideoFilesProcessed(int, const OpenedTimeline&) override {}
    void onCurrentFile(int, const QString&) override {}
    void onFrameReady(int, const PlayerFrame&, FrameUse) override {}
    void onSeekFailed(int) override {}
    void onWishServed(int, WishOutcome) override {}
    void onRedrawFinished(int) override {}
    void onPlaybackEnded(int) override {}
    void onThermalFrames(const Status&) override {}
    void onBurstFinished() override {}
};

// The worker alone: no timer holds it back.
void produceAll(const QString& file, int frames)
{
    NoClient client;
    QObject context;
    OpenCvWorker worker(&client, &context, systemVideoBackend());
    QEventLoop loop;
    post(&worker, [&worker, &loop, file, frames] {
        worker.setVideoSources({file}, 0);
        for (int i = 0; i < frames; ++i)
            worker.produceNextFrame(false);
        post(&loop, [&loop] { loop.quit(); });
    });
    loop.exec();
}

/// A player that shows frame after frame on demand.
class Viewer
{
public:
    explicit Viewer(const QString& file)
    {
        m_player.setVideoSurface(&m_surface);
        m_player.setSource(file);
        waitFor(1);
    }

    /// Seconds from the wish to the picture.
    double show(int frame)
    {
        QElapsedTimer timer;
        timer.start();
        const int wanted = m_surface.presented + 1;
        m_player.seekAtFrame(frame);
        waitFor(wanted);
        return static_cast<double>(timer.nsecsElapsed()) / 1e9;
    }

private:
    void waitFor(int presented)
    {
        waitUntil([this, presented] { return m_surface.presented >= presented; });
    }

    CountingSurface m_surface;
    VideoPlayer m_player;
};

void playback(Report& report, const QString& name, QSize size, int seconds, int megabits)
{
    const QString file = cameraVideo(report, size, seconds, 30, megabits);
    const int frames = std::min(seconds * 30, 180);
    // Opening, with its look for the real end, is no part of playing.
    const double opening = secondsOf([&file] { produceAll(file, 0); });
    const double bareOpening = secondsOf([&file] { readAll(file, 0); });
    readAll(file, frames);
    std::vector<double> ratios;
    for (int round = 0; round < 5; ++round) {
        const double bare = secondsOf([&] { readAll(file, frames); }) - bareOpening;
        const double ours = secondsOf([&] { produceAll(file, frames); }) - opening;
        ratios.push_back(bare / ours);
    }
    report.row(name, median(ratios), 0.87, QStringLiteral("%1 frames").arg(frames), false);
}

void steps(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    const double bareFrame = medianSeconds([&file] { readAll(file, 150); }, 3) / 150.0;
    Viewer viewer(file);
    viewer.show(100);
    viewer.show(101);
    std::vector<double> seconds;
    for (int frame = 102; frame < 182; ++frame)
        seconds.push_back(viewer.show(frame));
    report.row(QStringLiteral("video: step to the next frame"), median(seconds) / bareFrame, 2.0,
               QStringLiteral("1080p, 80 steps, paused"));
}

void seeks(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    Viewer viewer(file);
    cv::VideoCapture capture(file.toStdString(), cv::CAP_FFMPEG);
    cv::Mat frame;
    std::mt19937 random(3);
    double ours = 0.0;
    double bare = 0.0;
    for (int i = 0; i < 40; ++i) {
        const int wanted = static_cast<int>(random() % 299);
        ours += viewer.show(wanted);
        bare += secondsOf([&] {
            capture.set(cv::CAP_PROP_POS_FRAMES, wanted);
            capture.read(frame);
        });
    }
    report.row(QStringLiteral("video: random exact seek"), ours / bare, 1.05,
               QStringLiteral("1080p, GOP 30, 40 seeks"));
}

const Benchmark video("video", [](Report& report) {
    playback(report, QStringLiteral("video: playback pipeline 1080p"), {1920, 1080}, 10, 25);
    playback(report, QStringLiteral("video: playback pipeline 4K"), {3840, 2160}, 3, 100);
    steps(report);
    seeks(report);
});

} // namespace
} // namespace corv::bench
