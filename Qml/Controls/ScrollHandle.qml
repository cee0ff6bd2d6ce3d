import QtQuick 2.7
import ".."

// The handle of a scroll bar.
Item {
    property bool hovered: false

    implicitWidth: 14
    implicitHeight: 14

    Rectangle {
        anchors { fill: parent; margins: 3 }
        radius: 4
        color: parent.hovered ? Theme.barHandleHovered : Theme.barHandle
    }
}
