#pragma once

#include "Video/ThermalScale.h"

#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

namespace corv {

/// The width of a colour bar at a scale of 1, in pixels, and the least height that shows its
/// colours.
constexpr double thermalBarWidth = 54.0;
constexpr double thermalBarLeastHeight = 80.0;

/// A raw value at an end of the bar: a whole number.
QString thermalBarText(double value);

/// Paints the colours of a thermal overlay, the hottest on top, between the raw values at their
/// ends, in light colours for a dark ground. At a `scale` of 1 the texts are 11 pixels high; values
/// that are wider than `rect` get smaller ones.
void paintThermalBar(QPainter& painter, const QRectF& rect, double scale,
                     const ThermalScale& shown);

} // namespace corv
