import QtQuick 2.7
import "."

// The quick start panel, shown while no video is open.
Rectangle {
    id: welcome_notice

    signal openProjectClicked()
    signal openSingleClicked()
    signal browseRemovableDevicesClicked()

    // What lies over the upper edge takes this much of it.
    property real coveredHeight: 0

    width: 560
    height: 260
    color: Theme.clear

    Image {
        id: logo
        anchors { top: parent.top; horizontalCenter: parent.horizontalCenter }
        visible: welcome_notice.coveredHeight <= 0
        source: Theme.light ? "images/vistitle_light.png" : "images/vistitle.png"
        Accessible.ignored: true
    }

    Text {
        id: title
        objectName: "quickStartTitle"
        anchors { top: logo.bottom; topMargin: 14; horizontalCenter: parent.horizontalCenter }
        visible: y >= welcome_notice.coveredHeight
        text: "QUICK START MENU"
        color: Theme.welcomeTitle
    }

    Grid {
        id: actions

        readonly property int cellWidth: Math.min(180, (welcome_notice.width - 2 * columnSpacing) / 3)
        readonly property int cellsWidth: columns * cellWidth + (columns - 1) * columnSpacing

        // Centred by its cells, which reach beyond it on the right.
        x: (parent.width - cellsWidth) / 2
        anchors { top: title.bottom; topMargin: 18 }
        width: 530
        columns: 3
        rows: 2
        columnSpacing: 10
        rowSpacing: 8

        CorvQuickStartButton {
            id: openProjectButton
            objectName: "openProjectButton"
            width: actions.cellWidth
            height: 50
            text: "Open project"
            onClicked: welcome_notice.openProjectClicked()
        }

        CorvQuickStartButton {
            id: openVideoButton
            objectName: "openVideoButton"
            width: actions.cellWidth
            height: 50
            text: "Import video"
            onClicked: welcome_notice.openSingleClicked()
        }

        CorvQuickStartButton {
            id: openRemovableDevicesButton
            objectName: "openRemovableDevicesButton"
            width: actions.cellWidth
            height: 50
            text: "Scan removable devices"
            onClicked: welcome_notice.browseRemovableDevicesClicked()
        }

        Repeater {
            model: [
                "Open an existing project",
                "Create a new project from a video",
                "List all flights from removable devices or directories. "
                    + "Video and log files are automatically associated for easier review"
            ]

            Text {
                width: actions.cellWidth
                height: 70
                Accessible.role: Accessible.StaticText
                Accessible.name: text
                text: modelData
                color: Theme.welcomeText
                font.pixelSize: 11
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
            }
        }
    }
}
