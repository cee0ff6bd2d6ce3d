#include "Timeline/TimelinePoi.h"

#include "Timeline/textPlate.h"
#include "Timeline/timelineGeometry.h"

#include <QPainter>
#include <algorithm>

namespace corv {
namespace {

// No flag is wide enough for a longer text, but laying one out would take its time in every paint.
constexpr int drawnNameLength = 512;

QColor flagColour(const PoiLook& look)
{
    if (look.selected)
        return QColor(255, 0, 0);
    return look.hovered ? QColor(255, 255, 255) : QColor(169, 169, 169);
}

// With a sign where it is cut. A name that is written from the right would otherwise lose its
// beginning.
QString shortened(const QString& name, const QFontMetrics& metrics, int width)
{
    return metrics.elidedText(name.left(drawnNameLength), Qt::ElideRight, width);
}

QPen penOf(const QColor& colour)
{
    return QPen(colour, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
}

} // namespace

TimelinePoi::TimelinePoi(QTime time, const QImage& frame)
    : m_time(time), m_thumbnail(thumbnailOf(frame))
{
}

TimelinePoi::TimelinePoi(const Poi& poi)
    : m_time(poi.time), m_name(poi.name), m_comment(poi.comment), m_thumbnail(poi.thumbnail)
{
}

void TimelinePoi::setThumbnail(const QImage& frame)
{
    if (!frame.isNull())
        m_thumbnail = thumbnailOf(frame);
}

void TimelinePoi::drawPoi(QPainter& painter, int x, const PoiLook& look) const
{
    if (!isPaintable(x))
        return;
    const int width = thumbnailWidth();
    if (look.dimmed)
        painter.setOpacity(0.3);
    painter.fillRect(x, 33, width + 1, 14, flagColour(look));
    painter.setPen(penOf(look.selected ? Qt::white : Qt::black));
    const QRectF place(QPointF(x + 3, 32), QPointF(x + width + 1, 46));
    const QString name = shortened(m_name, painter.fontMetrics(), static_cast<int>(place.width()));
    if (look.selected && !name.isEmpty()) {
        const int end = std::min(width, painter.fontMetrics().horizontalAdvance(name) + 5);
        painter.fillRect(x + 1, 34, end, 12, redGroundPlate);
    }
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, name);
    painter.setPen(penOf(Qt::black));
    painter.drawLine(x, 25, x, 106);
    if (!look.omitThumbnail)
        painter.drawImage(x + 1, 47, m_thumbnail);
    if (look.dimmed)
        painter.setOpacity(1.0);
}

} // namespace corv
