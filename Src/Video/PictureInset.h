#pragma once

#include "Video/ThermalScale.h"

#include <QImage>
#include <QPoint>
#include <QSize>
#include <memory>
#include <optional>
#include <vector>

namespace corv {

/// Something that is shown in a part of the pictures that leave the program, such as the flight
/// instruments in a corner. The player hands it to its worker, which alone calls it from then on,
/// on its thread.
class PictureInset
{
public:
    struct Part
    {
        QImage image; ///< premultiplied ARGB; null for nothing
        QPoint topLeft;
    };

    virtual ~PictureInset() = default;

    /// The picture that a part is for.
    struct Moment
    {
        int videoMs = 0; ///< after the start of the flight
        QSize picture;
        std::optional<ThermalScale> thermal; ///< of its overlay; none without one
    };

    /// What is shown in a picture. Drop the part before the next call, which paints into the same
    /// image.
    virtual Part partAt(const Moment& moment) = 0;
};

/// All that is shown in parts of a picture; the later lies on top.
using PictureInsets = std::vector<std::shared_ptr<PictureInset>>;

} // namespace corv
