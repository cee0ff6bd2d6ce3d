import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4
import "."

// One end of the thermal range: a pointer that hangs above or stands below the bar.
Slider {
    id: rangeSlider

    property string pointer

    height: 10
    stepSize: 1

    style: SliderStyle {
        groove: Item {
            implicitWidth: 200
            implicitHeight: 10
        }
        handle: Item {
            implicitWidth: 11
            implicitHeight: 10

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
