#include "Video/partialDrawing.h"

#include "Video/frameConversion.h"
#include "Video/pictureScaling.h"

#include <cstring>

namespace corv {
namespace {

constexpr size_t planes = 3;

int linesOf(const Frame& frame, size_t plane)
{
    return plane == 0 ? frame.size.height() : frame.size.height() / 2;
}

int bytesOf(const Frame& frame, size_t plane)
{
    return plane == 0 ? frame.size.width() : frame.size.width() / 2;
}

// A frame on the same memory.
Frame viewOfPart(const Frame& frame, const cv::Rect& part)
{
    Frame view = frame;
    view.size = QSize(part.width, part.height);
    for (size_t plane = 0; plane < planes; ++plane) {
        const int divisor = plane == 0 ? 1 : 2;
        view.planes[plane].data +=
            static_cast<qint64>(part.y / divisor) * view.planes[plane].bytesPerLine +
            part.x / divisor;
    }
    return view;
}

Frame copyOf(const Frame& frame)
{
    Frame copy = makeI420(frame.size, frame.matrix, frame.range);
    copy.index = frame.index;
    copy.timeMs = frame.timeMs;
    for (size_t plane = 0; plane < planes; ++plane) {
        const Frame::Plane& from = frame.planes[plane];
        const Frame::Plane& to = copy.planes[plane];
        for (int line = 0; line < linesOf(frame, plane); ++line)
            std::memcpy(const_cast<uchar*>(to.data) + static_cast<qint64>(line) * to.bytesPerLine,
                        from.data + static_cast<qint64>(line) * from.bytesPerLine,
                        static_cast<size_t>(bytesOf(frame, plane)));
    }
    return copy;
}

} // namespace

bool canDrawOnPart(const Frame& frame)
{
    return frame.layout == Frame::Layout::i420 && frame.bitsPerSample == 8;
}

cv::Rect evenPart(const cv::Rect& place, cv::Size frame)
{
    const cv::Rect inside = place & cv::Rect({0, 0}, frame);
    if (inside.empty())
        return {};
    const cv::Point start(inside.x & ~1, inside.y & ~1);
    const cv::Point end((inside.x + inside.width + 1) & ~1, (inside.y + inside.height + 1) & ~1);
    return {start, end};
}

Frame drawOnPart(const Frame& frame, const cv::Rect& part,
                 const std::function<void(cv::Mat& bgr)>& draw)
{
    Frame copy = copyOf(frame);
    cv::Mat bgr;
    toBgr(viewOfPart(frame, part), bgr);
    draw(bgr);
    Frame target = viewOfPart(copy, part);
    fillPlanes(bgr, target);
    return copy;
}

} // namespace corv
