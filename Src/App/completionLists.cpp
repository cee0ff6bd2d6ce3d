#include "App/completionLists.h"

#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QPointer>

namespace corv {
namespace {

// The list gets all keys while it is open. Its proxy is the field that it completes.
QWidget* fieldOfOpenList()
{
    const QWidget* list = QApplication::activePopupWidget();
    QWidget* field = list ? list->focusProxy() : nullptr;
    return field && qobject_cast<QFileDialog*>(field->window()) ? field : nullptr;
}

// The dialog must not be gone before the window system has given it the keyboard back.
void pass(const QKeyEvent& key, const QPointer<QWidget>& field)
{
    QGuiApplication::sync();
    if (field)
        QCoreApplication::postEvent(field, new QKeyEvent(key));
}

class CompletionListWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress || !watched->isWidgetType())
            return QObject::eventFilter(watched, event);
        const auto* key = static_cast<QKeyEvent*>(event);
        QWidget* const field = fieldOfOpenList();
        if (!field || (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter))
            return QObject::eventFilter(watched, event);
        QApplication::activePopupWidget()->hide();
        QMetaObject::invokeMethod(
            field, [field = QPointer<QWidget>(field), key = *key] { pass(key, field); },
            Qt::QueuedConnection);
        return true;
    }
};

} // namespace

void closeListsBeforeFileDialogs(QGuiApplication& application)
{
    application.installEventFilter(new CompletionListWatch(&application));
}

} // namespace corv
