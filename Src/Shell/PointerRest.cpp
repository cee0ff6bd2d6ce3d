#include "Shell/PointerRest.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace {

constexpr int usualRestMs = 2500;

bool isTab(const QEvent& event)
{
    if (event.type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<const QKeyEvent&>(event).key();
    return key == Qt::Key_Tab || key == Qt::Key_Backtab;
}

} // namespace

PointerRest::PointerRest(QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(usualRestMs);
    connect(&m_timer, &QTimer::timeout, this, [this] { setResting(true); });
}

void PointerRest::setWindow(QWindow* window)
{
    if (window == m_window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = window;
    if (m_window)
        m_window->installEventFilter(this);
    emit windowChanged();
}

void PointerRest::setWatching(bool watching)
{
    if (watching == m_isWatching)
        return;
    m_isWatching = watching;
    m_position = {-1, -1};
    emit watchingChanged();
    emit positionChanged();
    moved();
}

void PointerRest::setRestMs(int ms)
{
    if (ms == restMs())
        return;
    m_timer.setInterval(ms);
    emit restMsChanged();
}

bool PointerRest::eventFilter(QObject* watched, QEvent* event)
{
    const bool isPointer = event->type() == QEvent::MouseMove ||
                           event->type() == QEvent::MouseButtonPress ||
                           event->type() == QEvent::MouseButtonRelease;
    if (m_isWatching && isPointer) {
        const QPointF position = static_cast<QMouseEvent*>(event)->localPos();
        // A pointer that stays where it is "moves" when the things below it change.
        const bool hasMoved = position != m_position || event->type() != QEvent::MouseMove;
        m_position = position;
        if (hasMoved) {
            emit positionChanged();
            moved();
        }
    } else if (m_isWatching && event->type() == QEvent::Wheel) {
        moved();
    } else if (m_isWatching && isTab(*event)) {
        emit tabPressed();
    }
    return QObject::eventFilter(watched, event);
}

void PointerRest::moved()
{
    if (m_isWatching)
        m_timer.start();
    else
        m_timer.stop();
    setResting(false);
}

void PointerRest::setResting(bool resting)
{
    if (resting == m_isResting)
        return;
    m_isResting = resting;
    emit restingChanged();
}
