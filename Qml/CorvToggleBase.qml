import QtQuick 2.7
import "."
import "constants.js" as Cst

// What the toggle buttons share: a click flips `checked` and then reports it.
CorvButtonBase {
    id: corvToggleBase

    property bool checked: false
    readonly property color foreground: checked ? Cst.checkedBtnFg
                                                : enabled ? Cst.btnTextPressedColor
                                                          : Cst.disabledCheckedBtnFg
    signal toggle(bool checked)

    color: checked ? enabled ? Cst.btnColorTbChecked : Cst.btnColorTbCheckedDisabled
                   : enabled && hovered ? Cst.btnColorTbHover : Theme.clear

    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: clicked()

    onClicked: {
        checked = !checked;
        toggle(checked);
    }
}
