import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A text field in black on grey, a shade lighter where the text goes.
Controls.TextField {
    style: TextFieldStyle {
        textColor: Theme.fieldText
        placeholderTextColor: Theme.fieldPlaceholder
        selectionColor: Theme.fieldSelection
        selectedTextColor: Theme.fieldSelectedText
        background: Rectangle {
            implicitWidth: 100
            implicitHeight: 25
            color: control.activeFocus ? Theme.editFieldFocused : Theme.editField
            border.color: control.activeFocus ? Theme.editFieldBorderFocused : Theme.editFieldBorder
        }
    }
}
