import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// Several lines of text in black on grey, a shade lighter where the text goes, with scroll bars in
// the colours of the window.
Controls.TextArea {
    style: TextAreaStyle {
        textColor: Theme.fieldText
        selectionColor: Theme.fieldSelection
        selectedTextColor: Theme.fieldSelectedText
        backgroundColor: control.activeFocus ? Theme.editFieldFocused : Theme.editField
        transientScrollBars: false
        handleOverlap: 0
        corner: Item {}
        incrementControl: Item {}
        decrementControl: Item {}
        scrollBarBackground: ScrollGround {}
        handle: ScrollHandle { hovered: styleData.hovered || styleData.pressed }
    }
}
