#pragma once

#include <cmath>
#include <limits>

namespace corv {

/// The whole part of `value`, clamped to the range of an int; 0 for NaN. Numbers from files can
/// have any value, and a plain conversion of one outside the range is undefined behaviour.
inline int truncateToInt(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (value <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

/// `a` times `b` modulo 2^32, as a signed number.
inline int wrappingProduct(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

} // namespace corv
