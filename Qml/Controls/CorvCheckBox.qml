import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A check box on the ground of the dialogs: its tick is on a field like that of a radio button.
Controls.CheckBox {
    id: corvCheckBox

    // What a DisabledToolTips behind it shows.
    readonly property string tooltiptext: text
    property string disabledReason: ""

    Accessible.name: text
    Accessible.description: enabled ? "" : disabledReason

    style: CheckBoxStyle {
        spacing: 6
        indicator: Rectangle {
            implicitWidth: 14
            implicitHeight: 14
            radius: 2
            color: control.enabled ? Theme.radio : Theme.radioDisabled
            border.width: control.activeFocus ? 2 : 1
            border.color: control.activeFocus ? Theme.accent : Theme.radioBorder

            CheckTick {
                anchors.centerIn: parent
                width: 10
                height: 10
                visible: control.checked
            }
        }
        label: Text {
            text: control.text
            color: control.enabled ? Theme.text : Theme.textDisabled
        }
    }
}
