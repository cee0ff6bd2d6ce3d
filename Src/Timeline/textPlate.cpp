#include "Timeline/textPlate.h"

#include <QPainter>

namespace corv {

void drawTextOnPlate(QPainter& painter, const QRectF& place, int flags, const QString& text,
                     const QColor& plate)
{
    // Whole pixels, since the edge of half a pixel would be a line of its own.
    const QRectF taken = painter.boundingRect(place, flags, text) & place;
    painter.fillRect(taken.toAlignedRect(), plate);
    painter.drawText(place, flags, text);
}

} // namespace corv
