import QtQuick 2.15
import Timeline 1.0
import VideoPlayer 1.0
import "."

// Over the timeline: the picture of the video and the time at the pointer, with the whole name of a
// point of interest, which its flag may shorten.
Item {
    id: timelinePreview

    property VideoPlayer player: null
    // Where the pointer is over the timeline, if it is.
    property bool pointed: false
    property real pointerX: 0
    property real pointerY: 0
    property TimelineNavigator navigator: null
    property TimelineContent timeline: null
    readonly property bool videoOpen: player !== null && player.hasVideoOpened
    // What moves below a pointer that rests: by another flight, by zooming, by playback.
    readonly property real msPerPx: timeline !== null ? timeline.msPerPx : 0
    readonly property int contentX: timeline !== null ? timeline.contentX : 0

    FramePreview {
        id: preview
        player: timelinePreview.player
    }

    function follow() {
        if (pointed && videoOpen) {
            timeText.text = navigator.timeTextAt(pointerX);
            preview.show(navigator.timeAt(pointerX));
        } else {
            preview.clear();
        }
        showName();
    }

    // Those that cover each other have a list of their own.
    function showName() {
        var pois = pointed && videoOpen ? navigator.poisAt(pointerX, pointerY) : [];
        nameText.text = pois.length === 1 ? pois[0].name.substring(0, 400) : "";
    }

    onPointedChanged: follow()
    onPointerXChanged: follow()
    onPointerYChanged: showName()
    onVideoOpenChanged: follow()
    onMsPerPxChanged: follow()
    onContentXChanged: follow()

    Rectangle {
        id: frame
        objectName: "timelinePreview"
        x: Math.max(0, Math.min(timelinePreview.width - width,
                                timelinePreview.pointerX - width / 2))
        y: -height - 30
        width: 208
        height: picture.height + timeText.height + 12
                + (nameText.visible ? nameText.height + 3 : 0)
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
        }

        Text {
            id: nameText
            objectName: "timelinePreviewName"
            anchors { top: timeText.bottom; topMargin: 3; horizontalCenter: parent.horizontalCenter }
            width: picture.width
            visible: text !== ""
            color: Theme.overlayText
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 4
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
