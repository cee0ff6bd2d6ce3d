#pragma once

#include "Bench.h"

#include <QFile>
#include <QProcess>
#include <QSize>
#include <QString>
#include <QStringList>

namespace corv::bench {

/// A video as a camera records it: H.264 with B-frames at a camera's bit rate, moving shapes under
/// noise, 30 frames a second. Made once; an empty name if the ffmpeg program cannot make it.
inline QString cameraVideo(const Report& report, QSize size, int seconds, int gop,
                           int megabitsPerSecond)
{
    const QString file = QStringLiteral("%1/camera_%2x%3_%4s_gop%5_%6M.mp4")
                             .arg(report.inputFolder())
                             .arg(size.width())
                             .arg(size.height())
                             .arg(seconds)
                             .arg(gop)
                             .arg(megabitsPerSecond);
    if (QFile::exists(file))
        return file;
    const QString part = file + QStringLiteral(".part.mp4");
    const int made = QProcess::execute(QStringLiteral("ffmpeg"),
                                       {"-v",
                                        "error",
                                        "-nostdin",
                                        "-y",
                                        "-f",
                                        "lavfi",
                                        "-i",
                                        QStringLiteral("testsrc2=size=%1x%2:rate=30:duration=%3")
                                            .arg(size.width())
                                            .arg(size.height())
                                            .arg(seconds),
                                        "-vf",
                                        "noise=alls=12:allf=t",
                                        "-c:v",
                                        "libx264",
                                        "-preset",
                                        "veryfast",
                                        "-bf",
                                        "3",
                                        "-g",
                                        QString::number(gop),
                                        "-b:v",
                                        QStringLiteral("%1M").arg(megabitsPerSecond),
                                        "-pix_fmt",
                                        "yuv420p",
                                        part});
    return made == 0 && QFile::rename(part, file) ? file : QString();
}

} // namespace corv::bench
