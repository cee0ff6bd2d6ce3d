#include "Timeline/InstrumentsInset.h"

#include <QPainter>
#include <QRegion>
#include <algorithm>
#include <cmath>

namespace corv {
namespace {

// The plate behind the instruments: dark enough for white text on any picture.
const QColor plate(0, 0, 0, 168);

// Parts of the picture's height. The instruments take the first one, or more, up to the second,
// where they would be too small to read.
constexpr double standardPart = 0.5;
constexpr double largestPart = 0.68;
constexpr double numbersPart = 0.3;
constexpr double marginPart = 0.015;

// Texts are 13 pixels high at the natural size. Below these parts of it they are hard to read.
constexpr double smallestScale = 0.85;
constexpr double smallestNumbersScale = 1.0;

} // namespace

InstrumentsPlace instrumentsPlace(QSize picture, double fullHeight, double numbersHeight)
{
    const double height = picture.height();
    const int margin =
        static_cast<int>(std::lround(std::min(picture.width(), picture.height()) * marginPart));
    const bool showsDials = smallestScale * fullHeight <= height * largestPart;
    const double natural = showsDials ? fullHeight : numbersHeight;
    const double wanted = showsDials
                              ? std::max(height * standardPart / natural, smallestScale)
                              : std::max(height * numbersPart / natural, smallestNumbersScale);
    const double room = std::min((picture.width() - 2.0 * margin) / HeadUpPainter::naturalWidth,
                                 (height - 2.0 * margin) / natural);
    const double scale = std::min(wanted, room);
    const QSize size(static_cast<int>(std::floor(HeadUpPainter::naturalWidth * scale)),
                     static_cast<int>(std::floor(natural * scale)));
    if (size.isEmpty())
        return {QRect(), showsDials};
    return {QRect(QPoint(picture.width() - margin - size.width(), margin), size), showsDials};
}

InstrumentsInset::InstrumentsInset(const HeadUpPainter& painter)
    : m_full(painter), m_numbers(painter.withoutDials())
{
}

PictureInset::Part InstrumentsInset::partAt(const Moment& moment)
{
    if (!m_full.hasValues())
        return {};
    if (moment.picture != m_picture)
        setPicture(moment.picture);
    const int videoMs = moment.videoMs;
    if (m_place.rect.isEmpty())
        return {};
    std::vector<Shown> shown;
    for (size_t row = 0; row < painter().rows().size(); ++row)
        shown.push_back({painter().textAt(row, videoMs), painter().needleAt(row, videoMs)});
    QRegion changed;
    if (m_shown.empty()) {
        changed = m_image.rect();
    } else {
        for (size_t row = 0; row < shown.size(); ++row)
            if (!(shown[row] == m_shown[row]))
                changed += painter().rectOfRow(row, m_image.size()).toAlignedRect();
    }
    if (!changed.isEmpty())
        paintRows(changed, videoMs);
    m_shown = std::move(shown);
    return {m_image, m_place.rect.topLeft()};
}

void InstrumentsInset::setPicture(QSize picture)
{
    m_picture = picture;
    m_place = instrumentsPlace(picture, m_full.heightAt(HeadUpPainter::naturalWidth),
                               m_numbers.heightAt(HeadUpPainter::naturalWidth));
    m_image = QImage(m_place.rect.size(), QImage::Format_ARGB32_Premultiplied);
    m_shown.clear();
}

void InstrumentsInset::paintRows(const QRegion& rows, int videoMs)
{
    QPainter target(&m_image);
    target.setClipRegion(rows);
    target.setCompositionMode(QPainter::CompositionMode_Source);
    target.fillRect(m_image.rect(), plate);
    target.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter().paintInto(target, m_image.rect(), videoMs);
}

} // namespace corv
