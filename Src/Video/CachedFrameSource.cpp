#include "Video/CachedFrameSource.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace corv {
namespace {

// A move back by no more than this is a step, and others will follow it.
constexpr int furthestStepBack = 3;

} // namespace

CachedFrameSource::CachedFrameSource(std::unique_ptr<FrameSource> source, qint64 limitBytes)
    : m_source(std::move(source)), m_limitBytes(limitBytes), m_next(m_source->nextFrame())
{
}

bool CachedFrameSource::seekToFrame(int index)
{
    if (index != m_next)
        m_next = std::clamp(index, 0, frameCount());
    m_sought = true;
    // The source below is moved where it is needed, but its failure is that of the seek.
    return m_kept.count(m_next) > 0 || m_source->seekToFrame(m_next);
}

ReadOutcome CachedFrameSource::read(Frame& frame)
{
    const auto kept = m_kept.find(m_next);
    if (kept != m_kept.end()) {
        frame = kept->second;
    } else {
        const ReadOutcome outcome = readFromSource(frame);
        if (outcome != ReadOutcome::frame) {
            if (outcome == ReadOutcome::end)
                m_next = m_source->nextFrame();
            return outcome;
        }
        keep(frame);
    }
    m_sought = false;
    m_lastRead = frame.index;
    m_next = frame.index + 1;
    trim();
    return ReadOutcome::frame;
}

ReadOutcome CachedFrameSource::readFromSource(Frame& frame)
{
    if (decodesBackwards()) {
        const ReadOutcome outcome = fillBackwards();
        if (outcome == ReadOutcome::failed)
            return outcome;
        const auto kept = m_kept.find(m_next);
        if (kept != m_kept.end()) {
            frame = kept->second;
            return ReadOutcome::frame;
        }
    }
    // Reading on is no seek: it ends where nothing good follows.
    if ((m_sought || m_source->nextFrame() != m_next) && !m_source->seekToFrame(m_next))
        return ReadOutcome::failed;
    return m_source->read(frame);
}

bool CachedFrameSource::decodesBackwards() const
{
    return m_next < m_lastRead && m_lastRead - m_next <= furthestStepBack;
}

// The part of the group of pictures before the wanted frame that fits into the limit; it is
// decoded anyway on the way there.
ReadOutcome CachedFrameSource::fillBackwards()
{
    const auto last = m_kept.find(m_lastRead);
    const qint64 frameBytes =
        last == m_kept.end() ? 0 : std::max<qint64>(last->second.sizeBytes, 1);
    const qint64 fitting = frameBytes > 0 ? m_limitBytes / frameBytes : 1;
    const int most = static_cast<int>(std::clamp<qint64>(fitting - 1, 1, m_next + 1));
    const int first = std::max(m_source->nearestKeyframe(m_next), m_next - most + 1);
    if (!m_source->seekToFrame(first))
        return ReadOutcome::failed;
    Frame frame;
    while (m_source->nextFrame() <= m_next) {
        const ReadOutcome outcome = m_source->read(frame);
        if (outcome != ReadOutcome::frame)
            return outcome;
        keep(frame);
    }
    return ReadOutcome::frame;
}

void CachedFrameSource::keep(const Frame& frame)
{
    const auto [place, isNew] = m_kept.emplace(frame.index, frame);
    if (isNew)
        m_keptBytes += place->second.sizeBytes;
}

void CachedFrameSource::freeMemory()
{
    m_kept.clear();
    m_keptBytes = 0;
}

// The furthest from the frame read last goes first.
void CachedFrameSource::trim()
{
    while (m_keptBytes > m_limitBytes && m_kept.size() > 1) {
        const auto first = m_kept.begin();
        const auto last = std::prev(m_kept.end());
        const bool firstIsFurther = m_lastRead - first->first >= std::abs(last->first - m_lastRead);
        const auto furthest = firstIsFurther ? first : last;
        m_keptBytes -= furthest->second.sizeBytes;
        m_kept.erase(furthest);
    }
}

} // namespace corv
