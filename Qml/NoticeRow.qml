import QtQuick 2.7
import "."

// A sentence of a bar, with the buttons that answer it at its right, or below it where they would
// leave it too little room.
Item {
    id: noticeRow

    property alias text: sentence.text
    property alias textName: sentence.objectName
    default property alias buttons: row.data
    readonly property int leastTextWidth: 220
    readonly property bool isStacked: width - row.width - 30 < leastTextWidth

    anchors { left: parent.left; right: parent.right }
    height: Math.max(sentence.height + 16 + (isStacked ? row.height + 8 : 0), 42)

    Text {
        id: sentence
        x: 10
        y: noticeRow.isStacked ? 8 : (noticeRow.height - height) / 2
        width: noticeRow.width - 20 - (noticeRow.isStacked ? 0 : row.width + 10)
        color: Theme.text
        wrapMode: Text.WrapAtWordBoundaryOrAnywhere
        textFormat: Text.PlainText
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    Row {
        id: row
        anchors { right: parent.right; rightMargin: 10 }
        y: noticeRow.isStacked ? sentence.y + sentence.height + 8 : (noticeRow.height - height) / 2
        spacing: 8
    }
}
