import QtQuick 2.7
import VideoPlayer 1.0
import "."

// The colours of the thermal picture, with the raw values at the ends of their range.
Rectangle {
    id: thermalBar

    property VideoPlayer player: null
    readonly property bool automatic: player !== null && player.autoIRMapping
    readonly property var colours: Theme.thermalPalettes[player !== null && player.irPalette > 0
                                                         ? player.irPalette : 0]
    readonly property real lowest: player === null ? 0 : automatic ? player.irDataMin
                                                                   : player.irMappingMinValue
    readonly property real highest: player === null ? 0 : automatic ? player.irDataMax
                                                                    : player.irMappingMaxValue

    width: 54
    color: Theme.overlay
    Accessible.role: Accessible.StaticText
    Accessible.name: "Thermal range from " + lowestText.text + " to " + highestText.text

    Text {
        id: highestText
        objectName: "highestText"
        anchors { top: parent.top; topMargin: 4; horizontalCenter: parent.horizontalCenter }
        color: Theme.overlayText
        font.pixelSize: 11
        text: Math.round(thermalBar.highest)
    }

    Column {
        id: bar
        anchors {
            top: highestText.bottom
            bottom: lowestText.top
            topMargin: 4
            bottomMargin: 4
            horizontalCenter: parent.horizontalCenter
        }
        width: 18

        Repeater {
            model: thermalBar.colours.length - 1

            Rectangle {
                readonly property int upper: thermalBar.colours.length - 1 - index

                width: bar.width
                height: bar.height / (thermalBar.colours.length - 1)
                gradient: Gradient {
                    GradientStop { position: 0; color: thermalBar.colours[upper] }
                    GradientStop { position: 1; color: thermalBar.colours[upper - 1] }
                }
            }
        }
    }

    Text {
        id: lowestText
        objectName: "lowestText"
        anchors { bottom: parent.bottom; bottomMargin: 4; horizontalCenter: parent.horizontalCenter }
        color: Theme.overlayText
        font.pixelSize: 11
        text: Math.round(thermalBar.lowest)
    }
}
