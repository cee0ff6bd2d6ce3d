import QtQuick 2.7
import QtQuick.Controls 1.4

// A combo box that shows when it has the keyboard.
ComboBox {
    id: corvComboBox

    FocusFrame {
        visible: corvComboBox.activeFocus
    }
}
