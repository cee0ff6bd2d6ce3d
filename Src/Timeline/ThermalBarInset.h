#pragma once

#include "Video/PictureInset.h"

#include <QImage>
#include <QRect>
#include <optional>

namespace corv {

/// Where the colour bar is in a picture, and at which scale of paintThermalBar().
struct ThermalBarPlace
{
    QRect rect;
    double scale = 1.0;
};

/// The place of the colour bar in the upper left corner of a picture of this size, where the
/// instruments are not, at a size that can be read. Empty where there is no room for that.
ThermalBarPlace thermalBarPlace(QSize picture);

/// The colours of the thermal overlay with the ends of their range, in a corner of exported
/// pictures. Each shows the range of its own thermal frame. Pictures without an overlay have none.
class ThermalBarInset : public PictureInset
{
public:
    Part partAt(const Moment& moment) override;

private:
    QSize m_picture;
    ThermalBarPlace m_place;
    std::optional<ThermalScale> m_shown; ///< none while the image is not painted
    QImage m_image;
};

} // namespace corv
