#include "App/look.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPalette>
#include <QPointer>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>
#include <QVector>
#include <QWindow>
#include <algorithm>

namespace corv {
namespace {

QPalette darkPalette()
{
    const QColor ground(0x3a, 0x3a, 0x3a);
    const QColor field(0x2b, 0x2b, 0x2b);
    const QColor button(0x55, 0x55, 0x55);
    const QColor text(0xee, 0xee, 0xee);
    const QColor faint(0x9c, 0x9c, 0x9c);
    QPalette palette;
    palette.setColor(QPalette::Window, ground);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, QColor(0x33, 0x33, 0x33));
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ToolTipBase, Qt::black);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Highlight, QColor(0x2c, 0x74, 0x40));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x7a, 0xc8, 0xff));
    palette.setColor(QPalette::LinkVisited, QColor(0xc0, 0xa8, 0xff));
    return palette;
}

// The boxes are made deep inside the interface's modules; they are met when they are shown.
class MessageBoxWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool shown = event->type() == QEvent::Show;
        if (shown || event->type() == QEvent::WindowActivate) {
            if (auto* box = qobject_cast<QMessageBox*>(watched))
                shown ? take(box) : raiseNewest(box);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void take(QMessageBox* box)
    {
        // File names are in these texts, and a name may look like markup.
        box->setTextFormat(Qt::PlainText);
        stackOnNewest(box);
        m_boxes.append(box);
        QTimer::singleShot(0, box, [this] { raiseNewest(nullptr); });
    }

    // The window system keeps a window above the one it belongs to, also when that one is raised
    // without becoming active.
    void stackOnNewest(QMessageBox* box) const
    {
        QWindow* const window = box->windowHandle();
        if (!window || m_boxes.contains(box))
            return;
        for (auto older = m_boxes.crbegin(); older != m_boxes.crend(); ++older) {
            if (*older && (*older)->isVisible() && (*older)->windowHandle()) {
                window->setTransientParent((*older)->windowHandle());
                return;
            }
        }
    }

    // Unless `active` is the newest: the older ones wait below until it is answered.
    void raiseNewest(const QMessageBox* active)
    {
        const auto gone = [](const QPointer<QMessageBox>& box) { return !box || box->isHidden(); };
        m_boxes.erase(std::remove_if(m_boxes.begin(), m_boxes.end(), gone), m_boxes.end());
        if (m_boxes.isEmpty() || m_boxes.last() == active)
            return;
        m_boxes.last()->raise();
        m_boxes.last()->activateWindow();
    }

    QVector<QPointer<QMessageBox>> m_boxes;
};

} // namespace

void followScreenScale()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void dressDialogs(QApplication& application)
{
    // The one style that draws everything from the palette.
    if (QStyle* style = QStyleFactory::create(QStringLiteral("Fusion")))
        QApplication::setStyle(style);
    QApplication::setPalette(darkPalette());
    application.installEventFilter(new MessageBoxWatch(&application));
}

} // namespace corv
