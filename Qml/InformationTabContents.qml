import QtQuick 2.7
import QtQml 2.14
import corv.LogParsing 1.0
import HeadUpDisplay 1.0
import "."

Rectangle {
    id: infoRect

    property alias editEnabled: namingEditButton.enabled
    property alias imperialUnits: headUpDisplay.imperialUnits
    property alias videoPosition: headUpDisplay.videoPosition

    // The other unit system is wanted, at once.
    signal unitsToggled(bool imperial)
    signal editFlightPropertiesClicked()

    color: Theme.flightPanel

    // Names come from the log: they are text, not markup.
    function plain(name) {
        return String(name).replace(/&/g, "&amp;").replace(/</g, "&lt;");
    }

    // The names are too faint on the panel.
    Rectangle {
        anchors.fill: namingRect
        anchors.margins: -4
        anchors.leftMargin: -6
        color: Theme.flightPlate
    }

    DisabledToolTips { row: namingRect }

    Item {
        id: namingRect
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 6
        anchors.leftMargin: 10
        height: 80

        Text {
            id: namingText
            objectName: "namingText"
            anchors.left: parent.left
            anchors.right: namingEditButton.left
            anchors.rightMargin: 4
            height: 80
            visible: LogParser.flightNaming.undefined === false
            color: Theme.text
            textFormat: Text.StyledText
            wrapMode: Text.Wrap
            font.pixelSize: 13
            fontSizeMode: Text.Fit
            minimumPixelSize: 9
            elide: Text.ElideRight
            clip: true
            text: "<b>Mission:</b><br>" + infoRect.plain(LogParser.flightNaming.missionName)
                  + "<br><b>Flight:</b><br>" + infoRect.plain(LogParser.flightNaming.flightName)
                  + (LogParser.flightNaming.flightNumber > 0
                     ? "<br><b>Num. </b>" + LogParser.flightNaming.flightNumber : "")
            Accessible.role: Accessible.StaticText
            Accessible.name: "Mission: " + LogParser.flightNaming.missionName
                             + ", flight: " + LogParser.flightNaming.flightName
                             + (LogParser.flightNaming.flightNumber > 0
                                ? ", number " + LogParser.flightNaming.flightNumber : "")

            // Names of more than a line each are small, or shortened.
            readonly property bool crowded: truncated
                    || lineCount > (LogParser.flightNaming.flightNumber > 0 ? 5 : 4)

            MouseArea {
                id: namingArea
                anchors.fill: parent
                acceptedButtons: Qt.NoButton
                hoverEnabled: true
            }

            ToolTipLoader {
                target: namingText
                text: namingText.crowded ? "Mission: " + LogParser.flightNaming.missionName
                                           + "\nFlight: " + LogParser.flightNaming.flightName
                                           + (LogParser.flightNaming.flightNumber > 0
                                              ? "\nNum. " + LogParser.flightNaming.flightNumber : "")
                                         : ""
                hovered: namingArea.containsMouse
            }
        }

        Text {
            id: namingTextUndefined
            objectName: "namingTextUndefined"
            anchors.left: parent.left
            anchors.right: parent.right
            height: 80
            visible: !namingText.visible
            color: Theme.namingMissing
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            text: "Flight name not defined"
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        CorvToolbarButton {
            id: namingEditButton
            objectName: "namingEditButton"
            anchors.top: parent.top
            anchors.right: parent.right
            width: 16
            height: 16
            source: "images/button_edit_field.png"
            tooltiptext: "Edit flight properties"
            disabledReason: "open a video first"
            onClicked: infoRect.editFlightPropertiesClicked()
        }
    }

    // The rows scroll where the panel is lower than they are.
    Flickable {
        id: readingsView
        objectName: "readingsView"
        anchors.top: namingRect.bottom
        anchors.topMargin: 6
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: unitsRow.top
        contentHeight: headUpDisplay.height
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        HeadUpDisplay {
            id: headUpDisplay
            objectName: "headUpDisplay"
            width: readingsView.width
            height: Math.max(readingsView.height, heightAt(width))
            logParser: LogParser
            Accessible.role: Accessible.Grouping
            Accessible.name: "Flight values"

            // They are painted: a screen reader has each as a text of its own.
            Repeater {
                id: readings

                readonly property var texts: headUpDisplay.readings

                model: texts.length

                Item {
                    y: index * height
                    width: headUpDisplay.width
                    height: headUpDisplay.height / readings.count
                    Accessible.role: Accessible.StaticText
                    Accessible.name: readings.texts[index]
                }
            }
        }
    }

    ScrollMark {
        view: readingsView
        colour: Theme.flightBarHandle
        colourHovered: Theme.overlayText
    }

    Rectangle {
        id: unitsRow
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 27
        color: Theme.flightPlate

        CorvToolbarToggleTextButton {
            id: unitsButton
            objectName: "unitsButton"
            anchors { left: parent.left; leftMargin: 4; verticalCenter: parent.verticalCenter }
            width: 110
            text: "Feet"
            source: "images/button_units.png"
            tooltiptext: "Show the altitude in feet"
            onToggle: infoRect.unitsToggled(checked)
        }

        Binding { target: unitsButton; property: "checked"; value: infoRect.imperialUnits }
    }

    Connections {
        target: LogParser

        function onLogParsingComplete(result) {
            if (result)
                headUpDisplay.updateLogData();
        }

        // Closed: nothing of the last flight is to be seen.
        function onSourceChanged() {
            if (LogParser.source === "")
                headUpDisplay.updateLogData();
        }

        function onManualLogTimeOffsetChanged() {
            headUpDisplay.refresh();
        }
    }
}
