#include "App/TintedPicture.h"

#include "App/logCategory.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QQmlFile>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QtMath>
#include <cmath>

namespace corv {
namespace {

QImage read(const QUrl& source)
{
    const QString path = QQmlFile::urlToLocalFileOrQrc(source);
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    // The reader learns the density of the picture from the name.
    for (int density = qCeil(qGuiApp->devicePixelRatio()); density > 1; --density) {
        const QString denser = path.left(dot) + QStringLiteral("@%1x").arg(density) + path.mid(dot);
        if (QFile::exists(denser))
            return QImage(denser);
    }
    return QImage(path);
}

} // namespace

TintedPicture::TintedPicture(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void TintedPicture::setSource(const QUrl& source)
{
    if (source == m_source)
        return;
    m_source = source;
    m_picture = source.isEmpty() ? QImage() : read(source);
    if (m_picture.isNull() && !source.isEmpty())
        qCWarning(lcApp) << "No picture in" << source;
    const QSizeF size = QSizeF(m_picture.size()) / m_picture.devicePixelRatio();
    setImplicitSize(size.width(), size.height());
    change();
    emit sourceChanged();
}

void TintedPicture::setColor(const QColor& color)
{
    if (color == m_color)
        return;
    m_color = color;
    change();
    emit colorChanged();
}

void TintedPicture::change()
{
    m_hasChanged = true;
    update();
}

QImage TintedPicture::tinted() const
{
    QImage image = m_picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRect(QPoint(), image.size()), m_color);
    return image;
}

QSGNode* TintedPicture::updatePaintNode(QSGNode* node, UpdatePaintNodeData*)
{
    auto* picture = static_cast<QSGImageNode*>(node);
    if (m_picture.isNull()) {
        delete picture;
        return nullptr;
    }
    if (!picture) {
        picture = window()->createImageNode();
        picture->setOwnsTexture(true);
        picture->setFiltering(QSGTexture::Linear);
        m_hasChanged = true;
    }
    if (m_hasChanged)
        picture->setTexture(
            window()->createTextureFromImage(tinted(), QQuickWindow::TextureCanUseAtlas));
    m_hasChanged = false;
    const QSizeF size = QSizeF(m_picture.size()) / m_picture.devicePixelRatio();
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    picture->setRect(QRectF(QPointF(std::round(corner.x()), std::round(corner.y())), size));
    return picture;
}

} // namespace corv
