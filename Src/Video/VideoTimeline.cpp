#include "Video/VideoTimeline.h"

#include "Base/arithmetic.h"
#include "Video/CachedFrameSource.h"
#include "Video/logCategory.h"

#include <QDebug>
#include <algorithm>
#include <utility>

namespace corv {

int VideoFileEntry::timelineMs(double fileMs) const
{
    return truncateToInt((keepsOneRate ? truncateToInt(fileMs) : fileMs) + startMs);
}

Status VideoTimeline::open(const QString& file, int files, const VideoBackend& backend)
{
    Result<std::unique_ptr<FrameSource>> opened = backend.openSource(file);
    if (!opened) {
        qCWarning(lcVideo) << "Failed to open" << file;
        return opened.failure();
    }
    VideoFileEntry entry;
    entry.file = file;
    entry.capture = std::make_unique<CachedFrameSource>(
        std::move(*opened), CachedFrameSource::defaultLimitBytes / files);
    entry.fps = entry.capture->fps();
    if (m_size.isEmpty())
        m_size = entry.capture->size();
    m_entries.push_back(std::move(entry));
    return {};
}

void VideoTimeline::measure()
{
    VideoFileEntry& entry = m_entries.back();
    const FrameSource& capture = *entry.capture;
    entry.frameCount = capture.frameCount();
    if (capture.isConstantRate()) {
        entry.durationMs = truncateToInt(wrappingProduct(entry.frameCount, 1000) / entry.fps);
        entry.lengthMs = entry.frameCount * 1000.0 / entry.fps;
    } else {
        entry.lengthMs = capture.durationMs();
        entry.durationMs = truncateToInt(entry.lengthMs);
    }
    if (m_measured > 0) {
        const VideoFileEntry& before = m_entries[m_entries.size() - 2];
        entry.startMs = before.startMs + before.lengthMs;
    }
    entry.firstFrameIndex = m_totalFrames;
    m_totalFrames += entry.frameCount;
    m_measured = size();
    const bool isOneRate = keepsOneRate();
    for (VideoFileEntry& each : m_entries)
        each.keepsOneRate = isOneRate;
    qCInfo(lcVideo) << "Info " << entry.file << "; FPS:" << entry.fps
                    << "; Total frames:" << entry.frameCount
                    << "; Duration ms: " << truncateToInt(entry.frameCount / entry.fps * 1000.0)
                    << "; Size:" << capture.size().width() << capture.size().height();
}

void VideoTimeline::close()
{
    m_entries.clear();
    m_measured = 0;
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
    // The two roundings of each join add up; the end that the pilot sees is still the last frame.
    return !m_entries.empty() && timeMs <= durationMs() ? size() - 1 : -1;
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
    if (m_entries.empty() || timeMs >= m_entries.back().durationMs + m_entries.back().startMs)
        return -1;
    return fileOfTime(timeMs);
}

// The time of a file's first frame is its start, rounded down.
int VideoTimeline::fileOfTime(int timeMs) const
{
    size_t file = m_entries.size() - 1;
    while (file > 0 && truncateToInt(m_entries[file].startMs) > timeMs)
        --file;
    return static_cast<int>(file);
}

int VideoTimeline::fileOfFrame(int frameIndex) const
{
    size_t file = m_entries.size() - 1;
    while (file > 0 && m_entries[file].firstFrameIndex > frameIndex)
        --file;
    return static_cast<int>(file);
}

int VideoTimeline::frameAtTime(int timeMs) const
{
    const VideoFileEntry& entry = m_entries[static_cast<size_t>(fileOfTime(timeMs))];
    return entry.firstFrameIndex + entry.capture->frameAtTime(timeMs - entry.startMs);
}

bool VideoTimeline::keepsOneRate() const
{
    return std::all_of(m_entries.begin(), m_entries.end(), [this](const VideoFileEntry& entry) {
        return entry.capture->isConstantRate() && entry.fps == fps();
    });
}

int VideoTimeline::durationMs() const
{
    if (m_entries.empty())
        return 0;
    if (keepsOneRate())
        return truncateToInt(m_totalFrames * 1000.0 / fps());
    return truncateToInt(m_entries.back().startMs + m_entries.back().lengthMs);
}

} // namespace corv
