#include "Video/insetBlending.h"

namespace corv {
namespace {

// Divides by 255 with rounding, exact for products of two bytes.
uint divideBy255(uint product)
{
    const uint rounded = product + 128;
    return (rounded + (rounded >> 8U)) >> 8U;
}

void blendLine(uchar* bgr, const QRgb* inset, int pixels)
{
    for (int x = 0; x < pixels; ++x, bgr += 3) {
        const QRgb over = inset[x];
        const uint shown = 255U - static_cast<uint>(qAlpha(over));
        bgr[0] = static_cast<uchar>(divideBy255(bgr[0] * shown) + static_cast<uint>(qBlue(over)));
        bgr[1] = static_cast<uchar>(divideBy255(bgr[1] * shown) + static_cast<uint>(qGreen(over)));
        bgr[2] = static_cast<uchar>(divideBy255(bgr[2] * shown) + static_cast<uint>(qRed(over)));
    }
}

} // namespace

cv::Rect changedBy(const PictureInset::Part& part, cv::Size picture)
{
    const cv::Rect place(part.topLeft.x(), part.topLeft.y(), part.image.width(),
                         part.image.height());
    return place & cv::Rect({0, 0}, picture);
}

void blendInset(cv::Mat& bgr, const PictureInset::Part& part, cv::Point origin)
{
    const cv::Point topLeft = cv::Point(part.topLeft.x(), part.topLeft.y()) - origin;
    const cv::Rect covered =
        cv::Rect(topLeft.x, topLeft.y, part.image.width(), part.image.height()) &
        cv::Rect({0, 0}, bgr.size());
    for (int y = covered.y; y < covered.y + covered.height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(part.image.constScanLine(y - topLeft.y));
        blendLine(bgr.ptr(y) + static_cast<ptrdiff_t>(covered.x) * 3, line + covered.x - topLeft.x,
                  covered.width);
    }
}

} // namespace corv
