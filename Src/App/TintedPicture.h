#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <QUrl>

namespace corv {

/// Shows a picture of the compiled resources in one colour: its opaque parts are that colour. At
/// its own size, in the middle, on whole pixels; on dense screens from the picture of twice or
/// three times the size, if there is one. Interface thread; drawn on that of the scene graph while
/// the other waits.
class TintedPicture : public QQuickItem
{
    Q_OBJECT
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit TintedPicture(QQuickItem* parent = nullptr);

    QUrl source() const { return m_source; }

    /// Sets the implicit size to the picture's. One that cannot be read shows nothing.
    void setSource(const QUrl& source);

    QColor color() const { return m_color; }
    void setColor(const QColor& color);

signals:
    void sourceChanged();
    void colorChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    QImage tinted() const;
    void change();

    QUrl m_source;
    QColor m_color = Qt::white;
    QImage m_picture;
    bool m_hasChanged = false; ///< since it was drawn
};

} // namespace corv
