#pragma once

#include "Log/LogFile.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace corv {

/// The lowest and the highest of some values; empty while `lowest` is above `highest`.
struct ValueRange
{
    float lowest = std::numeric_limits<float>::infinity();
    float highest = -std::numeric_limits<float>::infinity();

    bool isEmpty() const { return lowest > highest; }
    void include(const ValueRange& other)
    {
        lowest = std::min(lowest, other.lowest);
        highest = std::max(highest, other.highest);
    }
};

/// A numeric column of a log with the ranges of its runs of rows, so that the range of any run is
/// found without looking at all of its rows. The values stay in the log, which must outlive this.
class CurveTree
{
public:
    /// `var` has `column`.
    CurveTree(const LogVar& var, int column);

    int count() const { return m_count; }

    /// The value of a row, as the nearest single-precision number.
    float valueAt(int row) const;

    /// The range of the rows from `first` to before `last`, within those that there are. Values
    /// that are no finite numbers are passed over.
    ValueRange range(int first, int last) const;

private:
    ValueRange rangeOfRows(int first, int last) const;

    const unsigned char* m_rows = nullptr;
    LogVar::Type m_type;
    int m_count = 0;

    // A complete binary tree over blocks of rows: node i has the children 2i and 2i + 1, and the
    // leaves begin at the number of blocks.
    std::vector<ValueRange> m_nodes;
    int m_blocks = 0;
};

} // namespace corv
