#include "App/fileDialogs.h"

#include <QEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QTreeView>

namespace corv {
namespace {

void suit(const QFileDialog& dialog)
{
    for (QLineEdit* field : dialog.findChildren<QLineEdit*>())
        field->setCompleter(nullptr);
    if (const auto* files = dialog.findChild<QTreeView*>(QStringLiteral("treeView"))) {
        files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    }
}

// The dialogs are made deep inside the interface's modules; they are met when they are shown.
class FileDialogWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            if (const auto* dialog = qobject_cast<QFileDialog*>(watched))
                suit(*dialog);
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void suitFileDialogs(QGuiApplication& application)
{
    application.installEventFilter(new FileDialogWatch(&application));
}

} // namespace corv
