import QtQuick 2.7
import QtQuick.Controls 1.4
import QtMultimedia 5.5

// The place of the video: the quick start panel while none is open, then the player's pictures.
// What is declared inside lies on top.
Rectangle {
    default property alias content: top.data

    color: "#1a1a1a"

    WelcomeMessage {
        objectName: "welcomeMessage"
        anchors.centerIn: parent
        // This place is narrower than the panel in the narrowest window.
        width: Math.min(560, parent.width - 8)
        visible: !videoPlayer.hasVideoOpened
        onOpenProjectClicked: mainWindow.goOpenProject("welcome_screen")
        onOpenSingleClicked: mainWindow.goOpenVideo("welcome_screen")
        onBrowseRemovableDevicesClicked: mainWindow.goExploreRemovableDevices()
    }

    VideoOutput {
        id: videoOutput
        objectName: "videoOutput"
        anchors.fill: parent
        source: videoPlayer
    }

    BusyIndicator {
        objectName: "busyIndicator"
        anchors.centerIn: parent
        running: videoPlayer.isBusy
    }

    Item {
        id: top
        anchors.fill: parent
    }
}
