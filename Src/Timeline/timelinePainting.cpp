#include "Timeline/timelinePainting.h"

#include "Base/arithmetic.h"
#include "Base/videoTime.h"
#include "Timeline/textPlate.h"

#include <QPainter>
#include <algorithm>

namespace corv {
namespace {

constexpr int rulerHeight = 25;
constexpr int majorTickTop = 13;
constexpr int tickBottom = 22;
constexpr int labelWidth = 80;
constexpr int labelHeight = 20;
constexpr int labelFlags = Qt::AlignHCenter | Qt::AlignTop;

void paintGround(QPainter& painter, const TimelineStrip& strip)
{
    const double width = strip.itemSize.width();
    painter.fillRect(QRectF(QPointF(0, 0), strip.itemSize), QColor(169, 169, 169));
    const double end =
        static_cast<double>(strip.contentWidth) - strip.endMargin - strip.view.contentX;
    if (width > end) {
        painter.fillRect(QRectF(end, 0, strip.endMargin, strip.itemSize.height()),
                         QColor(120, 120, 120));
    }
    painter.fillRect(QRectF(0, 0, width, rulerHeight), QColor(119, 119, 119));
}

// The ticks of one strip: all stop at the flight's end, and none is drawn that nobody could see.
class TickPainter
{
public:
    TickPainter(QPainter& painter, const TimelineStrip& strip, const TickSpacing& spacing, int endX,
                int textWidth)
        : m_painter(painter), m_strip(strip), m_spacing(spacing), m_endX(endX),
          m_textWidth(textWidth)
    {
    }

    // Behind the label, which is above its tick.
    void paintPlate(int ms)
    {
        const int x = pxOfMs(ms, m_strip.view);
        if (x <= m_endX && isNearItem(x)) {
            m_painter.fillRect(labelX(x) + (labelWidth - m_textWidth) / 2, 0, m_textWidth,
                               majorTickTop, greyGroundPlate);
        }
    }

    void paintTicksFrom(int ms)
    {
        const int x = pxOfMs(ms, m_strip.view);
        if (x <= m_endX && isNearItem(x)) {
            paintTick(x, majorTickTop);
            m_painter.drawText(labelX(x), 0, labelWidth, labelHeight, labelFlags,
                               textOfTime(timeOfMs(ms)));
        }
        paintExtraTicks(x, m_spacing.mediumCount, 17);
        paintExtraTicks(x, m_spacing.minorCount, 20);
    }

private:
    void paintExtraTicks(int majorX, int count, int top)
    {
        for (int k = 1; k <= count; ++k) {
            const int x = extraTickX(majorX, m_spacing.spacingMs, count, k, m_strip.view.msPerPx);
            if (x <= m_endX && isNearItem(x))
                paintTick(x, top);
        }
    }

    // Centred at the tick, but where the left edge would cut the label off.
    int labelX(int x) const
    {
        const int centred = x - labelWidth / 2;
        const int hidden = m_textWidth / 2 - x;
        return x >= 0 && hidden > 0 ? centred + hidden + 1 : centred;
    }

    void paintTick(int x, int top) { m_painter.drawLine(x, top, x, tickBottom); }

    bool isNearItem(int x) const
    {
        return x >= -labelWidth && x <= m_strip.itemSize.width() + labelWidth;
    }

    QPainter& m_painter;
    const TimelineStrip& m_strip;
    const TickSpacing& m_spacing;
    int m_endX;
    int m_textWidth;
};

} // namespace

TickRange paintRuler(QPainter& painter, const TimelineStrip& strip)
{
    paintGround(painter, strip);
    const double width = strip.itemSize.width();
    QPen pen(Qt::black, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    pen.setColor(QColor(153, 153, 153));
    painter.setPen(pen);
    painter.drawLine(QPointF(0, rulerHeight), QPointF(width, rulerHeight));

    const int endX = pxOfMs(strip.durationMs, strip.view);
    const int textWidth =
        painter.boundingRect(0, 0, labelWidth, labelHeight, labelFlags, QStringLiteral("00:00.000"))
            .width();
    const TickSpacing& spacing =
        tickSpacingFor(static_cast<float>(textWidth) * strip.view.msPerPx * 2);
    const TickRange range = tickRange(strip.view, width, spacing.spacingMs);
    const long long lastMs = std::min<long long>(range.lastMs - 1LL, strip.durationMs);
    TickPainter ticks(painter, strip, spacing, endX, textWidth);
    for (long long ms = range.firstMs; ms <= lastMs; ms += spacing.spacingMs)
        ticks.paintPlate(static_cast<int>(ms));

    pen.setColor(QColor(55, 55, 55));
    painter.setPen(pen);
    if (isPaintable(endX))
        painter.drawLine(endX, 0, endX, tickBottom);

    pen.setColor(Qt::white);
    painter.setPen(pen);
    for (long long ms = range.firstMs; ms <= lastMs; ms += spacing.spacingMs)
        ticks.paintTicksFrom(static_cast<int>(ms));
    return range;
}

void paintCursor(QPainter& painter, int x, QSizeF itemSize)
{
    if (!isPaintable(x))
        return;
    const qreal left = x;
    painter.fillRect(QRectF(left - 3, rulerHeight, 7, itemSize.height() - rulerHeight),
                     QColor(255, 255, 255, 75));
    painter.setPen(QColor(0, 0, 0));
    painter.drawLine(QPointF(left, rulerHeight + 1),
                     QPointF(left, truncateToInt(itemSize.height())));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::black);
    const QPointF triangle[] = {
        {left + 4.5, 12.5},
        {left - 3.5, 12.5},
        {left + 0.5, 22.5},
    };
    painter.drawPolygon(triangle, 3, Qt::OddEvenFill);
}

void paintLandingBox(QPainter& painter, int x, int thumbnailWidth)
{
    if (!isPaintable(x))
        return;
    painter.setPen(QPen(QColor(255, 0, 0), 2, Qt::DashLine));
    painter.drawRect(x + 2, 48, thumbnailWidth - 2, 58);
}

void paintHoverLight(QPainter& painter, int x, int thumbnailWidth)
{
    if (isPaintable(x))
        painter.fillRect(x + 1, 47, thumbnailWidth, 60, QColor(255, 255, 255, 64));
}

} // namespace corv
