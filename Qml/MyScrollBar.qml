import QtQuick 2.7
import QtQml 2.14
import "."

// Scrolls the timeline, and shows how much of it is in view.
Item {
    id: scrollbar

    property Rectangle timeline
    property int handleSize: 8

    // Pixels of the strip that are out of view.
    readonly property real span: timeline !== null ? timeline.contentWidth - timeline.width : 0

    height: handleSize + 2 * (backScrollbar.border.width + 1)
    visible: timeline !== null && timeline.widthRatio < 1

    Accessible.role: Accessible.ScrollBar
    Accessible.name: "Timeline position"

    function scrollRight() {
        if (visible)
            timeline.setContentX(Math.min(timeline.getContentX() + timeline.width / 4, span));
    }

    function scrollLeft() {
        if (visible)
            timeline.setContentX(Math.max(timeline.getContentX() - timeline.width / 4, 0));
    }

    function widthsChanged() {
        if (isNaN(handle.x))
            handle.x = 0;
    }

    Rectangle {
        id: backScrollbar
        anchors.fill: parent
        radius: 2
        color: Theme.scrollGround
        border.width: 1
        border.color: Theme.scrollBorder
    }

    Item {
        id: groove
        objectName: "timelineScrollBarGroove"
        anchors.fill: parent
        anchors.margins: backScrollbar.border.width + 1

        MouseArea {
            anchors.fill: parent
            onClicked: {
                if (scrollbar.visible)
                    timeline.setContentX(mouse.x / groove.width * scrollbar.span);
            }
        }

        Item {
            id: handle
            objectName: "timelineScrollBarHandle"
            width: timeline !== null ? Math.max(20, timeline.widthRatio * groove.width) : 20
            height: parent.height

            onXChanged: {
                if (scrollbar.visible && (clicker.drag.active || clicker.pressed)
                        && clicker.drag.maximumX > 0)
                    timeline.setContentX(handle.x * scrollbar.span / clicker.drag.maximumX);
            }

            Rectangle {
                id: backHandle
                anchors.fill: parent
                radius: 2
                color: clicker.pressed ? Theme.scrollHandlePressed : Theme.scrollHandle
                opacity: clicker.pressed ? 1 : 0.35
            }
        }

        MouseArea {
            id: clicker
            anchors.fill: handle
            drag.target: handle
            drag.axis: Drag.XAxis
            drag.minimumX: 0
            drag.maximumX: groove.width - handle.width
        }
    }

    // Not while the handle moves the strip: each would answer the other.
    Binding {
        target: handle
        property: "x"
        restoreMode: Binding.RestoreNone
        when: scrollbar.visible && !clicker.drag.active && !clicker.pressed
        value: timeline !== null ? timeline.getContentX() * clicker.drag.maximumX / scrollbar.span : 0
    }
}
