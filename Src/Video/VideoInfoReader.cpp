#include "Video/VideoInfoReader.h"

#include "Video/truncation.h"

#include <QDebug>
#include <QFileInfo>
#include <exception>
#include <opencv2/videoio.hpp>
#include <utility>

namespace corv {
namespace {

struct PromisedLength
{
    int fps = 0;
    int frames = 0;
};

bool readPromisedLength(const QString& file, PromisedLength& length)
{
    const QFileInfo info(file);
    if (!info.isFile())
        return false;
    try {
        cv::VideoCapture capture;
        if (!capture.open(info.absoluteFilePath().toStdString(), cv::CAP_FFMPEG))
            return false;
        length.fps = truncateToInt(capture.get(cv::CAP_PROP_FPS));
        length.frames = truncateToInt(capture.get(cv::CAP_PROP_FRAME_COUNT));
        return true;
    } catch (const std::exception& error) {
        qWarning() << "Video back-end:" << error.what();
        return false;
    }
}

} // namespace

int promisedFrameCount(const QString& file)
{
    PromisedLength length;
    readPromisedLength(file, length);
    return length.frames;
}

VideoInfoReader::VideoInfoReader(QString file) : m_file(std::move(file)) {}

int VideoInfoReader::getDurationMs() const
{
    PromisedLength length;
    if (!readPromisedLength(m_file, length)) {
        qWarning() << "Failed to open video file" << m_file;
        return -1;
    }
    if (length.fps <= 0) {
        qWarning() << "No whole frame per second in video file" << m_file;
        return -1;
    }
    return wrappingProduct(length.frames / length.fps, 1000);
}

} // namespace corv
