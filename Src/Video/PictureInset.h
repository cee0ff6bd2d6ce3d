#pragma once

#include <QImage>
#include <QPoint>
#include <QSize>

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

    /// What is shown at `videoMs` milliseconds after the start of the flight in a picture of this
    /// size. Drop the part before the next call, which paints into the same image.
    virtual Part partAt(int videoMs, QSize picture) = 0;
};

} // namespace corv
