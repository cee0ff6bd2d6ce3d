import QtQuick 2.7
import QtQuick.Controls 1.4
import QtQuick.Controls.Styles 1.4

MenuBarStyle {
    background: Rectangle { color: "#333333" }

    itemDelegate: Rectangle {
        implicitWidth: caption.implicitWidth + 18
        implicitHeight: caption.implicitHeight + 8
        color: styleData.selected || styleData.open ? "#555555" : "transparent"

        Text {
            id: caption
            anchors.centerIn: parent
            color: styleData.enabled ? "#eeeeee" : "#888888"
            textFormat: Text.StyledText
            text: formatMnemonic(styleData.text, styleData.underlineMnemonic)
        }
    }

    menuStyle: MenuStyle {
        frame: Rectangle {
            color: "#3a3a3a"
            border.color: "#777777"
        }
        itemDelegate.background: Rectangle {
            color: styleData.selected && styleData.enabled ? "#46af63" : "transparent"
        }
        itemDelegate.label: Text {
            color: styleData.enabled ? "#eeeeee" : "#888888"
            textFormat: Text.StyledText
            text: formatMnemonic(styleData.text, styleData.underlineMnemonic)
        }
        itemDelegate.shortcut: Text {
            color: styleData.enabled ? "#cccccc" : "#777777"
            text: styleData.shortcut
        }
        itemDelegate.submenuIndicator: Text {
            color: styleData.enabled ? "#eeeeee" : "#888888"
            font.pixelSize: 8
            text: "\u25b6"
        }
        separator: Item {
            implicitHeight: 7
            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                height: 1
                color: "#666666"
            }
        }
    }
}
