#include "Shell/OpenedWindows.h"

#include <QCoreApplication>
#include <QEvent>

namespace corv {

OpenedWindows::OpenedWindows(QObject* parent) : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool OpenedWindows::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && watched->isWindowType())
        emit opened();
    return QObject::eventFilter(watched, event);
}

} // namespace corv
