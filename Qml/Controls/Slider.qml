import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// The slider of the panels.
Controls.Slider {
    style: SliderStyle {
        groove: Rectangle {
            implicitWidth: 140
            implicitHeight: 2
            color: Theme.groove
        }
        handle: Rectangle {
            border.width: control.activeFocus ? 1 : 0
            border.color: Theme.accent
            implicitWidth: 6
            implicitHeight: 19
            color: !control.enabled ? Theme.handleDisabled
                                    : control.hovered ? Theme.handleHovered : Theme.handle
        }
    }
}
