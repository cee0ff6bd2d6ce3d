import QtQuick 2.7
import QtQuick.Controls 1.4
import Timeline 1.0
import VideoPlayer 1.0
import "."

// The transport, the speed and the tools between the video and the timeline, and their keys.
Rectangle {
    id: transportStrip

    property VideoPlayer player: null
    property TimelineContent timeline: null
    // The functions that the tools run: the main window's.
    property var verbs: null
    // Whether the window has an item with the keyboard: the transport keys need one.
    property bool hasFocusItem: false

    readonly property bool videoOpen: player !== null && player.hasVideoOpened
    readonly property bool poiSelected: timeline !== null && !isNaN(timeline.selectedPoiTime)
    readonly property bool moveMode: timeline !== null && timeline.movePOIMode

    height: 25
    color: Theme.strip

    Connections {
        target: transportStrip.player

        function onPlayingChanged() {
            if (transportStrip.player.playing)
                playButton.setPause();
            else
                playButton.setPlay();
        }
    }

    Row {
        id: transportButtons
        anchors.left: parent.left

        TransportButton {
            id: beginButton
            objectName: "beginButton"
            name: "First frame"
            source: "images/begin.png"
            onPressButton: player.seekAtFrame(0)
        }
        TransportButton {
            id: prevFrameButton
            objectName: "prevFrameButton"
            name: "Previous frame"
            source: "images/prev.png"
            onPressButton: player.seekAtFrame(player.currentFrameIndex - 1)
        }
        TransportButton {
            id: playButton
            objectName: "playButton"
            name: "Play"
            source: "images/play.png"
            onPressButton: player.togglePlayPause()

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
            onPressButton: player.seekAtFrame(player.currentFrameIndex + 1)
        }
        TransportButton {
            id: endButton
            objectName: "endButton"
            name: "Last frame"
            source: "images/end.png"
            onPressButton: player.seekAtTime(player.duration)
        }
    }

    Text {
        id: speedLabel
        anchors.left: transportButtons.right
        anchors.leftMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.textBand
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
        onValueChanged: {
            if (transportStrip.player !== null)
                transportStrip.player.playSpeed = value;
        }
        Accessible.name: "Playback speed"
        style: CorvSpinBoxStyle {}
    }

    Row {
        id: toolbarSpecialModeButtons
        objectName: "toolbarSpecialModeButtons"
        anchors.left: playSpeedBox.right
        anchors.leftMargin: 24
        spacing: 6
        visible: transportStrip.moveMode

        Text {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accent
            font.bold: true
            text: "POI MOVE MODE"
        }
        CorvToolbarTextButton {
            id: confirmPOIMoveButton
            objectName: "confirmPOIMoveButton"
            text: "Move here"
            source: "images/icon_check_ok.png"
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.confirmMovingPoi()
        }
        CorvToolbarTextButton {
            id: exitMoveModeButton
            objectName: "exitMoveModeButton"
            text: "Cancel"
            source: "images/icon_cross_cancel.png"
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.stopMovingPoi()
        }
    }

    Row {
        id: toolbarSaveButtons
        objectName: "toolbarSaveButtons"
        anchors.left: playSpeedBox.right
        anchors.leftMargin: 24
        visible: !transportStrip.moveMode

        CorvToolbarButton {
            id: saveImageButton
            objectName: "saveImageButton"
            source: "images/button_camera.png"
            tooltiptext: "Save current frame as image"
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.saveCurrentFrame()
        }
        CorvToolbarButton {
            id: copyImageButton
            objectName: "copyImageButton"
            source: "images/button_copy.png"
            tooltiptext: "Copy current frame to clipboard"
            enabled: transportStrip.videoOpen
            onClicked: player.copyFrameToClipboard(player.timePosition)
        }
        CorvToolbarButton {
            id: addPoiButton
            objectName: "addPoiButton"
            source: "images/button_poi_add.png"
            tooltiptext: "Create POI at playhead position"
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.addNewPoiAtPosition()
        }
        CorvToolbarButton {
            id: removePoiButton
            objectName: "removePoiButton"
            source: "images/button_poi_remove.png"
            tooltiptext: "Delete selected POI"
            enabled: transportStrip.videoOpen && transportStrip.poiSelected
            onClicked: transportStrip.verbs.deleteSelectedPoi()
        }
        CorvToolbarButton {
            id: editPoiButton
            objectName: "editPoiButton"
            source: "images/button_poi_edit.png"
            tooltiptext: "Edit selected POI"
            enabled: transportStrip.videoOpen && transportStrip.poiSelected
            onClicked: transportStrip.verbs.editSelectedPoi()
        }
        CorvToolbarButton {
            id: enterMoveModeButton
            objectName: "enterMoveModeButton"
            source: "images/button_poi_move.png"
            tooltiptext: "Move selected POI"
            enabled: transportStrip.videoOpen && transportStrip.poiSelected
            onClicked: transportStrip.verbs.startMovingPoi()
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
        onActivated: transportStrip.verbs.addNewPoiAtPosition()
    }
    Shortcut {
        sequence: "X"
        context: Qt.WindowShortcut
        enabled: editPoiButton.enabled && !transportStrip.moveMode
        onActivated: transportStrip.verbs.deleteSelectedPoi()
    }
    Shortcut {
        sequence: "E"
        context: Qt.WindowShortcut
        enabled: editPoiButton.enabled && !transportStrip.moveMode
        onActivated: transportStrip.verbs.editSelectedPoi()
    }
    Shortcut {
        sequence: "M"
        enabled: enterMoveModeButton.enabled && !transportStrip.moveMode
        onActivated: transportStrip.verbs.startMovingPoi()
    }
    Shortcut {
        sequence: "Return"
        enabled: transportStrip.moveMode
        onActivated: transportStrip.verbs.confirmMovingPoi()
    }
    Shortcut {
        sequence: "Esc"
        enabled: transportStrip.moveMode
        onActivated: transportStrip.verbs.stopMovingPoi()
    }
}
