#pragma once

#include "Video/VideoDisplaySettings.h"

#include <QRgb>
#include <array>

namespace corv {

/// What the colours of a thermal overlay mean.
struct ThermalScale
{
    ThermalPalette palette = ThermalPalette::rainbow;
    double lowest = 0.0;  ///< raw value of the coldest colour
    double highest = 0.0; ///< raw value of the hottest colour

    bool operator==(const ThermalScale& other) const
    {
        return palette == other.palette && lowest == other.lowest && highest == other.highest;
    }
    bool operator!=(const ThermalScale& other) const { return !(*this == other); }
};

/// The colours of a palette as the overlay has them, from the coldest to the hottest. Any thread.
std::array<QRgb, 256> thermalColours(ThermalPalette palette);

} // namespace corv
