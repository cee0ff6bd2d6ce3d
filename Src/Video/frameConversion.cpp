#include "Video/frameConversion.h"

#include <QAbstractVideoBuffer>
#include <QDebug>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <utility>

namespace corv {
namespace {

// Lends a converted picture to the video output without a copy. The three planes lie one below the
// other, so that there are 1.5 times as many rows as in the picture.
class YUVBuffer : public QAbstractVideoBuffer
{
public:
    explicit YUVBuffer(std::unique_ptr<cv::Mat> planes)
        : QAbstractVideoBuffer(NoHandle), m_planes(std::move(planes))
    {
    }

    MapMode mapMode() const override { return m_mapMode; }
    uchar* map(MapMode mode, int* numBytes, int* bytesPerLine) override;
    void unmap() override { m_mapMode = NotMapped; }
    QVariant handle() const override { return {}; }

private:
    MapMode m_mapMode = NotMapped;
    std::unique_ptr<cv::Mat> m_planes;
};

uchar* YUVBuffer::map(MapMode mode, int* numBytes, int* bytesPerLine)
{
    if (mode == NotMapped || m_mapMode != NotMapped)
        return nullptr;
    if (numBytes)
        *numBytes = m_planes->rows * m_planes->cols;
    if (bytesPerLine)
        *bytesPerLine = m_planes->cols;
    m_mapMode = mode;
    return m_planes->data;
}

} // namespace

QImage cvMatToQImage(const cv::Mat& picture)
{
    auto pixels = std::make_unique<cv::Mat>();
    cv::cvtColor(picture, *pixels, cv::COLOR_BGR2RGB);
    QImage::Format format = QImage::Format_Invalid;
    switch (pixels->type()) {
    case CV_8UC3:
        format = QImage::Format_RGB888;
        break;
    case CV_8UC4:
        format = QImage::Format_ARGB32;
        break;
    default:
        qWarning() << "cv::Mat image type not handled in switch:" << pixels->type();
        return {};
    }
    cv::Mat* owned = pixels.release();
    return QImage(
        owned->data, owned->cols, owned->rows, static_cast<int>(owned->step), format,
        [](void* mat) { delete static_cast<cv::Mat*>(mat); }, owned);
}

QVideoFrame cvMatToQVideoFrame(const cv::Mat& picture)
{
    // The channels are taken in the wrong order, which exchanges the two chroma planes; calling the
    // result by the format with the other plane order exchanges them back. The colours on the
    // screen are right only with both.
    const int code = picture.type() == CV_8UC4 ? cv::COLOR_RGBA2YUV_YV12 : cv::COLOR_RGB2YUV_YV12;
    auto planes = std::make_unique<cv::Mat>();
    cv::cvtColor(picture, *planes, code);
    return QVideoFrame(new YUVBuffer(std::move(planes)), QSize(picture.cols, picture.rows),
                       QVideoFrame::Format_YUV420P);
}

Frame bgrFrame(const cv::Mat& picture)
{
    Frame frame;
    frame.layout = Frame::Layout::bgr;
    frame.size = QSize(picture.cols, picture.rows);
    frame.planes[0] = {picture.data, static_cast<int>(picture.step)};
    frame.sizeBytes = static_cast<qint64>(picture.step) * picture.rows;
    frame.pixels = std::make_shared<const cv::Mat>(picture);
    return frame;
}

cv::Mat bgrView(const Frame& frame, cv::Mat&)
{
    // OpenCV knows no header on constant pixels.
    return cv::Mat(frame.size.height(), frame.size.width(), CV_8UC3,
                   const_cast<uchar*>(frame.planes[0].data),
                   static_cast<size_t>(frame.planes[0].bytesPerLine));
}

void toBgr(const Frame& frame, cv::Mat& bgr)
{
    bgrView(frame, bgr).copyTo(bgr);
}

QVideoFrame toVideoFrame(const Frame& frame)
{
    cv::Mat buffer;
    return cvMatToQVideoFrame(bgrView(frame, buffer));
}

} // namespace corv
