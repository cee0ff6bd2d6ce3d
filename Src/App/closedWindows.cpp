#include "App/closedWindows.h"

#include <QEvent>
#include <QGuiApplication>
#include <QQuickWindow>

namespace corv {
namespace {

class DialogWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* const window =
            event->type() == QEvent::Show ? qobject_cast<QQuickWindow*>(watched) : nullptr;
        if (window && window->transientParent() && window->type() == Qt::Dialog) {
            window->setPersistentSceneGraph(false);
            window->setPersistentOpenGLContext(false);
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void freeClosedWindows(QGuiApplication& application)
{
    application.installEventFilter(new DialogWatch(&application));
}

} // namespace corv
