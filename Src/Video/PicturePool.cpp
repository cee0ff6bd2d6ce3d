#include "Video/PicturePool.h"

#include "Platform/zeroedPages.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/buffer.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <QtGlobal>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace corv {

namespace {

// A decoder may read so far behind a plane: libavcodec's own pictures have it too.
constexpr size_t bytesBehindPlane = 128;

size_t withSpaceBehind(size_t planeBytes)
{
    return FFALIGN(planeBytes + bytesBehindPlane, bytesBehindPlane);
}

void freePages(void* opaque, uint8_t*)
{
    const std::unique_ptr<platform::ZeroedPages> pages(static_cast<platform::ZeroedPages*>(opaque));
    platform::unmapPages(pages->mapping, pages->mappedBytes);
}

AVBufferRef* newBlock(void*, size_t sizeBytes)
{
    if (sizeBytes <
        platform::largePageBytes) // a cache of small pictures would be too many mappings
        return av_buffer_allocz(sizeBytes);
    auto pages = std::make_unique<platform::ZeroedPages>(platform::mapZeroedPages(sizeBytes, true));
    if (!pages->data)
        return nullptr;
    AVBufferRef* block = av_buffer_create(pages->data, sizeBytes, freePages, pages.get(), 0);
    if (!block)
        platform::unmapPages(pages->mapping, pages->mappedBytes);
    else
        pages.release(); // freePages() has it
    return block;
}

} // namespace

struct PicturePool::Blocks
{
    explicit Blocks(size_t size)
        : sizeBytes(size), pool(av_buffer_pool_init2(size, nullptr, newBlock, nullptr))
    {
    }
    Blocks(const Blocks&) = delete;
    Blocks& operator=(const Blocks&) = delete;
    ~Blocks() { av_buffer_pool_uninit(&pool); } // goes with the last picture that is in use

    const size_t sizeBytes;
    AVBufferPool* pool;
};

namespace {

// Planes of samples, as cameras record them: no palette, no memory of a graphics card.
bool hasPlanes(AVPixelFormat format)
{
    const AVPixFmtDescriptor* form = av_pix_fmt_desc_get(format);
    return form && !(form->flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL));
}

struct Planes
{
    std::array<int, 4> bytesPerLine{};
    std::array<size_t, 4> bytes{};
    size_t sizeBytes = 0;
};

// Sizes as the decoder wants them: edges of whole blocks, lines at aligned addresses. No size if
// there is none.
Planes planesOf(AVCodecContext& context, const AVFrame& picture)
{
    Planes planes;
    const auto format = static_cast<AVPixelFormat>(picture.format);
    int width = picture.width;
    int height = picture.height;
    std::array<int, AV_NUM_DATA_POINTERS> alignment{};
    avcodec_align_dimensions2(&context, &width, &height, alignment.data());
    bool aligned = false;
    while (!aligned) {
        if (av_image_fill_linesizes(planes.bytesPerLine.data(), format, width) < 0)
            return planes;
        aligned = true;
        for (size_t plane = 0; plane < planes.bytesPerLine.size(); ++plane)
            aligned = aligned && planes.bytesPerLine[plane] % alignment[plane] == 0;
        if (!aligned)
            width += width & ~(width - 1); // the next multiple of a larger power of two
    }
    std::array<ptrdiff_t, 4> lines{};
    std::copy(planes.bytesPerLine.begin(), planes.bytesPerLine.end(), lines.begin());
    if (av_image_fill_plane_sizes(planes.bytes.data(), format, height, lines.data()) < 0)
        return planes;
    for (size_t bytes : planes.bytes)
        planes.sizeBytes += bytes > 0 ? withSpaceBehind(bytes) : 0;
    return planes;
}

} // namespace

void PicturePool::attach(AVCodecContext& context)
{
    context.opaque = this;
    context.get_buffer2 = getBuffer;
#if LIBAVCODEC_VERSION_MAJOR < 60
    // Without it the decoder's threads would wait for the thread that reads.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    context.thread_safe_callbacks = 1;
    QT_WARNING_POP
#endif
}

int PicturePool::getBuffer(AVCodecContext* context, AVFrame* picture, int flags)
{
    const bool takesOurs = context->codec->capabilities & AV_CODEC_CAP_DR1;
    if (!takesOurs || !hasPlanes(static_cast<AVPixelFormat>(picture->format)))
        return avcodec_default_get_buffer2(context, picture, flags);
    const Planes planes = planesOf(*context, *picture);
    if (planes.sizeBytes == 0)
        return AVERROR(EINVAL);
    AVBufferRef* block = static_cast<PicturePool*>(context->opaque)->block(planes.sizeBytes);
    if (!block)
        return AVERROR(ENOMEM);
    picture->buf[0] = block;
    uint8_t* place = block->data;
    for (size_t plane = 0; plane < planes.bytes.size() && planes.bytes[plane] > 0; ++plane) {
        picture->data[plane] = place;
        picture->linesize[plane] = planes.bytesPerLine[plane];
        place += withSpaceBehind(planes.bytes[plane]);
    }
    picture->extended_data = picture->data;
    return 0;
}

AVBufferRef* PicturePool::block(size_t sizeBytes)
{
    std::shared_ptr<Blocks> blocks = std::atomic_load(&m_blocks);
    if (!blocks || blocks->sizeBytes != sizeBytes) {
        blocks = std::make_shared<Blocks>(sizeBytes);
        std::atomic_store(&m_blocks, blocks);
    }
    return blocks->pool ? av_buffer_pool_get(blocks->pool) : nullptr;
}

} // namespace corv
