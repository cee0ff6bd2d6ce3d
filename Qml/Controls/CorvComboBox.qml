import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A combo box that shows when it has the keyboard.
Controls.ComboBox {
    id: corvComboBox

    // What Qt draws keeps the colours that it was made with: it is made anew.
    Connections {
        target: Theme

        function onLightChanged() {
            var own = corvComboBox.style;
            corvComboBox.style = another;
            corvComboBox.style = own;
        }
    }

    Component {
        id: another

        ComboBoxStyle {}
    }

    FocusFrame {
        visible: corvComboBox.activeFocus
    }
}
