import QtQuick 2.7
import "."
import "constants.js" as Cst

CorvButtonBase {
    id: corvQuickStartButton

    property alias text: label.text

    name: text
    color: pressed ? Cst.pressedColor : hovered ? Cst.btnColorHover : Theme.clear
    border.width: 1
    border.color: pressed ? Cst.pressedColor : Cst.btnColorHover

    Behavior on color { ColorAnimation { duration: 75 } }
    Behavior on border.color { ColorAnimation { duration: 75 } }

    // The text is too faint on the dialogs.
    Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        visible: !corvQuickStartButton.hovered && !corvQuickStartButton.pressed
        color: Theme.plate
    }

    Text {
        id: label
        anchors.centerIn: parent
        color: corvQuickStartButton.pressed
               ? Cst.btnTextPressedColor
               : corvQuickStartButton.hovered ? Cst.btnTextColor : Cst.btnColorHover
        Behavior on color { ColorAnimation { duration: 75 } }
    }
}
