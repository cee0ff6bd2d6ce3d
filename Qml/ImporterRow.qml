import QtQuick 2.7
import "."

// One row of the importer's list. It takes its place in the columns from the width of the list,
// as the header does, and a text too long for its column ends in an ellipsis.
Item {
    id: importerRow

    // With the keys that importerRows.js gives it.
    property var row
    readonly property bool hovered: rowMouseArea.containsMouse
    readonly property string shownName: row.partText === "" ? row.name
        : row.name.replace(" : ", " (" + row.partText + ") : ")
    // The row that "Load selected" takes: it shows the highlight of the list.
    property bool chosen: false
    // What a row says beyond its columns.
    readonly property string details: row.evidenceText + "\n" + row.fileText
    readonly property string durationText: Math.floor(row.duration / 1000) + "s"
    // The columns that are no "-", for those who cannot see them.
    readonly property string columnsText: {
        var texts = row.duration > 0 ? [durationText] : [];
        if (row.namingDefined)
            texts.push("mission: " + row.missionName, "flight: " + row.flightName,
                       "number " + row.flightNumber);
        return texts.join(", ");
    }
    signal clicked()
    signal doubleClicked()

    Accessible.role: Accessible.ListItem
    Accessible.selectable: true
    Accessible.focusable: true
    Accessible.selected: chosen
    Accessible.name: shownName
    Accessible.description: columnsText === "" ? details : columnsText + "\n" + details
    Accessible.onPressAction: clicked()

    // The texts are too faint on the highlight.
    Rectangle {
        objectName: "plate"
        anchors { fill: parent; leftMargin: parent.height; topMargin: 2; rightMargin: 2; bottomMargin: 2 }
        visible: importerRow.chosen
        color: Theme.listGround
    }

    ImporterMark {
        objectName: "evidenceMark"
        anchors { left: parent.left; leftMargin: 2; verticalCenter: parent.verticalCenter }
        width: parent.height - 4
        height: width
        matchFound: importerRow.row.matchFound
        evidence: importerRow.row.evidence
        doubtful: importerRow.row.doubtful
    }

    ImporterColumns {
        anchors { fill: parent; leftMargin: parent.height + 4 }
        rowWidth: parent.width

        ImporterCell {
            objectName: "name"
            width: parent.nameWidth
            text: importerRow.shownName
        }

        ImporterCell {
            objectName: "time"
            width: parent.timeWidth
            isDefined: importerRow.row.duration > 0
            text: importerRow.durationText
        }

        ImporterCell {
            objectName: "missionName"
            width: parent.missionWidth
            isDefined: importerRow.row.namingDefined
            text: importerRow.row.missionName
            definedColor: Theme.textBand
        }

        ImporterCell {
            objectName: "flightName"
            width: parent.flightWidth
            isDefined: importerRow.row.namingDefined
            text: importerRow.row.flightName
            font.bold: true
        }

        ImporterCell {
            objectName: "flightNumber"
            width: parent.numberWidth
            isDefined: importerRow.row.namingDefined
            text: importerRow.row.flightNumber
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
        onDoubleClicked: importerRow.doubleClicked()
    }

    CorvToolTip {
        objectName: "rowToolTip"
        text: importerRow.shownName + "\n" + importerRow.details
        visible: importerRow.hovered
        timeout: 20000
    }
}
