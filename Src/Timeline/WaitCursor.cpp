#include "Timeline/WaitCursor.h"

#include <QCursor>
#include <QGuiApplication>

namespace corv {

WaitCursor::WaitCursor()
    : m_shown(qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr)
{
    if (m_shown)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

WaitCursor::~WaitCursor()
{
    if (m_shown)
        QGuiApplication::restoreOverrideCursor();
}

} // namespace corv
