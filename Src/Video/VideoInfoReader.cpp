#include "Video/VideoInfoReader.h"

#include "Base/arithmetic.h"
#include "Video/AvInput.h"
#include "Video/VideoBackend.h"
#include "Video/logCategory.h"

#include <QDebug>
#include <QFileInfo>
#include <exception>
#include <opencv2/videoio.hpp>
#include <utility>

namespace corv {
namespace {

// As the container states them, by the library that the pairing's arithmetic was made with.
struct PromisedLength
{
    double fps = 0.0;
    int frames = 0;
};

bool readPromisedLength(const QString& file, PromisedLength& length)
{
    const QFileInfo info(file);
    if (!info.isFile())
        return false;
    prepareLibav();
    try {
        cv::VideoCapture capture;
        if (!capture.open(info.absoluteFilePath().toStdString(), cv::CAP_FFMPEG))
            return false;
        length.fps = capture.get(cv::CAP_PROP_FPS);
        length.frames = truncateToInt(capture.get(cv::CAP_PROP_FRAME_COUNT));
        return true;
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Video back-end:" << error.what();
        return false;
    }
}

} // namespace

VideoInfoReader::VideoInfoReader(QString file) : m_file(std::move(file)) {}

int VideoInfoReader::getDurationMs() const
{
    PromisedLength length;
    if (!readPromisedLength(m_file, length)) {
        qCWarning(lcVideo) << "Failed to open video file" << m_file;
        return -1;
    }
    const int fps = truncateToInt(length.fps);
    if (fps <= 0) {
        qCWarning(lcVideo) << "No whole frame per second in video file" << m_file;
        return -1;
    }
    return wrappingProduct(length.frames / fps, 1000);
}

double VideoInfoReader::exactDurationMs() const
{
    const Result<VideoInfo> info = systemVideoBackend()->info(m_file);
    return info ? info->durationMs : -1.0;
}

} // namespace corv
