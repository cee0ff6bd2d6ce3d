import QtQuick 2.7
import Review 1.0
import "."

// What the last run left: the report of its crash, and unsaved work, which is offered. It waits for
// an answer as long as it takes, and is in nobody's way.
Rectangle {
    id: recoveryBar

    property Recovery recovery: null
    // What to say of a crash of the last run; empty where there was none.
    property string crashText: ""

    signal crashReportWanted()
    signal crashNoticeClosed()

    readonly property bool crashed: crashText !== ""
    readonly property bool offered: recovery !== null && recovery.offered

    visible: crashed || offered
    height: rows.height
    color: Theme.panel
    border.color: Theme.text
    border.width: 1

    MediaReturn {
        objectName: "recoveryReturn"
        awaited: recoveryBar.offered
        onPossible: recoveryBar.recovery.lookAgain()
    }

    LocateDialog {
        id: locateDialog
        objectName: "locateRecoveryDialog"
        onChosen: recoveryBar.recovery.locate(path)
    }

    Column {
        id: rows
        anchors { left: parent.left; right: parent.right; top: parent.top }

        NoticeRow {
            id: crashRow
            objectName: "crashRow"
            visible: recoveryBar.crashed
            text: recoveryBar.crashText
            textName: "crashText"

            CorvQuickStartButton {
                objectName: "showCrashReportButton"
                width: 98
                height: 26
                text: "Show report"
                onClicked: recoveryBar.crashReportWanted()
            }
            CorvQuickStartButton {
                objectName: "closeCrashNoticeButton"
                width: 90
                height: 26
                text: "Close"
                onClicked: recoveryBar.crashNoticeClosed()
            }
        }

        NoticeRow {
            id: offerRow
            visible: recoveryBar.offered
            text: recoveryBar.recovery !== null ? recoveryBar.recovery.offerText : ""
            textName: "recoveryText"

            CorvQuickStartButton {
                objectName: "restoreRecoveryButton"
                width: 90
                height: 26
                visible: recoveryBar.recovery !== null && recoveryBar.recovery.restorable
                text: "Restore"
                onClicked: recoveryBar.recovery.restore()
            }
            CorvQuickStartButton {
                objectName: "locateRecoveryButton"
                width: 90
                height: 26
                visible: recoveryBar.recovery !== null && recoveryBar.recovery.locatable
                text: "Locate…"
                onClicked: locateDialog.open()
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
}
