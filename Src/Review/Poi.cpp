#include "Review/Poi.h"

#include "Base/videoTime.h"

namespace corv {

QVariantMap listForm(const Poi& poi)
{
    return {{QStringLiteral("time"), msOfTime(poi.time)},
            {QStringLiteral("name"), poi.name},
            {QStringLiteral("comment"), poi.comment}};
}

QImage thumbnailOf(const QImage& frame)
{
    constexpr int thumbnailSide = 60;
    if (frame.isNull())
        return QImage();
    return frame.scaled(thumbnailSide, thumbnailSide, Qt::KeepAspectRatioByExpanding,
                        Qt::FastTransformation);
}

} // namespace corv
