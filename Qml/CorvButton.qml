import QtQuick 2.7
import "constants.js" as Cst

CorvButtonBase {
    id: corvButton

    property alias text: label.text

    name: text
    color: pressed ? Cst.pressedColor : hovered ? Cst.btnColorHover : Cst.btnColor
    border.width: 1
    border.color: pressed ? Cst.pressedColor : hovered ? Cst.btnColorHover : Cst.btnColor
    opacity: enabled ? 1 : 0.5

    Behavior on color { ColorAnimation { duration: 100 } }
    Behavior on border.color { ColorAnimation { duration: 75 } }

    Text {
        id: label
        anchors.centerIn: parent
        color: corvButton.pressed ? Cst.btnTextPressedColor : Cst.btnTextColor
    }
}
