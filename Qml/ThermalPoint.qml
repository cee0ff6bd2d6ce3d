import QtQuick 2.7
import "."

// A point of the thermal picture with its value beside it, in the coordinates of its parent.
Item {
    id: thermalPoint

    property real value: 0
    // For a screen reader.
    property string name: ""
    property color mark: Theme.overlayText
    // Whether a ring is drawn around the point.
    property bool ringed: true

    // Around the ring, which would be lost on colours like its own.
    Rectangle {
        objectName: "thermalPointEdge"
        anchors.centerIn: parent
        visible: thermalPoint.ringed
        width: 15
        height: 15
        radius: 8
        color: Theme.clear
        border.width: 2
        border.color: Theme.overlay
    }

    Rectangle {
        anchors.centerIn: parent
        visible: thermalPoint.ringed
        width: 11
        height: 11
        radius: 6
        color: Theme.clear
        border.width: 2
        border.color: thermalPoint.mark
    }

    Rectangle {
        x: 9
        y: -height / 2
        width: label.width + 8
        height: label.height + 4
        color: Theme.overlay

        Text {
            id: label
            anchors.centerIn: parent
            color: Theme.overlayText
            font.pixelSize: 11
            text: Math.round(thermalPoint.value)
            Accessible.role: Accessible.StaticText
            Accessible.name: thermalPoint.name + " " + text
        }
    }
}
