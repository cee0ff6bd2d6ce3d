#include "Video/frameConversion.h"

#include "Video/logCategory.h"
#include "Video/pictureScaling.h"

#include <QAbstractPlanarVideoBuffer>
#include <QDebug>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

namespace corv {
namespace {

const QString colourSpaceKey = QStringLiteral("corv.colourSpace");

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

// Lends the planes of a frame to the video output without a copy. They are for reading alone.
class FrameBuffer : public QAbstractPlanarVideoBuffer
{
public:
    explicit FrameBuffer(Frame frame)
        : QAbstractPlanarVideoBuffer(NoHandle), m_frame(std::move(frame))
    {
    }

    MapMode mapMode() const override { return m_mapMode; }
    int map(MapMode mode, int* numBytes, int bytesPerLine[4], uchar* data[4]) override;
    void unmap() override { m_mapMode = NotMapped; }

private:
    MapMode m_mapMode = NotMapped;
    const Frame m_frame;
};

int FrameBuffer::map(MapMode mode, int* numBytes, int bytesPerLine[4], uchar* data[4])
{
    if (mode != ReadOnly || m_mapMode != NotMapped)
        return 0;
    // Of the first plane: the planes need not follow each other.
    if (numBytes)
        *numBytes = m_frame.planes[0].bytesPerLine * m_frame.size.height();
    for (size_t plane = 0; plane < m_frame.planes.size(); ++plane) {
        if (bytesPerLine)
            bytesPerLine[plane] = m_frame.planes[plane].bytesPerLine;
        if (data)
            data[plane] = const_cast<uchar*>(m_frame.planes[plane].data);
    }
    m_mapMode = mode;
    return static_cast<int>(m_frame.planes.size());
}

PictureView bgrTarget(cv::Mat& bgr)
{
    PictureView view;
    view.format = AV_PIX_FMT_BGR24;
    view.width = bgr.cols;
    view.height = bgr.rows;
    view.data[0] = bgr.data;
    view.bytesPerLine[0] = static_cast<int>(bgr.step);
    return view;
}

// The screen knows both matrices of limited range, and BT.601 of full range.
Frame::Matrix screenMatrix(const Frame& frame)
{
    return frame.matrix == Frame::Matrix::bt601 ? Frame::Matrix::bt601 : Frame::Matrix::bt709;
}

Frame::Range screenRange(const Frame& frame)
{
    return frame.matrix == Frame::Matrix::bt601 ? frame.range : Frame::Range::limited;
}

QVideoSurfaceFormat::YCbCrColorSpace screenColourSpace(const Frame& frame)
{
    if (frame.matrix == Frame::Matrix::bt709)
        return QVideoSurfaceFormat::YCbCr_BT709;
    return frame.range == Frame::Range::full ? QVideoSurfaceFormat::YCbCr_JPEG
                                             : QVideoSurfaceFormat::YCbCr_BT601;
}

// The rows of the matrix from BGR to YUV, as fixed-point numbers.
struct PlanarWeights
{
    static constexpr int bits = 15;

    std::array<int, 3> y{};
    std::array<int, 3> u{};
    std::array<int, 3> v{};
    int black = 0;
};

PlanarWeights planarWeights(const Frame& frame)
{
    const bool is709 = frame.matrix == Frame::Matrix::bt709;
    const bool isFull = frame.range == Frame::Range::full;
    const double red = is709 ? 0.2126 : 0.299;
    const double blue = is709 ? 0.0722 : 0.114;
    const std::array<double, 3> luma{blue, 1.0 - red - blue, red};
    const double lumaPart = isFull ? 1.0 : 219.0 / 255.0;
    const double chromaPart = isFull ? 1.0 : 224.0 / 255.0;
    const auto fixed = [](double value) {
        return static_cast<int>(std::lround(value * (1 << PlanarWeights::bits)));
    };
    PlanarWeights weights;
    weights.black = isFull ? 0 : 16;
    for (size_t i = 0; i < luma.size(); ++i) {
        weights.y[i] = fixed(luma[i] * lumaPart);
        weights.u[i] = fixed(((i == 0 ? 1.0 : 0.0) - luma[i]) * chromaPart / (2.0 - 2.0 * blue));
        weights.v[i] = fixed(((i == 2 ? 1.0 : 0.0) - luma[i]) * chromaPart / (2.0 - 2.0 * red));
    }
    return weights;
}

void fillLuma(const uchar* bgr, uchar* y, int columns, const PlanarWeights& weights)
{
    constexpr int bits = PlanarWeights::bits;
    const int offset = (weights.black << bits) + (1 << (bits - 1));
    for (int x = 0; x < columns; ++x, bgr += 3) {
        const int sum = weights.y[0] * bgr[0] + weights.y[1] * bgr[1] + weights.y[2] * bgr[2];
        y[x] = static_cast<uchar>(std::min((sum + offset) >> bits, 255));
    }
}

// One sample for four pixels.
void fillChroma(const uchar* above, const uchar* below, uchar* chroma, int columns,
                const std::array<int, 3>& weights)
{
    constexpr int bits = PlanarWeights::bits + 2;
    constexpr int offset = (128 << bits) + (1 << (bits - 1));
    for (int x = 0; x < columns; ++x, above += 6, below += 6) {
        const int sum = weights[0] * (above[0] + above[3] + below[0] + below[3]) +
                        weights[1] * (above[1] + above[4] + below[1] + below[4]) +
                        weights[2] * (above[2] + above[5] + below[2] + below[5]);
        chroma[x] = static_cast<uchar>(std::min((sum + offset) >> bits, 255));
    }
}

// Whether lines of the planes are longer than the picture.
bool hasRoomBehindLines(const Frame& frame)
{
    const int width = frame.size.width();
    return frame.planes[0].bytesPerLine != width || frame.planes[1].bytesPerLine != width / 2 ||
           frame.planes[2].bytesPerLine != width / 2;
}

// The screen takes a line with the room behind it as one texture, and blends the last column of a
// picture that it makes larger with that room: a green edge where a decoder left nothing there.
Frame withoutRoomBehindLines(const Frame& frame)
{
    const auto planes = std::make_shared<std::array<cv::Mat, 3>>();
    Frame tight = frame;
    for (size_t plane = 0; plane < planes->size(); ++plane) {
        const int part = plane == 0 ? 1 : 2;
        cv::Mat& own = (*planes)[plane];
        cv::Mat(frame.size.height() / part, frame.size.width() / part, CV_8UC1,
                const_cast<uchar*>(frame.planes[plane].data),
                static_cast<size_t>(frame.planes[plane].bytesPerLine))
            .copyTo(own);
        tight.planes[plane] = {own.data, static_cast<int>(own.step)};
    }
    tight.pixels = planes;
    return tight;
}

QVideoFrame onScreen(Frame frame)
{
    if (hasRoomBehindLines(frame))
        frame = withoutRoomBehindLines(frame);
    const QVideoSurfaceFormat::YCbCrColorSpace colourSpace = screenColourSpace(frame);
    const QSize size = frame.size;
    QVideoFrame result(new FrameBuffer(std::move(frame)), size, QVideoFrame::Format_YUV420P);
    result.setMetaData(colourSpaceKey, static_cast<int>(colourSpace));
    return result;
}

} // namespace

// By hand: the scaling library takes a short cut here, without rounding, and OpenCV knows BT.601 of
// limited range alone.
void fillPlanes(const cv::Mat& bgr, Frame& target)
{
    const PlanarWeights weights = planarWeights(target);
    const auto line = [&target](size_t plane, int row) {
        const Frame::Plane& lines = target.planes[plane];
        return const_cast<uchar*>(lines.data) + static_cast<ptrdiff_t>(row) * lines.bytesPerLine;
    };
    for (int row = 0; row + 1 < bgr.rows; row += 2) {
        fillLuma(bgr.ptr(row), line(0, row), bgr.cols, weights);
        fillLuma(bgr.ptr(row + 1), line(0, row + 1), bgr.cols, weights);
        const int columns = bgr.cols / 2;
        fillChroma(bgr.ptr(row), bgr.ptr(row + 1), line(1, row / 2), columns, weights.u);
        fillChroma(bgr.ptr(row), bgr.ptr(row + 1), line(2, row / 2), columns, weights.v);
    }
}

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
        qCWarning(lcVideo) << "cv::Mat image type not handled in switch:" << pixels->type();
        return {};
    }
    cv::Mat* owned = pixels.release();
    return QImage(
        owned->data, owned->cols, owned->rows, static_cast<int>(owned->step), format,
        [](void* mat) { delete static_cast<cv::Mat*>(mat); }, owned);
}

QVideoFrame cvMatToQVideoFrame(const cv::Mat& picture)
{
    const int code = picture.type() == CV_8UC4 ? cv::COLOR_BGRA2YUV_I420 : cv::COLOR_BGR2YUV_I420;
    auto planes = std::make_unique<cv::Mat>();
    cv::cvtColor(picture, *planes, code);
    QVideoFrame result(new YUVBuffer(std::move(planes)), QSize(picture.cols, picture.rows),
                       QVideoFrame::Format_YUV420P);
    result.setMetaData(colourSpaceKey, static_cast<int>(QVideoSurfaceFormat::YCbCr_BT601));
    return result;
}

void createForScaling(cv::Mat& bgr, QSize size)
{
    // The scaling library writes whole vectors, beyond the end of a line, and leaves out the last
    // pixels of a line that has no room for them.
    constexpr int group = 32;
    if (size.isEmpty())
        throw std::runtime_error("a picture without pixels");
    const int columns = (size.width() + group - 1) / group * group;
    const auto lineBytes = 3 * static_cast<size_t>(columns);
    const bool fits = bgr.rows == size.height() && bgr.cols == size.width() &&
                      bgr.type() == CV_8UC3 && bgr.step >= lineBytes &&
                      bgr.dataend + lineBytes <= bgr.datalimit;
    if (!fits)
        bgr = cv::Mat(size.height() + 2, columns,
                      CV_8UC3)(cv::Rect({0, 0}, cv::Size(size.width(), size.height())));
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

cv::Mat bgrView(const Frame& frame, cv::Mat& buffer)
{
    if (frame.layout != Frame::Layout::bgr) {
        toBgr(frame, buffer);
        return buffer;
    }
    // OpenCV knows no header on constant pixels.
    return cv::Mat(frame.size.height(), frame.size.width(), CV_8UC3,
                   const_cast<uchar*>(frame.planes[0].data),
                   static_cast<size_t>(frame.planes[0].bytesPerLine));
}

void toBgr(const Frame& frame, cv::Mat& bgr)
{
    if (frame.layout == Frame::Layout::bgr) {
        bgrView(frame, bgr).copyTo(bgr);
        return;
    }
    createForScaling(bgr, frame.size);
    scalePicture(viewOf(frame), bgrTarget(bgr));
}

QVideoFrame toVideoFrame(const Frame& frame)
{
    // The scaling library leaves matrix and range of planes as they are.
    if (frame.layout == Frame::Layout::bgr || frame.matrix == Frame::Matrix::bt2020 ||
        frame.range != screenRange(frame)) {
        cv::Mat buffer;
        return toVideoFrame(bgrView(frame, buffer), frame);
    }
    const bool fits = frame.layout == Frame::Layout::i420 && frame.bitsPerSample == 8;
    if (fits)
        return onScreen(frame);
    Frame planar = makeI420(frame.size, frame.matrix, screenRange(frame));
    scalePicture(viewOf(frame), viewOf(planar));
    return onScreen(std::move(planar));
}

QVideoFrame toVideoFrame(const cv::Mat& bgr, const Frame& madeFrom)
{
    if (screenMatrix(madeFrom) == Frame::Matrix::bt601 &&
        screenRange(madeFrom) == Frame::Range::limited)
        return cvMatToQVideoFrame(bgr);
    if (bgr.type() != CV_8UC3 || bgr.empty())
        throw std::runtime_error("a picture that is not 8-bit BGR");
    Frame planar =
        makeI420(QSize(bgr.cols, bgr.rows), screenMatrix(madeFrom), screenRange(madeFrom));
    fillPlanes(bgr, planar);
    return onScreen(std::move(planar));
}

QVideoSurfaceFormat surfaceFormatOf(const QVideoFrame& frame)
{
    QVideoSurfaceFormat format(frame.size(), frame.pixelFormat());
    const auto colourSpace =
        static_cast<QVideoSurfaceFormat::YCbCrColorSpace>(frame.metaData(colourSpaceKey).toInt());
    // What surfaces take where nothing is said.
    if (colourSpace != QVideoSurfaceFormat::YCbCr_BT601)
        format.setYCbCrColorSpace(colourSpace);
    return format;
}

} // namespace corv
