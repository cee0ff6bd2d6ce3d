// The road of a frame from the decoder to the screen, against the decoder alone.

#include "Bench.h"
#include "Libav.h"
#include "Playback.h"
#include "SampleLog.h"
#include "VideoInputs.h"

#include "Base/videoTime.h"
#include "Threads/post.h"
#include "Timeline/FramePreview.h"
#include "Video/CachedFrameSource.h"
#include "Video/OpenCvWorker.h"
#include "Video/VideoPlayer.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <opencv2/imgproc.hpp>
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
    void onOpeningProgress(int, double) override {}
    void onFirstPicture(int, QSize, const QVideoFrame&) override {}
    void onCurrentFile(int, const QString&) override {}
    void onFrameReady(int, const PlayerFrame&, FrameUse) override {}
    void onSeekFailed(int) override {}
    void onWishServed(int, WishOutcome) override {}
    void onRedrawFinished(int) override {}
    void onPlaybackEnded(int, int) override {}
    void onReadFailed(int, const QString&) override {}
    void onThermalFrames(const Status&) override {}
    void onBurstFinished() override {}
};

// Seconds that the worker takes for the frames behind the first. It works alone: no timer holds it
// back, and no surface takes what it hands over.
double produce(const QString& file, int frames,
               const std::function<void(OpenCvWorker&)>& prepare = {})
{
    NoClient client;
    QObject context;
    OpenCvWorker worker(&client, &context, systemVideoBackend());
    QEventLoop loop;
    double seconds = 0.0;
    post(&worker, [&] {
        worker.setVideoSources({file}, 0);
        if (prepare)
            prepare(worker);
        worker.produceNextFrame(false);
        seconds = secondsOf([&] {
            for (int i = 0; i < frames; ++i)
                worker.produceNextFrame(false);
        });
        post(&loop, [&loop] { loop.quit(); });
    });
    loop.exec();
    return seconds;
}

// The same frames, decoded and dropped.
double decode(const QString& file, int frames)
{
    Libav libav(file);
    libav.decodeNext();
    return secondsOf([&] {
        for (int i = 0; i < frames; ++i)
            libav.decodeNext();
    });
}

// Decoding, and one pass of each step that contrast and a translucent overlay need.
double readAndDraw(const QString& file, int frames)
{
    cv::VideoCapture capture(file.toStdString(), cv::CAP_FFMPEG);
    cv::Mat thermal(120, 160, CV_8UC1);
    cv::randu(thermal, 0, 256);
    cv::Mat frame;
    cv::Mat colours;
    cv::Mat enlarged;
    cv::Mat planes;
    capture.read(frame);
    return secondsOf([&] {
        for (int i = 0; i < frames && capture.read(frame); ++i) {
            frame.convertTo(frame, -1, 1.2, 0.0);
            cv::applyColorMap(thermal, colours, cv::COLORMAP_JET);
            const cv::Rect place(frame.cols * 3 / 10, frame.rows * 2 / 10, frame.cols * 10 / 23,
                                 frame.rows * 10 / 17);
            cv::resize(colours, enlarged, place.size(), 0.0, 0.0, cv::INTER_NEAREST);
            cv::Mat region = frame(place);
            cv::addWeighted(enlarged, 0.5, region, 0.5, 0.0, region);
            cv::cvtColor(frame, planes, cv::COLOR_BGR2YUV_I420);
        }
    });
}

// Both sides alternately; the side that is first in one round is second in the next.
double producedRatio(const std::function<double()>& ours, const std::function<double()>& theirs)
{
    constexpr int rounds = 7;
    theirs();
    ours();
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const double before = round % 2 ? ours() : theirs();
        const double after = round % 2 ? theirs() : ours();
        ratios.push_back(round % 2 ? after / before : before / after);
    }
    return median(ratios);
}

void withOverlay(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    SampleLog log;
    const auto prepare = [&log](OpenCvWorker& worker) {
        VideoDisplaySettings settings;
        settings.contrast = 1.2;
        settings.showIR = true;
        settings.autoIRMapping = true;
        settings.irOverlayTransparent = true;
        worker.setSettings(settings);
        worker.setClock(log.parser.clock());
        worker.updateLogData(true, log.parser.log());
    };
    constexpr int frames = 180;
    const double ratio = producedRatio([&] { return produce(file, frames, prepare); },
                                       [&] { return readAndDraw(file, frames); });
    report.row(
        QStringLiteral("video: playback with overlay and contrast"), ratio, 0.9,
        QStringLiteral("1080p, %1 frames, to decoding and one pass of each step").arg(frames),
        false);
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

    /// Seconds from a move of a held pointer to a picture, which may be a preview.
    double drag(int ms)
    {
        QElapsedTimer timer;
        timer.start();
        const int wanted = m_surface.presented + 1;
        m_player.goToTime(timeOfMs(ms));
        waitFor(wanted);
        return static_cast<double>(timer.nsecsElapsed()) / 1e9;
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
    const int frames = seconds * 30 - 1;
    const double ratio =
        producedRatio([&] { return produce(file, frames); }, [&] { return decode(file, frames); });
    report.row(name, ratio, 0.95, QStringLiteral("%1 frames, to decoding them").arg(frames), false);
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

/// From the pointer's move to the picture at the timeline.
void pictureAtThePointer(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    CountingSurface surface;
    VideoPlayer player;
    player.setVideoSurface(&surface);
    player.setSource(file);
    waitUntil([&] { return surface.presented >= 1; });
    FramePreview preview;
    preview.setPlayer(&player);
    int shown = 0;
    QObject::connect(&preview, &FramePreview::pictureChanged, [&shown] { ++shown; });
    const auto show = [&](int frame) {
        const int wanted = shown + 1;
        preview.show(timeOfMs(frame * 1000 / 30));
        waitUntil([&] { return shown >= wanted; });
    };
    show(0);
    cv::VideoCapture capture(file.toStdString(), cv::CAP_FFMPEG);
    cv::Mat frame;
    std::mt19937 random(7);
    std::vector<double> ours;
    std::vector<double> bare;
    for (int i = 0; i < 60; ++i) {
        const int wanted = static_cast<int>(random() % 299);
        ours.push_back(secondsOf([&] { show(wanted); }));
        bare.push_back(secondsOf([&] {
            capture.set(cv::CAP_PROP_POS_FRAMES, wanted);
            capture.read(frame);
        }));
    }
    report.row(QStringLiteral("picture at the pointer, 1080p GOP 30"), median(ours) / median(bare),
               1.1, QStringLiteral("60 places, to one exact seek"));
}

double percentile95(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() * 95 / 100);
}

void drags(Report& report)
{
    const QString file = cameraVideo(report, {3840, 2160}, 20, 250, 100);
    Libav libav(file);
    Viewer viewer(file);
    std::mt19937 random(5);
    std::vector<double> ours;
    std::vector<double> bare;
    for (int i = 0; i < 200; ++i) {
        const int wanted = static_cast<int>(random() % 598);
        ours.push_back(viewer.drag(wanted * 1000 / 30));
        bare.push_back(secondsOf([&] { libav.decodeKeyframe(wanted); }));
    }
    report.row(QStringLiteral("video: drag, 95 of 100 moves"),
               percentile95(ours) / percentile95(bare), 1.3,
               QStringLiteral("4K, GOP 250, 200 moves, to decoding the keyframe"));
}

// What playing needs beside the frames that are kept for steps back.
void memoryOfPlaying(Report& report)
{
    constexpr int frames = 60;
    constexpr size_t framesBeside = 8;
    const QString file = cameraVideo(report, {3840, 2160}, 3, 30, 100);
    const double ours = peakBytesOf([&file] { produce(file, frames); });
    const double theirs = peakBytesOf([&file] {
        Libav libav(file);
        std::deque<std::unique_ptr<AVFrame, void (*)(AVFrame*)>> held;
        for (int i = 0; i < frames && libav.decodeNext(); ++i) {
            held.emplace_back(av_frame_clone(&libav.picture()),
                              [](AVFrame* frame) { av_frame_free(&frame); });
            if (held.size() > framesBeside)
                held.pop_front();
        }
    });
    report.row(QStringLiteral("video: memory of playing 4K"),
               (ours - static_cast<double>(CachedFrameSource::defaultLimitBytes)) / theirs, 1.1,
               QStringLiteral("less the kept frames, to decoding and holding 8 frames"));
}

const Benchmark video("video", [](Report& report) {
    memoryOfPlaying(report);
    playback(report, QStringLiteral("video: playback pipeline 1080p"), {1920, 1080}, 10, 25);
    playback(report, QStringLiteral("video: playback pipeline 4K"), {3840, 2160}, 6, 100);
    withOverlay(report);
    drags(report);
    steps(report);
    seeks(report);
});
const Benchmark preview("preview", pictureAtThePointer);

} // namespace
} // namespace corv::bench
