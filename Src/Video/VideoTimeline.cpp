#include "Video/VideoTimeline.h"

#include "Video/truncation.h"

#include <QDebug>
#include <utility>

namespace corv {

int VideoFileEntry::timelineMs(double fileMs) const
{
    return truncateToInt(truncateToInt(fileMs) + startMs);
}

QStringList VideoTimeline::open(const QStringList& files, const VideoBackend& backend)
{
    close();
    QStringList failed;
    double startMs = 0.0;
    for (const QString& file : files) {
        Result<std::unique_ptr<FrameSource>> opened = backend.openSource(file);
        if (!opened) {
            qWarning() << "Failed to open" << file;
            failed << file;
            continue;
        }
        std::unique_ptr<FrameSource> capture = std::move(*opened);
        VideoFileEntry entry;
        entry.file = file;
        entry.frameCount = capture->frameCount();
        entry.fps = capture->fps();
        entry.durationMs = truncateToInt(wrappingProduct(entry.frameCount, 1000) / entry.fps);
        entry.firstFrameIndex = m_totalFrames;
        entry.startMs = startMs;
        const QSize entrySize = capture->size();
        if (m_size.isEmpty())
            m_size = entrySize;
        qInfo() << "Info " << file << "; FPS:" << entry.fps << "; Total frames:" << entry.frameCount
                << "; Duration ms: " << truncateToInt(entry.frameCount / entry.fps * 1000.0)
                << "; Size:" << entrySize.width() << entrySize.height();
        m_totalFrames += entry.frameCount;
        startMs += entry.frameCount * 1000.0 / entry.fps;
        entry.capture = std::move(capture);
        m_entries.push_back(std::move(entry));
    }
    return failed;
}

void VideoTimeline::close()
{
    m_entries.clear();
    m_totalFrames = 0;
    m_size = QSizeF();
}

double VideoTimeline::fps() const
{
    return m_entries.empty() ? 0.0 : m_entries.front().fps;
}

int VideoTimeline::fileForSeek(int timeMs) const
{
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const VideoFileEntry& entry = m_entries[i];
        if (truncateToInt(entry.startMs) + entry.durationMs >= timeMs)
            return static_cast<int>(i);
    }
    // The two roundings of each join add up, and files may differ in their rate; the end that the
    // pilot sees is still the last frame.
    if (!m_entries.empty() && timeMs <= truncateToInt(m_totalFrames * 1000.0 / fps()))
        return size() - 1;
    return -1;
}

int VideoTimeline::fileForFrame(int frameIndex) const
{
    for (size_t i = 0; i < m_entries.size(); ++i) {
        if (frameIndex <= m_entries[i].firstFrameIndex + m_entries[i].frameCount)
            return static_cast<int>(i);
    }
    return -1;
}

int VideoTimeline::fileForPicture(int timeMs) const
{
    for (size_t i = 0; i < m_entries.size(); ++i) {
        if (timeMs < m_entries[i].durationMs + m_entries[i].startMs)
            return static_cast<int>(i);
    }
    return -1;
}

} // namespace corv
