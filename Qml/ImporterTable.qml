import QtQuick 2.7
import "."
import "Controls"

// The flights that the importer found, under the headings of their columns. One of them is chosen
// by a click or by the arrow keys, and Return or a double click accepts it.
Item {
    id: importerTable

    // Each with the keys that importerRows.js gives it.
    property var rows
    property alias currentIndex: matchingsListView.currentIndex
    readonly property real headerHeight: matchingsListHeader.height
    signal accepted()

    function takeKeyboard() {
        matchingsListView.forceActiveFocus();
    }

    Rectangle {
        id: matchingsListHeader
        objectName: "matchingsListHeader"
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 25
        color: Theme.panel

        ImporterColumns {
            // Above the columns of the rows, which a scroll bar makes narrower.
            x: 1 + parent.height + 4
            width: rowWidth - parent.height - 4
            height: parent.height
            rowWidth: matchingsListView.width

            ImporterHeading {
                objectName: "nameHeading"
                width: parent.nameWidth
                text: "Paired files"
            }

            ImporterHeading {
                objectName: "timeHeading"
                width: parent.timeWidth
                text: "Time"
            }

            ImporterHeading {
                objectName: "missionNameHeading"
                width: parent.missionWidth
                text: "Mission name"
            }

            ImporterHeading {
                objectName: "flightNameHeading"
                width: parent.flightWidth
                text: "Flight name"
            }

            ImporterHeading {
                objectName: "flightNumberHeading"
                width: parent.numberWidth
                text: "Num."
            }
        }
    }

    Rectangle {
        id: matchingsFrame
        anchors {
            left: parent.left; right: parent.right
            top: matchingsListHeader.bottom; bottom: parent.bottom
        }
        color: Theme.listGround
        border { width: matchingsListView.activeFocus ? 1 : 0; color: Theme.accent }

        Text {
            objectName: "emptyListText"
            anchors { left: parent.left; right: parent.right; margins: 40; verticalCenter: parent.verticalCenter }
            visible: matchingsListView.count === 0
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            color: Theme.textDim
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            text: "No flights listed yet. Choose above where the log files and the video files are, "
                  + "then press \"Search flights\"."
        }

        ScrollView {
            anchors { fill: parent; margins: 1 }
            horizontalScrollBarPolicy: Qt.ScrollBarAlwaysOff

            ListView {
                id: matchingsListView
                objectName: "matchingsListView"
                focus: true
                activeFocusOnTab: true
                keyNavigationEnabled: true
                model: importerTable.rows
                boundsBehavior: Flickable.StopAtBounds
                highlight: Rectangle { color: Theme.progress }
                highlightMoveDuration: 0
                highlightResizeDuration: 0
                Accessible.role: Accessible.List
                Accessible.name: "Flights"
                Keys.onReturnPressed: importerTable.accepted()
                Keys.onEnterPressed: importerTable.accepted()

                delegate: ImporterRow {
                    objectName: "matchingRow" + index
                    width: matchingsListView.width
                    height: matchingsListHeader.height
                    row: model
                    chosen: ListView.isCurrentItem
                    onClicked: {
                        matchingsListView.currentIndex = index;
                        matchingsListView.forceActiveFocus();
                    }
                    onDoubleClicked: {
                        matchingsListView.currentIndex = index;
                        importerTable.accepted();
                    }
                }
            }
        }
    }
}
