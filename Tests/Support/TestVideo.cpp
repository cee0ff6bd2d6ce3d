#include "Support/TestVideo.h"

#include "SampleFlight/frameStrip.h"

#include <QAbstractVideoBuffer>
#include <QDebug>
#include <QProcess>
#include <opencv2/imgproc.hpp>

namespace corv::test {
namespace {

constexpr int noTimeLimit = -1;

QStringList quietly(const QStringList& arguments)
{
    return QStringList{"-v", "error", "-nostdin", "-y"} + arguments;
}

bool finish(QProcess& program)
{
    program.closeWriteChannel();
    if (program.waitForFinished(noTimeLimit) && program.exitStatus() == QProcess::NormalExit &&
        program.exitCode() == 0)
        return true;
    qWarning().noquote() << "ffmpeg:" << program.errorString() << program.readAllStandardError();
    return false;
}

} // namespace

cv::Mat testPicture(int number, QSize size)
{
    cv::Mat picture(size.height(), size.width(), CV_8UC3, cv::Scalar(90, 120, 60));
    const int step = size.height() / 8;
    for (int i = 0; i < 4; ++i) {
        const int x = (number * (3 + i) + i * size.width() / 4) % size.width();
        cv::circle(picture, {x, size.height() / 2 + i * step / 2}, step,
                   cv::Scalar(60.0 * i, 255.0 - 50.0 * i, 40.0 + 50.0 * i), cv::FILLED);
    }
    drawFrameNumber(picture, number);
    return picture;
}

bool TestVideo::write(const QString& path) const
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 QStringList{"-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "bgr24", "-s",
                             QStringLiteral("%1x%2").arg(size.width()).arg(size.height()), "-r",
                             fps, "-i", "-"} +
                     encoding + QStringList{path});
    if (!ffmpeg.waitForStarted(noTimeLimit)) {
        qWarning() << "ffmpeg:" << ffmpeg.errorString();
        return false;
    }
    for (int i = 0; i < frames; ++i) {
        const cv::Mat picture = testPicture(firstNumber + i, size);
        ffmpeg.write(reinterpret_cast<const char*>(picture.data),
                     static_cast<qint64>(picture.total() * picture.elemSize()));
        ffmpeg.waitForBytesWritten(noTimeLimit);
    }
    return finish(ffmpeg);
}

bool runFfmpeg(const QStringList& arguments)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), quietly(arguments));
    if (!ffmpeg.waitForStarted(noTimeLimit)) {
        qWarning() << "ffmpeg:" << ffmpeg.errorString();
        return false;
    }
    return finish(ffmpeg);
}

int numberIn(const QImage& image)
{
    if (image.isNull())
        return -1;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    const cv::Mat view(rgb.height(), rgb.width(), CV_8UC3, const_cast<uchar*>(rgb.constBits()),
                       static_cast<size_t>(rgb.bytesPerLine()));
    return readFrameNumber(view);
}

int numberIn(const QVideoFrame& frame)
{
    QVideoFrame mapped = frame;
    if (!mapped.map(QAbstractVideoBuffer::ReadOnly))
        return -1;
    const cv::Mat luma(mapped.height(), mapped.width(), CV_8UC1, mapped.bits(),
                       static_cast<size_t>(mapped.bytesPerLine()));
    const int number = readFrameNumber(luma);
    mapped.unmap();
    return number;
}

} // namespace corv::test
