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
    color: readOnly ? Theme.textSoft : enabled ? Theme.fieldText : Theme.fieldTextDisabled

    // What is typed replaces what a field holds when it gets the keyboard.
    onActiveFocusChanged: {
        if (activeFocus && !readOnly)
            selectAll();
    }

    MouseArea {
        id: hoverArea
        anchors.fill: parent
        acceptedButtons: Qt.NoButton
        hoverEnabled: corvTextInput.readOnly
    }

    ToolTipLoader {
        target: corvTextInput
        text: corvTextInput.contentWidth > corvTextInput.width ? corvTextInput.text : ""
        hovered: hoverArea.containsMouse
    }

    // Around the field: the text clips what is beside it.
    FocusFrame {
        parent: corvTextInput.parent
        visible: corvTextInput.activeFocus
    }

    Accessible.role: Accessible.EditableText
    Accessible.readOnly: readOnly
}
