import QtQuick 2.15
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// One end of the thermal range: a pointer above or below the bar.
Controls.Slider {
    id: rangeSlider

    property url pointer
    property string name: ""
    // What a DisabledToolTips behind it shows.
    readonly property string tooltiptext: name + " " + Math.round(value)
    property string disabledReason: ""

    height: 10
    stepSize: 1

    Accessible.name: name
    Accessible.description: enabled ? "" : disabledReason
    // Else it is focusable for a screen reader.
    activeFocusOnTab: enabled
    // Before the window's own shortcuts of these keys.
    Keys.onShortcutOverride: event.accepted = event.key === Qt.Key_Left || event.key === Qt.Key_Right

    ToolTipLoader {
        target: rangeSlider
        text: rangeSlider.tooltiptext
        hovered: rangeSlider.hovered
    }

    style: SliderStyle {
        groove: Item {
            implicitWidth: 200
            implicitHeight: 10
        }
        handle: Item {
            implicitWidth: 11
            implicitHeight: 10

            FocusFrame {
                visible: control.activeFocus
            }

            TintedIcon {
                anchors.centerIn: parent
                source: rangeSlider.pointer
                color: !control.enabled ? Theme.rangePointerDisabled
                                        : control.hovered ? Theme.rangePointerHovered
                                                          : Theme.rangePointer
            }
        }
    }
}
