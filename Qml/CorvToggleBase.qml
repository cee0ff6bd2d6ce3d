import QtQuick 2.7
import "."

// What the toggle buttons share: a click flips `checked` and then reports it.
CorvButtonBase {
    id: corvToggleBase

    property bool checked: false
    readonly property color foreground: checked ? Theme.toolCheckedIcon
                                                : enabled ? Theme.toolIcon
                                                          : Theme.toolIconDisabled
    signal toggle(bool checked)

    color: checked ? enabled ? Theme.toolChecked : Theme.toolCheckedDisabled
                   : enabled && hovered ? Theme.toolHovered : Theme.clear

    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: {
        if (enabled)
            clicked();
    }

    onClicked: {
        checked = !checked;
        toggle(checked);
    }
}
