import QtQuick 2.7
import QtQuick.Controls 1.4
import QtMultimedia 5.5
import VideoPlayer 1.0
import "."

// The place of the video: the quick start panel while none is open, then the player's pictures.
// What is declared inside lies on top.
Rectangle {
    id: videoArea

    default property alias content: top.data
    property VideoPlayer player: null
    // The projects opened last: maps of "path", "name" and "exists".
    property var recentProjects: []
    readonly property bool videoOpen: player !== null && player.hasVideoOpened

    signal openProjectClicked()
    signal openVideoClicked()
    signal browseRemovableDevicesClicked()
    signal recentProjectChosen(string path)

    color: Theme.videoGround

    RecentProjectsList {
        objectName: "recentProjectsList"
        anchors { top: welcome.bottom; topMargin: 8; horizontalCenter: parent.horizontalCenter }
        width: Math.min(360, parent.width - 8)
        visible: welcome.visible && projects.length > 0
        projects: videoArea.recentProjects
        onChosen: videoArea.recentProjectChosen(path)
    }

    WelcomeMessage {
        id: welcome
        objectName: "welcomeMessage"
        anchors.centerIn: parent
        // This place is narrower than the panel in the narrowest window.
        width: Math.min(560, parent.width - 8)
        visible: !videoArea.videoOpen
        onOpenProjectClicked: videoArea.openProjectClicked()
        onOpenSingleClicked: videoArea.openVideoClicked()
        onBrowseRemovableDevicesClicked: videoArea.browseRemovableDevicesClicked()
    }

    VideoOutput {
        id: videoOutput
        objectName: "videoOutput"
        anchors.fill: parent
        source: videoArea.player
    }

    BusyIndicator {
        objectName: "busyIndicator"
        anchors.centerIn: parent
        running: videoArea.player !== null && videoArea.player.isBusy
    }

    Item {
        id: top
        anchors.fill: parent
    }
}
