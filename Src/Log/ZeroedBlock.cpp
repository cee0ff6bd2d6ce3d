#include "Log/ZeroedBlock.h"

#include <cstdlib>
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
    void* pages = mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED)
        return false;
#ifdef MADV_HUGEPAGE
    if (dense && sizeBytes >= 4 * kLargePageBytes)
        madvise(pages, sizeBytes, MADV_HUGEPAGE);
#endif
    m_data = static_cast<unsigned char*>(pages);
    m_mapped = sizeBytes;
    return true;
}

void ZeroedBlock::release()
{
    if (m_mapped)
        munmap(m_data, m_mapped);
    else
        std::free(m_data);
    m_data = nullptr;
    m_mapped = 0;
}

} // namespace corv
