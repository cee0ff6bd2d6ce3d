import QtQuick 2.7
import Timeline 1.0
import VideoPlayer 1.0
import "."
import "Controls"

// The transport, the speed and the tools between the video and the timeline, and their keys.
Rectangle {
    id: transportStrip

    property VideoPlayer player: null
    property TimelineContent timeline: null
    // The functions that the tools run: the main window's.
    property var verbs: null
    // Whether the window has an item with the keyboard: the transport keys need one.
    property bool hasFocusItem: false

    // The panels beside the video.
    property bool poiListShown: false
    property bool sidebarShown: true
    property alias speedBox: playSpeedBox
    signal poiListToggled(bool shown)
    signal sidebarToggled(bool shown)

    property bool pictureAlone: false
    // A field of the window has a use of its own for Escape.
    property bool escapeIsTaken: false
    signal pictureAloneToggled()

    readonly property bool videoOpen: player !== null && player.hasVideoOpened
    readonly property bool poiSelected: timeline !== null && timeline.hasSelectedPoi
    // Why a tool cannot be used.
    readonly property string openVideoFirst: "open a video first"
    readonly property string selectPoiFirst: videoOpen ? "select a POI first" : openVideoFirst
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
            keyName: "Home"
            source: "images/begin.png"
            onPressButton: player.goToFrame(0)
        }
        TransportButton {
            id: prevFrameButton
            objectName: "prevFrameButton"
            name: "Previous frame"
            keyName: "Left"
            source: "images/prev.png"
            onPressButton: player.step(-1)
        }
        TransportButton {
            id: playButton
            objectName: "playButton"
            name: "Play"
            keyName: "Space"
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
            keyName: "Right"
            source: "images/next.png"
            onPressButton: player.step(1)
        }
        TransportButton {
            id: endButton
            objectName: "endButton"
            name: "Last frame"
            keyName: "End"
            source: "images/end.png"
            onPressButton: player.goToFrame(player.frameCount - 1)
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
    }

    ToolTipLoader {
        target: playSpeedBox
        text: "Playback speed, 1 to 5 times"
        hovered: playSpeedBox.hovered
    }

    Row {
        id: toolbarSpecialModeButtons
        objectName: "toolbarSpecialModeButtons"
        anchors.left: playSpeedBox.right
        anchors.leftMargin: 24
        spacing: 6
        visible: transportStrip.moveMode

        Text {
            objectName: "moveModeText"
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accent
            font.bold: true
            text: "POI MOVE MODE"
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        CorvToolbarTextButton {
            id: confirmPOIMoveButton
            objectName: "confirmPOIMoveButton"
            text: "Move here"
            tooltiptext: "Move the selected POI to the playhead"
            keyName: "Return"
            source: "images/icon_check_ok.png"
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.confirmMovingPoi()
        }
        CorvToolbarTextButton {
            id: exitMoveModeButton
            objectName: "exitMoveModeButton"
            text: "Cancel"
            tooltiptext: "Leave the POI where it is"
            keyName: "Esc"
            source: "images/icon_cross_cancel.png"
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.stopMovingPoi()
        }
    }

    DisabledToolTips {
        objectName: "saveButtonsToolTips"
        row: toolbarSaveButtons
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
            disabledReason: transportStrip.openVideoFirst
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.saveCurrentFrame()
        }
        CorvToolbarButton {
            id: copyImageButton
            objectName: "copyImageButton"
            source: "images/button_copy.png"
            tooltiptext: "Copy current frame to clipboard"
            keyName: "Ctrl+C"
            disabledReason: transportStrip.openVideoFirst
            enabled: transportStrip.videoOpen
            onClicked: player.copyFrameToClipboard(player.timePosition)
        }
        CorvToolbarButton {
            id: addPoiButton
            objectName: "addPoiButton"
            source: "images/button_poi_add.png"
            tooltiptext: "Create POI at playhead position"
            keyName: "N"
            disabledReason: transportStrip.openVideoFirst
            enabled: transportStrip.videoOpen
            onClicked: transportStrip.verbs.addNewPoiAtPosition()
        }
        CorvToolbarButton {
            id: removePoiButton
            objectName: "removePoiButton"
            source: "images/button_poi_remove.png"
            tooltiptext: "Delete selected POI"
            keyName: "X"
            disabledReason: transportStrip.selectPoiFirst
            enabled: transportStrip.videoOpen && transportStrip.poiSelected
            onClicked: transportStrip.verbs.deleteSelectedPoi()
        }
        CorvToolbarButton {
            id: editPoiButton
            objectName: "editPoiButton"
            source: "images/button_poi_edit.png"
            tooltiptext: "Edit selected POI"
            keyName: "E"
            disabledReason: transportStrip.selectPoiFirst
            enabled: transportStrip.videoOpen && transportStrip.poiSelected
            onClicked: transportStrip.verbs.editSelectedPoi()
        }
        CorvToolbarButton {
            id: enterMoveModeButton
            objectName: "enterMoveModeButton"
            source: "images/button_poi_move.png"
            tooltiptext: "Move selected POI"
            keyName: "M"
            disabledReason: transportStrip.selectPoiFirst
            enabled: transportStrip.videoOpen && transportStrip.poiSelected
            onClicked: transportStrip.verbs.startMovingPoi()
        }
    }

    DisabledToolTips {
        objectName: "panelButtonsToolTips"
        row: panelButtons
    }

    Row {
        id: panelButtons
        anchors.right: parent.right
        anchors.rightMargin: 4

        CorvToolbarToggleButton {
            id: pictureAloneButton
            objectName: "pictureAloneButton"
            source: "images/button_picture_alone.png"
            tooltiptext: "Picture alone on full screen"
            keyName: "F"
            disabledReason: transportStrip.openVideoFirst
            enabled: transportStrip.videoOpen
            onToggle: transportStrip.pictureAloneToggled()
        }
        CorvToolbarToggleButton {
            id: poiListButton
            objectName: "poiListButton"
            source: "images/button_list.png"
            tooltiptext: "List of the points of interest"
            keyName: "F7"
            visible: !transportStrip.pictureAlone
            checked: transportStrip.poiListShown
            onToggle: transportStrip.poiListToggled(checked)
        }
        CorvToolbarToggleButton {
            id: sidebarButton
            objectName: "sidebarButton"
            source: "images/button_sidebar.png"
            tooltiptext: "Flight data and adjustments"
            keyName: "F8"
            visible: !transportStrip.pictureAlone
            checked: transportStrip.sidebarShown
            onToggle: transportStrip.sidebarToggled(checked)
        }
    }

    Binding { target: pictureAloneButton; property: "checked"; value: transportStrip.pictureAlone }
    Binding { target: poiListButton; property: "checked"; value: transportStrip.poiListShown }
    Binding { target: sidebarButton; property: "checked"; value: transportStrip.sidebarShown }

    OnceShortcut {
        sequence: "F7"
        onPressed: poiListButton.clicked()
    }
    OnceShortcut {
        sequence: "F8"
        onPressed: sidebarButton.clicked()
    }
    OnceShortcut {
        sequence: "Home"
        enabled: transportStrip.hasFocusItem
        onPressed: beginButton.pressButton()
    }
    Shortcut {
        sequence: "Left"
        enabled: transportStrip.hasFocusItem
        onActivated: prevFrameButton.pressButton()
    }
    OnceShortcut {
        sequence: " "
        enabled: transportStrip.hasFocusItem
        onPressed: playButton.pressButton()
    }
    Shortcut {
        sequence: "Right"
        enabled: transportStrip.hasFocusItem
        onActivated: nextFrameButton.pressButton()
    }
    OnceShortcut {
        sequence: "End"
        enabled: transportStrip.hasFocusItem
        onPressed: endButton.pressButton()
    }
    OnceShortcut {
        sequence: "N"
        context: Qt.WindowShortcut
        onPressed: transportStrip.verbs.addNewPoiAtPosition()
    }
    OnceShortcut {
        sequence: "X"
        context: Qt.WindowShortcut
        enabled: editPoiButton.enabled && !transportStrip.moveMode
        onPressed: transportStrip.verbs.deleteSelectedPoi()
    }
    OnceShortcut {
        sequence: "E"
        context: Qt.WindowShortcut
        enabled: editPoiButton.enabled && !transportStrip.moveMode
        onPressed: transportStrip.verbs.editSelectedPoi()
    }
    OnceShortcut {
        sequence: "M"
        enabled: enterMoveModeButton.enabled && !transportStrip.moveMode
        onPressed: transportStrip.verbs.startMovingPoi()
    }
    OnceShortcut {
        sequence: "Return"
        enabled: transportStrip.moveMode
        onPressed: transportStrip.verbs.confirmMovingPoi()
    }
    OnceShortcut {
        sequence: "Esc"
        enabled: transportStrip.moveMode
        onPressed: transportStrip.verbs.stopMovingPoi()
    }
    // From a control back to the video, as a click on the picture does.
    Shortcut {
        sequence: "Esc"
        enabled: transportStrip.hasFocusItem && !transportStrip.moveMode
                 && !transportStrip.pictureAlone && !transportStrip.escapeIsTaken
        onActivated: transportStrip.verbs.refocusMainActions()
    }
}
