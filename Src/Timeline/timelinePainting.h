#pragma once

#include "Timeline/timelineGeometry.h"

#include <QSizeF>

class QPainter;

namespace corv {

/// What a timeline strip shows beside its points of interest.
struct TimelineStrip
{
    TimelineView view;
    QSizeF itemSize;
    int durationMs = 0;
    int contentWidth = 0;
    int endMargin = 0;
};

/// Paints background, the zone past the end, ruler, the line at the end, ticks and labels, on a
/// painter in its initial state. Returns the range of the ticks.
TickRange paintRuler(QPainter& painter, const TimelineStrip& strip);

/// Paints the playback cursor at item x. Leaves antialiasing on.
void paintCursor(QPainter& painter, int x, QSizeF itemSize);

/// Paints the dashed box where the thumbnail of a moved point of interest would be.
void paintLandingBox(QPainter& painter, int x, int thumbnailWidth);

/// Brightens the thumbnail of the point of interest under the pointer.
void paintHoverLight(QPainter& painter, int x, int thumbnailWidth);

} // namespace corv
