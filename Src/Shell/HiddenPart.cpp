#include "Shell/HiddenPart.h"

#include <QScreen>
#include <algorithm>

namespace corv {

void HiddenPart::setWindow(QObject* window)
{
    m_window = qobject_cast<QWindow*>(window);
    if (!m_window)
        return;
    connect(m_window, &QWindow::yChanged, this, &HiddenPart::measure);
    connect(m_window, &QWindow::heightChanged, this, &HiddenPart::measure);
    connect(m_window, &QWindow::visibilityChanged, this, &HiddenPart::measure);
    connect(m_window, &QWindow::screenChanged, this, &HiddenPart::watchScreen);
    watchScreen(m_window->screen());
}

void HiddenPart::watchScreen(QScreen* screen)
{
    if (m_screen)
        disconnect(m_screen, nullptr, this, nullptr);
    m_screen = screen;
    if (m_screen) {
        connect(m_screen, &QScreen::geometryChanged, this, &HiddenPart::measure);
        connect(m_screen, &QScreen::availableGeometryChanged, this, &HiddenPart::measure);
    }
    measure();
}

void HiddenPart::measure()
{
    int hidden = 0;
    if (m_window && m_screen) {
        const bool isAlone = m_window->visibility() == QWindow::FullScreen;
        const QRect area = isAlone ? m_screen->geometry() : m_screen->availableGeometry();
        hidden = std::max(0, m_window->y() + m_window->height() - (area.y() + area.height()));
    }
    if (hidden == m_height)
        return;
    m_height = hidden;
    emit heightChanged();
}

} // namespace corv
