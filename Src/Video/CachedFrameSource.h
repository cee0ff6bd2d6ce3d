#pragma once

#include "Video/FrameSource.h"

#include <map>
#include <memory>

namespace corv {

/// A source that keeps the frames nearest to the one read last, up to a limit in bytes: a step back
/// is as quick as a step on. A step back to a frame that is not kept decodes its group of pictures
/// once and keeps what fits. Reading on costs nothing beside the source below.
class CachedFrameSource : public FrameSource
{
public:
    static constexpr qint64 defaultLimitBytes = qint64(256) * 1024 * 1024;

    explicit CachedFrameSource(std::unique_ptr<FrameSource> source,
                               qint64 limitBytes = defaultLimitBytes);

    double fps() const override { return m_source->fps(); }
    int frameCount() const override { return m_source->frameCount(); }
    QSize size() const override { return m_source->size(); }
    QSize pixelAspectRatio() const override { return m_source->pixelAspectRatio(); }
    bool isConstantRate() const override { return m_source->isConstantRate(); }
    double frameTimeMs(int frame) const override { return m_source->frameTimeMs(frame); }
    int frameAtTime(double ms) const override { return m_source->frameAtTime(ms); }
    int nearestKeyframe(int frame) const override { return m_source->nearestKeyframe(frame); }
    bool isAtHand(int frame) const override
    {
        return m_kept.count(frame) > 0 || m_source->isAtHand(frame);
    }
    void freeMemory() override;
    bool isIndexReady() const override { return m_source->isIndexReady(); }
    double indexProgress() const override { return m_source->indexProgress(); }
    int nextFrame() const override { return m_next; }
    bool seekToFrame(int index) override;
    ReadOutcome read(Frame& frame) override;
    Failure failure() const override { return m_source->failure(); }

    /// Of the source below: it keeps no frames.
    std::unique_ptr<FrameSource> clone() const override { return m_source->clone(); }

    /// Memory of the frames that are kept.
    qint64 keptBytes() const { return m_keptBytes; }

private:
    ReadOutcome readFromSource(Frame& frame);
    bool decodesBackwards() const;
    ReadOutcome fillBackwards();
    void keep(const Frame& frame);
    void trim();

    std::unique_ptr<FrameSource> m_source;
    const qint64 m_limitBytes;
    std::map<int, Frame> m_kept; // by number
    qint64 m_keptBytes = 0;
    int m_next = 0;
    bool m_sought = false; // m_next was set by a seek
    int m_lastRead = -1;
};

} // namespace corv
