import QtQuick 2.7
import "Controls"

// Asks before something is replaced; "No" is what a pilot who is not sure presses.
Item {
    id: questionDialog

    property var whenAccepted: undefined

    function ask(title, text, accepted) {
        whenAccepted = accepted;
        box.title = title;
        box.text = text;
        box.open();
    }

    MessageDialog {
        id: box
        objectName: "questionBox"
        kind: MessageDialog.Question
        onYes: {
            var accepted = questionDialog.whenAccepted;
            questionDialog.whenAccepted = undefined;
            accepted();
        }
        onNo: questionDialog.whenAccepted = undefined
    }
}
