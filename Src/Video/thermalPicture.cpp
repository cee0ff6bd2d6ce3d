#include "Video/thermalPicture.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace corv {
namespace {

constexpr double highestRaw = 65535.0;

// The mounting was measured in single precision; the same digits keep every edge on its pixel.
constexpr double mountingLeft = 0.31700000166893005;
constexpr double mountingTop = 0.17900000512599945;
constexpr float mountingWidthDivisor = 2.333F;
constexpr float mountingHeightDivisor = 1.686F;

// An edge this far out is outside every picture, and no sum with a size overflows.
constexpr double farthestEdge = 1e9;

int edgeAt(double position)
{
    return static_cast<int>(std::clamp(position, -farthestEdge, farthestEdge));
}

bool isSingle(double value)
{
    return std::abs(value) <= static_cast<double>(FLT_MAX);
}

} // namespace

cv::Rect thermalRectangle(cv::Size frame, const VideoDisplaySettings& settings)
{
    if (settings.fullScreenIR)
        return {0, 0, frame.width, frame.height};
    const double left = (settings.irOffsetX + mountingLeft) * frame.width;
    const double top = (settings.irOffsetY + mountingTop) * frame.height;
    if (std::isnan(left) || std::isnan(top))
        return {};
    return {edgeAt(left), edgeAt(top),
            static_cast<int>(static_cast<float>(frame.width) / mountingWidthDivisor),
            static_cast<int>(static_cast<float>(frame.height) / mountingHeightDivisor)};
}

bool colourThermalFrame(const cv::Mat& thermal, const VideoDisplaySettings& settings,
                        bool invertColours, cv::Mat& colours)
{
    cv::Mat mapped;
    if (settings.autoIRMapping) {
        cv::normalize(thermal, mapped, 0.0, highestRaw, cv::NORM_MINMAX);
    } else {
        const double min = settings.irMappingMinValue;
        const double max = settings.irMappingMaxValue;
        const double scale = highestRaw / (max - min);
        const double shift = scale * min * -1.0;
        if (!isSingle(scale) || !isSingle(shift))
            return false;
        thermal.convertTo(mapped, -1, scale, shift);
    }
    cv::Mat reduced;
    if (invertColours)
        mapped.convertTo(reduced, CV_8U, -0.00390625, 256.0);
    else
        mapped.convertTo(reduced, CV_8U, 0.00390625, 0.0);
    applyPalette(reduced, settings.irPalette, colours);
    return true;
}

void applyPalette(const cv::Mat& values, ThermalPalette palette, cv::Mat& colours)
{
    switch (palette) {
    case ThermalPalette::rainbow:
        cv::applyColorMap(values, colours, cv::COLORMAP_JET);
        break;
    case ThermalPalette::even:
        cv::applyColorMap(values, colours, cv::COLORMAP_CIVIDIS);
        break;
    case ThermalPalette::grey:
        cv::cvtColor(values, colours, cv::COLOR_GRAY2BGR);
        break;
    }
}

void layOver(cv::Mat& frame, const cv::Mat& colours, const cv::Rect& place, bool translucent)
{
    const cv::Rect visible = place & cv::Rect({0, 0}, frame.size());
    if (visible.empty())
        return;
    cv::Mat enlarged;
    cv::resize(colours, enlarged, place.size(), 0.0, 0.0, cv::INTER_NEAREST);
    const cv::Mat part = enlarged(visible - place.tl());
    cv::Mat region = frame(visible);
    if (translucent)
        cv::addWeighted(part, 0.5, region, 0.5, 0.0, region);
    else
        part.copyTo(region);
}

} // namespace corv
