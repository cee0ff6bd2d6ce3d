#include "Video/ThermalScale.h"

#include "Video/thermalPicture.h"

namespace corv {

// One row of all values, in the colours of a picture.
std::array<QRgb, 256> thermalColours(ThermalPalette palette)
{
    std::array<QRgb, 256> colours{};
    cv::Mat values(1, static_cast<int>(colours.size()), CV_8U);
    for (int i = 0; i < values.cols; ++i)
        values.at<uchar>(i) = static_cast<uchar>(i);
    cv::Mat bgr;
    applyPalette(values, palette, bgr);
    for (size_t i = 0; i < colours.size(); ++i) {
        const auto& pixel = bgr.at<cv::Vec3b>(static_cast<int>(i));
        colours[i] = qRgb(pixel[2], pixel[1], pixel[0]);
    }
    return colours;
}

} // namespace corv
