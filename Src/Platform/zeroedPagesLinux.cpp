#include "Platform/zeroedPages.h"

#include <memory>
#include <sys/mman.h>

namespace corv::platform {

ZeroedPages mapZeroedPages(size_t sizeBytes, bool large)
{
    const size_t mapped = large ? sizeBytes + largePageBytes : sizeBytes;
    void* pages = mmap(nullptr, mapped, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED)
        return {};
    void* const mapping = pages;
    size_t space = mapped;
    if (large) {
        std::align(largePageBytes, sizeBytes, pages, space);
#ifdef MADV_HUGEPAGE
        madvise(pages, sizeBytes, MADV_HUGEPAGE);
#endif
    }
    return {static_cast<unsigned char*>(pages), mapping, mapped};
}

void unmapPages(void* mapping, size_t mappedBytes)
{
    if (mapping)
        munmap(mapping, mappedBytes);
}

} // namespace corv::platform
