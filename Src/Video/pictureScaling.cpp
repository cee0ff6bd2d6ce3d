#include "Video/pictureScaling.h"

extern "C" {
#include <libswscale/swscale.h>
}

#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace corv {
namespace {

struct FreeScaler
{
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

AVPixelFormat formatOf(const Frame& frame)
{
    switch (frame.layout) {
    case Frame::Layout::bgr:
        return AV_PIX_FMT_BGR24;
    case Frame::Layout::nv12:
        return AV_PIX_FMT_NV12;
    case Frame::Layout::i420:
        return frame.bitsPerSample == 8    ? AV_PIX_FMT_YUV420P
               : frame.bitsPerSample == 10 ? AV_PIX_FMT_YUV420P10
                                           : AV_PIX_FMT_YUV420P12;
    case Frame::Layout::i422:
        return frame.bitsPerSample == 8    ? AV_PIX_FMT_YUV422P
               : frame.bitsPerSample == 10 ? AV_PIX_FMT_YUV422P10
                                           : AV_PIX_FMT_YUV422P12;
    case Frame::Layout::i444:
        return frame.bitsPerSample == 8    ? AV_PIX_FMT_YUV444P
               : frame.bitsPerSample == 10 ? AV_PIX_FMT_YUV444P10
                                           : AV_PIX_FMT_YUV444P12;
    case Frame::Layout::none:
        break;
    }
    return AV_PIX_FMT_NONE;
}

} // namespace

void scalePicture(const PictureView& from, const PictureView& to)
{
    // One per thread: making one costs more than converting a small picture.
    thread_local std::unique_ptr<SwsContext, FreeScaler> kept;
    if (from.width <= 0 || from.height <= 0 || to.width <= 0 || to.height <= 0)
        throw std::runtime_error("a picture without pixels");
    SwsContext* scaler =
        sws_getCachedContext(kept.release(), from.width, from.height, from.format, to.width,
                             to.height, to.format, SWS_BICUBIC, nullptr, nullptr, nullptr);
    kept.reset(scaler);
    if (!scaler)
        throw std::runtime_error("no conversion between these forms of pictures");
    sws_setColorspaceDetails(scaler, sws_getCoefficients(from.colourSpace), from.fullRange,
                             sws_getCoefficients(to.colourSpace), to.fullRange, 0, 1 << 16,
                             1 << 16);
    std::array<uchar*, 4> target{};
    for (size_t plane = 0; plane < target.size(); ++plane)
        target[plane] = const_cast<uchar*>(to.data[plane]);
    if (sws_scale(scaler, from.data.data(), from.bytesPerLine.data(), 0, from.height, target.data(),
                  to.bytesPerLine.data()) <= 0)
        throw std::runtime_error("the conversion of a picture failed");
}

int colourSpaceOf(Frame::Matrix matrix)
{
    switch (matrix) {
    case Frame::Matrix::bt709:
        return AVCOL_SPC_BT709;
    case Frame::Matrix::bt2020:
        return AVCOL_SPC_BT2020_NCL;
    case Frame::Matrix::bt601:
        break;
    }
    return AVCOL_SPC_SMPTE170M;
}

PictureView viewOf(const Frame& frame)
{
    PictureView view;
    view.format = formatOf(frame);
    view.width = frame.size.width();
    view.height = frame.size.height();
    view.colourSpace = colourSpaceOf(frame.matrix);
    view.fullRange = frame.range == Frame::Range::full;
    for (size_t plane = 0; plane < frame.planes.size(); ++plane) {
        view.data[plane] = frame.planes[plane].data;
        view.bytesPerLine[plane] = frame.planes[plane].bytesPerLine;
    }
    return view;
}

Frame makeI420(QSize size, Frame::Matrix matrix, Frame::Range range)
{
    // Lines that start where vector instructions like it.
    constexpr int alignment = 64;
    const auto aligned = [](int bytes) { return (bytes + alignment - 1) / alignment * alignment; };
    const int lumaLine = aligned(size.width());
    const int chromaLine = aligned((size.width() + 1) / 2);
    const qint64 lumaBytes = static_cast<qint64>(lumaLine) * size.height();
    const qint64 chromaBytes = static_cast<qint64>(chromaLine) * ((size.height() + 1) / 2);
    Frame frame;
    frame.layout = Frame::Layout::i420;
    frame.size = size;
    frame.matrix = matrix;
    frame.range = range;
    frame.sizeBytes = lumaBytes + 2 * chromaBytes + alignment;
    std::shared_ptr<uchar> memory(new uchar[static_cast<size_t>(frame.sizeBytes)],
                                  std::default_delete<uchar[]>());
    frame.planes[0] = {memory.get(), lumaLine};
    frame.planes[1] = {memory.get() + lumaBytes, chromaLine};
    frame.planes[2] = {memory.get() + lumaBytes + chromaBytes, chromaLine};
    frame.pixels = std::move(memory);
    return frame;
}

} // namespace corv
