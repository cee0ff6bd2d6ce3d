import QtQuick 2.15
import LogCurves 1.0
import "."

// Columns of the flight log as curves, on the axis and the scale of the timeline above. Folded it
// has no height.
Rectangle {
    id: curvesPanel
    objectName: "curvesPanel"

    property alias logParser: logCurves.logParser
    property alias msPerPx: logCurves.msPerPx
    property alias contentX: logCurves.contentX
    property alias cursorPosition: logCurves.cursorPosition

    // The names of the curves shown.
    property alias curves: logCurves.curves
    property bool open: false
    // The list covers the end of a flight that is shown whole, and can be folded away.
    property bool choosing: true
    readonly property bool listShown: choosing || curves.length === 0

    // What the search field finds, and the list of it.
    property var found: []

    function search() {
        found = logCurves.available(searchField.text);
    }

    height: open ? 160 : 0
    visible: open
    clip: true
    color: Theme.curvesGround

    onOpenChanged: search()

    LogCurves {
        id: logCurves
        objectName: "logCurves"
        light: Theme.light
        anchors.fill: parent
        Accessible.role: Accessible.Graphic
        Accessible.name: curves.length === 0 ? "Curves of the log, none chosen"
                                             : "Curves of the log: " + curves.join(", ")
        onLogChanged: curvesPanel.search()

        // They are painted: a screen reader has each as a text of its own.
        Repeater {
            id: readings

            readonly property var texts: curvesPanel.open ? logCurves.readings : []

            model: texts.length

            Item {
                y: index * height
                width: logCurves.width
                height: logCurves.height / Math.max(1, readings.count)
                Accessible.role: Accessible.StaticText
                Accessible.name: readings.texts[index]
            }
        }
    }

    Text {
        objectName: "curvesHint"
        anchors.left: parent.left
        anchors.right: choice.left
        anchors.margins: 10
        anchors.verticalCenter: parent.verticalCenter
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        visible: logCurves.curves.length === 0
        color: Theme.textBand
        text: logParser === null || logParser.source === "" ? "No flight log is open."
              : curvesPanel.found.length === 0 && searchField.text === ""
              ? "The log has no values to show as curves."
              : "Choose values on the right to show them as curves."
    }

    Rectangle {
        id: choice
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: Math.max(240, Math.min(320, parent.width / 4))
        visible: curvesPanel.listShown
        color: Theme.timelineGround

        CorvFieldFrame {
            id: searchFrame
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 4
            anchors.rightMargin: listButton.visible ? 8 + listButton.width : 4
            height: 25

            CorvTextInput {
                id: searchField
                objectName: "curvesSearch"
                Accessible.name: "Search values of the log"
                onTextChanged: curvesPanel.search()
            }

            Text {
                anchors.left: parent.left
                anchors.leftMargin: 6
                anchors.verticalCenter: parent.verticalCenter
                visible: searchField.text === "" && !searchField.activeFocus
                color: Theme.fieldText
                text: "Search"
            }
        }

        ListView {
            id: list
            objectName: "curvesList"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: searchFrame.bottom
            anchors.topMargin: 4
            anchors.bottom: parent.bottom
            clip: true
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            model: curvesPanel.found
            Accessible.role: Accessible.List
            Accessible.name: "Values of the log"
            Keys.onSpacePressed: {
                if (currentItem)
                    logCurves.toggle(currentItem.name);
            }

            delegate: Rectangle {
                id: row

                readonly property string name: modelData.name
                readonly property bool isShown: logCurves.curves.indexOf(name) >= 0

                width: list.width
                height: 22
                color: pointer.containsMouse ? Theme.transportHovered : Theme.clear
                border.width: list.activeFocus && ListView.isCurrentItem ? 1 : 0
                border.color: Theme.accent
                // The current row has the keyboard of the list. Before the window's own shortcut.
                Keys.onShortcutOverride: event.accepted = event.key === Qt.Key_Space
                Accessible.role: Accessible.CheckBox
                Accessible.name: name
                Accessible.description: modelData.unit
                Accessible.checkable: true
                Accessible.checked: isShown
                Accessible.onToggleAction: logCurves.toggle(name)
                Accessible.onPressAction: logCurves.toggle(name)

                Rectangle {
                    id: mark
                    anchors.left: parent.left
                    anchors.leftMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    width: 10
                    height: 10
                    border.width: 1
                    border.color: Theme.textDim
                    // Anew where the curves or their colours change.
                    color: row.isShown && logCurves.curves && [logCurves.light]
                           ? logCurves.colourOf(row.name) : Theme.clear
                }

                Text {
                    id: label
                    anchors.left: mark.right
                    anchors.leftMargin: 6
                    anchors.right: parent.right
                    anchors.rightMargin: 10
                    anchors.verticalCenter: parent.verticalCenter
                    elide: Text.ElideMiddle
                    color: Theme.text
                    text: modelData.unit === "" ? row.name : row.name + " (" + modelData.unit + ")"
                    textFormat: Text.PlainText
                }

                MouseArea {
                    id: pointer
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: {
                        list.currentIndex = index;
                        logCurves.toggle(row.name);
                    }
                }

                ToolTipLoader {
                    target: row
                    text: label.truncated ? label.text : ""
                    hovered: pointer.containsMouse
                }
            }
        }

        ScrollMark { view: list }
    }

    Rectangle {
        anchors.fill: listButton
        visible: listButton.visible && !curvesPanel.listShown
        color: Theme.timelineGround
    }

    CorvToolbarButton {
        id: listButton
        objectName: "curvesListButton"
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 4
        visible: curvesPanel.curves.length > 0
        source: "images/button_list.png"
        tooltiptext: curvesPanel.listShown ? "Fold the list of values" : "Choose values of the log"
        onClicked: curvesPanel.choosing = !curvesPanel.choosing
    }
}
