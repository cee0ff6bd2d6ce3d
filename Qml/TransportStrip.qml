import QtQuick 2.7
import QtQuick.Controls 1.4

// The transport, the speed and the tools between the video and the timeline, and their keys.
Rectangle {
    id: transportStrip

    readonly property bool poiSelected: !isNaN(timelineContent.selectedPoiTime)
    readonly property bool hasFocusItem: mainWindow.activeFocusItem !== null

    height: 25
    color: "#333333"

    function setPlaying(playing) {
        if (playing)
            playButton.setPause();
        else
            playButton.setPlay();
    }

    Row {
        id: transportButtons
        anchors.left: parent.left

        TransportButton {
            id: beginButton
            objectName: "beginButton"
            name: "First frame"
            source: "images/begin.png"
            onPressButton: videoPlayer.seekAtFrame(0)
        }
        TransportButton {
            id: prevFrameButton
            objectName: "prevFrameButton"
            name: "Previous frame"
            source: "images/prev.png"
            onPressButton: videoPlayer.seekAtFrame(videoPlayer.currentFrameIndex - 1)
        }
        TransportButton {
            id: playButton
            objectName: "playButton"
            name: "Play"
            source: "images/play.png"
            onPressButton: videoPlayer.togglePlayPause()

            function setPause() {
                source = "images/pause.png";
                name = "Pause";
            }

            function setPlay() {
                source = "images/play.png";
                name = "Play";
            }
        }
        TransportButton {
            id: nextFrameButton
            objectName: "nextFrameButton"
            name: "Next frame"
            source: "images/next.png"
            onPressButton: videoPlayer.seekAtFrame(videoPlayer.currentFrameIndex + 1)
        }
        TransportButton {
            id: endButton
            objectName: "endButton"
            name: "Last frame"
            source: "images/end.png"
            onPressButton: videoPlayer.seekAtTime(videoPlayer.duration)
        }
    }

    Text {
        id: speedLabel
        anchors.left: transportButtons.right
        anchors.leftMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        color: "#cccccc"
        text: "Speed"
    }

    SpinBox {
        id: playSpeedBox
        objectName: "playSpeedBox"
        anchors.left: speedLabel.right
        anchors.leftMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        width: 52
        minimumValue: 1
        maximumValue: 5
        stepSize: 1
        decimals: 0
        suffix: "x"
        onValueChanged: videoPlayer.playSpeed = value
        Accessible.name: "Playback speed"
        style: CorvSpinBoxStyle {}
    }

    Row {
        id: toolbarSpecialModeButtons
        objectName: "toolbarSpecialModeButtons"
        anchors.left: playSpeedBox.right
        anchors.leftMargin: 24
        spacing: 6
        visible: timelineContent.movePOIMode

        Text {
            anchors.verticalCenter: parent.verticalCenter
            color: "#12ff54"
            font.bold: true
            text: "POI MOVE MODE"
        }
        CorvToolbarTextButton {
            id: confirmPOIMoveButton
            objectName: "confirmPOIMoveButton"
            text: "Move here"
            source: "images/icon_check_ok.png"
            enabled: videoPlayer.hasVideoOpened
            onClicked: mainWindow.confirmMovingPoi()
        }
        CorvToolbarTextButton {
            id: exitMoveModeButton
            objectName: "exitMoveModeButton"
            text: "Cancel"
            source: "images/icon_cross_cancel.png"
            enabled: videoPlayer.hasVideoOpened
            onClicked: mainWindow.stopMovingPoi()
        }
    }

    Row {
        id: toolbarSaveButtons
        objectName: "toolbarSaveButtons"
        anchors.left: playSpeedBox.right
        anchors.leftMargin: 24
        visible: !timelineContent.movePOIMode

        CorvToolbarButton {
            id: saveImageButton
            objectName: "saveImageButton"
            source: "images/button_camera.png"
            tooltiptext: "Save current frame as image"
            enabled: videoPlayer.hasVideoOpened
            onClicked: {
                videoPlayer.pause();
                fileDialogs.saveImageDialog.open();
            }
        }
        CorvToolbarButton {
            id: copyImageButton
            objectName: "copyImageButton"
            source: "images/button_copy.png"
            tooltiptext: "Copy current frame to clipboard"
            enabled: videoPlayer.hasVideoOpened
            onClicked: videoPlayer.copyFrameToClipboard(videoPlayer.timePosition)
        }
        CorvToolbarButton {
            id: addPoiButton
            objectName: "addPoiButton"
            source: "images/button_poi_add.png"
            tooltiptext: "Create POI at playhead position"
            enabled: videoPlayer.hasVideoOpened
            onClicked: mainWindow.addNewPoiAtPosition()
        }
        CorvToolbarButton {
            id: removePoiButton
            objectName: "removePoiButton"
            source: "images/button_poi_remove.png"
            tooltiptext: "Delete selected POI"
            enabled: videoPlayer.hasVideoOpened && transportStrip.poiSelected
            onClicked: mainWindow.deleteSelectedPoi()
        }
        CorvToolbarButton {
            id: editPoiButton
            objectName: "editPoiButton"
            source: "images/button_poi_edit.png"
            tooltiptext: "Edit selected POI"
            enabled: videoPlayer.hasVideoOpened && transportStrip.poiSelected
            onClicked: mainWindow.editSelectedPoi()
        }
        CorvToolbarButton {
            id: enterMoveModeButton
            objectName: "enterMoveModeButton"
            source: "images/button_poi_move.png"
            tooltiptext: "Move selected POI"
            enabled: videoPlayer.hasVideoOpened && transportStrip.poiSelected
            onClicked: mainWindow.startMovingPoi()
        }
    }

    Shortcut {
        sequence: "Home"
        enabled: transportStrip.hasFocusItem
        onActivated: beginButton.pressButton()
    }
    Shortcut {
        sequence: "Left"
        enabled: transportStrip.hasFocusItem
        onActivated: prevFrameButton.pressButton()
    }
    Shortcut {
        sequence: " "
        enabled: transportStrip.hasFocusItem
        onActivated: playButton.pressButton()
    }
    Shortcut {
        sequence: "Right"
        enabled: transportStrip.hasFocusItem
        onActivated: nextFrameButton.pressButton()
    }
    Shortcut {
        sequence: "End"
        enabled: transportStrip.hasFocusItem
        onActivated: endButton.pressButton()
    }
    Shortcut {
        sequence: "N"
        context: Qt.WindowShortcut
        onActivated: mainWindow.addNewPoiAtPosition()
    }
    Shortcut {
        sequence: "X"
        context: Qt.WindowShortcut
        enabled: editPoiButton.enabled && !timelineContent.movePOIMode
        onActivated: mainWindow.deleteSelectedPoi()
    }
    Shortcut {
        sequence: "E"
        context: Qt.WindowShortcut
        enabled: editPoiButton.enabled && !timelineContent.movePOIMode
        onActivated: mainWindow.editSelectedPoi()
    }
    Shortcut {
        sequence: "M"
        enabled: enterMoveModeButton.enabled && !timelineContent.movePOIMode
        onActivated: mainWindow.startMovingPoi()
    }
    Shortcut {
        sequence: "Return"
        enabled: timelineContent.movePOIMode
        onActivated: mainWindow.confirmMovingPoi()
    }
    Shortcut {
        sequence: "Esc"
        enabled: timelineContent.movePOIMode
        onActivated: mainWindow.stopMovingPoi()
    }
}
