#include "Video/avPicture.h"

#include "Video/AvInput.h"
#include "Video/frameConversion.h"
#include "Video/pictureScaling.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

#include <exception>
#include <opencv2/core.hpp>
#include <optional>
#include <utility>

namespace corv {
namespace {

struct SampleForm
{
    Frame::Layout layout;
    int bits;
    bool fullRange;
};

// The forms that the frame type knows.
std::optional<SampleForm> sampleFormOf(int format)
{
    switch (format) {
    case AV_PIX_FMT_YUV420P:
        return SampleForm{Frame::Layout::i420, 8, false};
    case AV_PIX_FMT_YUVJ420P:
        return SampleForm{Frame::Layout::i420, 8, true};
    case AV_PIX_FMT_YUV420P10:
        return SampleForm{Frame::Layout::i420, 10, false};
    case AV_PIX_FMT_YUV420P12:
        return SampleForm{Frame::Layout::i420, 12, false};
    case AV_PIX_FMT_YUV422P:
        return SampleForm{Frame::Layout::i422, 8, false};
    case AV_PIX_FMT_YUVJ422P:
        return SampleForm{Frame::Layout::i422, 8, true};
    case AV_PIX_FMT_YUV422P10:
        return SampleForm{Frame::Layout::i422, 10, false};
    case AV_PIX_FMT_YUV422P12:
        return SampleForm{Frame::Layout::i422, 12, false};
    case AV_PIX_FMT_YUV444P:
        return SampleForm{Frame::Layout::i444, 8, false};
    case AV_PIX_FMT_YUVJ444P:
        return SampleForm{Frame::Layout::i444, 8, true};
    case AV_PIX_FMT_YUV444P10:
        return SampleForm{Frame::Layout::i444, 10, false};
    case AV_PIX_FMT_YUV444P12:
        return SampleForm{Frame::Layout::i444, 12, false};
    case AV_PIX_FMT_NV12:
        return SampleForm{Frame::Layout::nv12, 8, false};
    case AV_PIX_FMT_BGR24:
        return SampleForm{Frame::Layout::bgr, 8, false};
    default:
        return std::nullopt;
    }
}

// A picture whose matrix is not stated is taken as BT.601, as the libraries around us do.
std::optional<Frame::Matrix> matrixOf(int colourSpace)
{
    switch (colourSpace) {
    case AVCOL_SPC_BT709:
        return Frame::Matrix::bt709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return Frame::Matrix::bt2020;
    case AVCOL_SPC_FCC:
    case AVCOL_SPC_SMPTE240M:
        return std::nullopt;
    default:
        return Frame::Matrix::bt601;
    }
}

bool isFullRange(const AVFrame& picture)
{
    const auto form = sampleFormOf(picture.format);
    return picture.color_range == AVCOL_RANGE_JPEG || (form && form->fullRange);
}

PictureView viewOf(const AVFrame& picture)
{
    PictureView view;
    view.format = static_cast<AVPixelFormat>(picture.format);
    view.width = picture.width;
    view.height = picture.height;
    view.colourSpace = picture.colorspace;
    view.fullRange = isFullRange(picture);
    for (size_t plane = 0; plane < view.data.size(); ++plane) {
        view.data[plane] = picture.data[plane];
        view.bytesPerLine[plane] = picture.linesize[plane];
    }
    return view;
}

Frame bgrOnMemory(QSize size)
{
    auto memory = std::make_shared<cv::Mat>();
    createForScaling(*memory, size);
    Frame frame;
    frame.layout = Frame::Layout::bgr;
    frame.size = size;
    frame.planes[0] = {memory->data, static_cast<int>(memory->step)};
    frame.sizeBytes = static_cast<qint64>(memory->total() * memory->elemSize());
    frame.pixels = std::move(memory);
    return frame;
}

// The picture as it is in the decoder's memory, or nothing if it takes a conversion.
std::optional<Frame> sharedFrame(const AVFrame& picture)
{
    const auto form = sampleFormOf(picture.format);
    const auto matrix = matrixOf(picture.colorspace);
    if (!form || !matrix)
        return std::nullopt;
    AVFrame* reference = av_frame_clone(&picture);
    if (!reference)
        return Frame{};
    std::shared_ptr<AVFrame> owner(reference, AvDelete());
    Frame frame;
    frame.layout = form->layout;
    frame.bitsPerSample = form->bits;
    frame.size = QSize(picture.width & ~1, picture.height & ~1);
    frame.matrix = *matrix;
    frame.range = isFullRange(picture) ? Frame::Range::full : Frame::Range::limited;
    for (size_t plane = 0; plane < frame.planes.size(); ++plane)
        frame.planes[plane] = {reference->data[plane], reference->linesize[plane]};
    for (const AVBufferRef* buffer : reference->buf)
        frame.sizeBytes += buffer ? static_cast<qint64>(buffer->size) : 0;
    frame.pixels = std::move(owner);
    return frame;
}

Frame convertedToBgr(const AVFrame& picture, QSize size)
{
    Frame frame = bgrOnMemory(size);
    PictureView from = viewOf(picture);
    if (size == QSize(picture.width & ~1, picture.height & ~1)) { // cropped, not scaled
        from.width = size.width();
        from.height = size.height();
    }
    scalePicture(from, corv::viewOf(frame));
    return frame;
}

void turnPlane(const Frame::Plane& from, QSize fromSize, const Frame::Plane& to, int type,
               const PictureForm& form)
{
    const bool lies = form.rotation % 180 == 0;
    const cv::Mat source(fromSize.height(), fromSize.width(), type, const_cast<uchar*>(from.data),
                         static_cast<size_t>(from.bytesPerLine));
    cv::Mat target(lies ? fromSize.height() : fromSize.width(),
                   lies ? fromSize.width() : fromSize.height(), type, const_cast<uchar*>(to.data),
                   static_cast<size_t>(to.bytesPerLine));
    if (form.rotation != 0)
        cv::rotate(source, target,
                   form.rotation == 90    ? cv::ROTATE_90_CLOCKWISE
                   : form.rotation == 180 ? cv::ROTATE_180
                                          : cv::ROTATE_90_COUNTERCLOCKWISE);
    if (form.isMirrored)
        cv::flip(form.rotation == 0 ? source : target, target, 1);
}

Frame turned(const Frame& frame, const PictureForm& form)
{
    const QSize& size = form.size;
    if (frame.layout == Frame::Layout::bgr) {
        Frame result = bgrOnMemory(size);
        turnPlane(frame.planes[0], frame.size, result.planes[0], CV_8UC3, form);
        return result;
    }
    // Chroma of half the width would become one of half the height.
    Frame planar = frame;
    if (frame.layout != Frame::Layout::i420 || frame.bitsPerSample != 8) {
        planar = makeI420(frame.size, frame.matrix, frame.range);
        scalePicture(corv::viewOf(frame), corv::viewOf(planar));
    }
    Frame result = makeI420(size, frame.matrix, frame.range);
    for (size_t plane = 0; plane < 3; ++plane) {
        const QSize part = plane == 0 ? frame.size : frame.size / 2;
        turnPlane(planar.planes[plane], part, result.planes[plane], CV_8UC1, form);
    }
    return result;
}

} // namespace

Frame frameOf(const AVFrame& picture, const PictureForm& form)
{
    try {
        const bool upright = form.rotation % 180 == 0;
        const QSize lying = upright ? form.size : form.size.transposed();
        Frame frame;
        std::optional<Frame> shared = sharedFrame(picture);
        if (shared && shared->isNull())
            return {};
        if (shared && shared->size == lying)
            frame = *shared;
        else
            frame = convertedToBgr(picture, lying);
        return form.rotation == 0 && !form.isMirrored ? frame : turned(frame, form);
    } catch (const std::exception&) { // of OpenCV: too little memory
        return {};
    }
}

} // namespace corv
