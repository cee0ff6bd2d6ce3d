import QtQuick 2.7
import "."

// One line of text on a CorvFieldFrame.
TextInput {
    id: corvTextInput

    anchors.fill: parent
    anchors.leftMargin: 5
    anchors.rightMargin: 5
    verticalAlignment: TextInput.AlignVCenter
    activeFocusOnTab: true
    selectByMouse: true
    clip: true
    color: enabled ? Theme.fieldText : Theme.fieldTextDisabled

    Accessible.role: Accessible.EditableText
    Accessible.readOnly: readOnly
}
