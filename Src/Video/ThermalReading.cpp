#include "Video/ThermalReading.h"

#include <algorithm>
#include <cmath>

namespace corv {

ThermalReading::ThermalReading(const cv::Mat& thermal, const cv::Rect& overlay, cv::Size frame,
                               const ThermalScale& scale)
    : m_thermal(thermal.clone()), m_overlay(overlay), m_frame(frame), m_scale(scale)
{
    bool isFirst = true;
    for (int row = 0; row < m_thermal.rows; ++row) {
        for (int col = 0; col < m_thermal.cols; ++col) {
            const int value = m_thermal.at<quint16>(row, col);
            const QPointF place = placeOf({col, row});
            if (place.x() < 0.0 || place.x() > 1.0 || place.y() < 0.0 || place.y() > 1.0)
                continue;
            if (isFirst || value < m_coldest.value)
                m_coldest = {value, place};
            if (isFirst || value > m_hottest.value)
                m_hottest = {value, place};
            isFirst = false;
        }
    }
}

std::optional<int> ThermalReading::valueAt(QPointF place) const
{
    if (!(place.x() >= 0.0 && place.x() <= 1.0 && place.y() >= 0.0 && place.y() <= 1.0))
        return std::nullopt;
    const double x = (place.x() * m_frame.width - m_overlay.x) / m_overlay.width;
    const double y = (place.y() * m_frame.height - m_overlay.y) / m_overlay.height;
    if (x < 0.0 || x >= 1.0 || y < 0.0 || y >= 1.0)
        return std::nullopt;
    return m_thermal.at<quint16>(static_cast<int>(y * m_thermal.rows),
                                 static_cast<int>(x * m_thermal.cols));
}

QPointF ThermalReading::placeOf(cv::Point pixel) const
{
    return {(m_overlay.x + (pixel.x + 0.5) * m_overlay.width / m_thermal.cols) / m_frame.width,
            (m_overlay.y + (pixel.y + 0.5) * m_overlay.height / m_thermal.rows) / m_frame.height};
}

} // namespace corv
