import QtQuick 2.7
import "constants.js" as Cst

Rectangle {
    id: corvButton

    property alias text: label.text
    signal clicked()

    color: buttonMouseArea.pressed ? Cst.pressedColor
                                   : buttonMouseArea.containsMouse ? Cst.btnColorHover : Cst.btnColor
    border.width: 1
    border.color: buttonMouseArea.pressed ? Cst.pressedColor
                                          : buttonMouseArea.containsMouse ? Cst.btnColorHover : Cst.btnColor
    opacity: enabled ? 1 : 0.5

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()

    Behavior on color { ColorAnimation { duration: 100 } }
    Behavior on border.color { ColorAnimation { duration: 75 } }

    Text {
        id: label
        anchors.centerIn: parent
        color: buttonMouseArea.pressed ? Cst.btnTextPressedColor : Cst.btnTextColor
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: corvButton.clicked()
    }
}
