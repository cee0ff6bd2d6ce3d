#include "Video/VideoInfoReader.h"

#include "Base/arithmetic.h"
#include "Video/VideoBackend.h"

#include <QDebug>
#include <QFileInfo>
#include <exception>
#include <opencv2/videoio.hpp>
#include <utility>

namespace corv {
namespace {

bool openCapture(cv::VideoCapture& capture, const QString& file)
{
    const QFileInfo info(file);
    if (!info.isFile())
        return false;
    return capture.open(info.absoluteFilePath().toStdString(), cv::CAP_FFMPEG);
}

} // namespace

bool readVideoInfo(const QString& file, VideoInfo& info)
{
    try {
        cv::VideoCapture capture;
        if (!openCapture(capture, file))
            return false;
        info.fps = capture.get(cv::CAP_PROP_FPS);
        info.promisedFrames = truncateToInt(capture.get(cv::CAP_PROP_FRAME_COUNT));
        info.durationMs = info.promisedFrames * 1000.0 / info.fps;
        return true;
    } catch (const std::exception& error) {
        qWarning() << "Video back-end:" << error.what();
        return false;
    }
}

VideoInfoReader::VideoInfoReader(QString file) : m_file(std::move(file)) {}

int VideoInfoReader::getDurationMs() const
{
    VideoInfo info;
    if (!readVideoInfo(m_file, info)) {
        qWarning() << "Failed to open video file" << m_file;
        return -1;
    }
    const int fps = truncateToInt(info.fps);
    if (fps <= 0) {
        qWarning() << "No whole frame per second in video file" << m_file;
        return -1;
    }
    return wrappingProduct(info.promisedFrames / fps, 1000);
}

} // namespace corv
