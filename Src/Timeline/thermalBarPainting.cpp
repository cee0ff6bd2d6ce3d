#include "Timeline/thermalBarPainting.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace corv {
namespace {

constexpr double textPx = 11.0;
constexpr double marginPx = 4.0;
constexpr double coloursWidth = 18.0;

// Of the bar: the dark end of a palette would merge with the ground.
const QColor edge(0xaa, 0xaa, 0xaa);

// More digits than a raw value has: others come from a damaged project.
constexpr int mostDigits = 6;

QImage coloursFromTheHottest(ThermalPalette palette)
{
    const auto colours = thermalColours(palette);
    QImage image(1, static_cast<int>(colours.size()), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        image.setPixel(0, y, colours[colours.size() - 1 - static_cast<size_t>(y)]);
    return image;
}

QFont fontFor(QPainter& painter, const QString& text, double px, double width)
{
    QFont font = painter.font();
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(px))));
    const double needed = QFontMetricsF(font).horizontalAdvance(text);
    if (needed > width)
        font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * width / needed)));
    return font;
}

} // namespace

QString thermalBarText(double value)
{
    return QString::number(std::round(value) + 0.0, 'g', mostDigits);
}

void paintThermalBar(QPainter& painter, const QRectF& rect, double scale, const ThermalScale& shown)
{
    const double margin = marginPx * scale;
    const QRectF inside = rect.adjusted(margin / 2, margin, -margin / 2, -margin);
    const double textHeight = textPx * 1.3 * scale;
    const QRectF colours(rect.center().x() - coloursWidth * scale / 2,
                         inside.top() + textHeight + margin, coloursWidth * scale,
                         inside.height() - 2 * (textHeight + margin));
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (colours.height() > 0)
        painter.drawImage(colours, coloursFromTheHottest(shown.palette));
    painter.setPen(QPen(edge, std::max(1.0, scale)));
    painter.setBrush(Qt::NoBrush);
    if (colours.height() > 0)
        painter.drawRect(colours);
    painter.setPen(Qt::white);
    const auto write = [&](double value, Qt::Alignment side) {
        const QString text = thermalBarText(value);
        painter.setFont(fontFor(painter, text, textPx * scale, inside.width()));
        painter.drawText(inside, static_cast<int>(side | Qt::AlignHCenter) | Qt::TextDontClip,
                         text);
    };
    write(shown.highest, Qt::AlignTop);
    write(shown.lowest, Qt::AlignBottom);
    painter.restore();
}

} // namespace corv
