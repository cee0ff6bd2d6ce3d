import QtQuick 2.7
import QtGraphicalEffects 1.0

// A button of the transport, also pressed by its key.
Rectangle {
    id: transportButton

    property alias source: icon.source
    property string name: ""
    signal pressButton()

    width: 25
    height: 25
    color: buttonMouseArea.pressed ? "#151515" : buttonMouseArea.containsMouse ? "#555555" : "#333333"

    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.onPressAction: pressButton()

    Behavior on color { ColorAnimation { duration: 100 } }

    Image {
        id: icon
        anchors.centerIn: parent
        visible: false
    }

    ColorOverlay {
        anchors.fill: icon
        source: icon
        color: buttonMouseArea.containsMouse ? "#ffffff" : "#aaa"
        Behavior on color { ColorAnimation { duration: 100 } }
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: transportButton.pressButton()
    }
}
