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

/// Writes `columns` neighbouring elements of each row as columns: element `column` of row `row`
/// goes to `to + column * columnBytes + row * elementSize`. Element sizes are 1, 2, 4 and 8. Goes
/// tile by tile, since a straight scatter of wide rows misses the cache on every element.
void transposeRows(const RowSource& from, int elementSize, size_t columns, unsigned char* to,
                   size_t columnBytes);

} // namespace corv
