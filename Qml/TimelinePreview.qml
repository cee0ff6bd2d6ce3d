import QtQuick 2.15
import Timeline 1.0
import VideoPlayer 1.0
import "."

// Over the timeline: the picture of the video and the time at the pointer.
Item {
    id: timelinePreview

    property VideoPlayer player: null
    // Where the pointer is over the timeline, if it is.
    property bool pointed: false
    property real pointerX: 0
    property TimelineNavigator navigator: null
    readonly property bool videoOpen: player !== null && player.hasVideoOpened

    FramePreview {
        id: preview
        player: timelinePreview.player
    }

    function follow() {
        if (pointed && videoOpen)
            preview.show(navigator.timeAt(pointerX));
        else
            preview.clear();
    }

    onPointedChanged: follow()
    onPointerXChanged: follow()
    onVideoOpenChanged: follow()

    Rectangle {
        id: frame
        objectName: "timelinePreview"
        x: Math.max(0, Math.min(timelinePreview.width - width,
                                timelinePreview.pointerX - width / 2))
        y: -height - 30
        width: 208
        height: picture.height + timeText.height + 12
        visible: timelinePreview.pointed && timelinePreview.videoOpen
        color: Theme.overlay
        border.width: 1
        border.color: Theme.overlayBorder

        PictureItem {
            id: picture
            objectName: "timelinePreviewPicture"
            anchors { top: parent.top; topMargin: 4; horizontalCenter: parent.horizontalCenter }
            width: 200
            height: 112
            picture: preview.picture
        }

        Text {
            id: timeText
            objectName: "timelinePreviewTime"
            anchors { top: picture.bottom; topMargin: 3; horizontalCenter: parent.horizontalCenter }
            color: Theme.overlayText
            text: timelinePreview.visible && timelinePreview.navigator !== null
                  ? timelinePreview.navigator.timeTextAt(timelinePreview.pointerX) : ""
        }
    }
}
