import QtQml 2.15
import QtQuick 2.15
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4
import ".."

// The menu bar in the colours of the palette.
Controls.MenuBar {
    id: menuBar

    property bool shown: true
    property Binding visibility: Binding {
        target: menuBar.__contentItem
        property: "visible"
        value: menuBar.shown
    }

    // Once the last menu is closed, letters open none until Alt is pressed again. The bar itself
    // never sees the release of an Alt that opened a menu.
    property Instantiator closing: Instantiator {
        model: menuBar.menus

        Connections {
            target: modelData
            function onAboutToHide() {
                Qt.callLater(menuBar.leaveLetters);
            }
        }
    }

    function leaveLetters() {
        for (var i = 0; i < menus.length; ++i) {
            if (menus[i].__popupVisible)
                return;
        }
        __contentItem.item.__altPressed = false;
    }

    style: MenuBarStyle {
        background: Rectangle { color: Theme.strip }

        itemDelegate: Rectangle {
            implicitWidth: caption.implicitWidth + 18
            implicitHeight: caption.implicitHeight + 8
            color: styleData.selected || styleData.open ? Theme.menuTitleOpen : Theme.clear

            Text {
                id: caption
                anchors.centerIn: parent
                color: styleData.enabled ? Theme.menuText : Theme.textDisabled
                textFormat: Text.StyledText
                text: formatMnemonic(styleData.text, styleData.underlineMnemonic)
            }
        }

        menuStyle: MenuStyle {
            // The box of an entry that is checked ends well before its text.
            __leftLabelMargin: 24
            frame: Rectangle {
                color: Theme.menu
                border.color: Theme.menuBorder
            }
            itemDelegate.background: Rectangle {
                color: styleData.selected && styleData.enabled ? Theme.menuSelected : Theme.clear
            }
            itemDelegate.label: Text {
                topPadding: 2
                bottomPadding: 2
                color: styleData.enabled ? Theme.menuText : Theme.textDisabled
                textFormat: Text.StyledText
                text: formatMnemonic(styleData.text, styleData.underlineMnemonic)
            }
            itemDelegate.shortcut: Text {
                color: styleData.enabled ? Theme.menuShortcut : Theme.textDisabled
                text: styleData.shortcut
            }
            itemDelegate.checkmarkIndicator: Rectangle {
                x: 2
                width: 12
                height: 12
                radius: 2
                color: Theme.clear
                border.width: 1
                border.color: Theme.menuShortcut

                CheckTick {
                    anchors.centerIn: parent
                    width: 9
                    height: 9
                    color: Theme.menuText
                    visible: styleData.checked
                }
            }
            itemDelegate.submenuIndicator: Text {
                color: styleData.enabled ? Theme.menuText : Theme.textDisabled
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
                    color: Theme.menuSeparator
                }
            }
        }
    }
}
