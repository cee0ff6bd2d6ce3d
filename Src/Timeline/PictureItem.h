#pragma once

#include <QImage>
#include <QQuickPaintedItem>

namespace corv {

/// Shows an image of the native side in a document, as large as it fits, in the middle. Interface
/// thread only.
class PictureItem : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(QImage picture READ picture WRITE setPicture NOTIFY pictureChanged)

public:
    using QQuickPaintedItem::QQuickPaintedItem;

    QImage picture() const { return m_picture; }
    void setPicture(const QImage& picture);

    void paint(QPainter* painter) override;

signals:
    void pictureChanged();

private:
    QImage m_picture;
};

} // namespace corv
