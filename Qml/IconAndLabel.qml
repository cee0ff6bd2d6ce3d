import QtQuick 2.7

// The face of a toolbar button with a text: an icon at the left, then the text, in one colour.
Item {
    property alias source: icon.source
    property alias text: label.text
    property color color

    anchors.fill: parent

    TintedIcon {
        id: icon
        anchors.centerIn: iconPlace
        color: parent.color
    }

    Item {
        id: iconPlace
        width: 25
        height: parent.height
    }

    Text {
        id: label
        anchors.left: iconPlace.right
        anchors.leftMargin: 2
        anchors.verticalCenter: parent.verticalCenter
        color: parent.color
    }
}
