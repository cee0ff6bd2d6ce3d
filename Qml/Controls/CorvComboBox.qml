import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// A combo box as flat as the fields beside it, which shows when it has the keyboard. Its tool tip has
// all of a text that is shortened.
Controls.ComboBox {
    id: corvComboBox

    // Where the text is whole.
    property string tooltiptext: ""
    // Why it cannot be used; a DisabledToolTips behind it shows it.
    property string disabledReason: ""

    // A choice by another way than the pointer. The bus passes presses of a disabled box on.
    function choose(index) {
        if (!enabled || index < 0 || index >= count || index === currentIndex)
            return;
        currentIndex = index;
        activated(index);
    }

    // Its list opens as a window of its own, which the bus of screen readers does not have.
    Accessible.description: currentText
    Accessible.onPressAction: choose((currentIndex + 1) % count)
    Accessible.onIncreaseAction: choose(currentIndex + 1)
    Accessible.onDecreaseAction: choose(currentIndex - 1)

    style: ComboBoxStyle {
        id: comboBoxStyle

        textColor: control.enabled ? Theme.boxText : Theme.boxTextDisabled
        padding { left: 4; right: 4; top: 0; bottom: 0 }

        background: Rectangle {
            implicitWidth: 100
            implicitHeight: 25
            color: Theme.box
            border.color: control.activeFocus ? Theme.accent
                                              : control.hovered ? Theme.boxArrow : Theme.boxBorder

            Text {
                anchors.right: parent.right
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                font.pixelSize: 8
                color: !control.enabled ? Theme.boxArrowDisabled
                                        : control.hovered ? Theme.boxArrowHovered : Theme.boxArrow
                text: "\u25bc"
            }
        }

        // Two long paths mostly differ at their end.
        label: Item {
            implicitWidth: chosen.implicitWidth + 24

            Text {
                id: chosen
                anchors.left: parent.left
                anchors.leftMargin: 4
                anchors.right: parent.right
                anchors.rightMargin: 20
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignLeft
                elide: Text.ElideMiddle
                textFormat: Text.PlainText
                color: comboBoxStyle.textColor
                text: control.currentText
            }
        }

        __dropDownStyle: MenuStyle {
            __maxPopupHeight: 400
            __menuItemType: "comboboxitem"
            frame: Rectangle {
                color: Theme.menu
                border.color: Theme.menuBorder
            }
            itemDelegate.background: Rectangle {
                color: styleData.selected && styleData.enabled ? Theme.menuSelected : Theme.clear
            }
            itemDelegate.label: Text {
                topPadding: 2
                bottomPadding: 2
                color: styleData.enabled ? Theme.menuText : Theme.textDisabled
                textFormat: Text.PlainText
                text: styleData.text
            }
            itemDelegate.checkmarkIndicator: CheckTick {
                x: 2
                width: 9
                height: 9
                color: Theme.menuText
                visible: styleData.checked
            }
        }
    }

    TextMetrics {
        id: whole
        text: corvComboBox.currentText
    }

    ToolTipLoader {
        target: corvComboBox
        text: whole.advanceWidth > corvComboBox.width - 32 ? whole.text : corvComboBox.tooltiptext
        hovered: corvComboBox.hovered
    }

    FocusFrame {
        visible: corvComboBox.activeFocus
    }
}
