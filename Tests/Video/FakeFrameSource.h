#pragma once

#include "Support/SourceBackend.h"
#include "Support/TestVideo.h"
#include "Video/frameConversion.h"

#include <QHash>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <vector>

namespace corv::test {

/// A video that exists only in memory and fails where a test wants it to. Set up before it is
/// opened; what the test changes or reads afterwards is atomic.
struct FakeFile
{
    int frames = 30;
    double fps = 100.0;
    QSize size{320, 240};
    QSize pixelAspectRatio{1, 1};
    int firstNumber = 0;
    bool canBeCloned = true;
    std::vector<double> timesMs;           ///< of the frames and of the end; empty: constant rate
    int keyframeSpacing = 1;               ///< frames from one keyframe to the next
    std::set<int> damaged;                 ///< frames that reading passes over
    std::set<int> unreadable;              ///< frames whose reading fails
    std::set<int> unreachable;             ///< frames that positioning to fails
    std::atomic<int> reads{0};             ///< frames decoded, clones included
    std::atomic<int> clones{0};            ///< clones made
    std::atomic<bool> positioning{true};   ///< false: every move to another frame fails
    std::atomic<bool> blocked{false};      ///< reading waits while this is set
    std::atomic<bool> isRead{true};        ///< false: the index is still being read
    std::atomic<bool> isGone{false};       ///< every reading fails
    std::atomic<bool> throwsInPlay{false}; ///< frames come in a form that no conversion takes
};

class FakeFrameSource : public FrameSource
{
public:
    explicit FakeFrameSource(std::shared_ptr<FakeFile> file) : m_file(std::move(file)) {}

    double fps() const override { return m_file->fps; }
    int frameCount() const override
    {
        while (!m_file->isRead)
            QThread::yieldCurrentThread();
        return m_file->frames;
    }
    bool isIndexReady() const override { return m_file->isRead; }
    double indexProgress() const override { return m_file->isRead ? 1.0 : 0.5; }
    QSize size() const override { return m_file->size; }
    QSize pixelAspectRatio() const override { return m_file->pixelAspectRatio; }
    int nextFrame() const override { return m_next; }
    bool isConstantRate() const override { return m_file->timesMs.empty(); }
    int nearestKeyframe(int index) const override
    {
        return index - index % m_file->keyframeSpacing;
    }

    double frameTimeMs(int index) const override
    {
        if (isConstantRate())
            return FrameSource::frameTimeMs(index);
        return m_file->timesMs.at(static_cast<size_t>(std::clamp(index, 0, m_file->frames)));
    }

    /// The frame held at that time.
    int frameAtTime(double ms) const override
    {
        if (isConstantRate())
            return FrameSource::frameAtTime(ms);
        int index = m_file->frames - 1;
        while (index > 0 && frameTimeMs(index) >= ms + 1.0)
            --index;
        return index;
    }

    bool seekToFrame(int index) override
    {
        const int target = std::clamp(index, 0, m_file->frames);
        if (target == m_next)
            return true;
        if (!m_file->positioning || m_file->unreachable.count(target))
            return false;
        m_next = target;
        return true;
    }

    ReadOutcome read(Frame& frame) override
    {
        while (m_file->blocked)
            QThread::yieldCurrentThread();
        while (m_file->damaged.count(m_next))
            ++m_next;
        if (m_next >= m_file->frames)
            return ReadOutcome::end;
        if (m_next > 0)
            frameCount();
        if (m_file->isGone || m_file->unreadable.count(m_next))
            return ReadOutcome::failed;
        ++m_file->reads;
        frame = bgrFrame(testPicture(m_file->firstNumber + m_next, m_file->size));
        if (m_file->throwsInPlay)
            frame.size = {0, 0};
        frame.index = m_next;
        frame.timeMs = m_next == 0 ? 0.0 : frameTimeMs(m_next);
        ++m_next;
        return ReadOutcome::frame;
    }

    std::unique_ptr<FrameSource> clone() const override
    {
        if (!m_file->canBeCloned)
            return nullptr;
        ++m_file->clones;
        return std::make_unique<FakeFrameSource>(m_file);
    }

private:
    std::shared_ptr<FakeFile> m_file;
    int m_next = 0;
};

/// Opens the fakes by the names of their files; what has none fails to open.
class FakeFiles
{
public:
    std::shared_ptr<FakeFile> add(const QString& path)
    {
        auto file = std::make_shared<FakeFile>();
        m_files.insert(path, file);
        return file;
    }

    std::shared_ptr<const VideoBackend> factory() const
    {
        return std::make_shared<SourceBackend>(
            [files = m_files](const QString& path) -> std::unique_ptr<FrameSource> {
                const auto file = files.value(path);
                return file ? std::make_unique<FakeFrameSource>(file) : nullptr;
            });
    }

private:
    QHash<QString, std::shared_ptr<FakeFile>> m_files;
};

} // namespace corv::test
