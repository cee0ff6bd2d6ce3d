#pragma once

#include <cstddef>
#include <cstdint>

namespace corv {

/// Where the rows of a piece of a table lie in memory: row `i` begins `offsets[i]` bytes behind
/// `base`.
struct RowSource
{
    const unsigned char* base = nullptr;
    const std::uint32_t* offsets = nullptr;
    size_t rows = 0;
};

/// The order in which the two bytes of a 16-bit word are written.
enum class WordBytes {
    kept,     ///< as they were read
    exchanged ///< from big-endian to the machine's order or back
};

/// Writes `columns` neighbouring elements of each row as columns: element `column` of row `row`
/// goes to `to + column * columnBytes + row * elementSize`. Element sizes are 1, 2, 4 and 8. Works
/// tile by tile, since a straight scatter of wide rows misses the cache on every element. Large
/// tables are shared out to the pool; the call returns when all is written.
void transposeRows(const RowSource& from, int elementSize, size_t columns, unsigned char* to,
                   size_t columnBytes);

/// The same for elements of 16 bits, with their bytes as they are or exchanged.
void transposeWords(const RowSource& from, size_t columns, unsigned char* to, size_t columnBytes,
                    WordBytes bytes);

} // namespace corv
