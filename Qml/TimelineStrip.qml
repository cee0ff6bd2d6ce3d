import QtQuick 2.15
import Timeline 1.0
import VideoPlayer 1.0
import "."

// The timeline, which is declared inside, with the picture at the pointer above and the scroll bar
// below it.
Rectangle {
    id: timelineStrip

    default property alias content: place.data
    property VideoPlayer player: null
    property TimelineContent timeline: null
    property TimelineNavigator navigator: null
    // Says where the pointer is over the timeline.
    property HoverHandler pointer: null
    readonly property alias scrollBar: timelineScrollBar
    // A point of interest was chosen among those that cover each other.
    signal poiChosen()

    // The timeline has moved below its view.
    function scrolled() {
        strip.contentXChanged();
    }

    height: 120
    color: Theme.window

    Rectangle {
        id: strip
        objectName: "timeline"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: timelineScrollBar.top
        color: Theme.timelineGround
        clip: true

        readonly property real contentWidth: timelineStrip.timeline !== null
                ? timelineStrip.timeline.contentWidth : width
        readonly property real widthRatio: width / contentWidth
        signal contentXChanged()

        onWidthChanged: timelineScrollBar.widthsChanged()
        onContentWidthChanged: timelineScrollBar.widthsChanged()

        function setContentX(contentX) {
            timelineStrip.timeline.contentX =
                    Math.max(0, Math.min(contentX, contentWidth - width));
        }

        function getContentX() {
            return timelineStrip.timeline !== null ? timelineStrip.timeline.contentX : 0;
        }

        MouseArea {
            id: place
            anchors.fill: parent
            hoverEnabled: true
            propagateComposedEvents: true
        }
    }

    // Not while the playhead is dragged: the video shows the place itself, and small pictures would
    // hold it up. The area is asked, too, since a HoverHandler does not notice a pointer that leaves
    // with its first move after a click.
    TimelinePreview {
        anchors.fill: strip
        pointed: timelineStrip.pointer !== null && timelineStrip.pointer.hovered
                 && place.containsMouse && !overlapList.shown
                 && (timelineStrip.timeline === null || !timelineStrip.timeline.scrubbing)
        pointerX: timelineStrip.pointer !== null ? timelineStrip.pointer.point.position.x : 0
        pointerY: timelineStrip.pointer !== null ? timelineStrip.pointer.point.position.y : 0
        player: timelineStrip.player
        timeline: timelineStrip.timeline
        navigator: timelineStrip.navigator
    }

    OverlapList {
        id: overlapList
        anchors.fill: strip
        navigator: timelineStrip.navigator
        pointer: timelineStrip.pointer
        onChosen: timelineStrip.poiChosen()
    }

    MyScrollBar {
        id: timelineScrollBar
        objectName: "timelineScrollBar"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        timeline: strip
    }
}
