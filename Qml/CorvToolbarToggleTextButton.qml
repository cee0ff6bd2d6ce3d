import QtQuick 2.7
import QtGraphicalEffects 1.0
import "constants.js" as Cst

Rectangle {
    id: corvToolbarToggleTextButton

    property alias source: icon.source
    property alias text: label.text
    property bool checked: false
    readonly property color foreground: checked ? Cst.checkedBtnFg
                                                : enabled ? Cst.btnTextPressedColor
                                                          : Cst.disabledCheckedBtnFg
    signal toggle(bool checked)

    implicitWidth: 100
    implicitHeight: 25
    color: checked ? enabled ? Cst.btnColorTbChecked : Cst.btnColorTbCheckedDisabled
                   : enabled && buttonMouseArea.containsMouse ? Cst.btnColorTbHover : "transparent"

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: buttonMouseArea.flip()
    Accessible.onToggleAction: buttonMouseArea.flip()

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
            color: corvToolbarToggleTextButton.foreground
        }
    }

    Text {
        id: label
        anchors.left: iconPlace.right
        anchors.verticalCenter: parent.verticalCenter
        color: corvToolbarToggleTextButton.foreground
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: flip()

        function flip() {
            parent.checked = !parent.checked;
            parent.toggle(parent.checked);
        }
    }
}
