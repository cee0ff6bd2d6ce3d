import QtQuick 2.7
import "."

// Work goes on: a turning ring on a dark disc, which shows on any picture and in both themes.
Rectangle {
    id: spinner

    property bool running: true

    width: 24
    height: width
    radius: width / 2
    color: Theme.overlay

    Image {
        anchors.centerIn: parent
        sourceSize: Qt.size(Math.round(spinner.width * 0.75), Math.round(spinner.width * 0.75))
        source: "images/loading_spinner.svg"

        RotationAnimation on rotation {
            running: spinner.running && spinner.visible
            from: 0
            to: 360
            duration: 1000
            loops: Animation.Infinite
        }
    }
}
