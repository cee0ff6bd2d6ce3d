import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4
import "."

TabViewStyle {
    property int tabWidth

    frameOverlap: 0
    frame: Rectangle { color: Theme.panel }
    tabBar: Rectangle { color: Theme.window }
    tab: Rectangle {
        implicitWidth: tabWidth
        implicitHeight: 25
        color: styleData.selected ? Theme.tabSelected
                                  : styleData.hovered ? Theme.tabHovered : Theme.tab

        Text {
            anchors.centerIn: parent
            color: styleData.selected ? Theme.text : Theme.textDim
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
            color: Theme.accent
            visible: styleData.selected
        }
    }
}
