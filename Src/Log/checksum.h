#pragma once

#include <cstdint>
#include <cstring>

namespace corv {

/// The sum of `size` bytes modulo 256. Sixteen bytes at a time: each lane wraps by itself, and the
/// sum of wrapped sums is the wrapped sum.
inline unsigned char checksumOf(const unsigned char* bytes, size_t size)
{
    using Lanes = std::uint8_t __attribute__((vector_size(16)));
    unsigned sum = 0;
    if (size >= sizeof(Lanes)) {
        Lanes lanes{};
        do {
            Lanes next;
            std::memcpy(&next, bytes, sizeof(next));
            lanes += next;
            bytes += sizeof(next);
            size -= sizeof(next);
        } while (size >= sizeof(Lanes));
        for (size_t lane = 0; lane < sizeof(Lanes); ++lane)
            sum += lanes[lane];
    }
    for (; size > 0; --size)
        sum += *bytes++;
    return static_cast<unsigned char>(sum);
}

} // namespace corv
