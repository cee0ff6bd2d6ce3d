import QtQuick 2.7
import "."

// Shows at the right edge of a list which part of it is seen, and scrolls it; nothing while all of
// it is. Its parent is that of the list.
Item {
    id: scrollMark

    property Flickable view: null
    property color colour: Theme.barHandle
    property color colourHovered: Theme.barHandleHovered
    readonly property real shownPart: view !== null ? view.visibleArea.heightRatio : 1
    // The way of the handle, and that of the contents.
    readonly property real freeWay: height - handle.height
    readonly property real contentWay: view !== null ? view.contentHeight - view.height : 0

    anchors {
        right: view !== null ? view.right : undefined
        top: view !== null ? view.top : undefined
        bottom: view !== null ? view.bottom : undefined
    }
    width: 8
    visible: view !== null && view.visible && contentWay > 0.5 && shownPart < 1

    Rectangle {
        id: handle
        objectName: "scrollMarkHandle"
        x: 2
        y: scrollMark.contentWay > 0
           ? scrollMark.freeWay * (scrollMark.view.contentY - scrollMark.view.originY)
             / scrollMark.contentWay
           : 0
        width: 5
        height: Math.max(20, scrollMark.height * scrollMark.shownPart)
        radius: 2
        color: area.containsMouse || area.pressed ? scrollMark.colourHovered : scrollMark.colour
    }

    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true

        // Where on the handle it was taken; its middle if it was taken beside it.
        property real grip: 0

        function scroll(y) {
            var part = Math.max(0, Math.min(1, (y - grip) / Math.max(1, scrollMark.freeWay)));
            scrollMark.view.contentY = scrollMark.view.originY + part * scrollMark.contentWay;
        }

        onPressed: {
            var onHandle = mouse.y >= handle.y && mouse.y < handle.y + handle.height;
            grip = onHandle ? mouse.y - handle.y : handle.height / 2;
            scroll(mouse.y);
        }
        onPositionChanged: {
            if (pressed)
                scroll(mouse.y);
        }
    }
}
