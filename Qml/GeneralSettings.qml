import QtQuick 2.7
import QtQuick.Window 2.2
import Qt.labs.settings 1.0
// After QtQuick: the native Shortcut with a `key` is meant, not the built-in one.
import Shortcuts 1.0
import corv.Appearance 1.0
import "."
import "Controls"

Window {
    id: generalSettings
    objectName: "generalSettings"

    property bool imperialUnits: false
    property bool thermalAsOnScreen: false
    property bool finishJobsFirst: false
    property bool ok: false

    function init() {
        radioUnitMetric.checked = !settings.imperialUnits;
        radioUnitImperial.checked = settings.imperialUnits;
        radioThermalOfFile.checked = !settings.thermalAsOnScreen;
        radioThermalOnScreen.checked = settings.thermalAsOnScreen;
        finishJobsBox.checked = settings.finishJobsFirst;
        radioLookDark.checked = !Appearance.light;
        radioLookLight.checked = Appearance.light;
    }

    // A number with zeros in front, so that it has at least `size` digits.
    function pad(num, size) {
        var text = num.toString();
        while (text.length < size)
            text = "0" + text;
        return text;
    }

    title: "Settings"
    width: 400
    height: 160
    minimumWidth: 400
    minimumHeight: 244
    color: Theme.dialog

    Settings {
        id: settings
        category: "userPreferences"
        property bool imperialUnits: false
        property bool thermalAsOnScreen: false
        property bool finishJobsFirst: false
    }

    Shortcut {
        key: "Return"
        onActivated: {
            if (generalSettings.visible)
                okButton.pressButton();
        }
    }

    Shortcut {
        key: "Escape"
        onActivated: {
            if (generalSettings.visible)
                cancelButton.pressButton();
        }
    }

    ExclusiveGroup { id: unitTypeGroup }
    ExclusiveGroup { id: thermalPictureGroup }
    ExclusiveGroup { id: lookGroup }

    Column {
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 14 }
        spacing: 12

        Column {
            width: parent.width
            spacing: 6

            Text {
                id: unitTitle
                text: "Unit system"
                color: Theme.text
                font.bold: true
            }

            Row {
                spacing: 24

                CorvRadioButton {
                    id: radioUnitMetric
                    objectName: "radioUnitMetric"
                    text: "Metric"
                    Accessible.description: unitTitle.text
                    exclusiveGroup: unitTypeGroup
                }

                CorvRadioButton {
                    id: radioUnitImperial
                    objectName: "radioUnitImperial"
                    text: "Imperial"
                    Accessible.description: unitTitle.text
                    exclusiveGroup: unitTypeGroup
                }
            }

            Text {
                id: restartNotice
                objectName: "restartNotice"
                width: parent.width
                wrapMode: Text.WordWrap
                text: "Changes will be applied after restarting Vistrel"
                Accessible.role: Accessible.StaticText
                Accessible.name: text
                color: Theme.textSoft
            }
        }

        Column {
            width: parent.width
            spacing: 6

            Text {
                id: thermalTitle
                text: "Thermal picture of saved frames"
                color: Theme.text
                font.bold: true
            }

            Row {
                spacing: 24

                CorvRadioButton {
                    id: radioThermalOfFile
                    objectName: "radioThermalOfFile"
                    text: "As in earlier versions"
                    Accessible.description: thermalTitle.text
                    checked: true
                    exclusiveGroup: thermalPictureGroup
                }

                CorvRadioButton {
                    id: radioThermalOnScreen
                    objectName: "radioThermalOnScreen"
                    text: "As on screen"
                    Accessible.description: thermalTitle.text
                    exclusiveGroup: thermalPictureGroup
                }
            }
        }

        Column {
            width: parent.width
            spacing: 6

            Text {
                id: lookTitle
                text: "Appearance"
                color: Theme.text
                font.bold: true
            }

            Row {
                spacing: 24

                CorvRadioButton {
                    id: radioLookDark
                    objectName: "radioLookDark"
                    text: "Dark"
                    Accessible.description: lookTitle.text
                    checked: true
                    exclusiveGroup: lookGroup
                }

                CorvRadioButton {
                    id: radioLookLight
                    objectName: "radioLookLight"
                    text: "Light, for bright sun"
                    Accessible.description: lookTitle.text
                    exclusiveGroup: lookGroup
                }
            }
        }

        CorvCheckBox {
            id: finishJobsBox
            objectName: "finishJobsBox"
            text: "Quitting waits until running exports are done"
        }
    }

    CorvRichTextButton {
        id: cancelButton
        objectName: "cancelButton"
        anchors { right: okButton.left; rightMargin: 10; bottom: okButton.bottom }
        caption: "Cancel"
        onClicked: {
            generalSettings.ok = false;
            generalSettings.close();
        }
    }

    CorvRichTextButton {
        id: okButton
        objectName: "okButton"
        anchors { right: parent.right; rightMargin: 10; bottom: parent.bottom; bottomMargin: 10 }
        caption: "Save settings"
        onClicked: {
            settings.imperialUnits = radioUnitImperial.checked;
            generalSettings.imperialUnits = settings.imperialUnits;
            settings.thermalAsOnScreen = radioThermalOnScreen.checked;
            generalSettings.thermalAsOnScreen = settings.thermalAsOnScreen;
            settings.finishJobsFirst = finishJobsBox.checked;
            generalSettings.finishJobsFirst = settings.finishJobsFirst;
            Appearance.light = radioLookLight.checked;
            generalSettings.ok = true;
            generalSettings.close();
        }
    }
}
