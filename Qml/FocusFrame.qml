import QtQuick 2.7
import "."

// The frame around the control that has the keyboard.
Rectangle {
    anchors.fill: parent
    color: Theme.clear
    border.width: 2
    border.color: Theme.accent
}
