import QtQuick 2.7

// The heading of one section of the adjustments.
Rectangle {
    property alias text: label.text

    width: parent.width
    height: 30
    color: "#333"

    Text {
        id: label
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        color: "#ccc"
    }
}
