#pragma once

#include <QSize>
#include <QtGlobal>
#include <array>
#include <memory>

namespace corv {

/// One picture of a video, its number and its time. The pixels are shared and never change, so a
/// copy of a frame costs a reference count, and a frame may cross threads.
///
/// frameConversion.h turns a frame into what the screen, OpenCV and files need.
struct Frame
{
    /// How the samples lie in the planes.
    enum class Layout {
        none, ///< no picture
        bgr,  ///< one plane, three interleaved bytes per pixel
        i420, ///< Y, U, V; chroma of half the width and height
        nv12, ///< Y, then U and V interleaved, of half the width and height
        i422, ///< Y, U, V; chroma of half the width
        i444  ///< Y, U, V; chroma of the whole size
    };

    /// The matrix between YUV and RGB.
    enum class Matrix { bt601, bt709, bt2020 };

    /// Whether luma runs from 16 to 235 or from 0 to 255.
    enum class Range { limited, full };

    struct Plane
    {
        const uchar* data = nullptr;
        int bytesPerLine = 0;
    };

    Layout layout = Layout::none;
    int bitsPerSample = 8;              ///< above 8: two bytes per sample, native byte order
    QSize size;                         ///< in pixels, both sides even; the planes may be larger
    Matrix matrix = Matrix::bt601;      ///< of no meaning for bgr
    Range range = Range::limited;       ///< of no meaning for bgr
    std::array<Plane, 3> planes;        ///< as many as the layout has
    std::shared_ptr<const void> pixels; ///< keeps the memory of the planes alive
    qint64 sizeBytes = 0;               ///< memory that the pixels take

    int index = -1;      ///< number in the file, from 0; -1 if it comes from no file
    double timeMs = 0.0; ///< presentation time less that of the file's first frame

    bool isNull() const { return layout == Layout::none; }
};

} // namespace corv
