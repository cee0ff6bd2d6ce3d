import QtQuick 2.7
import Review 1.0
import "."
import "Controls"

// The jobs of this run: what runs with its progress, what has ended with its result. The newest is
// the lowest. Escape closes it.
Rectangle {
    id: jobsPanel

    // A list with the roles job, title, done, total, progressText and resultText.
    property var jobs: null
    // The highest that there is room for.
    property real room: 300
    // Another part of the window has a use of its own for Escape.
    property bool escapeIsTaken: false
    signal closed()
    signal openFolderClicked(string folder)

    width: 380
    height: Math.min(room, 300, head.height + Math.max(60, list.contentHeight) + 8)
    color: Theme.panel
    border.width: 1
    border.color: Theme.menuBorder

    OnceShortcut {
        sequence: "Esc"
        enabled: jobsPanel.visible && !jobsPanel.escapeIsTaken
        onPressed: jobsPanel.closed()
    }

    // Clicks beside the buttons and the wheel are not meant for the picture below.
    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.AllButtons
        onWheel: wheel.accepted = true
    }

    Rectangle {
        id: head
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 1 }
        height: 26
        color: Theme.strip

        Text {
            anchors { left: parent.left; leftMargin: 8; verticalCenter: parent.verticalCenter }
            color: Theme.textBand
            text: "Jobs"
        }

        CorvToolbarButton {
            objectName: "closeJobsButton"
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            source: "images/icon_cross_cancel.png"
            tooltiptext: "Close the list of jobs"
            onClicked: jobsPanel.closed()
        }
    }

    Text {
        objectName: "emptyJobsText"
        anchors { left: parent.left; right: parent.right; top: head.bottom; margins: 12 }
        visible: list.count === 0
        color: Theme.textBand
        wrapMode: Text.WordWrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        text: "Nothing has run yet. Exports, saving and reading a log appear here."
    }

    ListView {
        id: list
        objectName: "jobList"
        anchors {
            left: parent.left
            right: parent.right
            top: head.bottom
            bottom: parent.bottom
            margins: 4
        }
        clip: true
        model: jobsPanel.jobs
        boundsBehavior: Flickable.StopAtBounds
        // At the newest, whatever is added or grows above it, until it is scrolled.
        property bool follows: true
        onContentYChanged: follows = atYEnd
        onContentHeightChanged: {
            if (follows)
                positionViewAtEnd();
        }
        Accessible.role: Accessible.List
        Accessible.name: "Jobs"

        delegate: Item {
            id: row

            readonly property bool running: job !== null && job.running
            readonly property string stateText: running ? progressText
                                                        : resultText !== "" ? resultText : "Done"

            width: list.width
            height: column.height + 10
            Accessible.role: Accessible.ListItem
            Accessible.name: title + ", " + stateText

            Column {
                id: column
                anchors {
                    left: parent.left
                    leftMargin: 6
                    right: rowButton.left
                    rightMargin: 6
                    verticalCenter: parent.verticalCenter
                }
                spacing: 3

                ElidedText {
                    width: parent.width
                    color: Theme.text
                    text: title
                }

                FlatProgressBar {
                    width: parent.width
                    height: 8
                    visible: row.running
                    indeterminate: total <= 0
                    maximumValue: Math.max(1, total)
                    value: done
                    Accessible.name: title
                }

                Text {
                    objectName: "jobResult" + index
                    width: parent.width
                    visible: text !== ""
                    color: job !== null && job.state === Job.Failed ? Theme.textFailed : Theme.textBand
                    font.pixelSize: 11
                    wrapMode: Text.Wrap
                    textFormat: Text.PlainText
                    text: row.stateText
                }
            }

            Item {
                id: rowButton
                anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
                width: cancelButton.visible ? cancelButton.width
                                            : folderButton.visible ? folderButton.width : 0
                height: 24

                CorvQuickStartButton {
                    id: cancelButton
                    objectName: "cancelJobButton"
                    width: 64
                    height: 24
                    visible: row.running && job.cancellable
                    text: "Cancel"
                    name: "Cancel " + title
                    onClicked: job.cancel()
                }

                CorvQuickStartButton {
                    id: folderButton
                    objectName: "openJobFolderButton"
                    width: 84
                    height: 24
                    visible: job !== null && job.resultFolder !== ""
                    text: "Open folder"
                    name: "Open the folder of " + title
                    onClicked: jobsPanel.openFolderClicked(job.resultFolder)
                }
            }
        }
    }

    ScrollMark { view: list }
}
