import QtQuick 2.7
import "."
import "Controls"

// What the importer shows in place of its list while it searches: what is read, how far it is, and
// the way to end it.
Column {
    id: importerProgress

    property alias text: txtMatchingBusyIndicator.text
    readonly property alias bar: progressBar
    signal aborted()

    spacing: 14

    Text {
        id: txtMatchingBusyIndicator
        objectName: "txtMatchingBusyIndicator"
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Matching in progress..."
        color: Theme.text
    }

    StripedProgressBar {
        id: progressBar
        objectName: "progressBar"
        width: 400
        Accessible.name: txtMatchingBusyIndicator.text
    }

    ImporterButton {
        id: abortProcessingButton
        objectName: "abortProcessingButton"
        anchors.horizontalCenter: parent.horizontalCenter
        width: 100
        height: 25
        text: "Abort"
        onClicked: importerProgress.aborted()
    }
}
