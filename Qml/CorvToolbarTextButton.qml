import QtQuick 2.7
import "."
import "constants.js" as Cst

CorvButtonBase {
    id: corvToolbarTextButton

    property alias source: face.source
    property alias text: face.text

    name: text
    width: 100
    height: 25
    color: enabled && hovered ? Cst.btnColorTbHover : Theme.clear

    IconAndLabel {
        id: face
        color: corvToolbarTextButton.enabled ? Cst.btnTextPressedColor : Cst.disabledCheckedBtnFg
    }
}
