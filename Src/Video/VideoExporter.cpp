#include "Video/VideoExporter.h"

#include "Video/FrameWriter.h"

#include <QDebug>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace corv {

VideoExporter::VideoExporter(VideoTimeline& timeline, Hooks hooks)
    : m_timeline(timeline), m_hooks(std::move(hooks))
{
}

bool VideoExporter::exportTo(const QString& target, int currentFile)
{
    FrameSource& current = *m_timeline.entry(currentFile).capture;
    FrameWriter writer;
    if (!writer.open(target, current.fps(), current.size()))
        return false;
    const int savedPosition = current.nextFrame();
    int done = 0;
    for (int file = 0; file < m_timeline.size() && !m_hooks.isCancelled(); ++file) {
        VideoFileEntry& entry = m_timeline.entry(file);
        qInfo() << "Starting to export video" << entry.file;
        exportFile(entry, writer, current.size(), done);
        done += entry.frameCount;
    }
    return current.seekToFrame(savedPosition);
}

void VideoExporter::exportFile(VideoFileEntry& entry, FrameWriter& writer, QSize size, int done)
{
    FrameSource& capture = *entry.capture;
    for (int i = 0; i < entry.frameCount && !m_hooks.isCancelled(); ++i) {
        if (!capture.seekToFrame(i)) {
            qInfo() << "Forcefully stopping at frame " << i;
            return;
        }
        const int timeMs = entry.timelineMs(capture.nextFrameMs());
        cv::Mat frame = writer.takeBuffer();
        if (!capture.read(frame)) {
            qInfo() << "Read failed for frame " << i;
            return;
        }
        applyEffects(frame, timeMs);
        if (frame.cols == size.width() && frame.rows == size.height())
            writer.write(std::move(frame));
        else
            writer.giveBack(std::move(frame));
        m_hooks.reportProgress(done + i + 1, m_timeline.totalFrames());
    }
}

void VideoExporter::applyEffects(cv::Mat& frame, int timeMs)
{
    try {
        m_hooks.applyEffects(frame, timeMs);
    } catch (const std::exception& error) {
        qWarning() << "Exporting without effects the frame at ms" << timeMs << error.what();
    }
}

bool isOneOfFiles(const QString& target, const QStringList& files)
{
    const std::filesystem::path path = target.toStdString();
    return std::any_of(files.begin(), files.end(), [&path](const QString& file) {
        std::error_code notThere;
        return std::filesystem::equivalent(path, file.toStdString(), notThere);
    });
}

} // namespace corv
