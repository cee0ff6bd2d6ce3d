#include "App/saveDialogSuffix.h"

#include <QEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QRegularExpression>

namespace corv {
namespace {

// "JPEG (*.jpg)" has "jpg"; a filter of all files has none.
QString firstSuffix(const QString& nameFilter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([^\\s)*]+)"));
    return pattern.match(nameFilter).captured(1);
}

// The dialogs are made deep inside the interface's modules, which keep the suffix that a document
// names to themselves; they are met when they are shown.
class SaveDialogWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            auto* dialog = qobject_cast<QFileDialog*>(watched);
            // One of the desktop's is not on screen itself, and asks before it completes a name.
            if (dialog && dialog->acceptMode() == QFileDialog::AcceptSave &&
                !dialog->testAttribute(Qt::WA_DontShowOnScreen))
                complete(*dialog);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void complete(QFileDialog& dialog)
    {
        dialog.setDefaultSuffix(firstSuffix(dialog.selectedNameFilter()));
        connect(&dialog, &QFileDialog::filterSelected, this, &SaveDialogWatch::takeFilter,
                Qt::UniqueConnection);
    }

    void takeFilter(const QString& nameFilter)
    {
        if (auto* dialog = qobject_cast<QFileDialog*>(sender()))
            dialog->setDefaultSuffix(firstSuffix(nameFilter));
    }
};

} // namespace

void completeNamesInSaveDialogs(QGuiApplication& application)
{
    application.installEventFilter(new SaveDialogWatch(&application));
}

} // namespace corv
