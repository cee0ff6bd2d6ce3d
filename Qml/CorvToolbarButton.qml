import QtQuick 2.7
import "."
import "constants.js" as Cst

CorvButtonBase {
    id: corvToolbarButton

    property alias source: icon.source

    width: 25
    height: 25
    color: enabled && hovered ? Cst.btnColorTbHover : Theme.clear

    TintedIcon {
        id: icon
        anchors.centerIn: parent
        color: corvToolbarButton.enabled ? Cst.btnTextPressedColor : Cst.disabledCheckedBtnFg
    }
}
