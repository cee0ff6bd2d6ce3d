#include "Video/VideoExporter.h"

#include "Video/VideoBackend.h"
#include "Video/frameConversion.h"

#include <QDebug>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace corv {
VideoExporter::VideoExporter(const VideoBackend& backend, VideoTimeline& timeline, Hooks hooks)
    : m_backend(backend), m_timeline(timeline), m_hooks(std::move(hooks))
{
}

bool VideoExporter::exportTo(const QString& target, int currentFile)
{
    FrameSource& current = *m_timeline.entry(currentFile).capture;
    int written = 0;
    int savedPosition = 0;
    {
        const auto writer = m_backend.openWriter(target, current.fps(), current.size());
        if (!writer)
            return false;
        savedPosition = current.nextFrame();
        written = writeAll(**writer, current.size());
    }
    if (!m_hooks.isCancelled())
        tellOfLostFrames(target, written);
    return current.seekToFrame(savedPosition);
}

int VideoExporter::writeAll(FrameWriter& writer, QSize size)
{
    int done = 0;
    int written = 0;
    for (int file = 0; file < m_timeline.size() && !m_hooks.isCancelled(); ++file) {
        VideoFileEntry& entry = m_timeline.entry(file);
        qInfo() << "Starting to export video" << entry.file;
        written += exportFile(entry, writer, size, done);
        done += entry.frameCount;
    }
    return written;
}

/// The number of frames that were handed to the writer.
int VideoExporter::exportFile(VideoFileEntry& entry, FrameWriter& writer, QSize size, int done)
{
    FrameSource& capture = *entry.capture;
    int written = 0;
    for (int i = 0; i < entry.frameCount && !m_hooks.isCancelled(); ++i) {
        if (!capture.seekToFrame(i)) {
            qInfo() << "Forcefully stopping at frame " << i;
            return written;
        }
        const int timeMs = entry.timelineMs(capture.nextFrameMs());
        Frame frame;
        if (capture.read(frame) != ReadOutcome::frame) {
            qInfo() << "Read failed for frame " << i;
            return written;
        }
        if (frame.size == size) {
            m_turn = 1 - m_turn;
            cv::Mat& picture = m_pictures[m_turn];
            toBgr(frame, picture);
            applyEffects(picture, timeMs);
            writer.write(bgrFrame(picture));
            ++written;
        }
        m_hooks.reportProgress(done + i + 1, m_timeline.totalFrames());
    }
    return written;
}

void VideoExporter::applyEffects(cv::Mat& picture, int timeMs)
{
    try {
        m_hooks.applyEffects(picture, timeMs);
    } catch (const std::exception& error) {
        qWarning() << "Exporting without effects the frame at ms" << timeMs << error.what();
    }
}

/// The encoder says nothing of a full disk. Containers number their frames at their end, which is
/// not written once something was lost; only where the number falls short is it worth counting.
void VideoExporter::tellOfLostFrames(const QString& target, int written) const
{
    const auto info = m_backend.info(target);
    if (info && info->promisedFrames >= written)
        return;
    const auto result = m_backend.openSource(target);
    const int found = result ? (*result)->frameCount() : 0;
    if (found < written)
        qWarning() << "Exported video is incomplete: frames" << found << "of" << written;
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
