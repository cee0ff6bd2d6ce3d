import QtQuick 2.7
import QtQuick.Layouts 1.1
import QtQuick.Window 2.2
import "."
import "Controls"

Window {
    id: propertiesWindow
    objectName: "flightPropertiesWindow"

    property bool ok: false
    property string missionName: ""
    property string flightName: ""
    property int flightNumber: 0
    property bool namingDefined: true

    function populate() {
        tfMissionName.text = missionName;
        tfFlightName.text = flightName;
        tfFlightNumber.text = flightNumber;
    }

    // The field's validator holds the range; an empty field means no number.
    function okPressed() {
        console.log("Entered flight number " + tfFlightNumber.text);
        var number = parseInt(tfFlightNumber.text);
        console.log("Read as number: " + number);
        console.log(Number.isNaN(number) ? "Not a number" : "Number");
        if (tfFlightNumber.text === "")
            number = 0;
        missionName = tfMissionName.text;
        flightName = tfFlightName.text;
        flightNumber = number;
        ok = true;
        close();
    }

    function cancelPressed() {
        close();
    }

    title: "Edit flight properties"
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

    GridLayout {
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 10 }
        columns: 2
        rows: 3
        columnSpacing: 8
        rowSpacing: 8

        Text {
            text: "Mission name"
            color: Theme.text
        }

        TextField {
            id: tfMissionName
            objectName: "tfMissionName"
            Layout.fillWidth: true
            focus: true
            Accessible.name: "Mission name"
        }

        Text {
            text: "Flight name"
            color: Theme.text
        }

        TextField {
            id: tfFlightName
            objectName: "tfFlightName"
            Layout.fillWidth: true
            Accessible.name: "Flight name"
        }

        Text {
            text: "Flight number"
            color: Theme.text
        }

        TextField {
            id: tfFlightNumber
            objectName: "tfFlightNumber"
            Layout.preferredWidth: 80
            inputMethodHints: Qt.ImhDigitsOnly
            // What is typed replaces the number.
            onActiveFocusChanged: {
                if (activeFocus)
                    selectAll();
            }
            validator: IntValidator { bottom: 1; top: 999 }
            Accessible.name: "Flight number"
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
