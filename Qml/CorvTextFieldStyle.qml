import QtQuick 2.7
import QtQuick.Controls.Styles 1.4

// A text field in black on grey, a shade lighter where the text goes.
TextFieldStyle {
    textColor: "black"
    selectionColor: "#333"
    selectedTextColor: "white"
    background: Rectangle {
        implicitWidth: 100
        implicitHeight: 25
        color: control.activeFocus ? Qt.lighter("#888", 1.15) : "#888"
        border.color: control.activeFocus ? "#ccc" : "#666"
    }
}
