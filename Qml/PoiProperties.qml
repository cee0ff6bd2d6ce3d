import QtQuick 2.7
import QtQuick.Layouts 1.1
import QtQuick.Window 2.2
import "."
import "Controls"

Window {
    id: propertiesWindow
    objectName: "poiPropertiesWindow"

    property bool ok: false
    property string poiName: ""
    property string poiDescription: ""
    // The key of the point of interest, handed through untouched.
    property var poiTime
    // Owns the message about a missing name.
    property QtObject messageOwner: propertiesWindow

    function populate() {
        tfName.text = poiName;
        taDescription.text = poiDescription;
        // What is typed replaces the name.
        tfName.selectAll();
    }

    function okPressed() {
        if (tfName.text === "") {
            var dialog = compDialog.createObject(messageOwner);
            dialog.title = "Missing information";
            dialog.text = "This point of interest must have a name.";
            dialog.visible = true;
            return;
        }
        poiName = tfName.text;
        poiDescription = taDescription.text;
        ok = true;
        close();
    }

    function cancelPressed() {
        close();
    }

    // What is described is in view.
    readonly property bool isUsedWithPicture: true

    title: "Edit point of interest"
    width: 400
    height: 200
    minimumWidth: 400
    minimumHeight: 200
    color: Theme.editDialog
    modality: Qt.WindowModal
    flags: Qt.Dialog

    Shortcut {
        sequence: "Ctrl+Return"
        onActivated: propertiesWindow.okPressed()
    }

    Shortcut {
        sequence: "Esc"
        onActivated: propertiesWindow.cancelPressed()
    }

    Component {
        id: compDialog

        MessageDialog {
            kind: MessageDialog.Critical
            onVisibleChanged: {
                if (!visible) {
                    destroy(1);
                    // The message belongs to the main window, which would get the keyboard next.
                    Qt.callLater(propertiesWindow.requestActivate);
                }
            }
        }
    }

    GridLayout {
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            bottom: btn_save.top
            margins: 10
        }
        columns: 2
        columnSpacing: 8
        rowSpacing: 8

        Text {
            text: "Name"
            color: Theme.text
        }

        TextField {
            id: tfName
            objectName: "tfName"
            Layout.fillWidth: true
            focus: true
            Accessible.name: "Name"
        }

        Text {
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 4
            text: "Description"
            color: Theme.text
        }

        TextArea {
            id: taDescription
            objectName: "taDescription"
            Layout.fillWidth: true
            Layout.fillHeight: true
            tabChangesFocus: true
            Accessible.name: "Description"
        }
    }

    CorvButton {
        id: btn_cancel
        objectName: "btn_cancel"
        anchors { right: btn_save.left; rightMargin: 8; bottom: btn_save.bottom }
        width: 80
        height: 24
        text: "Cancel"
        onClicked: propertiesWindow.cancelPressed()
    }

    CorvButton {
        id: btn_save
        objectName: "btn_save"
        anchors { right: parent.right; bottom: parent.bottom; margins: 10 }
        width: 80
        height: 24
        text: "Save"
        onClicked: propertiesWindow.okPressed()
    }
}
