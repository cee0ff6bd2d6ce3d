#include "Video/pictureEffects.h"

#include "Video/logCategory.h"
#include "Video/thermalPicture.h"

#include <QDebug>
#include <cmath>

namespace corv {
namespace {

bool changesContrastOrBrightness(const VideoDisplaySettings& settings)
{
    return std::abs(settings.contrast - 1.0) > settingTolerance ||
           std::abs(settings.brightness) > settingTolerance;
}

} // namespace

bool changesPictures(const ThermalOverlay& overlay, const VideoDisplaySettings& settings)
{
    return changesContrastOrBrightness(settings) || (settings.showIR && overlay.isActive());
}

cv::Rect changedPart(const ThermalOverlay& overlay, cv::Size frame,
                     const VideoDisplaySettings& settings)
{
    const cv::Rect whole({0, 0}, frame);
    if (changesContrastOrBrightness(settings))
        return whole;
    if (!settings.showIR || !overlay.isActive())
        return {};
    return thermalRectangle(frame, settings) & whole;
}

void applyPictureEffects(ThermalOverlay& overlay, cv::Mat& frame, int timeMs,
                         VideoDisplaySettings& settings, bool invertColours,
                         const ThermalOverlay::RangeReport& report)
{
    try {
        if (changesContrastOrBrightness(settings))
            frame.convertTo(frame, -1, settings.contrast, settings.brightness);
    } catch (const cv::Exception& error) {
        qCWarning(lcVideo) << "Contrast and brightness given up:" << error.what();
    }
    if (report)
        overlay.reportRange(settings, report);
    if (settings.showIR)
        overlay.drawThermalOverlay(frame, timeMs, settings, invertColours);
}

} // namespace corv
