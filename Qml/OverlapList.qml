import QtQuick 2.15
import Timeline 1.0
import VideoPlayer 1.0
import "."

// Over the tools above the timeline: the points of interest whose flags cover each other at the
// pointer, each with its picture, so that every one can be chosen. It stays long enough for the
// pointer to reach it past the tools.
Item {
    id: overlapList

    property TimelineNavigator navigator: null
    // Says where the pointer is over the timeline.
    property HoverHandler pointer: null
    readonly property alias shown: frame.visible
    signal chosen()

    // Of the points of interest: maps of "time", "timeText" and "name".
    property var pois: []
    property real pointedX: 0
    // Counts the changes of the points of interest: pictures may come while the list is shown.
    property int revision: 0

    function follow() {
        var place = pointer.point.position;
        var found = pointer.hovered ? navigator.poisAt(place.x, place.y) : [];
        if (found.length > 1) {
            // The list stays in its place while the same flags are under the pointer.
            if (!navigator.samePois(found, pois)) {
                pois = found;
                pointedX = place.x;
            }
            leaving.stop();
        } else if (pois.length > 0 && !leaving.running && !over.containsMouse) {
            leaving.start();
        }
    }

    // The revision is there for the bindings that call this: each change makes them call again.
    function pictureAt(time, revision) {
        return navigator.pictureAt(time);
    }

    function choose(time) {
        pois = [];
        navigator.goToPoi(time);
        chosen();
    }

    Connections {
        target: overlapList.pointer

        function onPointChanged() {
            overlapList.follow();
        }

        function onHoveredChanged() {
            overlapList.follow();
        }
    }

    Connections {
        target: frame.visible ? overlapList.navigator.timeline.poiModel : null

        function onChanged() {
            ++overlapList.revision;
        }
    }

    Timer {
        id: leaving
        interval: 700
        onTriggered: overlapList.pois = []
    }

    Rectangle {
        id: frame
        objectName: "overlapList"
        x: Math.max(0, Math.min(overlapList.width - width, overlapList.pointedX - width / 2))
        y: -height - 30
        width: 240
        height: Math.min(list.contentHeight, 4.5 * 44) + 8
        visible: overlapList.pois.length > 1
        color: Theme.plate
        border.width: 1
        border.color: Theme.menuBorder

        // No HoverHandler: in an item that is hidden in between it has no pointer any more.
        MouseArea {
            id: over
            anchors.fill: parent
            hoverEnabled: true
            onContainsMouseChanged: {
                if (containsMouse)
                    leaving.stop();
                else
                    leaving.start();
            }

            ListView {
                id: list
                anchors.fill: parent
                anchors.margins: 4
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                model: overlapList.pois
                Accessible.role: Accessible.List
                Accessible.name: "Points of interest at the pointer"

                delegate: MouseArea {
                    id: row
                    objectName: "overlapRow" + index
                    width: list.width
                    height: 44
                    hoverEnabled: true
                    onClicked: overlapList.choose(modelData.time)
                    Accessible.role: Accessible.ListItem
                    Accessible.name: modelData.timeText + " " + modelData.name

                    Rectangle {
                        anchors.fill: parent
                        color: row.containsMouse ? Theme.listHovered : Theme.clear
                    }

                    PictureItem {
                        id: picture
                        anchors { left: parent.left; leftMargin: 4; verticalCenter: parent.verticalCenter }
                        width: 64
                        height: 36
                        picture: overlapList.pictureAt(modelData.time, overlapList.revision)
                    }

                    ElidedText {
                        id: nameText
                        anchors {
                            left: picture.right
                            leftMargin: 6
                            right: parent.right
                            rightMargin: 6
                            top: parent.top
                            topMargin: 4
                        }
                        color: Theme.text
                        text: modelData.name
                    }

                    Text {
                        anchors { left: nameText.left; top: nameText.bottom; topMargin: 2 }
                        color: Theme.text
                        font.pixelSize: 11
                        text: modelData.timeText
                    }
                }
            }
        }
    }
}
