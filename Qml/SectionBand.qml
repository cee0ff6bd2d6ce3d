import QtQuick 2.7
import "."

// The heading of one section of the adjustments.
Rectangle {
    property alias text: label.text

    width: parent.width
    height: 30
    color: Theme.strip

    Text {
        id: label
        anchors.left: parent.left
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.textBand
    }
}
