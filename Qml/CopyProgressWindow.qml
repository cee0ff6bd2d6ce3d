import QtQuick 2.7
import QtQuick.Window 2.2
import Review 1.0
import "."
import "Controls"

// Covers the window while the files of a flight are copied beside its project. Closing it cancels.
WorkWindow {
    id: copyProgressWindow
    objectName: "copyProgressWindow"

    property Job job: null
    // What cannot be copied, as soon as it is known.
    property string problem: ""

    isAtWork: job !== null
    onEndWanted: cancel()

    title: "Copying the files of the flight"
    width: 560
    height: minimumHeight
    minimumWidth: 400
    minimumHeight: problem === "" ? 120 : 136 + problemText.implicitHeight

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
        value: copyProgressWindow.job === null ? maximumValue
               : copyProgressWindow.job.total > 0
                 ? copyProgressWindow.job.done / copyProgressWindow.job.total : 0
        Accessible.name: "Progress of the copy"
    }

    Text {
        id: problemText
        objectName: "copyProblemText"
        anchors { left: parent.left; right: parent.right; top: progressBar.bottom; margins: 14 }
        visible: copyProgressWindow.problem !== ""
        color: Theme.text
        wrapMode: Text.Wrap
        textFormat: Text.PlainText
        text: copyProgressWindow.problem + " The project will refer to it where it is."
        Accessible.role: Accessible.StaticText
        Accessible.name: text
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
