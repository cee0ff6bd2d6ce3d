import QtQuick 2.7
import Timeline 1.0
import VideoPlayer 1.0
import "."

// The colours of the thermal picture on screen, with the raw values at the ends of their range.
Rectangle {
    id: thermalBar

    property VideoPlayer player: null
    // Whether there is a thermal picture on screen.
    readonly property bool hasScale: scale.hasScale

    width: scale.implicitWidth
    color: Theme.overlay
    Accessible.role: Accessible.StaticText
    Accessible.name: "Thermal range from " + scale.lowestText + " to " + scale.highestText

    ThermalBarItem {
        id: scale
        objectName: "thermalScale"
        anchors.fill: parent
        player: thermalBar.player
    }
}
