import QtQuick 2.7
import "."

// The projects opened last, on the start page. Missing ones are greyed.
Column {
    id: recentProjectsList

    // Maps of "path", "name" and "exists".
    property var projects: []
    signal chosen(string path)

    spacing: 2
    visible: projects.length > 0

    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: "RECENT PROJECTS"
        color: Theme.welcomeTitle
    }

    Repeater {
        model: recentProjectsList.projects

        CorvQuickStartButton {
            objectName: "recentProjectButton" + index
            width: recentProjectsList.width
            height: 24
            enabled: modelData.exists
            opacity: enabled ? 1 : 0.4
            text: modelData.name
            onClicked: recentProjectsList.chosen(modelData.path)
        }
    }
}
