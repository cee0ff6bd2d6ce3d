import QtQuick 2.7
import QtQuick.Controls 2.2 as C2
import corv.OpenedWindows 1.0
import "."

C2.ToolTip {
    id: corvToolTip

    delay: 1000
    timeout: 5000
    padding: 5
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
    }
    background: Rectangle {
        color: Theme.toolTip
        border.color: Theme.toolTipText
    }
}
