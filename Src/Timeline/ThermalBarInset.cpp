#include "Timeline/ThermalBarInset.h"

#include "Timeline/thermalBarPainting.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace corv {
namespace {

// The plate of the instruments: dark enough for white text on any picture.
const QColor plate(0, 0, 0, 168);

// Of the picture's height, and never less than can be read.
constexpr double standardPart = 0.3;
constexpr double standardHeight = 260.0;
constexpr double leastHeight = 160.0;
constexpr double marginPart = 0.015;

// Of a narrow picture.
constexpr double widestPart = 1.0 / 3.0;

// Below it nobody can read the texts.
constexpr double smallestScale = 0.7;

} // namespace

ThermalBarPlace thermalBarPlace(QSize picture)
{
    const int margin =
        static_cast<int>(std::lround(std::min(picture.width(), picture.height()) * marginPart));
    const double wanted = std::max(picture.height() * standardPart / standardHeight, 1.0);
    const double scale = std::min(wanted, picture.width() * widestPart / thermalBarWidth);
    const double height = std::min(std::max(picture.height() * standardPart, leastHeight * scale),
                                   picture.height() - 2.0 * margin);
    const QSize size(static_cast<int>(std::floor(thermalBarWidth * scale)),
                     static_cast<int>(std::floor(height)));
    if (size.isEmpty() || scale < smallestScale || height < thermalBarLeastHeight * scale)
        return {QRect(), scale};
    return {QRect(QPoint(margin, margin), size), scale};
}

PictureInset::Part ThermalBarInset::partAt(const Moment& moment)
{
    if (!moment.thermal)
        return {};
    if (moment.picture != m_picture) {
        m_picture = moment.picture;
        m_place = thermalBarPlace(moment.picture);
        m_image = QImage(m_place.rect.size(), QImage::Format_ARGB32_Premultiplied);
        m_shown.reset();
    }
    if (m_place.rect.isEmpty())
        return {};
    if (m_shown != moment.thermal) {
        m_image.fill(plate);
        QPainter painter(&m_image);
        paintThermalBar(painter, m_image.rect(), m_place.scale, *moment.thermal);
        m_shown = moment.thermal;
    }
    return {m_image, m_place.rect.topLeft()};
}

} // namespace corv
