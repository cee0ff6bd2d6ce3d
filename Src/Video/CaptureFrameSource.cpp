#include "Video/CaptureFrameSource.h"

#include "Base/arithmetic.h"
#include "Video/frameConversion.h"

#include <QDebug>
#include <QFileInfo>
#include <algorithm>
#include <exception>
#include <opencv2/videoio.hpp>
#include <utility>

namespace corv {
namespace {

// A positioning decodes at least this many frames before its target, so that up to here reading on
// is never the slower way.
constexpr int grabAheadLimit = 16;

// How many frames at the start show whether a file keeps its rate.
constexpr int framesLookedAt = 4;

// Up to this many promised frames, or more of a size below full HD, a file without a steady rate is
// read from its start for every position behind the next frame; in a longer one that would take too
// long to be of use.
constexpr int readThroughLimit = 1000;
constexpr qint64 readThroughPixels = qint64(readThroughLimit) * 1920 * 1080;

// As many frames as decoders hold back, for their order and for their threads.
constexpr int longestDrain = 20;

class CaptureFrameSource : public FrameSource
{
public:
    CaptureFrameSource(QString file, int knownFrameCount)
        : m_file(std::move(file)), m_frameCount(knownFrameCount)
    {
    }

    /// False if there is no readable video in the file.
    bool open();

    double fps() const override { return m_fps; }
    int frameCount() const override { return m_frameCount; }
    QSize size() const override { return m_size; }
    int nextFrame() const override { return m_nextFrame; }
    bool seekToFrame(int index) override;
    ReadOutcome read(Frame& frame) override;
    std::unique_ptr<FrameSource> clone() const override;

private:
    bool openCapture();
    bool reopen();
    bool readCapture(cv::Mat& frame);
    bool retrieveNext(cv::Mat& frame);
    bool keepsRate();
    bool isOnTime(int index) const;
    bool canBeReadThrough() const;
    void position(int index);
    bool grabTo(int index);
    int countFrames();
    int countByReading();
    int grabAll();
    bool arrives(int index);
    int searchFrameCount(int promised);

    QString m_file;
    cv::VideoCapture m_capture;
    double m_fps = 0.0;
    int m_promisedCount = 0;
    int m_frameCount;
    QSize m_wholeSize;
    QSize m_size;
    int m_nextFrame = 0;
    double m_firstFrameMs = 0.0;
    bool m_steadyRate = true; // else a number means nothing to the back-end
    bool m_justPositioned = false;
};

bool CaptureFrameSource::open()
{
    try {
        return openCapture();
    } catch (const std::exception& error) {
        qWarning() << "Video back-end:" << error.what();
        return false;
    }
}

bool CaptureFrameSource::openCapture()
{
    // The absolute path, since "name:rest" would be read as a protocol; and nothing but files,
    // since opening a pipe waits for a writer.
    const QFileInfo info(m_file);
    if (!info.isFile())
        return false;
    m_file = info.absoluteFilePath();
    if (!reopen())
        return false;
    m_fps = m_capture.get(cv::CAP_PROP_FPS);
    m_promisedCount = truncateToInt(m_capture.get(cv::CAP_PROP_FRAME_COUNT));
    m_wholeSize = QSize(truncateToInt(m_capture.get(cv::CAP_PROP_FRAME_WIDTH)),
                        truncateToInt(m_capture.get(cv::CAP_PROP_FRAME_HEIGHT)));
    // The planar form of a picture has half as many chroma columns and rows.
    m_size = QSize(m_wholeSize.width() & ~1, m_wholeSize.height() & ~1);
    if (!std::isfinite(m_fps) || m_fps <= 0.0 || m_size.isEmpty())
        return false;
    if (m_frameCount <= 0) {
        m_frameCount = countFrames();
        position(0);
    }
    return m_frameCount > 0;
}

bool CaptureFrameSource::reopen()
{
    // This back-end alone: the others count and position differently.
    return m_capture.open(m_file.toStdString(), cv::CAP_FFMPEG);
}

bool CaptureFrameSource::seekToFrame(int index)
{
    const int target = std::clamp(index, 0, m_frameCount);
    if (target == m_nextFrame)
        return true;
    try {
        if (target < m_nextFrame || target - m_nextFrame > grabAheadLimit) {
            // It cannot position behind the last frame that the container promises.
            position(std::min(target, m_promisedCount));
        }
        return grabTo(target);
    } catch (const std::exception& error) {
        qWarning() << "Video back-end:" << error.what();
        return false;
    }
}

ReadOutcome CaptureFrameSource::read(Frame& frame)
{
    if (m_nextFrame >= m_frameCount)
        return ReadOutcome::end;
    try {
        cv::Mat picture;
        const int index = m_nextFrame;
        if (!readCapture(picture))
            return ReadOutcome::failed;
        frame = bgrFrame(picture);
        frame.index = index;
        frame.timeMs = frameTimeMs(index);
        return ReadOutcome::frame;
    } catch (const std::exception& error) {
        qWarning() << "Video back-end:" << error.what();
        return ReadOutcome::failed;
    }
}

bool CaptureFrameSource::readCapture(cv::Mat& frame)
{
    if (!retrieveNext(frame))
        return false;
    if (std::exchange(m_justPositioned, false) && canBeReadThrough() && !isOnTime(m_nextFrame)) {
        const int wanted = m_nextFrame;
        m_steadyRate = false;
        position(0);
        if (!grabTo(wanted) || !retrieveNext(frame))
            return false;
    }
    ++m_nextFrame;
    return !frame.empty();
}

bool CaptureFrameSource::retrieveNext(cv::Mat& frame)
{
    if (m_size == m_wholeSize)
        return m_capture.read(frame);
    cv::Mat whole;
    if (!m_capture.read(whole))
        return false;
    frame = whole(cv::Rect(0, 0, std::min(m_size.width(), whole.cols),
                           std::min(m_size.height(), whole.rows)));
    return true;
}

std::unique_ptr<FrameSource> CaptureFrameSource::clone() const
{
    auto copy = std::make_unique<CaptureFrameSource>(m_file, m_frameCount);
    if (!copy->open())
        return nullptr;
    copy->m_firstFrameMs = m_firstFrameMs;
    copy->m_steadyRate = m_steadyRate;
    return copy;
}

void CaptureFrameSource::position(int index)
{
    if (m_promisedCount <= 1 || !m_steadyRate) { // the back-end cannot position by number
        reopen();
        m_nextFrame = 0;
        return;
    }
    m_capture.set(cv::CAP_PROP_POS_FRAMES, index);
    m_nextFrame = truncateToInt(m_capture.get(cv::CAP_PROP_POS_FRAMES));
    m_justPositioned = true;
}

bool CaptureFrameSource::grabTo(int index)
{
    while (m_nextFrame < index) {
        if (!m_capture.grab())
            return false;
        ++m_nextFrame;
    }
    return m_nextFrame == index;
}

// Containers promise a frame or two more than arrive, or many more after a cut by edit list. The
// positioning behind the promised end runs on to the last frame there is, and so finds the number.
int CaptureFrameSource::countFrames()
{
    if (!m_capture.grab())
        return 0;
    m_firstFrameMs = m_capture.get(cv::CAP_PROP_POS_MSEC);
    if (m_promisedCount <= 1)
        return 1 + grabAll();
    if (canBeReadThrough() && !keepsRate())
        return countByReading();
    position(m_promisedCount);
    const int reached = m_nextFrame;
    if (reached == m_promisedCount)
        return reached + grabAll();
    // Not the very last frame, of which the back-end gives no time.
    const int nearEnd = std::max(reached - 1 - longestDrain, 0);
    if (arrives(nearEnd)) {
        if (canBeReadThrough() && !isOnTime(nearEnd))
            return countByReading();
        m_nextFrame = nearEnd + 1;
        if (grabTo(reached) && !m_capture.grab())
            return reached;
    }
    return searchFrameCount(m_promisedCount);
}

int CaptureFrameSource::countByReading()
{
    m_steadyRate = false;
    reopen();
    return grabAll();
}

// The back-end takes a number for a time, at the file's mean rate. Where frames do not come at that
// rate it leads to another frame.
bool CaptureFrameSource::keepsRate()
{
    for (int index = 1; index < framesLookedAt && m_capture.grab(); ++index) {
        if (!isOnTime(index))
            return false;
    }
    return true;
}

// Of the frame grabbed last. While the decoder drains, the back-end says 0.
bool CaptureFrameSource::isOnTime(int index) const
{
    const double ms = m_capture.get(cv::CAP_PROP_POS_MSEC);
    if (ms <= 0.0)
        return true;
    const double frameMs = 1000.0 / m_fps;
    return std::abs(ms - m_firstFrameMs - index * frameMs) <= 0.75 * frameMs;
}

bool CaptureFrameSource::canBeReadThrough() const
{
    return m_promisedCount <= readThroughLimit ||
           m_promisedCount * qint64(m_wholeSize.width()) * m_wholeSize.height() <=
               readThroughPixels;
}

int CaptureFrameSource::grabAll()
{
    int grabbed = 0;
    while (m_capture.grab())
        ++grabbed;
    return grabbed;
}

bool CaptureFrameSource::arrives(int index)
{
    if (index < 0)
        return false;
    position(index);
    return m_nextFrame == index && m_capture.grab();
}

// In a file that was cut off, positioning in the lost part leads anywhere.
int CaptureFrameSource::searchFrameCount(int promised)
{
    int count = 1; // the first frame came
    int tooMany = promised + 1;
    while (tooMany - count > 1) {
        const int middle = count + (tooMany - count) / 2;
        if (arrives(middle - 1))
            count = middle;
        else
            tooMany = middle;
    }
    return count;
}

} // namespace

std::unique_ptr<FrameSource> openCaptureFrameSource(const QString& file)
{
    auto source = std::make_unique<CaptureFrameSource>(file, 0);
    if (!source->open())
        return nullptr;
    return source;
}

} // namespace corv
