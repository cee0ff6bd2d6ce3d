#include "Shell/copiedDrops.h"

#include <QDropEvent>
#include <QGuiApplication>

namespace corv {
namespace {

class CopiedDrops : public QObject
{
public:
    using QObject::QObject;

    // Before the window has the event: the answer of an item in it does not reach the source.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        if (type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop) {
            auto* drop = static_cast<QDropEvent*>(event);
            if (drop->possibleActions() & Qt::CopyAction)
                drop->setDropAction(Qt::CopyAction);
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void takeDropsAsCopies(QGuiApplication& application)
{
    application.installEventFilter(new CopiedDrops(&application));
}

} // namespace corv
