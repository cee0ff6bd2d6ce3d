import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// Several lines of text in black on grey, a shade lighter where the text goes.
Controls.TextArea {
    style: TextAreaStyle {
        textColor: Theme.fieldText
        selectionColor: Theme.fieldSelection
        selectedTextColor: Theme.fieldSelectedText
        backgroundColor: control.activeFocus ? Theme.editFieldFocused : Theme.editField
    }
}
