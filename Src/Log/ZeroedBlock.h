#pragma once

#include <cstddef>
#include <utility>

namespace corv {

/// Memory for the values of one field: reads as zero until it is written, and costs nothing where
/// it is not touched. Movable, owns its bytes.
class ZeroedBlock
{
public:
    ZeroedBlock() = default;
    ~ZeroedBlock() { release(); }
    ZeroedBlock(ZeroedBlock&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)),
          m_mapping(std::exchange(other.m_mapping, nullptr)),
          m_mapped(std::exchange(other.m_mapped, 0))
    {
    }
    ZeroedBlock& operator=(ZeroedBlock&& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_mapping, other.m_mapping);
        std::swap(m_mapped, other.m_mapped);
        return *this;
    }
    ZeroedBlock(const ZeroedBlock&) = delete;
    ZeroedBlock& operator=(const ZeroedBlock&) = delete;

    /// Replaces the block by one of `sizeBytes`, which may be 0. `dense` says that nearly all of it
    /// will be written, so that memory may come in large pages. False, with no block left, when the
    /// system has no such memory.
    bool allocate(size_t sizeBytes, bool dense);

    /// Null before the first successful `allocate`; never null after it.
    unsigned char* data() const { return m_data; }

private:
    void release();

    unsigned char* m_data = nullptr;
    void* m_mapping = nullptr; ///< pages from the system, null when the block is from the heap
    size_t m_mapped = 0;       ///< bytes in them
};

} // namespace corv
