#pragma once

#include <cmath>
#include <limits>

namespace corv {

/// The whole part of `value`, within the range of an int; 0 for what is not a number. Files can
/// announce any value, and a plain conversion of one outside the range is undefined.
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

/// `a` times `b` in 32 bits, with wrap-around.
inline int wrappingProduct(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

} // namespace corv
