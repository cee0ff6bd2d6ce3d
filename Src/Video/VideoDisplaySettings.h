#pragma once

#include <limits>

namespace corv {

/// Values of a setting that differ by no more than this are the same.
inline constexpr double settingTolerance = std::numeric_limits<double>::epsilon();

/// The colours of the thermal overlay.
enum class ThermalPalette {
    rainbow, ///< blue over green and yellow to red
    even,    ///< blue to yellow: equal differences look equal, also to the colour-blind
    grey     ///< black to white
};

/// How a picture is shown: effects and thermal overlay. The player keeps one and sends the worker
/// a copy of the whole whenever a field changes.
struct VideoDisplaySettings
{
    bool showIR = false;                ///< draw the thermal overlay
    bool fullScreenIR = false;          ///< the overlay covers the whole picture
    double contrast = 1.0;              ///< factor on each channel
    double brightness = 0.0;            ///< added to each channel, 0 to 255 being its range
    bool autoIRMapping = false;         ///< colours follow the range of each thermal frame
    double irMappingMinValue = 0.0;     ///< raw value that gets the coldest colour
    double irMappingMaxValue = 65535.0; ///< raw value that gets the hottest colour
    double irOffsetX = 0.0;             ///< shift of the overlay, as a part of the width
    double irOffsetY = 0.0;             ///< shift of the overlay, as a part of the height
    double irDataMin = 0.0;             ///< lowest raw value last reported
    double irDataMax = 65535.0;         ///< highest raw value last reported
    bool irOverlayTransparent = false;  ///< half overlay, half picture
    bool thermalAsOnScreen = false; ///< saved pictures get the overlay that the screen shows, not
                                    ///< that of the time inside their file
    ThermalPalette irPalette = ThermalPalette::rainbow;
};

} // namespace corv
