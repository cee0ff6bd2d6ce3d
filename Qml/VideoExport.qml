import QtQuick 2.7
import QtQuick.Window 2.2
import Qt.labs.settings 1.0
import FileChoice 1.0
// After QtQuick: the native Shortcut with a `key` is meant, not the built-in one.
import Shortcuts 1.0
import "."
import "Controls"
import "paths.js" as Paths

Window {
    id: videoExport
    objectName: "videoExport"

    property url videoUrl: ""
    // The chosen name was completed: nobody has been asked whether to replace such a file.
    property bool suffixAdded: false
    // The name that the dialog proposes.
    property string proposedName: ""
    property bool ok: false
    // Whether the video shows the flight instruments; without a log it cannot.
    property alias instruments: instrumentsCheckBox.checked
    property alias instrumentsEnabled: instrumentsCheckBox.enabled
    // Whether it shows the colour bar of the thermal picture; while that is off it cannot.
    property alias thermalBar: thermalBarCheckBox.checked
    property alias thermalBarEnabled: thermalBarCheckBox.enabled

    title: "Export video"
    width: 600
    height: folderRect.height + cancelButton.height + 30
    minimumWidth: 400
    minimumHeight: 113
    modality: Qt.WindowModal
    color: Theme.dialog

    onVisibleChanged: {
        if (!visible)
            settings.folder = fileDialog.folder;
    }

    Settings {
        id: settings
        category: "videoExport"
        property url folder: ""
    }

    FileChoice {
        id: fileDialog
        objectName: "fileDialog"
        title: "Please choose a video to export"
        selectExisting: false
        nameFilters: ["Video files (*.mp4)"]
        folder: settings.folder
        proposedName: videoExport.proposedName
        onAccepted: {
            videoExport.videoUrl = Paths.withSuffix(fileDialog.fileUrl.toString(),
                                                    fileDialog.nameFilters[0]);
            videoExport.suffixAdded = videoExport.videoUrl.toString()
                    !== fileDialog.fileUrl.toString();
            folderTextInput.text = videoExport.videoUrl;
            folderTextInput.ensureVisible(folderTextInput.length);
        }
    }

    MessageDialog {
        id: warningDialog
        objectName: "warningDialog"
        title: "Warning"
        kind: MessageDialog.Warning
    }

    // Kept as they are: a CorvButton has no pressButton(), so neither key changes anything.
    Shortcut {
        key: "Return"
        onActivated: {
            if (videoExport.visible)
                okButton.pressButton();
        }
    }

    Shortcut {
        key: "Escape"
        onActivated: {
            if (videoExport.visible)
                cancelButton.pressButton();
        }
    }

    // It scrolls where the window is lower than it is.
    Flickable {
        id: contentsView
        objectName: "videoExportContents"
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            bottom: okButton.top
            bottomMargin: 15
        }
        contentHeight: folderRect.height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        DisabledToolTips {
            objectName: "cornerToolTips"
            row: folderRect
        }

        Rectangle {
            id: folderRect
            width: parent.width
            height: note.y + note.height
            color: Theme.dialogBand

            Text {
                id: folderLabel
                anchors { left: parent.left; leftMargin: 10; top: parent.top; topMargin: 12 }
                text: "Video file to export:"
                color: Theme.text
            }

            CorvFieldFrame {
                id: folderFrame
                anchors {
                    left: folderLabel.left
                    right: browseButton.left
                    rightMargin: 10
                    verticalCenter: browseButton.verticalCenter
                }

                readOnly: true

                CorvTextInput {
                    id: folderTextInput
                    objectName: "folderTextInput"
                    readOnly: true
                    Accessible.name: "Video file to export"
                }
            }

            CorvButton {
                id: browseButton
                objectName: "browseButton"
                anchors {
                    right: parent.right
                    rightMargin: 10
                    top: folderLabel.bottom
                    topMargin: 8
                }
                width: 80
                height: 30
                text: "Browse..."
                onClicked: fileDialog.visible = true
            }

            CorvCheckBox {
                id: instrumentsCheckBox
                objectName: "instrumentsCheckBox"
                anchors { left: folderLabel.left; top: browseButton.bottom; topMargin: 12 }
                text: "Show the flight instruments in a corner"
                disabledReason: "import a flight log first"
            }

            CorvCheckBox {
                id: thermalBarCheckBox
                objectName: "thermalBarCheckBox"
                anchors { left: folderLabel.left; top: instrumentsCheckBox.bottom; topMargin: 8 }
                text: "Show the thermal colour bar in a corner"
                disabledReason: "show the thermal picture first"
            }

            Text {
                id: note
                objectName: "note"
                anchors {
                    left: folderLabel.left
                    right: parent.right
                    rightMargin: 10
                    top: thermalBarCheckBox.bottom
                    topMargin: 12
                }
                wrapMode: Text.WordWrap
                color: Theme.textSoft
                Accessible.role: Accessible.StaticText
                Accessible.name: text
                text: "Video will be rendered with the same apparance as on the player. This includes "
                      + "thermal camera overlay visibility and adjustments, image brightness and "
                      + "contrast.\n"
            }
        }
    }

    ScrollMark { view: contentsView }

    CorvButton {
        id: cancelButton
        objectName: "cancelButton"
        anchors { right: okButton.left; rightMargin: 10; top: okButton.top }
        width: 80
        height: 30
        text: "Cancel"
        onClicked: {
            videoExport.ok = false;
            videoExport.close();
        }
    }

    CorvButton {
        id: okButton
        objectName: "okButton"
        anchors { right: parent.right; rightMargin: 10; bottom: parent.bottom; bottomMargin: 15 }
        width: 60
        height: 30
        text: "Ok"
        onClicked: {
            if (Paths.hasExtension(videoExport.videoUrl, [".mp4"])) {
                videoExport.ok = true;
                videoExport.close();
            } else {
                warningDialog.text = "Invalid file extension, chose a \".mp4\" file";
                warningDialog.visible = true;
            }
        }
    }
}
