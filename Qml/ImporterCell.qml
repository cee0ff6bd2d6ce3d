import QtQuick 2.7
import "."

// One place in the importer's list: a text on one line, however it was written and however long it
// is, or a dash where the flight has none.
Item {
    id: importerCell

    property string text
    property bool isDefined: true
    property color definedColor: Theme.text
    property alias font: label.font
    readonly property alias truncated: label.truncated
    readonly property alias shownText: label.text
    readonly property alias shownColor: label.color

    height: parent.height

    Text {
        id: label
        anchors.fill: parent
        text: importerCell.isDefined ? importerCell.text : "-"
        color: importerCell.isDefined ? importerCell.definedColor : Theme.textMissing
        textFormat: Text.PlainText
        maximumLineCount: 1
        elide: Text.ElideRight
        // A name that runs to the left would touch the next column.
        horizontalAlignment: Text.AlignLeft
        verticalAlignment: Text.AlignVCenter
    }
}
