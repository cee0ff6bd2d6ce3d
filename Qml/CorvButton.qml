import QtQuick 2.7
import "."

CorvButtonBase {
    id: corvButton

    property alias text: label.text

    name: text
    color: pressed ? Theme.buttonPressed : hovered ? Theme.buttonHovered : Theme.button
    border.width: 1
    border.color: pressed ? Theme.buttonPressed : hovered ? Theme.buttonHovered : Theme.button
    opacity: enabled ? 1 : 0.5

    Behavior on color { ColorAnimation { duration: 100 } }
    Behavior on border.color { ColorAnimation { duration: 75 } }

    Text {
        id: label
        anchors.centerIn: parent
        color: corvButton.pressed ? Theme.buttonTextPressed : Theme.buttonText
    }
}
