#pragma once

#include <cstddef>
#include <memory>

struct AVBufferRef;
struct AVCodecContext;
struct AVFrame;

namespace corv {

/// Memory for the pictures of one decoder. What is given back is used again; new memory comes in
/// large pages where the system has them and is cleared once, by the system: playing into an empty
/// cache of frames costs little beside the decoding.
class PicturePool
{
public:
    PicturePool() = default;
    PicturePool(const PicturePool&) = delete;
    PicturePool& operator=(const PicturePool&) = delete;

    /// Makes a decoder that is not open yet take its pictures from here. The pool outlives the
    /// decoder; the pictures may outlive both. The decoder's threads use it at once.
    void attach(AVCodecContext& context);

private:
    struct Blocks;
    static int getBuffer(AVCodecContext* context, AVFrame* picture, int flags);
    AVBufferRef* block(size_t sizeBytes);

    std::shared_ptr<Blocks> m_blocks; // of the size wanted last; replaced whole by any thread
};

} // namespace corv
