import QtQuick 2.7
import "."

// The grey ground of an input field. Who uses it says what lights it.
Rectangle {
    id: corvFieldFrame

    property bool hovered: false

    height: 25
    implicitHeight: 25
    color: !enabled ? Theme.fieldDisabled : hovered ? Theme.fieldHovered : Theme.field

    Behavior on color { ColorAnimation { duration: 100 } }
}
