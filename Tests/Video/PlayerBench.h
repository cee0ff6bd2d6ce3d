#pragma once

#include "Support/TestVideo.h"
#include "Threads/post.h"
#include "Video/VideoPlayer.h"

#include <QAbstractVideoBuffer>
#include <QAbstractVideoSurface>
#include <QList>
#include <QObject>
#include <QVideoSurfaceFormat>
#include <cstring>
#include <memory>

namespace corv::test {

/// A surface that keeps what it was shown.
class RecordingSurface : public QAbstractVideoSurface
{
public:
    QList<QVideoFrame::PixelFormat>
    supportedPixelFormats(QAbstractVideoBuffer::HandleType) const override
    {
        return {QVideoFrame::Format_YUV420P};
    }

    bool start(const QVideoSurfaceFormat& format) override
    {
        formats << format;
        return QAbstractVideoSurface::start(format);
    }

    bool present(const QVideoFrame& frame) override
    {
        if (refuses)
            return false;
        last = frame;
        numbers << numberIn(frame);
        return true;
    }

    /// The number in the picture shown last; -1 if there was none.
    int lastNumber() const { return numbers.isEmpty() ? -1 : numbers.last(); }

    QList<int> numbers;
    QList<QVideoSurfaceFormat> formats;
    QVideoFrame last;
    bool refuses = false;
};

/// One request for a still frame, with its answer brought back to the test's thread.
struct StillFrame
{
    StillFrame(VideoPlayer& player, QTime time) : m_answer(std::make_shared<Answer>())
    {
        accepted = player.getFrameAsync(time, [answer = m_answer](const QImage& image) {
            post(&answer->receiver, [answer, image] {
                answer->image = image;
                answer->came = true;
            });
        });
    }

    bool came() const { return m_answer->came; }
    QImage image() const { return m_answer->image; }
    int number() const { return m_answer->came ? numberIn(m_answer->image) : -2; }

    bool accepted = false;

private:
    struct Answer
    {
        QObject receiver;
        QImage image;
        bool came = false;
    };

    std::shared_ptr<Answer> m_answer;
};

/// Whether two 4:2:0 frames hold the same pixels; what is behind the end of a line is none.
inline bool samePicture(QVideoFrame a, QVideoFrame b)
{
    if (a.size() != b.size() || !a.map(QAbstractVideoBuffer::ReadOnly))
        return false;
    bool same = b.map(QAbstractVideoBuffer::ReadOnly) && a.planeCount() == b.planeCount();
    for (int plane = 0; same && plane < a.planeCount(); ++plane) {
        const int divisor = plane == 0 ? 1 : 2;
        for (int row = 0; same && row < a.height() / divisor; ++row)
            same = std::memcmp(a.bits(plane) + row * a.bytesPerLine(plane),
                               b.bits(plane) + row * b.bytesPerLine(plane),
                               static_cast<size_t>(a.width() / divisor)) == 0;
    }
    b.unmap();
    a.unmap();
    return same;
}

inline QTime timeAt(int ms)
{
    return QTime(0, 0, 0, 0).addMSecs(ms);
}

} // namespace corv::test
