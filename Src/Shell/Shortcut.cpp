#include "Shell/Shortcut.h"

#include "Shell/blockedKeys.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QWindow>

Shortcut::Shortcut(QObject* parent) : QObject(parent)
{
    if (QCoreApplication* application = QCoreApplication::instance())
        application->installEventFilter(this);
}

QVariant Shortcut::key() const
{
    return QVariant::fromValue(m_key);
}

void Shortcut::setKey(const QVariant& key)
{
    const QKeySequence sequence = key.value<QKeySequence>();
    if (sequence == m_key)
        return;
    m_key = sequence;
    emit keyChanged();
}

bool Shortcut::eventFilter(QObject* watched, QEvent* event)
{
    // Every event of the application passes here: the type is looked at first.
    if (event->type() == QEvent::KeyRelease) {
        // A held key is released again and again in between its repeats; that is no release.
        const auto* release = static_cast<QKeyEvent*>(event);
        if (!release->isAutoRepeat()) {
            m_repeats.noteRelease(*release);
            m_wasPressed = m_pressed;
            m_pressed = false;
        }
    } else if (event->type() == QEvent::KeyPress && !m_key.isEmpty()) {
        if (watched->isWindowType() && corv::isBlockedByModalWindow(static_cast<QWindow*>(watched)))
            return QObject::eventFilter(watched, event);
        const auto* keyEvent = static_cast<QKeyEvent*>(event);
        // A repeat that could not be known at its release.
        if (!keyEvent->isAutoRepeat() && m_repeats.isRepeat(*keyEvent))
            m_pressed = m_wasPressed;
        const int code = keyEvent->key();
        const bool isModifier = code >= Qt::Key_Shift && code <= Qt::Key_Alt;
        if (!isModifier && !m_pressed &&
            QKeySequence(code + static_cast<int>(keyEvent->modifiers())) == m_key) {
            m_pressed = true;
            emit activated();
        }
    }
    return QObject::eventFilter(watched, event);
}
