import QtQuick 2.7
import "."
import "Controls"

Rectangle {
    id: export_progress
    objectName: "export_progress"

    property alias minimumValue: progressBar.minimumValue
    property alias maximumValue: progressBar.maximumValue
    property alias value: progressBar.value
    property alias text: text1.text
    signal abortClicked()

    width: 560
    height: 120
    color: Theme.clear

    Text {
        id: text1
        objectName: "text1"
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 20 }
        text: "Video export in progress"
        color: Theme.text
        font.pointSize: 12
        horizontalAlignment: Text.AlignLeft
        elide: Text.ElideRight
    }

    FlatProgressBar {
        id: progressBar
        objectName: "progressBar"
        anchors { left: parent.left; right: parent.right; top: text1.bottom; margins: 20 }
        anchors.topMargin: 12
        indeterminate: false
        Accessible.name: text1.text
    }

    CorvQuickStartButton {
        id: abortButton
        objectName: "abortButton"
        anchors { right: parent.right; rightMargin: 20; top: progressBar.bottom; topMargin: 12 }
        width: 100
        height: 26
        text: "Abort"
        onClicked: export_progress.abortClicked()
    }
}
