import QtQuick 2.7

// The grey ground of an input field. Who uses it says what lights it.
Rectangle {
    id: corvFieldFrame

    property bool hovered: false

    height: 25
    implicitHeight: 25
    color: !enabled ? "#888" : hovered ? "#CCCCCC" : "#AAAAAA"

    Behavior on color { ColorAnimation { duration: 100 } }
}
