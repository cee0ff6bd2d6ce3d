import QtQuick 2.7
import "."

// A sentence of a bar, with the buttons that answer it at its right.
Item {
    id: noticeRow

    property alias text: sentence.text
    property alias textName: sentence.objectName
    default property alias buttons: row.data

    anchors { left: parent.left; right: parent.right }
    height: Math.max(sentence.implicitHeight + 16, 42)

    Text {
        id: sentence
        anchors { left: parent.left; right: row.left; margins: 10; verticalCenter: parent.verticalCenter }
        color: Theme.text
        wrapMode: Text.WrapAtWordBoundaryOrAnywhere
        textFormat: Text.PlainText
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    Row {
        id: row
        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        spacing: 8
    }
}
