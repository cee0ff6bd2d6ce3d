import QtQuick 2.7
import Review 1.0
import "."

// Offers unsaved work of an earlier run. It waits for an answer as long as it takes, and is in
// nobody's way.
Rectangle {
    id: recoveryBar

    property Recovery recovery: null

    visible: recovery !== null && recovery.offered
    height: Math.max(offerText.implicitHeight + 16, 42)
    color: Theme.panel
    border.color: Theme.text
    border.width: 1

    Text {
        id: offerText
        objectName: "recoveryText"
        anchors { left: parent.left; right: buttons.left; margins: 10; verticalCenter: parent.verticalCenter }
        color: Theme.text
        wrapMode: Text.Wrap
        textFormat: Text.PlainText
        text: recoveryBar.recovery !== null ? recoveryBar.recovery.offerText : ""
    }

    Row {
        id: buttons
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        spacing: 8

        CorvQuickStartButton {
            objectName: "restoreRecoveryButton"
            width: 90
            height: 26
            visible: recoveryBar.recovery !== null && recoveryBar.recovery.restorable
            text: "Restore"
            onClicked: recoveryBar.recovery.restore()
        }
        CorvQuickStartButton {
            objectName: "discardRecoveryButton"
            width: 90
            height: 26
            text: "Discard"
            onClicked: recoveryBar.recovery.discard()
        }
        CorvQuickStartButton {
            objectName: "laterRecoveryButton"
            width: 90
            height: 26
            text: "Later"
            onClicked: recoveryBar.recovery.later()
        }
    }
}
