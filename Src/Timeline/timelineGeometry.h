#pragma once

#include "Base/videoTime.h"

namespace corv {

/// Arithmetic of the timeline strip, free of any item. Times are milliseconds from the start of the
/// video. Strip pixels count from the strip's start, item pixels from the item's left edge; between
/// them is the scroll offset `contentX`. No scale, however odd, leads to more than an odd
/// picture: results that an int cannot hold are cut to the nearest int.

/// Milliseconds per pixel of a strip of `contentWidth` pixels, of which `endMargin` lie past the
/// end. Infinite where the two are equal and negative where the strip is narrower.
float scaleOfStrip(int durationMs, int contentWidth, int endMargin);

/// Whether an item x is within what a painter can place; far beyond every item it wraps around.
bool isPaintable(int x);

/// Where a strip is looked at from, and how closely.
struct TimelineView
{
    float msPerPx = 0;
    int contentX = 0;
};

/// Item x of a time: rounded.
int pxOfMs(int ms, const TimelineView& view);

/// Time at an item x: cut, not rounded, so a pixel names the time at its left edge.
int msOfPx(int x, const TimelineView& view);

/// Width of the strip one step closer: a fifth more, up to 200 pixels per millisecond.
int widthZoomedIn(int contentWidth, int durationMs);

/// Width of the strip one step farther, never below that of the item.
int widthZoomedOut(int contentWidth, double itemWidth);

/// Scroll offset at which time `ms` is at item x.
int contentXWithMsAt(int ms, int x, float msPerPx);

/// Scroll offset at which a cursor at strip pixel `cursorPx` is at least 100 pixels inside the
/// item; `contentX` itself if it is there already.
struct ScrollToCursor
{
    bool needed = false;
    int contentX = 0;
};
ScrollToCursor scrollToCursor(int cursorPx, int contentX, double itemWidth);

/// One row of the table of tick spacings: the extra ticks divide a spacing in count + 1 parts.
struct TickSpacing
{
    int spacingMs;
    int mediumCount;
    int minorCount;
};

/// The closest spacing that is wider than `neededMs`, or else the widest there is.
const TickSpacing& tickSpacingFor(float neededMs);

/// From the last tick at or before the left edge to the first at or after the right edge.
struct TickRange
{
    int firstMs = 0;
    int lastMs = 0;

    bool contains(int ms) const { return firstMs <= ms && ms <= lastMs; }
};
TickRange tickRange(const TimelineView& view, double itemWidth, int spacingMs);

/// Item x of the k-th of `count` extra ticks after the major tick at `majorX`.
int extraTickX(int majorX, int spacingMs, int count, int k, float msPerPx);

} // namespace corv
