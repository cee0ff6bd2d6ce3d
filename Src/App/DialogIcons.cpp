#include "App/DialogIcons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace corv {
namespace {

// All coordinates are in a square of this side.
constexpr double side = 32;

// Halfway between the dark and the light ground of the boxes: a contrast of three to one on both.
constexpr QRgb blue = 0x2f86d9;
constexpr QRgb red = 0xf2432f;
constexpr QRgb amber = 0xf5a400;
constexpr QRgb brown = 0x4a3000;

void drawDisc(QPainter& painter, QRgb colour)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(colour));
    painter.drawEllipse(QRectF(2, 2, side - 4, side - 4));
}

QPen stroke(QRgb colour, double width)
{
    return QPen(QColor(colour), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// A bar with a dot: below it as in "!", above it as in "i".
void drawBarAndDot(QPainter& painter, QRgb colour, double top, double bottom, double dot)
{
    painter.setPen(stroke(colour, 3.4));
    painter.drawLine(QPointF(side / 2, top), QPointF(side / 2, bottom));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(colour));
    painter.drawEllipse(QPointF(side / 2, dot), 2.1, 2.1);
}

void drawFailure(QPainter& painter)
{
    drawDisc(painter, red);
    painter.setPen(stroke(0xffffff, 3.4));
    painter.drawLine(QPointF(11.5, 11.5), QPointF(20.5, 20.5));
    painter.drawLine(QPointF(20.5, 11.5), QPointF(11.5, 20.5));
}

void drawWarning(QPainter& painter)
{
    // The edge shows on light ground, the face on dark.
    painter.setPen(stroke(brown, 1.6));
    painter.setBrush(QColor(amber));
    painter.drawPolygon(QPolygonF({{16, 3.5}, {30, 28}, {2, 28}}));
    drawBarAndDot(painter, brown, 12.5, 18.5, 23.8);
}

void drawQuestion(QPainter& painter)
{
    drawDisc(painter, blue);
    QPainterPath hook(QPointF(11.8, 12.6));
    hook.cubicTo(11.8, 7.2, 20.4, 7.2, 20.4, 12.4);
    hook.cubicTo(20.4, 15.6, 16, 15.4, 16, 18.8);
    painter.setPen(stroke(0xffffff, 3));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(hook);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(16, 23.6), 2.1, 2.1);
}

class SignEngine : public QIconEngine
{
public:
    explicit SignEngine(DialogSign sign) : m_sign(sign) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / side, rect.height() / side);
        draw(*painter);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }

    QIconEngine* clone() const override { return new SignEngine(m_sign); }

private:
    void draw(QPainter& painter) const
    {
        switch (m_sign) {
        case DialogSign::Information:
            drawDisc(painter, blue);
            drawBarAndDot(painter, 0xffffff, 15, 23, 9.2);
            return;
        case DialogSign::Question:
            return drawQuestion(painter);
        case DialogSign::Warning:
            return drawWarning(painter);
        case DialogSign::Failure:
            return drawFailure(painter);
        }
    }

    DialogSign m_sign;
};

} // namespace

QIcon dialogIcon(DialogSign sign)
{
    return QIcon(new SignEngine(sign));
}

} // namespace corv
