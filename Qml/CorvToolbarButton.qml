import QtQuick 2.7
import "."

CorvButtonBase {
    id: corvToolbarButton

    property alias source: icon.source

    width: 25
    height: 25
    color: enabled && hovered ? Theme.toolHovered : Theme.clear

    TintedIcon {
        id: icon
        anchors.centerIn: parent
        color: corvToolbarButton.enabled ? Theme.toolIcon : Theme.toolIconDisabled
    }
}
