import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import QtQuick.Window 2.2
import ".."
import "../times.js" as Times

// The spin box of the panels.
Controls.SpinBox {
    // Digits and the point of other keyboards are typed as those that are shown.
    Keys.onPressed: {
        var plain = Times.plainNumber(event.text);
        var field = Window.activeFocusItem;
        if (plain === event.text || field === null)
            return;
        event.accepted = true;
        field.remove(field.selectionStart, field.selectionEnd);
        if (plain !== "." || decimals > 0 && field.text.indexOf(".") < 0)
            field.insert(field.cursorPosition, plain);
    }

    style: SpinBoxStyle {
        textColor: control.enabled ? Theme.boxText : Theme.boxTextDisabled
        selectionColor: Theme.listSelected
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
