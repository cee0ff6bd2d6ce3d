import QtQuick 2.7
import QtQuick.Window 2.2
// After QtQuick: the native Shortcut with a `key` is meant, not the built-in one.
import Shortcuts 1.0
import "."

Window {
    id: shortcutsWindow
    objectName: "shortcutsWindow"

    title: "Keyboard Shortcuts"
    width: 300
    height: 420
    minimumWidth: 300
    minimumHeight: 420
    color: Theme.dialog

    Shortcut {
        key: "Return"
        onActivated: {
            if (shortcutsWindow.visible)
                okButton.pressButton();
        }
    }

    Shortcut {
        key: "Escape"
        onActivated: {
            if (shortcutsWindow.visible)
                okButton.pressButton();
        }
    }

    Text {
        id: text1
        objectName: "text1"
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            bottom: okButton.top
            margins: 10
        }
        color: Theme.text
        // The longest line fits whatever the font.
        font.pixelSize: 13
        fontSizeMode: Text.Fit
        minimumPixelSize: 8
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        text: ["MENU:",
               "Ctrl+N : Create new project from video",
               "Ctrl+Shift+N : Create new project from SD / dir",
               "Ctrl+L : Import flight log",
               "Ctrl+O : Open project",
               "Ctrl+S : Save project",
               "Ctrl+Shift+S : Save project as...",
               "Ctrl+W : Close current project",
               "Ctrl+Q : Exit",
               "Ctrl+C: Copy frame to clipboard",
               "",
               "POINTS OF INTEREST:",
               "N : Create POI",
               "X : Delete selected POI",
               "M : Move selected POI",
               "E : Edit selected POI",
               "",
               "VIDEO:",
               "Left arrow: Previous frame",
               "Right arrow: Next frame",
               "F11: Full screen window"].join("\n")
    }

    Text {
        objectName: "moreKeysText"
        anchors { left: parent.left; leftMargin: 10; verticalCenter: okButton.verticalCenter }
        color: Theme.textSoft
        text: "F1: all keys, in the user guide"
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    CorvRichTextButton {
        id: okButton
        objectName: "okButton"
        anchors { right: parent.right; rightMargin: 10; bottom: parent.bottom; bottomMargin: 10 }
        caption: "Close"
        onClicked: shortcutsWindow.close()
    }
}
