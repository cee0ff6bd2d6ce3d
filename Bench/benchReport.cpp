#include "Bench.h"
#include "Project/ReportWriter.h"
#include "Video/VideoPlayer.h"

#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSemaphore>
#include <QTemporaryDir>
#include <atomic>
#include <cstdio>

namespace corv::bench {
namespace {

constexpr int poiCount = 100;
constexpr int poiSpacingMs = 330;

/// A 1080p video as a camera writes it, made once.
QString videoIn(const QString& folder)
{
    const QString path = folder + QStringLiteral("/report.mp4");
    if (!QFile::exists(path)) {
        const QString part = folder + QStringLiteral("/report.part.mp4");
        QProcess::execute(QStringLiteral("ffmpeg"),
                          {"-y", "-loglevel", "error", "-f", "lavfi", "-i",
                           "testsrc2=size=1920x1080:rate=30:duration=35", "-c:v", "libx264",
                           "-preset", "veryfast", "-g", "30", "-pix_fmt", "yuv420p", part});
        QFile::rename(part, path);
    }
    return path;
}

bool open(VideoPlayer& player, const QString& video)
{
    QEventLoop loop;
    QObject::connect(&player, &VideoPlayer::durationChanged, &loop, [&loop] { loop.exit(0); });
    QObject::connect(
        &player, &VideoPlayer::sourceOpenError, &loop, [&loop] { loop.exit(1); },
        Qt::QueuedConnection);
    player.setSource(video);
    return loop.exec() == 0;
}

QVariantList pois()
{
    QVariantList list;
    for (int i = 0; i < poiCount; ++i)
        list << QVariantMap{{QStringLiteral("time"), i * poiSpacingMs},
                            {QStringLiteral("name"), QStringLiteral("POI %1").arg(i)},
                            {QStringLiteral("comment"), QStringLiteral("Comment")}};
    return list;
}

void fetchOneAfterTheOther(VideoPlayer& player, const QString& folder)
{
    for (int i = 0; i < poiCount; ++i) {
        QSemaphore saved;
        const QString path = QStringLiteral("%1/%2.png").arg(folder).arg(i);
        player.getFrameAsync(QTime(0, 0).addMSecs(i * poiSpacingMs), [&](const QImage& image) {
            image.save(path);
            saved.release();
        });
        saved.acquire();
    }
}

const Benchmark report("report", [](Report& table) {
    VideoPlayer player;
    if (!open(player, videoIn(table.inputFolder()))) {
        std::fprintf(stderr, "the video of the report cannot be opened\n");
        return;
    }
    const QTemporaryDir folder;
    const std::atomic<bool> abortFlag{false};
    const auto write = [&] {
        ReportWriter writer(&abortFlag, QStringLiteral(VISTREL_REPORT_TEMPLATE));
        writer.writeWordReport(folder.filePath(QStringLiteral("report.docx")), &player, pois(),
                               {{QStringLiteral("undefined"), true}}, {});
    };
    const auto fetch = [&] { fetchOneAfterTheOther(player, folder.path()); };
    table.row(QStringLiteral("report: 100 points of interest"), timeRatio(write, fetch, 1), 1.5,
              QStringLiteral("1080p, against fetching and saving the frames"));
});

} // namespace
} // namespace corv::bench
