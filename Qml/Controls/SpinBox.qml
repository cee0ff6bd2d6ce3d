import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// The spin box of the panels.
Controls.SpinBox {
    style: SpinBoxStyle {
        textColor: control.enabled ? Theme.boxText : Theme.boxTextDisabled
        selectionColor: Theme.progress
        selectedTextColor: Theme.text
        font.pixelSize: 12
        padding { left: 4; right: 16; top: 0; bottom: 0 }

        background: Rectangle {
            implicitWidth: 60
            implicitHeight: 22
            color: Theme.box
            border.color: control.activeFocus ? Theme.accent : Theme.boxBorder
        }

        incrementControl: Item {
            implicitWidth: 14
            implicitHeight: 11

            Text {
                anchors.centerIn: parent
                font.pixelSize: 7
                color: !control.enabled ? Theme.boxArrowDisabled
                                        : styleData.upHovered ? Theme.boxArrowHovered : Theme.boxArrow
                text: "\u25b2"
            }
        }

        decrementControl: Item {
            implicitWidth: 14
            implicitHeight: 11

            Text {
                anchors.centerIn: parent
                font.pixelSize: 7
                color: !control.enabled ? Theme.boxArrowDisabled
                                        : styleData.downHovered ? Theme.boxArrowHovered : Theme.boxArrow
                text: "\u25bc"
            }
        }
    }
}
