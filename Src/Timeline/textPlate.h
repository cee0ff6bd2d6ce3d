#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace corv {

/// What darkens a medium ground behind a white text so far that the text can be read.
const QColor greyGroundPlate(0, 0, 0, 5);
const QColor redGroundPlate(0, 0, 0, 20);

/// Draws a text in the painter's pen, font and alignment `flags` as QPainter::drawText() does, on a
/// plate behind the part of `place` that the text takes.
void drawTextOnPlate(QPainter& painter, const QRectF& place, int flags, const QString& text,
                     const QColor& plate);

} // namespace corv
