// The reader of frames against the libraries below it.

#include "Bench.h"
#include "Libav.h"
#include "VideoInputs.h"

#include "Support/MediaDoubles.h"
#include "Video/AvFrameSource.h"
#include "Video/CachedFrameSource.h"

#include <cstdlib>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace corv::bench {
namespace {

constexpr int rounds = 7;
constexpr int framesInFile = 300;

// Of a card.
constexpr double bytesPerSecond = 40e6;
constexpr double seekMs = 5.0;

std::unique_ptr<FrameSource> openReader(const QString& file)
{
    auto source = openAvFrameSource(file, openFileBytes);
    if (!source)
        std::abort();
    return std::move(*source);
}

void show(FrameSource& source, int frame)
{
    Frame picture;
    source.seekToFrame(frame);
    source.read(picture);
}

void randomSeeks(Report& report, int gop)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, gop, 25);
    const auto source = openReader(file);
    Libav peer(file);
    std::mt19937 random(3);
    std::vector<int> frames;
    for (int i = 0; i < 10; ++i)
        frames.push_back(static_cast<int>(random() % (framesInFile - 1)));
    const double ratio = timeRatio(
        [&] {
            for (const int frame : frames)
                show(*source, frame);
        },
        [&] {
            for (const int frame : frames)
                peer.seekTo(frame);
        },
        rounds);
    report.row(QStringLiteral("reader: random exact seek, GOP %1").arg(gop), ratio, 1.05,
               QStringLiteral("1080p, 10 seeks a round"));
}

void stepsBack(Report& report)
{
    const QString file = cameraVideo(report, {1920, 1080}, 10, 250, 25);
    constexpr int steps = 40;
    Libav peer(file);
    std::vector<double> inside;
    std::vector<double> group;
    for (int round = 0; round < rounds; ++round) {
        CachedFrameSource cached(openReader(file));
        // The first step back lands on the last frame of the first group.
        show(cached, 250);
        const double ours = secondsOf([&] { show(cached, 249); });
        const double bareGroup = secondsOf([&] { peer.seekTo(249); });
        group.push_back(ours / bareGroup);
        const double stepping = secondsOf([&] {
            for (int frame = 248; frame > 248 - steps; --frame)
                show(cached, frame);
        });
        peer.seekTo(0);
        const double decoding = secondsOf([&] {
            for (int i = 0; i < steps; ++i)
                peer.decodeNext();
        });
        inside.push_back(stepping / decoding);
    }
    report.row(QStringLiteral("reader: step back inside the cache"), median(inside), 1.0,
               QStringLiteral("1080p, to the decoding of a frame"));
    report.row(QStringLiteral("reader: first step back over a group of 250"), median(group), 1.1,
               QStringLiteral("1080p, to the decoding of the group"));
}

/// A recording of 1.7 GB, from copies of a short one.
QString longVideo(const Report& report)
{
    const QString file = report.inputFolder() + QStringLiteral("/camera_long.mp4");
    if (QFile::exists(file))
        return file;
    const QString part = file + QStringLiteral(".part.mp4");
    const int made =
        QProcess::execute(QStringLiteral("ffmpeg"),
                          {"-v", "error", "-nostdin", "-y", "-stream_loop", "54", "-i",
                           cameraVideo(report, {1920, 1080}, 10, 30, 25), "-c", "copy", part});
    return made == 0 && QFile::rename(part, file) ? file : QString();
}

void opening(Report& report)
{
    const QString file = longVideo(report);
    const ByteSourceFactory card = [](const QString& name) -> Result<std::unique_ptr<ByteSource>> {
        auto bytes = openFileBytes(name);
        if (!bytes)
            return bytes.failure();
        return std::unique_ptr<ByteSource>(
            std::make_unique<test::SlowBytes>(std::move(*bytes), bytesPerSecond, seekMs));
    };
    const double seconds = medianSeconds(
        [&] {
            const auto source = openAvFrameSource(file, card);
            if (!source)
                std::abort();
            show(**source, 0);
        },
        rounds);
    report.row(QStringLiteral("reader: opening 1.7 GB from a slow card"), seconds, 1.0,
               QStringLiteral("seconds; 40 MB/s, 5 ms a seek"));
}

const Benchmark reader("reader", [](Report& report) {
    randomSeeks(report, 30);
    randomSeeks(report, 250);
    stepsBack(report);
    opening(report);
});

} // namespace
} // namespace corv::bench
