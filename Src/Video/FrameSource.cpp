#include "Video/FrameSource.h"

#include "Video/truncation.h"

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
    bool read(cv::Mat& frame) override;
    std::unique_ptr<FrameSource> clone() const override;

private:
    bool openCapture();
    bool reopen();
    bool readCapture(cv::Mat& frame);
    void position(int index);
    bool grabTo(int index);
    int countFrames();
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

bool CaptureFrameSource::read(cv::Mat& frame)
{
    try {
        return readCapture(frame);
    } catch (const std::exception& error) {
        qWarning() << "Video back-end:" << error.what();
        return false;
    }
}

bool CaptureFrameSource::readCapture(cv::Mat& frame)
{
    if (m_size == m_wholeSize) {
        if (!m_capture.read(frame))
            return false;
    } else {
        cv::Mat whole;
        if (!m_capture.read(whole))
            return false;
        frame = whole(cv::Rect(0, 0, std::min(m_size.width(), whole.cols),
                               std::min(m_size.height(), whole.rows)));
    }
    ++m_nextFrame;
    return !frame.empty();
}

std::unique_ptr<FrameSource> CaptureFrameSource::clone() const
{
    auto copy = std::make_unique<CaptureFrameSource>(m_file, m_frameCount);
    if (!copy->open())
        return nullptr;
    return copy;
}

void CaptureFrameSource::position(int index)
{
    if (m_promisedCount <= 1) { // the back-end cannot position in a file of unknown length
        reopen();
        m_nextFrame = 0;
        return;
    }
    m_capture.set(cv::CAP_PROP_POS_FRAMES, index);
    m_nextFrame = truncateToInt(m_capture.get(cv::CAP_PROP_POS_FRAMES));
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
// positioning behind the promised end runs on to the last frame there is, and so tells the number.
int CaptureFrameSource::countFrames()
{
    if (!m_capture.grab())
        return 0;
    if (m_promisedCount <= 1)
        return 1 + grabAll();
    position(m_promisedCount);
    const int reached = m_nextFrame;
    if (reached == m_promisedCount)
        return reached + grabAll();
    if (arrives(reached - 1) && !m_capture.grab())
        return reached;
    return searchFrameCount(m_promisedCount);
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

bool FrameSource::seekToTime(double ms)
{
    return seekToFrame(truncateToInt(std::max(ms, 0.0) * fps() / 1000.0 + 0.5));
}

std::unique_ptr<FrameSource> openFrameSource(const QString& file)
{
    auto source = std::make_unique<CaptureFrameSource>(file, 0);
    if (!source->open())
        return nullptr;
    return source;
}

} // namespace corv
