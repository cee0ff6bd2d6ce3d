import QtQuick 2.7
import "."

// Says what an earlier run of the program did not finish, until it is closed.
Rectangle {
    id: unfinishedBar

    property string text: ""
    signal closed()

    visible: text !== ""
    height: visible ? unfinishedRow.height : 0
    color: Theme.panel
    border.color: Theme.text
    border.width: 1

    NoticeRow {
        id: unfinishedRow
        textName: "unfinishedText"
        text: unfinishedBar.text

        CorvQuickStartButton {
            objectName: "closeUnfinishedButton"
            width: 90
            height: 26
            text: "Close"
            onClicked: unfinishedBar.closed()
        }
    }
}
