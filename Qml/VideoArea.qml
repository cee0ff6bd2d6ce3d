import QtQuick 2.15
import QtQuick.Window 2.2
import QtMultimedia 5.5
import Timeline 1.0
import VideoPlayer 1.0
import "."
import "Controls"

// The place of the video: the quick start panel while none is open, then the player's pictures.
// What is declared inside lies on top.
Rectangle {
    id: videoArea

    default property alias content: top.data
    // What lies over the upper edge takes this much of it.
    property real coveredHeight: 0
    property VideoPlayer player: null
    // The projects opened last: maps of "path", "name" and "exists".
    property var recentProjects: []
    property ProjectPictures projectPictures: null
    readonly property bool videoOpen: player !== null && player.hasVideoOpened
    // A video without an index is being read through; its first picture is there already.
    readonly property bool videoBeingRead: player !== null && player.openingProgress < 1

    // How many times the picture is larger than it fits; it keeps to the area as it is moved.
    property real zoom: 1
    property point pan: Qt.point(0, 0)
    readonly property real pixelZoom: fitScale > 0 ? 1 / (fitScale * Screen.devicePixelRatio) : 1
    readonly property real fitScale: videoOutput.sourceRect.width > 0
            ? Math.min(width / videoOutput.sourceRect.width, height / videoOutput.sourceRect.height) : 0

    // The point under the pointer stays where it is.
    function zoomAt(factor, x, y) {
        var wanted = Math.max(1, Math.min(16, zoom * factor));
        var ratio = wanted / zoom;
        zoom = wanted;
        moveTo(x - (x - pan.x) * ratio, y - (y - pan.y) * ratio);
    }

    function moveTo(x, y) {
        pan = Qt.point(Math.min(0, Math.max(x, width - width * zoom)),
                       Math.min(0, Math.max(y, height - height * zoom)));
    }

    function fit() {
        zoom = 1;
        moveTo(0, 0);
    }

    // The keyboard to the first choice of the start page; false while a video is open.
    function focusFirstChoice() {
        if (!videoOpen)
            nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason);
        return !videoOpen;
    }

    // One pixel of the video on one of the screen, or back.
    function togglePixelSize() {
        if (zoom !== 1)
            fit();
        else
            zoomAt(pixelZoom, width / 2, height / 2);
    }

    // Whether the hottest and the coldest point of the thermal picture are shown.
    property bool extremesShown: false
    readonly property bool thermalShown: videoOpen && player.showIR
    property var extremes: ({})

    // A place in this area as parts of the frame's width and height.
    function partsOfFrame(x, y) {
        var frame = videoOutput.contentRect;
        return Qt.point((x - videoOutput.x - frame.x) / frame.width,
                        (y - videoOutput.y - frame.y) / frame.height);
    }

    function placeInFrame(x, y) {
        var frame = videoOutput.contentRect;
        return Qt.point(videoOutput.x + frame.x + x * frame.width,
                        videoOutput.y + frame.y + y * frame.height);
    }

    function readThermal() {
        extremes = thermalShown && extremesShown ? player.thermalExtremes() : {};
        var parts = partsOfFrame(pointer.point.position.x, pointer.point.position.y);
        pointedValue.value = thermalShown && pointer.hovered
                ? player.thermalValueAt(parts.x, parts.y) : NaN;
    }

    onExtremesShownChanged: readThermal()
    onThermalShownChanged: readThermal()
    onVideoOpenChanged: fit()
    onWidthChanged: moveTo(pan.x, pan.y)
    onHeightChanged: moveTo(pan.x, pan.y)

    signal openProjectClicked()
    signal openVideoClicked()
    signal browseRemovableDevicesClicked()
    signal recentProjectChosen(string path)

    color: videoOpen ? Theme.videoGround : Theme.startGround

    WelcomeMessage {
        id: welcome
        objectName: "welcomeMessage"
        anchors.centerIn: parent
        coveredHeight: Math.max(0, videoArea.coveredHeight - y)
        // In the middle of what the bars leave, higher where the list below would have no room.
        // With too little for all of it, its logo is behind the bars, and its buttons can be seen.
        anchors.verticalCenterOffset: {
            var covered = videoArea.coveredHeight;
            var free = (parent.height - covered - height) / 2;
            if (free < 0)
                return (parent.height - height) / 2;
            var wanted = recentList.visible ? recentList.leastHeight + 16 : 0;
            return covered / 2 - Math.max(0, Math.min(free - 8, wanted - free));
        }
        // This place is narrower than the panel in the narrowest window.
        width: Math.min(560, parent.width - 8)
        visible: !videoArea.videoOpen && !videoArea.videoBeingRead
        onOpenProjectClicked: videoArea.openProjectClicked()
        onOpenSingleClicked: videoArea.openVideoClicked()
        onBrowseRemovableDevicesClicked: videoArea.browseRemovableDevicesClicked()
    }

    RecentProjectsList {
        id: recentList
        objectName: "recentProjectsList"
        anchors { top: welcome.bottom; topMargin: 8; horizontalCenter: parent.horizontalCenter }
        width: Math.min(420, parent.width - 16)
        mostHeight: parent.height - welcome.y - welcome.height - 16
        visible: welcome.visible && projects.length > 0
                 && parent.height - videoArea.coveredHeight >= welcome.height + oneRowHeight + 24
        projects: videoArea.recentProjects
        pictures: videoArea.projectPictures
        onChosen: videoArea.recentProjectChosen(path)
    }

    Item {
        anchors.fill: parent
        clip: videoArea.zoom > 1

        VideoOutput {
            id: videoOutput
            objectName: "videoOutput"
            x: videoArea.pan.x
            y: videoArea.pan.y
            width: parent.width * videoArea.zoom
            height: parent.height * videoArea.zoom
            source: videoArea.player
        }
    }

    BusyIndicator {
        objectName: "busyIndicator"
        anchors.centerIn: parent
        running: videoArea.player !== null && videoArea.player.isBusy
    }

    Rectangle {
        objectName: "openingPlate"
        anchors { bottom: parent.bottom; bottomMargin: 16; horizontalCenter: parent.horizontalCenter }
        width: openingText.width + 24
        height: openingText.height + 12
        visible: videoArea.videoBeingRead
        color: Theme.plate

        Text {
            id: openingText
            objectName: "openingText"
            anchors.centerIn: parent
            color: Theme.text
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            text: videoArea.player === null ? "" : "Reading through the video: "
                    + Math.floor(videoArea.player.openingProgress * 100) + " %"
        }
    }

    HoverHandler {
        id: pointer
        enabled: videoArea.thermalShown
        onPointChanged: videoArea.readThermal()
        onHoveredChanged: videoArea.readThermal()
    }

    Connections {
        target: videoArea.player

        function onCurrentFrameIndexChanged() {
            videoArea.readThermal();
        }

        function onThermalReadingChanged() {
            videoArea.readThermal();
        }
    }

    Item {
        id: top
        anchors.fill: parent
    }

    ThermalBar {
        id: thermalBar
        objectName: "thermalBar"
        anchors {
            right: parent.right
            top: parent.top
            margins: 8
            topMargin: 8 + videoArea.coveredHeight
        }
        height: Math.min(260, parent.height - 60 - videoArea.coveredHeight)
        visible: videoArea.thermalShown && hasScale
        player: videoArea.player
    }

    Repeater {
        model: ["hottest", "coldest"]

        ThermalPoint {
            readonly property var found: videoArea.extremes[modelData]
            readonly property point place: found === undefined
                    ? Qt.point(0, 0) : videoArea.placeInFrame(found.x, found.y)

            objectName: modelData + "Point"
            name: modelData === "hottest" ? "Hottest point" : "Coldest point"
            x: place.x
            y: place.y
            visible: found !== undefined
            value: found === undefined ? 0 : found.value
            mark: modelData === "hottest" ? Theme.hottest : Theme.coldest
        }
    }

    ThermalPoint {
        id: pointedValue
        objectName: "pointedThermalValue"
        ringed: false
        name: "Thermal value at the pointer"
        x: pointer.point.position.x + 8
        y: pointer.point.position.y + 20
        visible: !isNaN(value)
        value: NaN
    }

    WheelHandler {
        id: zoomWheel
        enabled: videoArea.videoOpen
        target: null
        onWheel: videoArea.zoomAt(event.angleDelta.y > 0 ? 1.25 : 0.8, zoomWheel.point.position.x,
                                  zoomWheel.point.position.y)
    }

    // A click still plays and pauses; a drag moves a picture that is larger than its place.
    DragHandler {
        property point start: Qt.point(0, 0)

        enabled: videoArea.zoom > 1
        target: null
        onActiveChanged: {
            if (active)
                start = videoArea.pan;
        }
        onTranslationChanged: videoArea.moveTo(start.x + translation.x, start.y + translation.y)
    }

    Rectangle {
        anchors { right: parent.right; bottom: parent.bottom; margins: 8 }
        width: zoomText.width + 16
        height: zoomText.height + 8
        visible: videoArea.zoom > 1
        color: Theme.overlay

        Text {
            id: zoomText
            objectName: "zoomText"
            anchors.centerIn: parent
            color: Theme.overlayText
            text: Math.round(videoArea.zoom * 100) + " %"
        }
    }
}
