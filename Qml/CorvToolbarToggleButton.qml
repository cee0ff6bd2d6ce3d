import QtQuick 2.7
import QtGraphicalEffects 1.0
import "constants.js" as Cst

Rectangle {
    id: corvToolbarToggleButton

    property alias source: icon.source
    property bool checked: false
    signal toggle(bool checked)

    width: 25
    height: 25
    color: checked ? enabled ? Cst.btnColorTbChecked : Cst.btnColorTbCheckedDisabled
                   : enabled && buttonMouseArea.containsMouse ? Cst.btnColorTbHover : "transparent"

    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: buttonMouseArea.flip()
    Accessible.onToggleAction: buttonMouseArea.flip()

    Image {
        id: icon
        anchors.centerIn: parent
        visible: false
    }

    ColorOverlay {
        anchors.fill: icon
        source: icon
        color: corvToolbarToggleButton.checked
               ? Cst.checkedBtnFg
               : corvToolbarToggleButton.enabled ? Cst.btnTextPressedColor : Cst.disabledCheckedBtnFg
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
