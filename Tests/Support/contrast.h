#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <cmath>

namespace corv::test {

/// How light a colour is by these rules, 0 to 1.
inline double luminance(const QColor& colour)
{
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// The ratio of the lightness of two colours by the rules for accessible pages (WCAG 2): 1 for
/// equal ones, 21 for black and white.
inline double contrast(const QColor& one, const QColor& other)
{
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return a > b ? a / b : b / a;
}

/// What a picture with a text in it has behind the text.
inline QColor mostFrequentColour(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    QRgb most = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        if (it.value() > counts.value(most))
            most = it.key();
    return QColor(most);
}

} // namespace corv::test
