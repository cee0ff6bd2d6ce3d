import QtQuick 2.7
import QtQuick.Controls 2.2 as C2
import "."

C2.ToolTip {
    id: corvToolTip

    delay: 1000
    timeout: 5000
    padding: 5
    // Or it would take Escape away from the window.
    closePolicy: C2.Popup.NoAutoClose

    contentItem: Text {
        text: corvToolTip.text
        color: Theme.toolTipText
    }
    background: Rectangle {
        color: Theme.toolTip
        border.color: Theme.toolTipText
    }
}
