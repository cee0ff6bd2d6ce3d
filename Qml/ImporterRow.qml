import QtQuick 2.7
import "."
import "constants.js" as Cst

// One flight of the importer's list. It takes its place in the columns from the width of the list,
// as the header does, and a text too long for its column ends in an ellipsis.
Item {
    id: importerRow

    // Keys: name, matchFound, duration (ms), namingDefined, missionName, flightName, flightNumber.
    property var flight
    readonly property bool hovered: rowMouseArea.containsMouse
    signal clicked()

    Accessible.role: Accessible.ListItem
    Accessible.name: flight.name
    Accessible.description: flight.matchFound ? "With log" : "Without log"
    Accessible.onPressAction: clicked()

    Rectangle {
        id: mark
        objectName: "mark"
        anchors { left: parent.left; leftMargin: 2; verticalCenter: parent.verticalCenter }
        width: parent.height - 4
        height: width
        radius: width / 2
        color: importerRow.flight.matchFound ? Cst.accentColor : Theme.textMissingMark
        border { width: 1; color: Theme.window }
    }

    ImporterColumns {
        anchors { fill: parent; leftMargin: parent.height + 4 }
        rowWidth: parent.width

        ImporterCell {
            objectName: "name"
            width: parent.nameWidth
            text: importerRow.flight.name
        }

        ImporterCell {
            objectName: "time"
            width: parent.timeWidth
            isDefined: importerRow.flight.duration > 0
            text: Math.floor(importerRow.flight.duration / 1000) + "s"
        }

        ImporterCell {
            objectName: "missionName"
            width: parent.missionWidth
            isDefined: importerRow.flight.namingDefined
            text: importerRow.flight.missionName
            definedColor: Theme.textBand
        }

        ImporterCell {
            objectName: "flightName"
            width: parent.flightWidth
            isDefined: importerRow.flight.namingDefined
            text: importerRow.flight.flightName
            font.bold: true
        }

        ImporterCell {
            objectName: "flightNumber"
            width: parent.numberWidth
            isDefined: importerRow.flight.namingDefined
            text: importerRow.flight.flightNumber
        }
    }

    Rectangle {
        objectName: "overlay"
        anchors.fill: parent
        color: Theme.text
        opacity: rowMouseArea.pressed ? 0.2 : rowMouseArea.containsMouse ? 0.1 : 0
    }

    MouseArea {
        id: rowMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: importerRow.clicked()
    }
}
