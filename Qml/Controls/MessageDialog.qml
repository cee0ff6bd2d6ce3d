import QtQuick 2.7
import QtQuick.Dialogs 1.2 as Dialogs

// Says something, or asks for yes or no, in a box over the window.
Dialogs.MessageDialog {
    enum Kind { Plain, Warning, Critical, Question }

    property int kind: MessageDialog.Plain

    icon: kind === MessageDialog.Warning ? Dialogs.StandardIcon.Warning
          : kind === MessageDialog.Critical ? Dialogs.StandardIcon.Critical
          : kind === MessageDialog.Question ? Dialogs.StandardIcon.Question
                                            : Dialogs.StandardIcon.NoIcon
    standardButtons: kind === MessageDialog.Question
                     ? Dialogs.StandardButton.Yes | Dialogs.StandardButton.No
                     : Dialogs.StandardButton.Ok
}
