#include "Shell/HeldKey.h"

#include <QCoreApplication>
#include <QEvent>

void KeyRepeats::noteRelease(const QKeyEvent& release)
{
    m_code = release.nativeScanCode();
    m_timestamp = release.timestamp();
}

bool KeyRepeats::isRepeat(const QKeyEvent& press) const
{
    return press.isAutoRepeat() ||
           (press.nativeScanCode() != 0 && press.timestamp() != 0 &&
            press.nativeScanCode() == m_code && press.timestamp() == m_timestamp);
}

HeldKey::HeldKey(QObject* parent) : QObject(parent)
{
    if (QCoreApplication* application = QCoreApplication::instance())
        application->installEventFilter(this);
}

bool HeldKey::eventFilter(QObject* watched, QEvent* event)
{
    // Every event of the application passes here. A shortcut is looked up after the first of the
    // two kinds of press.
    switch (event->type()) {
    case QEvent::KeyRelease:
        m_keys.noteRelease(*static_cast<QKeyEvent*>(event));
        break;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        m_repeats = m_keys.isRepeat(*static_cast<QKeyEvent*>(event));
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
