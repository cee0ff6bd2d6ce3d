import QtQuick 2.7
import Review 1.0
import "."

// Says which files of a project are missing, and looks for them where the pilot says. It stays for
// as long as they are missing: a card may have to be found first. Once they are back it offers to
// open the project.
Rectangle {
    id: missingMediaBar

    property MissingMedia missing: null
    readonly property bool back: missing !== null && missing.back

    visible: missing !== null && missing.offered
    height: missingRow.height
    color: Theme.panel
    border.color: Theme.text
    border.width: 1

    MediaReturn {
        objectName: "missingMediaReturn"
        awaited: missingMediaBar.visible
        onPossible: missingMediaBar.missing.lookAgain()
    }

    LocateDialog {
        id: folderDialog
        objectName: "locateDialog"
        onChosen: missingMediaBar.missing.locate(path)
    }

    NoticeRow {
        id: missingRow
        textName: "missingMediaText"
        text: missingMediaBar.missing === null ? ""
              : missingMediaBar.missing.searching ? "Looking for the missing files..."
                                                  : missingMediaBar.missing.text

        CorvQuickStartButton {
            objectName: "locateMediaButton"
            width: 90
            height: 26
            enabled: missingMediaBar.missing !== null && !missingMediaBar.missing.searching
            text: missingMediaBar.back ? "Open" : "Locate…"
            onClicked: missingMediaBar.back ? missingMediaBar.missing.openAgain()
                                            : folderDialog.open()
        }
        CorvQuickStartButton {
            objectName: "dismissMissingMediaButton"
            width: 90
            height: 26
            text: missingMediaBar.missing !== null && missingMediaBar.missing.searching ? "Cancel"
                                                                                        : "Later"
            onClicked: missingMediaBar.missing.dismiss()
        }
    }
}
