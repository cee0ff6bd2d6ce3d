#include "Video/SeekWish.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace corv {
namespace {

int saturatedSum(int a, int b)
{
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(
        std::clamp<long long>(static_cast<long long>(a) + b, Limits::min(), Limits::max()));
}

} // namespace

void PendingWish::step(int frames)
{
    if (!m_wish)
        m_wish = SeekWish{SeekWish::From::lastWish};
    m_wish->mayPreview = false;
    m_wish->steps = saturatedSum(m_wish->steps, frames);
}

SeekWish PendingWish::take()
{
    return *std::exchange(m_wish, std::nullopt);
}

} // namespace corv
