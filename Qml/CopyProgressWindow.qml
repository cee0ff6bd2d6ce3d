import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Window 2.2
import Review 1.0
import "."

// Covers the window while the files of a flight are copied beside its project. Closing it cancels.
Window {
    id: copyProgressWindow
    objectName: "copyProgressWindow"

    property Job job: null

    visible: job !== null
    title: "Copying the files of the flight"
    width: 560
    height: 120
    minimumWidth: 400
    minimumHeight: 120
    color: Theme.dialog
    flags: Qt.Dialog | Qt.CustomizeWindowHint | Qt.WindowTitleHint
    modality: Qt.ApplicationModal
    onClosing: {
        close.accepted = false;
        cancel();
    }

    function cancel() {
        if (job !== null)
            job.cancel();
    }

    Text {
        id: progressText
        objectName: "copyProgressText"
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        color: Theme.text
        elide: Text.ElideRight
        text: copyProgressWindow.job !== null && copyProgressWindow.job.progressText !== ""
              ? copyProgressWindow.job.progressText : "Copying..."
    }

    ProgressBar {
        id: progressBar
        objectName: "copyProgressBar"
        anchors { left: parent.left; right: parent.right; top: progressText.bottom; margins: 14 }
        minimumValue: 0
        maximumValue: 1
        value: copyProgressWindow.job !== null && copyProgressWindow.job.total > 0
               ? copyProgressWindow.job.done / copyProgressWindow.job.total : 0
        Accessible.name: "Progress of the copy"
    }

    CorvQuickStartButton {
        objectName: "cancelCopyButton"
        anchors { right: parent.right; bottom: parent.bottom; margins: 10 }
        width: 100
        height: 26
        text: "Cancel"
        onClicked: copyProgressWindow.cancel()
    }
}
