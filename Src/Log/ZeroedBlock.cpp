#include "Log/ZeroedBlock.h"

#include <cstdlib>
#include <memory>
#include <sys/mman.h>

namespace corv {
namespace {

// From here on a block gets pages of its own: they come zeroed, are free until touched, and go back
// to the system as soon as the log is closed.
constexpr size_t kMapFromBytes = size_t(1) << 20;
constexpr size_t kLargePageBytes = size_t(1) << 21;

} // namespace

bool ZeroedBlock::allocate(size_t sizeBytes, bool dense)
{
    release();
    if (sizeBytes < kMapFromBytes) {
        m_data = static_cast<unsigned char*>(std::calloc(sizeBytes ? sizeBytes : 1, 1));
        return m_data != nullptr;
    }
    const size_t mapped = dense ? sizeBytes + kLargePageBytes : sizeBytes;
    void* pages = mmap(nullptr, mapped, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED)
        return false;
    m_mapping = pages;
    m_mapped = mapped;
    size_t space = mapped;
    if (dense)
        std::align(kLargePageBytes, sizeBytes, pages, space);
    m_data = static_cast<unsigned char*>(pages);
#ifdef MADV_HUGEPAGE
    if (dense)
        madvise(m_data, sizeBytes, MADV_HUGEPAGE);
#endif
    return true;
}

void ZeroedBlock::release()
{
    if (m_mapping)
        munmap(m_mapping, m_mapped);
    else
        std::free(m_data);
    m_data = nullptr;
    m_mapping = nullptr;
    m_mapped = 0;
}

} // namespace corv
