import QtQuick 2.15
import Timeline 1.0
import "."
import "Controls"

// The points of interest as a list: filtered by typing, sorted by time or name. A click goes to one,
// a double click edits it, Ctrl and Shift choose several, Delete deletes what is chosen.
Rectangle {
    id: poiPanel

    property TimelineContent timeline: null
    property TimelineNavigator navigator: null

    // The selected point of interest is to be edited.
    signal editRequested()
    // The keyboard goes back to the video.
    signal done()

    // Words are being typed, and Escape takes them away.
    readonly property bool filtering: filterField.activeFocus

    color: Theme.panel

    PoiFilter {
        id: filter
        pois: poiPanel.timeline !== null ? poiPanel.timeline.poiModel : null
        words: filterField.text
        byName: sortButton.checked
        onRowsInserted: list.takeNewRows()
        onRowsRemoved: list.takeNewRows()
        onModelReset: list.takeNewRows()
        onLayoutChanged: list.takeNewRows()
    }

    Rectangle {
        id: head
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 26
        color: Theme.strip

        Text {
            objectName: "poiPanelTitle"
            anchors { left: parent.left; leftMargin: 8; verticalCenter: parent.verticalCenter }
            color: Theme.textBand
            text: "Points of interest: " + filter.count
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        CorvToolbarToggleTextButton {
            id: sortButton
            objectName: "sortButton"
            anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
            width: 66
            height: 22
            text: "A-Z"
            source: "images/button_sort.png"
            tooltiptext: "Sort by name instead of time"
        }
    }

    TextField {
        id: filterField
        objectName: "filterField"
        anchors { left: parent.left; right: parent.right; top: head.bottom; margins: 6 }
        placeholderText: "Filter"
        Accessible.name: "Filter of the points of interest"
        Keys.onEscapePressed: {
            text = "";
            poiPanel.done();
        }
    }

    Text {
        objectName: "emptyText"
        anchors { left: parent.left; right: parent.right; top: filterField.bottom; margins: 12 }
        visible: filter.count === 0
        color: Theme.textBand
        wrapMode: Text.WordWrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        text: filterField.text !== "" ? "No point of interest has these words."
              : poiPanel.timeline !== null && poiPanel.timeline.enabled
                ? "No points of interest yet. N makes one at the playhead."
                : "No video is open. The points of interest of a flight are listed here."
    }

    ListView {
        id: list
        objectName: "poiList"

        // The rows that are chosen, where it is not the current one alone.
        property var chosen: []
        // Where the choice by keys has come to, or where the rows were that were deleted.
        property int reached: -1

        function choose(row, modifiers) {
            if (modifiers & Qt.ControlModifier) {
                var before = chosen.length === 0 && currentIndex >= 0 && currentIndex !== row
                           ? [currentIndex] : chosen;
                var without = before.filter(function(one) { return one !== row; });
                chosen = without.length < before.length ? without : before.concat([row]);
                reached = row;
                keepSelectionAmongChosen();
            } else if (modifiers & Qt.ShiftModifier) {
                chooseTo(row);
            } else {
                chosen = [];
                goTo(row);
            }
        }

        // The timeline's tools act on its selection: that is never one that the list shows as left
        // out.
        function keepSelectionAmongChosen() {
            if (chosen.length > 0 && currentIndex >= 0 && chosen.indexOf(currentIndex) < 0)
                poiPanel.timeline.selectPoi(filter.timeOfRow(chosen[0]));
        }

        // All rows from the current one on.
        function chooseTo(row) {
            var rows = [];
            for (var i = Math.min(row, currentIndex); i <= Math.max(row, currentIndex); ++i)
                rows.push(i);
            chosen = rows;
            reached = row;
        }

        // By a key: one row on, or one more with Shift.
        function step(by, modifiers) {
            if (count === 0)
                return;
            var last = count - 1;
            if (!(modifiers & Qt.ShiftModifier) || currentIndex < 0) {
                chosen = [];
                var beside = currentIndex >= 0 ? currentIndex + by : by > 0 ? reached : reached - 1;
                goTo(Math.max(0, Math.min(last, beside)));
                return;
            }
            var from = chosen.length > 0 ? reached : currentIndex;
            chooseTo(Math.max(0, Math.min(last, from + by)));
            positionViewAtIndex(reached, ListView.Contain);
        }

        // A function of the list: the row may be gone when its point of interest has been gone to.
        function click(row, modifiers) {
            choose(row, modifiers);
            if (modifiers === Qt.NoModifier)
                poiPanel.done();
            else
                forceActiveFocus(); // for the Delete key: several are chosen to be deleted
        }

        function goTo(row) {
            currentIndex = row;
            poiPanel.navigator.goToPoi(filter.timeOfRow(row));
            if (poiPanel.timeline.movePOIMode)
                showSelection();
        }

        // What is chosen was chosen by its place. The list moves its current row itself with the
        // rows, but not to one that is back.
        function takeNewRows() {
            chosen = [];
            Qt.callLater(showSelection);
        }

        function showSelection() {
            currentIndex = filter.rowOfTime(poiPanel.timeline.selectedPoiTime);
        }

        function showPicture(row) {
            filter.pois.showThumbnail(filter.timeOfRow(row));
        }

        function removeChosen() {
            var rows = chosen.length > 0 ? chosen : currentIndex >= 0 ? [currentIndex] : [];
            if (rows.length === 0)
                return;
            reached = Math.min.apply(null, rows);
            chosen = [];
            filter.removeRowsOf(rows);
        }

        anchors {
            left: parent.left
            right: parent.right
            top: filterField.bottom
            topMargin: 6
            bottom: deleteButton.top
            bottomMargin: 4
        }
        clip: true
        model: filter
        currentIndex: -1
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: false
        Accessible.role: Accessible.List
        Accessible.name: "Points of interest"

        Keys.onUpPressed: step(-1, event.modifiers)
        Keys.onDownPressed: step(1, event.modifiers)
        Keys.onDeletePressed: removeChosen()

        delegate: Rectangle {
            id: row

            readonly property bool isChosen: list.chosen.indexOf(index) >= 0
                                             || (list.chosen.length === 0
                                                 && index === list.currentIndex)

            objectName: "poiRow" + index
            width: list.width
            height: 48
            color: isChosen ? Theme.listSelected : rowArea.containsMouse ? Theme.listHovered
                                                                         : Theme.clear

            Accessible.role: Accessible.ListItem
            Accessible.name: timeText + " " + name + (firstLine === "" ? "" : ", " + firstLine)
            Accessible.selectable: true
            Accessible.selected: isChosen
            Accessible.focusable: true
            Accessible.onPressAction: list.choose(index, Qt.NoModifier)
            Accessible.onToggleAction: list.choose(index, Qt.ControlModifier)

            // The ground alone is hard to tell from that of the others.
            Rectangle {
                objectName: "chosenMark"
                width: 3
                height: parent.height
                visible: row.isChosen
                color: Theme.accent
            }

            PictureItem {
                id: thumbnailItem
                anchors { left: parent.left; leftMargin: 4; verticalCenter: parent.verticalCenter }
                width: 64
                height: 40
                picture: thumbnail
            }

            // Of a long list a picture is fetched when its row comes.
            Component.onCompleted: list.showPicture(index)
            Connections {
                target: filter.pois

                function onChanged() {
                    list.showPicture(index);
                }
            }

            ElidedText {
                id: nameText
                anchors {
                    left: thumbnailItem.right
                    leftMargin: 6
                    right: parent.right
                    rightMargin: 10
                    top: parent.top
                    topMargin: 5
                }
                color: Theme.text
                elide: Text.ElideRight
                text: name
            }

            Text {
                id: timeLabel
                anchors { left: nameText.left; top: nameText.bottom; topMargin: 2 }
                color: row.isChosen ? Theme.text : Theme.textBand
                font.pixelSize: 11
                text: timeText
            }

            ElidedText {
                anchors {
                    left: timeLabel.right
                    leftMargin: 6
                    right: parent.right
                    rightMargin: 10
                    baseline: timeLabel.baseline
                }
                color: row.isChosen ? Theme.text : Theme.textBand
                elide: Text.ElideRight
                font.pixelSize: 11
                text: firstLine
            }

            MouseArea {
                id: rowArea
                anchors.fill: parent
                z: -1
                hoverEnabled: true
                onClicked: list.click(index, mouse.modifiers)
                onDoubleClicked: {
                    if (!poiPanel.timeline.movePOIMode)
                        poiPanel.editRequested();
                }
            }
        }

        FocusFrame {
            visible: list.activeFocus
        }
    }

    ScrollMark {
        objectName: "poiListMark"
        view: list
    }

    CorvToolbarTextButton {
        id: deleteButton
        objectName: "deletePoisButton"
        anchors { left: parent.left; leftMargin: 4; bottom: parent.bottom; bottomMargin: 4 }
        width: 90
        enabled: list.count > 0 && (list.chosen.length > 0 || list.currentIndex >= 0)
        text: list.chosen.length > 1 ? "Delete " + list.chosen.length : "Delete"
        source: "images/button_poi_remove.png"
        tooltiptext: "Delete the chosen points of interest"
        keyName: "Delete"
        onClicked: list.removeChosen()
    }

    Connections {
        target: poiPanel.timeline

        function onSelectedPoiTimeChanged() {
            list.showSelection();
            // Another was selected elsewhere, or none.
            if (list.chosen.indexOf(list.currentIndex) < 0)
                list.chosen = [];
        }
    }
}
