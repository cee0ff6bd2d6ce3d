import QtQuick 2.7
import "."

// A button of the transport, also pressed by its key.
CorvButtonBase {
    id: transportButton

    property alias source: icon.source
    signal pressButton()

    width: 25
    height: 25
    color: pressed ? Theme.transportPressed : hovered ? Theme.transportHovered : Theme.strip

    tooltiptext: name
    onClicked: pressButton()

    Behavior on color { ColorAnimation { duration: 100 } }

    TintedIcon {
        id: icon
        anchors.centerIn: parent
        color: transportButton.hovered ? Theme.text : Theme.transportIcon
        Behavior on color { ColorAnimation { duration: 100 } }
    }
}
