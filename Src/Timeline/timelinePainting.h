#pragma once

#include "Timeline/timelineGeometry.h"

#include <QSizeF>

class QPainter;

namespace corv {

/// What a timeline strip shows beside its marks.
struct TimelineStrip
{
    TimelineView view;
    QSizeF itemSize;
    int durationMs = 0;
    int contentWidth = 0;
    int endMargin = 0;
};

/// Paints background, the zone past the end, ruler, end mark, ticks and labels, on a painter that
/// nobody has drawn with yet. Returns the range of the ticks.
TickRange paintRuler(QPainter& painter, const TimelineStrip& strip);

/// Paints the playback cursor at item x. Leaves antialiasing on.
void paintCursor(QPainter& painter, int x, QSizeF itemSize);

/// Paints the dashed box where a moved mark's thumbnail would land.
void paintLandingBox(QPainter& painter, int x, int thumbnailWidth);

/// Lays the light of the pointer over the thumbnail of a mark.
void paintHoverLight(QPainter& painter, int x, int thumbnailWidth);

} // namespace corv
