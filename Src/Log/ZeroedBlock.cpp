#include "Log/ZeroedBlock.h"

#include "Platform/zeroedPages.h"

#include <cstdlib>

namespace corv {
namespace {

// From here on a block gets pages of its own: they come zeroed, are free until touched, and go back
// to the system as soon as the log is closed.
constexpr size_t kMapFromBytes = size_t(1) << 20;

} // namespace

bool ZeroedBlock::allocate(size_t sizeBytes, bool dense)
{
    release();
    if (sizeBytes < kMapFromBytes) {
        m_data = static_cast<unsigned char*>(std::calloc(sizeBytes ? sizeBytes : 1, 1));
        return m_data != nullptr;
    }
    const platform::ZeroedPages pages = platform::mapZeroedPages(sizeBytes, dense);
    m_data = pages.data;
    m_mapping = pages.mapping;
    m_mapped = pages.mappedBytes;
    return m_data != nullptr;
}

void ZeroedBlock::release()
{
    if (m_mapping)
        platform::unmapPages(m_mapping, m_mapped);
    else
        std::free(m_data);
    m_data = nullptr;
    m_mapping = nullptr;
    m_mapped = 0;
}

} // namespace corv
