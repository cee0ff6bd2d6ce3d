#include "Shell/blockedKeys.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWindow>

namespace corv {
namespace {

bool isOrBelongsTo(const QWindow* window, const QWindow* owner)
{
    for (; window; window = window->transientParent()) {
        if (window == owner)
            return true;
    }
    return false;
}

class BlockedKeys : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // Qt keeps keys from a blocked window, and so does not ask it before it looks for a
        // shortcut. Until a dialog has the keyboard those of the window behind it match.
        if (event->type() == QEvent::Shortcut) {
            const QWindow* const focused = QGuiApplication::focusWindow();
            return focused && isBlockedByModalWindow(focused);
        }
        const bool isKey = event->type() == QEvent::KeyPress ||
                           event->type() == QEvent::KeyRelease ||
                           event->type() == QEvent::ShortcutOverride;
        if (!isKey || !watched->isWindowType() ||
            !isBlockedByModalWindow(static_cast<QWindow*>(watched)))
            return QObject::eventFilter(watched, event);
        // An override that is taken keeps the key from the shortcuts.
        event->accept();
        return true;
    }
};

// Where the keyboard follows the pointer, a dialog that closes leaves it with the window that is
// below the pointer then.
void passKeyboardOn(const QWindow* focused)
{
    if (focused && isBlockedByModalWindow(focused))
        QGuiApplication::modalWindow()->requestActivate();
}

} // namespace

bool isBlockedByModalWindow(const QWindow* window)
{
    const QWindow* const modal = QGuiApplication::modalWindow();
    if (!modal || window->type() == Qt::Popup || isOrBelongsTo(window, modal))
        return false;
    return modal->modality() == Qt::ApplicationModal || isOrBelongsTo(modal, window);
}

void dropKeysOfBlockedWindows(QGuiApplication& application)
{
    application.installEventFilter(new BlockedKeys(&application));
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, passKeyboardOn);
}

} // namespace corv
