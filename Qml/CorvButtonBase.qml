import QtQuick 2.15

// What all buttons share: pointer, keyboard, focus frame, tool tip and the name for a screen
// reader. Space activates the button that has the keyboard; Escape is left to the window, and so is
// Return unless the window has no use for it. A click leaves the keyboard where it is.
Rectangle {
    id: corvButtonBase

    default property alias content: contents.data
    property string tooltiptext: ""
    // The key that does the same, named in the tool tip.
    property string keyName: ""
    // What has to be done before the button can be used. A DisabledToolTips behind it shows it.
    property string disabledReason: ""
    // For a screen reader; the tool tip if it is empty.
    property string name: ""
    property bool isPressedByReturn: false
    readonly property alias hovered: buttonMouseArea.containsMouse
    readonly property alias pressed: buttonMouseArea.pressed
    signal clicked()

    function pressByReturn(event) {
        event.accepted = isPressedByReturn;
        if (isPressedByReturn && !event.isAutoRepeat)
            clicked();
    }

    activeFocusOnTab: enabled

    Accessible.role: Accessible.Button
    Accessible.name: name !== "" ? name : tooltiptext
    Accessible.description: enabled ? toolTip.text
                                    : (toolTip.text === "" ? "" : toolTip.text + ": ")
                                      + (disabledReason === "" ? "unavailable" : disabledReason)
    Accessible.focusable: enabled
    // The bus passes presses of a disabled button on.
    Accessible.onPressAction: {
        if (enabled)
            clicked();
    }

    // Before the window's own shortcut of this key.
    Keys.onShortcutOverride: event.accepted = event.key === Qt.Key_Space
    Keys.onSpacePressed: {
        if (!event.isAutoRepeat)
            clicked();
    }
    Keys.onReturnPressed: pressByReturn(event)
    Keys.onEnterPressed: pressByReturn(event)

    Item {
        id: contents
        anchors.fill: parent
    }

    FocusFrame {
        visible: corvButtonBase.activeFocus
    }

    ToolTipLoader {
        id: toolTip
        target: corvButtonBase
        text: corvButtonBase.tooltiptext === "" || corvButtonBase.keyName === ""
              ? corvButtonBase.tooltiptext
              : corvButtonBase.tooltiptext + " (" + corvButtonBase.keyName + ")"
        hovered: buttonMouseArea.containsMouse
    }

    MouseArea {
        id: buttonMouseArea
        anchors.fill: parent
        hoverEnabled: true
        onClicked: corvButtonBase.clicked()
    }
}
