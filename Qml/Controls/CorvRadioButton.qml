import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A radio button on the dark ground of the dialogs: chosen, it has a bright middle.
Controls.RadioButton {
    id: corvRadioButton

    Accessible.name: text

    style: RadioButtonStyle {
        spacing: 6
        indicator: Rectangle {
            implicitWidth: 14
            implicitHeight: 14
            radius: 7
            color: control.enabled ? Theme.radio : Theme.radioDisabled
            border.width: control.activeFocus ? 2 : 1
            border.color: control.activeFocus ? Theme.accent : Theme.radioBorder

            Rectangle {
                anchors.centerIn: parent
                width: 6
                height: 6
                radius: 3
                color: Theme.radioMark
                visible: control.checked
            }
        }
        label: Text {
            text: control.text
            color: control.enabled ? Theme.text : Theme.textDisabled
        }
    }
}
