import QtQuick 2.7
import QtQuick.Window 2.2
import Review 1.0
import "."
import "Controls"

// Covers the window while the files of a flight are copied beside its project. Closing it cancels.
Window {
    id: copyProgressWindow
    objectName: "copyProgressWindow"

    property Job job: null
    // What cannot be copied, as soon as it is known.
    property string problem: ""

    // A copy may end before the desktop has given its window the keyboard. Hidden then, the window
    // would keep it, and no key would work: it stays until it has had it for a moment.
    property bool isSettled: false

    onJobChanged: hideAfterCopy()
    onIsSettledChanged: hideAfterCopy()

    function hideAfterCopy() {
        if (job !== null)
            visible = true;
        else if (isSettled)
            visible = false;
    }

    onVisibleChanged: {
        if (!visible)
            isSettled = false;
    }

    visible: false
    title: "Copying the files of the flight"
    width: 560
    height: minimumHeight
    minimumWidth: 400
    minimumHeight: problem === "" ? 120 : 136 + problemText.implicitHeight
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

    Item {
        id: keyboardPlace
        focus: true
    }

    Timer {
        running: keyboardPlace.activeFocus && !copyProgressWindow.isSettled
        interval: 100
        onTriggered: copyProgressWindow.isSettled = true
    }

    // The keyboard may be with another program.
    Timer {
        running: copyProgressWindow.visible && copyProgressWindow.job === null
        interval: 2000
        onTriggered: copyProgressWindow.visible = false
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
