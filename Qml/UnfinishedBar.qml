import QtQuick 2.7
import "."

// Says what an earlier run of the program did not finish, until it is closed.
Rectangle {
    id: unfinishedBar

    property string text: ""
    signal closed()

    visible: text !== ""
    height: visible ? Math.max(unfinishedText.implicitHeight + 16, 42) : 0
    color: Theme.panel
    border.color: Theme.text
    border.width: 1

    Text {
        id: unfinishedText
        objectName: "unfinishedText"
        anchors {
            left: parent.left
            right: closeButton.left
            margins: 10
            verticalCenter: parent.verticalCenter
        }
        color: Theme.text
        wrapMode: Text.Wrap
        textFormat: Text.PlainText
        text: unfinishedBar.text
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    CorvQuickStartButton {
        id: closeButton
        objectName: "closeUnfinishedButton"
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        width: 90
        height: 26
        text: "Close"
        onClicked: unfinishedBar.closed()
    }
}
