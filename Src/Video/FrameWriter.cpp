#include "Video/FrameWriter.h"

#include <QDebug>
#include <QFileInfo>
#include <QThreadPool>
#include <exception>
#include <utility>

namespace corv {
namespace {

void writeFrame(cv::VideoWriter& writer, const cv::Mat& frame)
{
    try {
        writer.write(frame);
    } catch (const std::exception& error) {
        qWarning() << "Failed to write frame:" << error.what();
    }
}

} // namespace

FrameWriter::FrameWriter() : m_writer(std::make_shared<cv::VideoWriter>())
{
    // The decoding thread waits for tasks of the pool, and tasks of the pool may be waiting for
    // pictures from the decoding thread: one place more, so that the two cannot wait for each
    // other.
    QThreadPool::globalInstance()->releaseThread();
}

FrameWriter::~FrameWriter()
{
    finishTask();
    try {
        m_writer->release();
    } catch (const std::exception& error) {
        qWarning() << "Failed to close the video:" << error.what();
    }
    QThreadPool::globalInstance()->reserveThread();
}

bool FrameWriter::open(const QString& file, double fps, QSize size)
{
    try {
        // The absolute path, since "name:rest" would be taken for a protocol; and the back-end that
        // reads, since another one takes "shot001.any" for a series of pictures to be written.
        return m_writer->open(QFileInfo(file).absoluteFilePath().toStdString(), cv::CAP_FFMPEG,
                              cv::VideoWriter::fourcc('m', 'p', '4', 'v'), fps,
                              cv::Size(size.width(), size.height()), true);
    } catch (const std::exception& error) {
        qWarning() << "Failed to open the video for writing:" << error.what();
        return false;
    }
}

cv::Mat FrameWriter::takeBuffer()
{
    if (m_buffers.empty())
        return {};
    cv::Mat buffer = std::move(m_buffers.back());
    m_buffers.pop_back();
    return buffer;
}

void FrameWriter::giveBack(cv::Mat buffer)
{
    m_buffers.push_back(std::move(buffer));
}

void FrameWriter::write(cv::Mat frame)
{
    finishTask();
    m_writing = std::move(frame);
    m_task = runOnPool([writer = m_writer, frame = m_writing] { writeFrame(*writer, frame); });
}

void FrameWriter::finishTask()
{
    m_task.waitForDone();
    if (!m_writing.empty())
        m_buffers.push_back(std::exchange(m_writing, {}));
}

} // namespace corv
