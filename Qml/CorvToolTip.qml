import QtQuick 2.7
import QtQuick.Controls 2.2 as C2
import QtQuick.Window 2.2
import corv.OpenedWindows 1.0
import "."

C2.ToolTip {
    id: corvToolTip

    // Wider than that a text is hard to read; wider than the window it would be cut.
    readonly property real mostWidth: Math.min(
            600, parent !== null && parent.Window.width > 0 ? parent.Window.width - 2 * margins
                                                            : 600)

    delay: 1000
    timeout: 5000
    padding: 5
    contentWidth: unwrapped.implicitWidth
    width: Math.min(implicitWidth, mostWidth)
    // Or it would take Escape away from the window.
    closePolicy: C2.Popup.NoAutoClose

    // It would lie over the menu, the list or the dialog, or come up below it later.
    Connections {
        target: OpenedWindows

        function onOpened() {
            corvToolTip.close();
        }
    }

    contentItem: Text {
        text: corvToolTip.text
        color: Theme.toolTipText
        // Names are in these texts, and a name may look like markup.
        textFormat: Text.PlainText
        wrapMode: Text.Wrap

        // A text that wraps takes the width of all its lines together for its own.
        Text {
            id: unwrapped
            visible: false
            text: corvToolTip.text
            textFormat: Text.PlainText
        }
    }
    background: Rectangle {
        color: Theme.toolTip
        border.color: Theme.toolTipText
    }
}
