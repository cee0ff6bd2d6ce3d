#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace corv {

/// The sum of eight bytes.
inline unsigned sumOfEight(std::uint64_t bytes)
{
    constexpr std::uint64_t kEveryOther = 0x00ff00ff00ff00ff;
    const std::uint64_t pairs = (bytes & kEveryOther) + ((bytes >> 8) & kEveryOther);
    return static_cast<unsigned>((pairs * 0x0001000100010001) >> 48);
}

/// The sum of `size` bytes modulo 256. Sixteen bytes at a time: each lane wraps by itself, and the
/// sum of wrapped sums is the wrapped sum.
inline unsigned char checksumOf(const unsigned char* bytes, size_t size)
{
    using Lanes = std::uint8_t __attribute__((vector_size(16)));
    std::uint64_t eight = 0;
    unsigned sum = 0;
    const size_t whole = size & ~size_t(7);
    if (size >= sizeof(Lanes)) {
        Lanes lanes{};
        do {
            Lanes next;
            std::memcpy(&next, bytes, sizeof(next));
            lanes += next;
            bytes += sizeof(next);
            size -= sizeof(next);
        } while (size >= sizeof(Lanes));
        std::uint64_t halves[2];
        std::memcpy(halves, &lanes, sizeof(lanes));
        sum = sumOfEight(halves[0]) + sumOfEight(halves[1]);
    }
    if (size >= sizeof(eight)) {
        std::memcpy(&eight, bytes, sizeof(eight));
        sum += sumOfEight(eight);
        bytes += sizeof(eight);
        size -= sizeof(eight);
    }
    // Those that remain, together with some that are counted already and are shifted out.
    if (size > 0 && whole > 0) {
        std::memcpy(&eight, bytes + size - sizeof(eight), sizeof(eight));
        return static_cast<unsigned char>(sum + sumOfEight(eight >> (8 * (sizeof(eight) - size))));
    }
    for (; size > 0; --size)
        sum += *bytes++;
    return static_cast<unsigned char>(sum);
}

} // namespace corv
