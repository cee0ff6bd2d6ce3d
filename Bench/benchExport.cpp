// Taking frames and videos out of a flight, against the least that it could cost.

#include "Bench.h"
#include "Playback.h"
#include "SampleLog.h"
#include "VideoInputs.h"

#include "Timeline/ExportInsets.h"
#include "Timeline/timelineGeometry.h"
#include "Video/VideoPlayer.h"
#include "Video/frameConversion.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <opencv2/videoio.hpp>
#include <vector>

namespace corv::bench {
namespace {

constexpr int rounds = 7;

std::unique_ptr<VideoPlayer> openedPlayer(const QString& file)
{
    auto player = std::make_unique<VideoPlayer>();
    player->setSource(file);
    waitUntil([&player] { return player->hasVideoOpened(); });
    return player;
}

void exportVideo(VideoPlayer& player, const QString& target)
{
    bool ended = false;
    QObject receiver;
    QObject::connect(&player, &VideoPlayer::videoExportComplete, &receiver,
                     [&ended] { ended = true; });
    player.exportVideo(target);
    waitUntil([&ended] { return ended; });
}

// By the same way through BGR, at the bit rate that the export comes to, so that the pictures are
// alike.
void transcode(const QString& file, const QString& target, double megabitsPerSecond)
{
    QProcess::execute(QStringLiteral("ffmpeg"),
                      {"-v", "error", "-nostdin", "-y", "-i", file, "-vf",
                       "format=bgr24,format=yuv420p", "-c:v", "mpeg4", "-b:v",
                       QStringLiteral("%1k").arg(static_cast<int>(megabitsPerSecond * 1000.0)),
                       target});
}

void wholeVideo(Report& report, const QString& name, QSize size, int seconds, int megabits,
                double floor)
{
    const QString file = cameraVideo(report, size, seconds, 30, megabits);
    const QTemporaryDir folder;
    const QString ours = folder.filePath(QStringLiteral("ours.mp4"));
    const auto player = openedPlayer(file);
    exportVideo(*player, ours);
    const double megabitsOut = static_cast<double>(QFile(ours).size()) * 8e-6 / seconds;
    const double ratio = ratioInTurn(
        [&] { transcode(file, folder.filePath(QStringLiteral("theirs.mp4")), megabitsOut); },
        [&] { exportVideo(*player, ours); }, rounds);
    report.row(
        name, ratio, floor,
        QStringLiteral("%1 frames, %2 Mbit/s out").arg(seconds * 30).arg(megabitsOut, 0, 'f', 0),
        false);
}

void withOverlay(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    const QTemporaryDir folder;
    SampleLog log;
    const auto drawn = openedPlayer(file);
    drawn->setLogParser(&log.parser);
    drawn->setContrast(1.2);
    drawn->setAutoIRMapping(true);
    drawn->setShowIR(true);
    drawn->updateLogData();
    const QString target = folder.filePath(QStringLiteral("out.mp4"));
    exportVideo(*drawn, target);
    const double megabitsOut = static_cast<double>(QFile(target).size()) * 8e-6 / 10;
    const double ratio = ratioInTurn(
        [&] { transcode(file, folder.filePath(QStringLiteral("theirs.mp4")), megabitsOut); },
        [&] { exportVideo(*drawn, target); }, rounds);
    report.row(QStringLiteral("export: 1080p with overlay and contrast"), ratio, 0.9,
               QStringLiteral("300 frames, to a program that draws nothing"), false);
}

// Both with the thermal overlay; one with the flight instruments, whose values change all the time.
void withInstruments(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    const QTemporaryDir folder;
    SampleLog log;
    const auto bare = openedPlayer(file);
    const auto instrumented = openedPlayer(file);
    for (VideoPlayer* player : {bare.get(), instrumented.get()}) {
        player->setLogParser(&log.parser);
        player->setAutoIRMapping(true);
        player->setShowIR(true);
        player->updateLogData();
    }
    ExportInsets insets;
    insets.setPlayer(instrumented.get());
    insets.setLogParser(&log.parser);
    insets.setShowsInstruments(true);
    const QString target = folder.filePath(QStringLiteral("out.mp4"));
    const double ratio = ratioInTurn([&] { exportVideo(*bare, target); },
                                     [&] { exportVideo(*instrumented, target); }, 5);
    report.row(QStringLiteral("export: 1080p with overlay and instruments"), ratio, 0.93,
               QStringLiteral("300 frames, to the same without instruments"), false);
}

// 100 frames, every tenth, decoded in order and saved.
void saveInOrder(const QString& file, const QDir& folder)
{
    cv::VideoCapture capture(file.toStdString(), cv::CAP_FFMPEG);
    cv::Mat frame;
    for (int i = 0; i < 1000; ++i) {
        if (i % 10) {
            capture.grab();
            continue;
        }
        capture.read(frame);
        cvMatToQImage(frame).save(folder.filePath(QStringLiteral("bare%1.jpg").arg(i)));
    }
}

void saveSeries(VideoPlayer& player, const QString& folder)
{
    // 33 whole milliseconds a frame, as the series counts them.
    player.exportFrames(0, 99 * 330, 10, folder, QStringLiteral("Frame"));
    bool last = false;
    QObject receiver;
    player.getFrameAsync(timeOfMs(0), [&last, &receiver](const QImage&) {
        QMetaObject::invokeMethod(
            &receiver, [&last] { last = true; }, Qt::QueuedConnection);
    });
    waitUntil([&last] { return last; });
}

void series(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 34, 30, 20);
    const auto player = openedPlayer(file);
    std::vector<std::unique_ptr<QTemporaryDir>> folders;
    const double ratio = ratioInTurn(
        [&] {
            folders.push_back(std::make_unique<QTemporaryDir>());
            saveSeries(*player, folders.back()->path());
        },
        [&] {
            folders.push_back(std::make_unique<QTemporaryDir>());
            saveInOrder(file, QDir(folders.back()->path()));
        },
        rounds);
    report.row(QStringLiteral("export: series of 100 frames"), ratio, 1.6,
               QStringLiteral("1080p, every tenth frame, JPEG"));
}

const Benchmark exports("export", [](Report& report) {
    wholeVideo(report, QStringLiteral("export: whole video 1080p"), {1920, 1080}, 10, 25, 0.95);
    withOverlay(report);
    withInstruments(report);
    wholeVideo(report, QStringLiteral("export: whole video 4K"), {3840, 2160}, 3, 100, 0.9);
    series(report);
});

} // namespace
} // namespace corv::bench
