import QtQuick 2.7
import QtQuick.Window 2.2
import Qt.labs.settings 1.0
// After QtQuick: the native Shortcut with a `key` is meant, not the built-in one.
import Shortcuts 1.0
import "."
import "Controls"
import "times.js" as Times

Window {
    id: framesExport
    objectName: "framesExport"

    property url framesUrl: ""
    property int startTime: 0
    property int stopTime: 0
    property int frameSpacing: 10
    property var position
    property var duration
    property int poiCount: 0
    property bool ok: false
    property bool exportPOI: false
    // Whether the pictures show the flight instruments; without a log they cannot.
    property alias instruments: instrumentsCheckBox.checked
    property alias instrumentsEnabled: instrumentsCheckBox.enabled
    // Whether they show the colour bar of the thermal picture; while that is off they cannot.
    property alias thermalBar: thermalBarCheckBox.checked
    property alias thermalBarEnabled: thermalBarCheckBox.enabled

    function setPosition(newPosition) {
        position = newPosition;
    }

    function setDuration(newDuration) {
        duration = newDuration;
    }

    // What is in the fields, for the next opening.
    function entered() {
        return {start: startTextInput.text, stop: stopTextInput.text,
            spacing: spacingTextInput.text, folder: framesUrl, pois: radioExportPOIs.checked};
    }

    function enter(fields) {
        startTextInput.text = fields.start;
        stopTextInput.text = fields.stop;
        spacingTextInput.text = fields.spacing;
        framesUrl = fields.folder;
        folderTextInput.text = fields.folder;
        radioExportPOIs.checked = fields.pois && poiCount > 0;
    }

    function padded(text, size) {
        while (text.length < size)
            text = "0" + text;
        return text;
    }

    // A number of exactly `size` characters, shorter ones filled with "0"; NaN for anything else.
    function parseNumber(text, size) {
        var digits = padded(text, size);
        return digits.length === size ? parseInt(digits, 10) : NaN;
    }

    // Milliseconds of "min:sec.ms"; NaN when it is no time.
    function parseTime(text) {
        var parts = Times.plainDigits(text).split(/[:.]/);
        if (parts.length !== 3)
            return NaN;
        var seconds = parseNumber(parts[1], 2);
        return seconds < 60
            ? parseNumber(parts[0], 2) * 60000 + seconds * 1000 + parseNumber(parts[2], 3) : NaN;
    }

    // Takes the fields into the properties. The text of the first fault, empty if there is none.
    // The fields count also while they are disabled.
    function readFields() {
        var start = parseTime(startTextInput.text);
        if (isNaN(start))
            return "Invalid start time";
        startTime = start;
        var stop = parseTime(stopTextInput.text);
        if (isNaN(stop))
            return "Invalid stop time";
        stopTime = stop;
        var spacing = parseNumber(Times.plainDigits(spacingTextInput.text), 2);
        if (isNaN(spacing))
            return "Invalid frame spacing";
        frameSpacing = spacing;
        return "";
    }

    // What is wrong with the values. A time beyond the end of the video is left to the export.
    function checkValues() {
        if (framesUrl.toString() === "")
            return "No folder selected";
        if (startTime < 0 || stopTime < 0)
            return "Start or stop time out of the video duration";
        if (startTime > stopTime)
            return "Stop time smaller than start time";
        if (frameSpacing <= 0)
            return "Frames spacing must be a positive number";
        return "";
    }

    function exportImages() {
        var fault = readFields() || checkValues();
        if (fault !== "") {
            warningDialog.text = fault;
            warningDialog.visible = true;
            return;
        }
        exportPOI = radioExportPOIs.checked;
        ok = true;
        close();
    }

    title: "Export frames"
    width: 480
    height: 360
    minimumWidth: 480
    minimumHeight: 244
    color: Theme.dialog

    onVisibleChanged: {
        if (!visible)
            settings.folder = fileDialog.folder;
    }

    Settings {
        id: settings
        category: "framesExport"
        property url folder: ""
    }

    FolderDialog {
        id: fileDialog
        objectName: "fileDialog"
        title: "Please choose a folder"
        folder: settings.folder
        onAccepted: {
            framesExport.framesUrl = fileDialog.fileUrl;
            folderTextInput.text = fileDialog.fileUrl;
            folderTextInput.ensureVisible(folderTextInput.length);
        }
    }

    MessageDialog {
        id: warningDialog
        objectName: "warningDialog"
        title: "Warning"
        kind: MessageDialog.Warning
    }

    Shortcut {
        key: "Return"
        onActivated: {
            if (framesExport.visible)
                framesExport.close();
        }
    }

    // Kept as it is: a CorvButton has no pressButton(), so the key changes nothing.
    Shortcut {
        key: "Escape"
        onActivated: {
            if (framesExport.visible)
                cancelButton.pressButton();
        }
    }

    // The bands scroll where the window is lower than they are.
    Flickable {
        id: bands
        anchors { left: parent.left; right: parent.right; top: parent.top; bottom: buttonBar.top }
        contentHeight: modeSelectionRectangle.height + startStopRect.height + folderRect.height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Rectangle {
            id: modeSelectionRectangle
            width: parent.width
            height: 35
            color: Theme.dialogHead

            ExclusiveGroup { id: exportChoiceGroup }

            Row {
                anchors { left: parent.left; leftMargin: 10; verticalCenter: parent.verticalCenter }
                spacing: 24

                CorvRadioButton {
                    id: radioExportFrames
                    objectName: "radioExportFrames"
                    text: "Frames range"
                    checked: true
                    exclusiveGroup: exportChoiceGroup
                }

                CorvRadioButton {
                    id: radioExportPOIs
                    objectName: "radioExportPOIs"
                    text: "Points of interest (" + framesExport.poiCount + ")"
                    enabled: framesExport.poiCount > 0
                    exclusiveGroup: exportChoiceGroup
                }
            }
        }

        Rectangle {
            id: startStopRect
            anchors.top: modeSelectionRectangle.bottom
            width: parent.width
            height: 150
            color: Theme.dialogBand

            Grid {
                anchors { left: parent.left; leftMargin: 10; verticalCenter: parent.verticalCenter }
                columns: 3
                spacing: 10
                verticalItemAlignment: Grid.AlignVCenter
                enabled: radioExportFrames.checked

                Text {
                    text: "Start time (min:sec.ms):"
                    color: enabled ? Theme.text : Theme.textDisabled
                }

                CorvFieldFrame {
                    width: 110
                    hovered: spacingTextMouseArea.containsMouse

                    MouseArea {
                        anchors.fill: parent
                        cursorShape: Qt.IBeamCursor
                        propagateComposedEvents: true
                        onClicked: mouse.accepted = false
                    }

                    CorvTextInput {
                        id: startTextInput
                        objectName: "startTextInput"
                        text: "00:00.000"
                        inputMask: "99:99.999;_"
                        Accessible.name: "Start time (min:sec.ms)"
                    }
                }

                CorvButton {
                    id: buttonSetCurrentPositionAsStart
                    objectName: "buttonSetCurrentPositionAsStart"
                    width: 120
                    height: 25
                    text: "Current position"
                    Accessible.name: "Current position as start time"
                    onClicked: startTextInput.text = Times.minutesAndSeconds(framesExport.position)
                }

                Text {
                    text: "Stop time (min:sec.ms):"
                    color: enabled ? Theme.text : Theme.textDisabled
                }

                CorvFieldFrame {
                    width: 110
                    hovered: spacingTextMouseArea.containsMouse

                    MouseArea {
                        anchors.fill: parent
                        cursorShape: Qt.IBeamCursor
                        propagateComposedEvents: true
                        onClicked: mouse.accepted = false
                    }

                    CorvTextInput {
                        id: stopTextInput
                        objectName: "stopTextInput"
                        text: Times.minutesAndSeconds(framesExport.duration)
                        inputMask: "99:99.999;_"
                        Accessible.name: "Stop time (min:sec.ms)"
                    }
                }

                CorvButton {
                    id: buttonSetCurrentPositionAsStop
                    objectName: "buttonSetCurrentPositionAsStop"
                    width: 120
                    height: 25
                    text: "Current position"
                    Accessible.name: "Current position as stop time"
                    onClicked: stopTextInput.text = Times.minutesAndSeconds(framesExport.position)
                }

                Text {
                    text: "Save an image every..."
                    color: enabled ? Theme.text : Theme.textDisabled
                }

                CorvFieldFrame {
                    width: 110
                    hovered: spacingTextMouseArea.containsMouse

                    MouseArea {
                        id: spacingTextMouseArea
                        objectName: "spacingTextMouseArea"
                        anchors.fill: parent
                        hoverEnabled: true
                        cursorShape: Qt.IBeamCursor
                        propagateComposedEvents: true
                        onClicked: mouse.accepted = false
                    }

                    CorvTextInput {
                        id: spacingTextInput
                        objectName: "spacingTextInput"
                        text: "10"
                        inputMask: "00;_"
                        Accessible.name: "Save an image every so many frames"
                    }
                }

                Text {
                    text: "frames"
                    color: enabled ? Theme.text : Theme.textDisabled
                }
            }
        }

        DisabledToolTips {
            objectName: "cornerToolTips"
            row: folderRect
        }

        Rectangle {
            id: folderRect
            anchors.top: startStopRect.bottom
            width: parent.width
            height: 125
            color: Theme.dialog

            Text {
                id: folderLabel
                anchors { left: parent.left; leftMargin: 10; top: parent.top; topMargin: 12 }
                text: "Export images to folder:"
                color: Theme.text
            }

            CorvFieldFrame {
                anchors {
                    left: folderLabel.left
                    right: browseButton.left
                    rightMargin: 10
                    top: folderLabel.bottom
                    topMargin: 8
                }

                readOnly: true

                CorvTextInput {
                    id: folderTextInput
                    objectName: "folderTextInput"
                    readOnly: true
                    Accessible.name: "Folder of the images"
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
                height: 25
                text: "Browse..."
                onClicked: fileDialog.openIn(settings.folder)
            }

            CorvCheckBox {
                id: instrumentsCheckBox
                objectName: "instrumentsCheckBox"
                anchors {
                    left: folderLabel.left
                    bottom: thermalBarCheckBox.top
                    bottomMargin: 6
                }
                text: "Show the flight instruments in a corner"
                disabledReason: "import a flight log first"
            }

            CorvCheckBox {
                id: thermalBarCheckBox
                objectName: "thermalBarCheckBox"
                anchors { left: folderLabel.left; bottom: parent.bottom; bottomMargin: 6 }
                text: "Show the thermal colour bar in a corner"
                disabledReason: "show the thermal picture first"
            }
        }
    }

    ScrollMark { view: bands }

    Item {
        id: buttonBar
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 50

        CorvButton {
            id: cancelButton
            objectName: "cancelButton"
            anchors { right: okButton.left; rightMargin: 10; verticalCenter: parent.verticalCenter }
            width: 75
            height: 30
            text: "Cancel"
            onClicked: {
                framesExport.ok = false;
                framesExport.close();
            }
        }

        CorvButton {
            id: okButton
            objectName: "okButton"
            anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
            width: 120
            height: 30
            text: "Export images"
            onClicked: framesExport.exportImages()
        }
    }
}
