import QtQuick 2.7
import QtGraphicalEffects 1.0
import "constants.js" as Cst

Rectangle {
    id: corvToolbarTextButton

    property alias source: icon.source
    property alias text: label.text
    readonly property color foreground: enabled ? Cst.btnTextPressedColor : Cst.disabledCheckedBtnFg
    signal clicked()

    width: 100
    height: 25
    color: enabled && buttonMouseArea.containsMouse ? Cst.btnColorTbHover : "transparent"

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()

    Item {
        id: iconPlace
        width: 25
        height: parent.height

        Image {
            id: icon
            anchors.centerIn: parent
            visible: false
        }

        ColorOverlay {
            anchors.fill: icon
            source: icon
            color: corvToolbarTextButton.foreground
        }
    }

    Text {
        id: label
        anchors.left: iconPlace.right
        anchors.verticalCenter: parent.verticalCenter
        color: corvToolbarTextButton.foreground
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: corvToolbarTextButton.clicked()
    }
}
