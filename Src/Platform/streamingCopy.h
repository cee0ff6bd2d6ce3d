#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace corv::platform {

constexpr size_t cacheLineBytes = 64;

/// Copies `size` bytes without fetching the target into the cache, where the processor can do that:
/// for targets far larger than any cache that are not read again soon. The ranges do not overlap.
/// Before another thread is allowed to read the target, call finishStreaming().
inline void streamingCopy(unsigned char* to, const unsigned char* from, size_t size)
{
#ifdef __SSE2__
    const size_t misaligned = reinterpret_cast<std::uintptr_t>(to) % cacheLineBytes;
    const size_t head = std::min(size, misaligned ? cacheLineBytes - misaligned : 0);
    std::memcpy(to, from, head);
    to += head;
    from += head;
    size -= head;
    for (; size >= cacheLineBytes; size -= cacheLineBytes) {
        for (size_t i = 0; i < cacheLineBytes; i += sizeof(__m128i)) {
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + i),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i)));
        }
        to += cacheLineBytes;
        from += cacheLineBytes;
    }
#endif
    std::memcpy(to, from, size);
}

/// Orders the writes of streamingCopy() on this thread before the thread's later writes.
inline void finishStreaming()
{
#ifdef __SSE2__
    _mm_sfence();
#endif
}

} // namespace corv::platform
