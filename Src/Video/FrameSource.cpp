#include "Video/FrameSource.h"

#include "Base/arithmetic.h"

#include <QCoreApplication>
#include <algorithm>

namespace corv {

double FrameSource::frameTimeMs(int index) const
{
    return std::clamp(index, 0, frameCount()) * 1000.0 / fps();
}

int FrameSource::frameAtTime(double ms) const
{
    const int nearest = truncateToInt(std::max(ms, 0.0) * fps() / 1000.0 + 0.5);
    return std::min(nearest, frameCount() - 1);
}

Failure FrameSource::failure() const
{
    return {Failure::Kind::unreadable, QStringLiteral("The video can no longer be read.")};
}

} // namespace corv
