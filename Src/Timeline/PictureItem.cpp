#include "Timeline/PictureItem.h"

#include <QPainter>

namespace corv {

void PictureItem::setPicture(const QImage& picture)
{
    if (picture.cacheKey() == m_picture.cacheKey())
        return;
    m_picture = picture;
    update();
    emit pictureChanged();
}

void PictureItem::paint(QPainter* painter)
{
    if (m_picture.isNull())
        return;
    const QSizeF place(width(), height());
    const QSizeF size = QSizeF(m_picture.size()).scaled(place, Qt::KeepAspectRatio);
    const QPointF corner((place.width() - size.width()) / 2, (place.height() - size.height()) / 2);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(QRectF(corner, size), m_picture);
}

} // namespace corv
