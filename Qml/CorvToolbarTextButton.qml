import QtQuick 2.7
import "."

CorvButtonBase {
    id: corvToolbarTextButton

    property alias source: face.source
    property alias text: face.text
    // Of icon and text while it can be used.
    property color foreground: Theme.toolIcon

    name: text
    width: 100
    height: 25
    color: enabled && hovered ? Theme.toolHovered : Theme.clear

    IconAndLabel {
        id: face
        color: corvToolbarTextButton.enabled ? corvToolbarTextButton.foreground : Theme.toolIconDisabled
    }
}
