import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// Tabs that share the width.
Controls.TabView {
    id: tabView

    property int tabWidth: width / 2

    style: TabViewStyle {
        frameOverlap: 0
        frame: Rectangle { color: Theme.panel }
        tabBar: Rectangle { color: Theme.window }
        tab: Rectangle {
            id: tabGround

            // The tab as a screen reader has it, which offers no action of its own.
            readonly property Item spoken: parent !== null ? parent.parent : null
            readonly property bool selected: styleData.selected

            function saySelected() {
                if (spoken !== null)
                    spoken.Accessible.selected = selected;
            }

            onSelectedChanged: saySelected()
            Component.onCompleted: {
                spoken.Accessible.selectable = true;
                saySelected();
                spoken.Accessible.pressAction.connect(function() {
                    tabView.currentIndex = styleData.index;
                });
            }

            implicitWidth: tabView.tabWidth
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
}
