import QtQuick 2.7
import "."

// The projects opened last, on the start page, each with a picture and its folder. Those that are
// gone are greyed and say so. More than there is room for can be scrolled to.
Item {
    id: recentProjectsList

    // Maps of "path", "name" and "exists".
    property var projects: []
    // Gives the addresses of the pictures: pictureOf(path) and `revision`. Null for none.
    property var pictures: null
    property real mostHeight: 1000
    signal chosen(string path)

    readonly property int rowHeight: 48
    // With two rows, or with the only one: less than that does not look like a list.
    readonly property real leastHeight: title.height + 6
                                        + Math.min(rows.height, 2 * rowHeight + rows.spacing)

    // With one row: with less room than that, it is better not shown.
    readonly property real oneRowHeight: title.height + 6 + rowHeight

    height: Math.min(title.height + 6 + rows.height, mostHeight)
    visible: projects.length > 0

    Text {
        id: title
        anchors.horizontalCenter: parent.horizontalCenter
        text: "RECENT PROJECTS"
        color: Theme.welcomeTitle
    }

    Flickable {
        id: view
        anchors { left: parent.left; right: parent.right; top: title.bottom; topMargin: 6; bottom: parent.bottom }
        contentHeight: rows.height
        boundsBehavior: Flickable.StopAtBounds
        interactive: contentHeight > height
        clip: true

        function show(row) {
            contentY = Math.max(Math.min(contentY, row.y), row.y + row.height - height);
        }

        Column {
            id: rows
            width: view.width - (mark.visible ? 12 : 0)
            spacing: 4

            Repeater {
                model: recentProjectsList.projects

                CorvButtonBase {
                    id: row
                    objectName: "recentProjectButton" + index

                    readonly property string text: modelData.name
                    readonly property string folder: modelData.path.substring(0, modelData.path.lastIndexOf("/"))

                    name: modelData.exists ? text : text + ", not found"
                    tooltiptext: modelData.path
                    isPressedByReturn: true
                    width: rows.width
                    height: recentProjectsList.rowHeight
                    enabled: modelData.exists
                    color: hovered ? Theme.listHovered : Theme.startRow
                    border.width: 1
                    border.color: Theme.startRowBorder
                    onClicked: recentProjectsList.chosen(modelData.path)
                    onActiveFocusChanged: {
                        if (activeFocus)
                            view.show(row);
                    }

                    Rectangle {
                        id: frame
                        anchors { left: parent.left; top: parent.top; bottom: parent.bottom; margins: 4 }
                        width: height * 16 / 9
                        color: Theme.videoGround

                        // No picture has been kept of it.
                        TintedIcon {
                            anchors.centerIn: parent
                            visible: picture.status !== Image.Ready
                            source: "images/play.png"
                            color: Theme.overlayBorder
                        }

                        Image {
                            id: picture
                            objectName: "recentPicture" + index
                            anchors.fill: parent
                            fillMode: Image.PreserveAspectFit
                            asynchronous: true
                            cache: false
                            opacity: row.enabled ? 1 : 0.4
                            source: recentProjectsList.pictures !== null
                                    && recentProjectsList.pictures.revision >= 0
                                    ? recentProjectsList.pictures.pictureOf(modelData.path) : ""
                        }
                    }

                    Text {
                        id: nameText
                        anchors { left: frame.right; leftMargin: 8; right: parent.right; rightMargin: 8; top: parent.top; topMargin: 6 }
                        horizontalAlignment: Text.AlignLeft
                        elide: Text.ElideRight
                        textFormat: Text.PlainText
                        color: row.enabled ? Theme.startText : Theme.startTextMissing
                        font.bold: true
                        text: row.text
                    }

                    Text {
                        anchors { left: nameText.left; right: nameText.right; top: nameText.bottom; topMargin: 2 }
                        horizontalAlignment: Text.AlignLeft
                        elide: Text.ElideMiddle
                        textFormat: Text.PlainText
                        color: Theme.startTextMissing
                        font.pixelSize: 11
                        text: row.enabled ? row.folder : "Not found in " + row.folder
                    }
                }
            }
        }
    }

    ScrollMark {
        id: mark
        objectName: "recentProjectsMark"
        view: view
    }
}
