#pragma once

#include <cstddef>

namespace corv::platform {

/// Memory straight from the system: reads as zero, is free until it is touched, and goes back to
/// the system when it is unmapped. Any thread.

/// `sizeBytes` of it, at an address that is a multiple of `largePageBytes` if `large` is set; the
/// system is then asked to use large pages. Null when there is no such memory. `mappedBytes` is
/// what unmapPages needs.
struct ZeroedPages
{
    unsigned char* data = nullptr;
    void* mapping = nullptr;
    size_t mappedBytes = 0;
};

constexpr size_t largePageBytes = size_t(1) << 21;

ZeroedPages mapZeroedPages(size_t sizeBytes, bool large);

/// Pages with a null mapping are left alone.
void unmapPages(void* mapping, size_t mappedBytes);

} // namespace corv::platform
