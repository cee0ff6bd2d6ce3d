#include "App/completionLists.h"

#include <QEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>

namespace corv {
namespace {

// The dialogs are made deep inside the interface's modules; they are met when they are shown.
class CompletionListWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            if (auto* dialog = qobject_cast<QFileDialog*>(watched))
                for (QLineEdit* field : dialog->findChildren<QLineEdit*>())
                    field->setCompleter(nullptr);
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void dropListsOfFileDialogs(QGuiApplication& application)
{
    application.installEventFilter(new CompletionListWatch(&application));
}

} // namespace corv
