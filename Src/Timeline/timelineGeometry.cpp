#include "Timeline/timelineGeometry.h"

#include "Base/arithmetic.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corv {
namespace {

constexpr double pxPerMsMax = 200.0;
constexpr double zoomStep = 1.2;
constexpr int cursorMargin = 100;
constexpr int paintableX = 1 << 20;

constexpr std::array<TickSpacing, 19> tickSpacings = {{
    {1, 0, 9},       {2, 1, 9},      {5, 4, 9},      {10, 0, 9},      {20, 1, 9},
    {50, 4, 9},      {100, 0, 9},    {200, 1, 9},    {500, 4, 9},     {1000, 0, 9},
    {2000, 1, 9},    {5000, 4, 9},   {10000, 0, 9},  {20000, 1, 9},   {60000, 5, 11},
    {120000, 1, 11}, {300000, 4, 9}, {600000, 0, 9}, {1200000, 1, 9},
}};

float asFloat(long long value)
{
    return static_cast<float>(value);
}

} // namespace

float scaleOfStrip(int durationMs, int contentWidth, int endMargin)
{
    return asFloat(durationMs) / asFloat(static_cast<long long>(contentWidth) - endMargin);
}

bool isPaintable(int x)
{
    return x > -paintableX && x < paintableX;
}

int pxOfMs(int ms, const TimelineView& view)
{
    const int stripPx = truncateToInt(static_cast<double>(roundf(asFloat(ms) / view.msPerPx)));
    return truncateToInt(static_cast<double>(stripPx) - view.contentX);
}

int msOfPx(int x, const TimelineView& view)
{
    const float ms = asFloat(static_cast<long long>(view.contentX) + x) * view.msPerPx;
    return truncateToInt(static_cast<double>(ms));
}

int widthZoomedIn(int contentWidth, int durationMs)
{
    return truncateToInt(std::min(std::ceil(contentWidth * zoomStep), durationMs * pxPerMsMax));
}

int widthZoomedOut(int contentWidth, double itemWidth)
{
    return truncateToInt(std::max(itemWidth, std::ceil(contentWidth / zoomStep)));
}

int contentXWithMsAt(int ms, int x, float msPerPx)
{
    return truncateToInt(static_cast<double>(asFloat(ms) / msPerPx - asFloat(x)));
}

ScrollToCursor scrollToCursor(int cursorPx, int contentX, double itemWidth)
{
    const long long r = static_cast<long long>(cursorPx) - contentX;
    if (r < cursorMargin)
        return {true, truncateToInt(static_cast<double>(cursorPx) - cursorMargin)};
    const double rightmost = itemWidth - cursorMargin;
    if (static_cast<double>(r) > rightmost)
        return {true, truncateToInt(contentX + (static_cast<double>(r) - rightmost))};
    return {false, contentX};
}

const TickSpacing& tickSpacingFor(float neededMs)
{
    const auto wider =
        std::find_if(tickSpacings.begin(), tickSpacings.end(), [neededMs](const TickSpacing& row) {
            return asFloat(row.spacingMs) > neededMs;
        });
    return wider == tickSpacings.end() ? tickSpacings.back() : *wider;
}

TickRange tickRange(const TimelineView& view, double itemWidth, int spacingMs)
{
    // The left edge goes through single precision like all that is placed on the strip; the right
    // edge is only a bound.
    const float spacing = asFloat(spacingMs);
    const float first = floorf(asFloat(view.contentX) * view.msPerPx / spacing) * spacing;
    const double last =
        std::ceil(static_cast<double>(view.msPerPx) * (itemWidth + view.contentX) / spacingMs) *
        spacingMs;
    return {truncateToInt(static_cast<double>(first)), truncateToInt(last)};
}

int extraTickX(int majorX, int spacingMs, int count, int k, float msPerPx)
{
    const float step = asFloat(spacingMs) / asFloat(count + 1) / msPerPx;
    return truncateToInt(static_cast<double>(asFloat(majorX) + roundf(step * asFloat(k))));
}

} // namespace corv
