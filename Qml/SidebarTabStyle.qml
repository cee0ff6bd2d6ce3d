import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4

TabViewStyle {
    property int tabWidth

    frameOverlap: 0
    frame: Rectangle { color: "#444444" }
    tabBar: Rectangle { color: "#222222" }
    tab: Rectangle {
        implicitWidth: tabWidth
        implicitHeight: 25
        color: styleData.selected ? "#444444" : styleData.hovered ? "#3a3a3a" : "#2a2a2a"

        Text {
            anchors.centerIn: parent
            color: styleData.selected ? "#ffffff" : "#aaaaaa"
            font.pointSize: 8
            font.bold: styleData.selected
            font.capitalization: Font.AllUppercase
            text: styleData.title
        }

        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            height: 2
            color: "#12ff54"
            visible: styleData.selected
        }
    }
}
