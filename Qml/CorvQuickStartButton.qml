import QtQuick 2.7
import "constants.js" as Cst

Rectangle {
    id: corvQuickStartButton

    property alias text: label.text
    signal clicked()

    color: buttonMouseArea.pressed ? Cst.pressedColor
                                   : buttonMouseArea.containsMouse ? Cst.btnColorHover : "transparent"
    border.width: 1
    border.color: buttonMouseArea.pressed ? Cst.pressedColor : Cst.btnColorHover

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()

    Behavior on color { ColorAnimation { duration: 75 } }
    Behavior on border.color { ColorAnimation { duration: 75 } }

    Text {
        id: label
        anchors.centerIn: parent
        color: buttonMouseArea.pressed ? Cst.btnTextPressedColor
                                       : buttonMouseArea.containsMouse ? Cst.btnTextColor
                                                                       : Cst.btnColorHover
        Behavior on color { ColorAnimation { duration: 75 } }
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: corvQuickStartButton.clicked()
    }
}
