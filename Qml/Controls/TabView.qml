import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// Tabs that share the width.
Controls.TabView {
    id: tabView

    property int tabWidth: width / 2

    // Has the keyboard in place of the tabs, whose arrow keys are shortcuts of the window.
    readonly property Item tabKeys: Item {
        objectName: "tabKeys"
        parent: tabView
        width: tabView.width
        height: 25
        activeFocusOnTab: true
        Keys.onShortcutOverride: {
            event.accepted = event.key === Qt.Key_Left || event.key === Qt.Key_Right
                             || event.key === Qt.Key_Space;
        }
        Keys.onLeftPressed: tabView.currentIndex = Math.max(0, tabView.currentIndex - 1)
        Keys.onRightPressed: {
            tabView.currentIndex = Math.min(tabView.count - 1, tabView.currentIndex + 1);
        }
        Keys.onSpacePressed: tabView.currentIndex = (tabView.currentIndex + 1) % tabView.count

        Item {
            x: tabView.currentIndex * tabView.tabWidth
            width: tabView.tabWidth
            height: parent.height

            FocusFrame { visible: tabView.tabKeys.activeFocus }
        }
    }

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

            function leaveTheKeys() {
                for (var item = spoken; item !== null && item !== tabView; item = item.parent)
                    item.activeFocusOnTab = false;
            }

            onSelectedChanged: saySelected()
            Component.onCompleted: {
                spoken.Accessible.selectable = true;
                saySelected();
                leaveTheKeys();
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
