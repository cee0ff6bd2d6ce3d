import QtQuick 2.7
import "."

// The grey ground of an input field. Its user says what lights it. A field that only shows something
// is dark, like the window.
Rectangle {
    id: corvFieldFrame

    property bool hovered: false
    property bool readOnly: false

    height: 25
    implicitHeight: 25
    color: readOnly ? Theme.fieldReadOnly
                    : !enabled ? Theme.fieldDisabled : hovered ? Theme.fieldHovered : Theme.field
    border.width: readOnly || Theme.light ? 1 : 0
    border.color: Theme.fieldBorder

    Behavior on color { ColorAnimation { duration: 100 } }
}
